#include "solver/kernel/bitsutils.h"
#include "solver/kernel/subset.h"
#include "solver/kernel/subsetbits.h"
#include "solver/kernel/subsetlist.h"
#include "solver/kernel/subsetmask.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

TEST(BitsUtilsTest, LowestSetBitOfEveryPosition) {
    for (unsigned int i = 0; i < 64; ++i) {
        EXPECT_EQ(BitsUtils::ffs(1ull << i), i);
        EXPECT_EQ(BitsUtils::ffs(~0ull << i), i);  // higher bits do not matter
    }
    EXPECT_EQ(BitsUtils::nthSetBit(0b1011000ull, 0), 3u);
    EXPECT_EQ(BitsUtils::nthSetBit(0b1011000ull, 2), 6u);
}

// Every representation must behave as a set over 0..n-1 under random
// operations; the word-based ones also keep increasing order.
template <class S>
void checkAgainstSet(unsigned int n, bool ordered) {
    S subset(n);
    std::set<unsigned int> reference;
    std::mt19937 random(n);
    for (int step = 0; step < 3000; ++step) {
        unsigned int i = random() % n;
        switch (random() % 7) {
            case 0: case 1: case 2: subset.add(i); reference.insert(i); break;
            case 3: case 4: subset.remove(i); reference.erase(i); break;
            case 5: if (random() % 20 == 0) { subset.clear(); reference.clear(); } break;
            default: break;
        }
        ASSERT_EQ(subset.contains(i), reference.count(i) == 1);
        ASSERT_EQ(subset.size(), reference.size());
        ASSERT_EQ(subset.empty(), reference.empty());
        std::vector<unsigned int> visited;
        subset.forEach([&](unsigned int k) { visited.push_back(k); });
        std::vector<unsigned int> byRank;
        for (unsigned int r = 0; r < subset.size(); ++r) byRank.push_back(subset.nth(r));
        ASSERT_EQ(visited, byRank);
        if (ordered) {
            ASSERT_EQ(visited, std::vector<unsigned int>(reference.begin(), reference.end()));
        } else {
            ASSERT_EQ(std::set<unsigned int>(visited.begin(), visited.end()), reference);
        }
    }
}

TEST(SubsetTest, EveryRepresentationIsASetAtItsFullWidth) {
    checkAgainstSet<SubsetMASK<unsigned char>>(8, true);
    checkAgainstSet<SubsetMASK<unsigned short>>(16, true);
    checkAgainstSet<SubsetMASK<unsigned int>>(32, true);
    checkAgainstSet<SubsetMASK<unsigned long long>>(64, true);
    checkAgainstSet<SubsetBits>(256, true);
    checkAgainstSet<SubsetBits>(65, true);
    checkAgainstSet<Subset<unsigned short>>(65534, false);
    checkAgainstSet<Subset<unsigned int>>(70000, false);
}

// The modified-children list: repeats are ignored, members come in order of
// first addition, and clearing forgets them all, including neighbours that
// share a bit word, however many rounds it goes through.
template <class T>
void checkListAgainstSet(unsigned int n) {
    SubsetList<T> list(n);
    std::mt19937 random(n);
    for (int round = 0; round < 200; ++round) {
        std::vector<unsigned int> order;
        std::set<unsigned int> reference;
        unsigned int base = random() % n;
        for (int step = 0; step < 40; ++step) {
            // Half of the additions fall near one position, so in one word.
            unsigned int i = step % 2 ? (base + random() % 70) % n : random() % n;
            list.add(i);
            if (reference.insert(i).second) order.push_back(i);
            ASSERT_TRUE(list.contains(i));
        }
        ASSERT_EQ(list.size(), reference.size());
        std::vector<unsigned int> visited;
        list.forEach([&](unsigned int k) { visited.push_back(k); });
        ASSERT_EQ(visited, order);
        for (unsigned int r = 0; r < list.size(); ++r) ASSERT_EQ(list.nth(r), order[r]);
        list.clear();
        ASSERT_TRUE(list.empty());
        for (unsigned int i : order) ASSERT_FALSE(list.contains(i));
    }
}

TEST(SubsetTest, ModifiedListKeepsFirstAdditionsAndForgetsOnClear) {
    checkListAgainstSet<unsigned short>(65534);
    checkListAgainstSet<unsigned int>(70000);
    checkListAgainstSet<unsigned short>(300);
}
