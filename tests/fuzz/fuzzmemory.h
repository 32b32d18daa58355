#pragma once

// A memory budget per input: an allocation beyond it fails as the system's
// would, with std::bad_alloc, which the program under test must handle (the
// launcher reports it). Without it, a program that doubles a string would
// be reported by the fuzzer as out of memory, which is the program's right.

#include <cstddef>
#include <cstdlib>
#include <new>

inline constexpr std::size_t kFuzzAllocationLimit = std::size_t(64) << 20;

void* operator new(std::size_t size) {
    void* p = size <= kFuzzAllocationLimit ? std::malloc(size ? size : 1) : nullptr;
    if (!p) throw std::bad_alloc();
    return p;
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
