#include "api/nameindex.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace {
// Stand-ins: the index never looks through its expression pointers.
QXExpression* expr(size_t i) { return reinterpret_cast<QXExpression*>(0x1000 + 16 * i); }
}  // namespace

// Random adds and removes, checked after every step against an ordered map:
// growth, probe runs that wrap around the table's end, and removals that
// must pull later entries of a run back over the hole. The names come from a
// large pool while about 170 stay live in 256 slots, so that runs are long
// and every part of the table, its end included, sees them.
TEST(NameIndex, AgreesWithAMapUnderAddsAndRemoves) {
    std::mt19937 rand(7);
    NameIndex index;
    std::map<std::string, QXExpression*> reference;
    auto nameOf = [](size_t i) { return "x[" + std::to_string(i) + "]"; };
    for (int step = 0; step < 40000; ++step) {
        if (reference.size() < 170 || rand() % 2 == 0) {
            const std::string name = nameOf(rand() % 5000);
            const uint32_t kept = index.add(name, expr(step));
            const bool fresh = reference.emplace(name, expr(step)).second;
            ASSERT_EQ(kept != NameIndex::TAKEN, fresh) << name;
            if (fresh) {
                EXPECT_EQ(index.nameOf(kept), name);
            }
        } else {
            auto live = std::next(reference.begin(), rand() % reference.size());
            index.remove(live->first);
            reference.erase(live);
        }
        ASSERT_EQ(index.size(), reference.size());
        if (step % 20 != 0) continue;
        for (const auto& entry : reference) ASSERT_EQ(index.find(entry.first), entry.second) << " at step " << step;
        ASSERT_EQ(index.find(nameOf(5000 + step)), nullptr);
    }
}

TEST(NameIndex, KeptNamesOutliveRemovalAndGrowth) {
    NameIndex index;
    EXPECT_EQ(index.find("a"), nullptr);
    index.remove("a");  // nothing to remove: no effect
    const uint32_t a = index.add("a", expr(1));
    ASSERT_NE(a, NameIndex::TAKEN);
    EXPECT_EQ(index.add("a", expr(2)), NameIndex::TAKEN);
    EXPECT_EQ(index.find("a"), expr(1));
    for (size_t i = 0; i < 10000; ++i) index.add("n" + std::to_string(i), expr(i));
    index.remove("a");
    EXPECT_EQ(index.nameOf(a), "a");
    EXPECT_EQ(index.find("a"), nullptr);
    EXPECT_EQ(index.find("n9999"), expr(9999));
    EXPECT_EQ(index.find(""), nullptr);
    EXPECT_EQ(index.size(), 10000u);
}
