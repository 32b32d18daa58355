#pragma once

#include <cstddef>
#include <new>
#include <vector>

// Large arrays of the search on 2 MB pages where the system grants them on
// request. A move reads a few entries at random places of arrays of tens of
// megabytes (a million-boolean model); on 4 KB pages nearly every such read
// also misses the address translation cache and walks the page tables.
namespace largepages {

// Process-wide: a solve sets it from its parameters before building its
// arrays. Arrays already allocated keep their pages.
void setEnabled(bool enabled);
bool isEnabled();

// Below this size an array goes to the ordinary allocator.
constexpr std::size_t THRESHOLD = std::size_t(2) << 20;

// Memory of `bytes` bytes, on large pages when enabled and large enough;
// release with the same size.
void* allocate(std::size_t bytes);
void release(void* p, std::size_t bytes) noexcept;

}  // namespace largepages

template <class T>
struct LargePageAllocator {
    using value_type = T;
    LargePageAllocator() = default;
    template <class U>
    LargePageAllocator(const LargePageAllocator<U>&) {}
    T* allocate(std::size_t n) {
        if (n > std::size_t(-1) / sizeof(T)) throw std::bad_array_new_length();
        return static_cast<T*>(largepages::allocate(n * sizeof(T)));
    }
    void deallocate(T* p, std::size_t n) noexcept { largepages::release(p, n * sizeof(T)); }
    template <class U>
    bool operator==(const LargePageAllocator<U>&) const { return true; }
    template <class U>
    bool operator!=(const LargePageAllocator<U>&) const { return false; }
};

// A flat array of the search, indexed by node, boolean or entry.
template <class T>
using LargeVector = std::vector<T, LargePageAllocator<T>>;
