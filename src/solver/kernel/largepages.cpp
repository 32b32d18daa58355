#include "solver/kernel/largepages.h"

#include <atomic>
#include <cstdint>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#define QX_LARGE_PAGES 1
#endif

namespace largepages {

namespace {
std::atomic<bool> enabledFlag{true};
constexpr std::size_t PAGE = std::size_t(2) << 20;

std::size_t roundUp(std::size_t bytes) { return (bytes + PAGE - 1) / PAGE * PAGE; }

bool isLarge(std::size_t bytes) {
#ifdef QX_LARGE_PAGES
    return bytes >= THRESHOLD;
#else
    (void)bytes;
    return false;
#endif
}
}  // namespace

void setEnabled(bool enabled) { enabledFlag.store(enabled, std::memory_order_relaxed); }
bool isEnabled() { return enabledFlag.load(std::memory_order_relaxed); }

// A large block is mapped on its own, whether or not large pages are
// enabled, so that release knows it from its size alone. Enabled, it is
// aligned on a large page so that the first page can be large too, and asked
// for large pages before any page is touched (asking after the first touch
// leaves small pages in place until the system gets round to merging them).
void* allocate(std::size_t bytes) {
#ifdef QX_LARGE_PAGES
    if (isLarge(bytes)) {
        std::size_t size = roundUp(bytes);
        if (!isEnabled()) {
            void* p = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (p == MAP_FAILED) throw std::bad_alloc();
            return p;
        }
        void* raw = mmap(nullptr, size + PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (raw == MAP_FAILED) throw std::bad_alloc();
        auto begin = reinterpret_cast<std::uintptr_t>(raw);
        std::uintptr_t aligned = (begin + PAGE - 1) / PAGE * PAGE;
        if (aligned > begin) munmap(raw, aligned - begin);
        std::size_t tail = begin + PAGE - aligned;
        if (tail > 0) munmap(reinterpret_cast<void*>(aligned + size), tail);
        void* p = reinterpret_cast<void*>(aligned);
        madvise(p, size, MADV_HUGEPAGE);  // refused where unsupported: small pages then
        return p;
    }
#endif
    return ::operator new(bytes);
}

void release(void* p, std::size_t bytes) noexcept {
    if (p == nullptr) return;
#ifdef QX_LARGE_PAGES
    if (isLarge(bytes)) {
        munmap(p, roundUp(bytes));
        return;
    }
#endif
    ::operator delete(p);
}

}  // namespace largepages
