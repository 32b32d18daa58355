#pragma once

// A memory budget per input: while an input runs, an allocation beyond it
// fails as the system's would, with std::bad_alloc, which the code under
// test must handle (the launcher reports it). Without it, a program that
// doubles a string would be reported by the fuzzer as out of memory, which
// is the program's right. Every form of operator new and delete is
// replaced, so that the fuzzer's own allocations pair up too.

#include <cstddef>
#include <cstdlib>
#include <new>

inline constexpr std::size_t kFuzzAllocationLimit = std::size_t(64) << 20;
inline bool fuzzInputRunning = false;

// Marks the run of one input.
struct FuzzInput {
    FuzzInput() { fuzzInputRunning = true; }
    ~FuzzInput() { fuzzInputRunning = false; }
};

inline void* fuzzAllocate(std::size_t size, std::size_t alignment) {
    if (fuzzInputRunning && size > kFuzzAllocationLimit) return nullptr;
    if (size == 0) size = 1;
    if (alignment <= alignof(std::max_align_t)) return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

inline void* fuzzAllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* p = fuzzAllocate(size, alignment);
    if (!p) throw std::bad_alloc();
    return p;
}

void* operator new(std::size_t n) { return fuzzAllocateOrThrow(n, 0); }
void* operator new[](std::size_t n) { return fuzzAllocateOrThrow(n, 0); }
void* operator new(std::size_t n, std::align_val_t a) {
    return fuzzAllocateOrThrow(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a) {
    return fuzzAllocateOrThrow(n, static_cast<std::size_t>(a));
}
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return fuzzAllocate(n, 0); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return fuzzAllocate(n, 0); }
void* operator new(std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return fuzzAllocate(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return fuzzAllocate(n, static_cast<std::size_t>(a));
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
