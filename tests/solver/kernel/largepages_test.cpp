#include "solver/kernel/largepages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>

namespace {

// Restores the process-wide switch whatever a test does.
struct SwitchGuard {
    bool saved = largepages::isEnabled();
    ~SwitchGuard() { largepages::setEnabled(saved); }
};

// Every byte of a block is writable and keeps its value: a mapping trimmed
// one page short, or released by the wrong path, faults or corrupts here.
void fillAndCheck(std::size_t bytes) {
    auto* p = static_cast<unsigned char*>(largepages::allocate(bytes));
    ASSERT_NE(p, nullptr);
    for (std::size_t i = 0; i < bytes; ++i) p[i] = static_cast<unsigned char>(i * 7);
    for (std::size_t i = 0; i < bytes; i += 4093) ASSERT_EQ(p[i], static_cast<unsigned char>(i * 7)) << bytes;
    EXPECT_EQ(p[bytes - 1], static_cast<unsigned char>((bytes - 1) * 7));
    largepages::release(p, bytes);
}

TEST(LargePages, BlocksAroundTheThresholdHoldTheirBytesEnabledOrNot) {
    SwitchGuard guard;
    const std::size_t sizes[] = {1, 4096, largepages::THRESHOLD - 1, largepages::THRESHOLD,
                                 largepages::THRESHOLD + 1, 3 * largepages::THRESHOLD + 12345};
    for (bool enabled : {true, false}) {
        largepages::setEnabled(enabled);
        for (std::size_t bytes : sizes) fillAndCheck(bytes);
    }
}

TEST(LargePages, EnabledLargeBlocksStartOnALargePage) {
    SwitchGuard guard;
    largepages::setEnabled(true);
    // Several at once, so that they cannot all land aligned by chance.
    void* blocks[4];
    for (void*& p : blocks) p = largepages::allocate(largepages::THRESHOLD + 4096);
    for (void* p : blocks) {
#if defined(__linux__)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % (std::size_t(2) << 20), 0u);
#endif
        largepages::release(p, largepages::THRESHOLD + 4096);
    }
}

TEST(LargePages, VectorsGrowShrinkAndCopyAcrossTheThreshold) {
    SwitchGuard guard;
    // Allocated enabled, released disabled: release must not depend on the
    // switch of the moment.
    largepages::setEnabled(true);
    LargeVector<unsigned int> v;
    const std::size_t n = 3 * largepages::THRESHOLD / sizeof(unsigned int);
    for (std::size_t i = 0; i < n; ++i) v.push_back(static_cast<unsigned int>(i));
    LargeVector<unsigned int> copy = v;
    largepages::setEnabled(false);
    v.resize(10);
    v.shrink_to_fit();
    ASSERT_EQ(copy.size(), n);
    EXPECT_EQ(std::accumulate(copy.begin(), copy.end(), 0ull), static_cast<unsigned long long>(n) * (n - 1) / 2);
    EXPECT_EQ(v[9], 9u);
    copy.assign(n, 5u);
    EXPECT_EQ(copy[n - 1], 5u);
}

}  // namespace
