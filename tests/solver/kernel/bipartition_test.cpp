#include "solver/kernel/bipartition.h"

#include "solver/kernel/quickrand.h"

#include <gtest/gtest.h>

#include <set>

TEST(BipartitionTest, MovesKeepPermutationAndInverseConsistent) {
    Bipartition b(10);
    EXPECT_EQ(b.sizeIn(), 0u);
    b.setIn(3);
    b.setIn(7);
    b.setIn(3);  // already In: no change
    EXPECT_EQ(b.sizeIn(), 2u);
    EXPECT_TRUE(b.isIn(3) && b.isIn(7) && b.isOut(0));
    b.setOut(3);
    b.setOut(3);
    EXPECT_EQ(b.sizeIn(), 1u);
    EXPECT_EQ(b[0], 7u);
    Quickrand rand(5);
    for (int step = 0; step < 1000; ++step) {
        unsigned int e = rand.nextInt(10);
        if (rand.nextInt(2)) b.setIn(e); else b.setOut(e);
        for (unsigned int i = 0; i < 10; ++i) EXPECT_EQ(b[b.getPosition(i)], i);
    }
    b.clearOut();
    EXPECT_EQ(b.sizeOut(), 0u);
    EXPECT_EQ(b.getRandomOut(rand), Bipartition::NONE);
    b.clearIn();
    EXPECT_EQ(b.getRandomIn(rand), Bipartition::NONE);
}

TEST(BipartitionTest, RandomPicksStayInTheirPart) {
    Bipartition b(6);
    b.setIn(1);
    b.setIn(4);
    Quickrand rand(11);
    std::set<unsigned int> seenIn, seenOut;
    for (int i = 0; i < 200; ++i) {
        seenIn.insert(b.getRandomIn(rand));
        seenOut.insert(b.getRandomOut(rand));
    }
    EXPECT_EQ(seenIn, (std::set<unsigned int>{1, 4}));
    EXPECT_EQ(seenOut, (std::set<unsigned int>{0, 2, 3, 5}));
}
