#include "solver/kernel/dagfixedfields.h"

#include "api/kernelexception.h"
#include "testgraph.h"

#include <gtest/gtest.h>

#include <functional>

// x, y booleans, k constant, s = x + y + k, c = (s < k), m = max(s, x)
TEST(DagFixedFieldsTest, FillingGivesRanksParentsTypesAndVariables) {
    TestGraph g;
    unsigned int x = g.boolean();
    unsigned int k = g.constant(3);
    unsigned int i = g.integer();
    unsigned int y = g.boolean();
    unsigned int s = g.add(Sum, {x, y, k});
    unsigned int c = g.add(Lt, {s, k});
    unsigned int m = g.add(Max, {s, x});
    g.constraint(c);
    g.objective(m, Maximize);
    const DagFixedFields& f = g.close();

    EXPECT_EQ(f.nbNodes(), 7u);
    EXPECT_EQ(f.rank(x), 0u);
    EXPECT_EQ(f.rank(s), 1u);
    EXPECT_EQ(f.rank(c), 2u);
    EXPECT_EQ(f.rank(m), 2u);
    ASSERT_EQ(f.nbRanks(), 3u);
    EXPECT_EQ(std::vector<unsigned int>(f.nodesOfRank(2), f.nodesOfRank(2) + 2), (std::vector<unsigned int>{c, m}));

    // Variables: booleans first, then integers, each in node order.
    EXPECT_EQ(f.variables(), (std::vector<unsigned int>{x, y, i}));
    EXPECT_EQ(f.variableIndex(i), 2u);
    EXPECT_EQ(f.nbBooleans(), 2u);
    EXPECT_EQ(f.nbIntegers(), 1u);
    EXPECT_EQ(f.indexInType(y), 1u);
    EXPECT_EQ(f.nbNodesOfType(Boolean), 2u);

    EXPECT_EQ(f.nbChilds(s), 3u);
    EXPECT_EQ(f.child(s, 2), k);
    EXPECT_TRUE(f.hasChilds(s));
    EXPECT_FALSE(f.hasChilds(k));
    EXPECT_EQ(f.indexInChildKind(m), 2u);  // third node with children
    EXPECT_EQ(f.indexInChildKind(y), 3u);  // fourth without

    // x is the first child of s and the second of m.
    ASSERT_EQ(f.nbParents(x), 2u);
    EXPECT_EQ(f.parent(x, 0), s);
    EXPECT_EQ(f.positionInParent(x, 0), 0u);
    EXPECT_EQ(f.parent(x, 1), m);
    EXPECT_EQ(f.positionInParent(x, 1), 1u);
    EXPECT_EQ(f.nbParents(c), 0u);
    EXPECT_EQ(f.parentOffset(c), 2147483647u);

    EXPECT_EQ(f.posInConstraints(c), 0u);
    EXPECT_EQ(f.posInConstraints(s), 4294967295u);
    EXPECT_EQ(f.constant(k), 3);
    EXPECT_TRUE(f.isBoolean(c));
    EXPECT_FALSE(f.isBoolean(k));
    EXPECT_EQ(f.lowerBound(s), 3);
    EXPECT_EQ(f.upperBound(s), 5);
    EXPECT_EQ(f.upperBound(c), 0);  // s >= 3 = k: never true
    EXPECT_EQ(f.lowerBound(m), 3);
}

TEST(DagFixedFieldsTest, CoefficientsFollowTheirChildren) {
    TestGraph g;
    unsigned int x = g.boolean();
    unsigned int y = g.boolean();
    unsigned int s = g.add(ScalarSum, {x, y}, {4, -2});
    unsigned int z = g.scalar(-3, s);
    g.objective(z);
    const DagFixedFields& f = g.close();
    EXPECT_EQ(f.coefficient(s, 0), 4);
    EXPECT_EQ(f.coefficient(s, 1), -2);
    EXPECT_EQ(f.constant(z), -3);
    EXPECT_EQ(f.lowerBound(s), -2);
    EXPECT_EQ(f.upperBound(s), 4);
    EXPECT_EQ(f.lowerBound(z), -12);
    EXPECT_EQ(f.upperBound(z), 6);
}

TEST(DagFixedFieldsTest, ClosingRefusesDoubleConstraintsAndUnreachedOperators) {
    TestGraph twice;
    unsigned int x = twice.boolean();
    twice.constraint(x);
    twice.constraint(x);
    EXPECT_EQ(kernelErrorOf([&] { twice.close(); }), "This node is already a constraint.");

    TestGraph empty;
    unsigned int y = empty.boolean();
    empty.add(Sum, {});
    empty.objective(y);
    EXPECT_EQ(kernelErrorOf([&] { empty.close(); }),
              "The operator Sum is not accessible from the variables and constants.");
}

TEST(DagFixedFieldsTest, DeepChainsCloseWithoutRecursion) {
    TestGraph g;
    unsigned int s = g.boolean();
    for (int i = 0; i < 200000; ++i) s = g.add(Sum, {s, g.boolean()});
    g.objective(s);
    const DagFixedFields& f = g.close();
    EXPECT_EQ(f.rank(s), 200000u);
    EXPECT_EQ(f.upperBound(s), 200001);
}
