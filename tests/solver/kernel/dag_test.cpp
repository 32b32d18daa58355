#include "solver/kernel/dag.h"

#include "api/kernelexception.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/subset.h"
#include "solver/kernel/subsetbits.h"
#include "solver/kernel/subsetmask.h"
#include "solver/node/nodesumtemplate.h"
#include "testgraph.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {
// Which representation a sum of n children gets, by the class of its node.
int representationOfSum(unsigned int n) {
    TestGraph g;
    std::vector<unsigned int> childs;
    for (unsigned int i = 0; i < n; ++i) childs.push_back(g.boolean());
    unsigned int s = g.add(Sum, childs);
    g.objective(s);
    g.close();
    Dag dag(g.fixed);
    Node* node = dag.getNode(s);
    if (dynamic_cast<NodeSumTemplate<SubsetMASK<unsigned char>>*>(node)) return 0;
    if (dynamic_cast<NodeSumTemplate<SubsetMASK<unsigned short>>*>(node)) return 1;
    if (dynamic_cast<NodeSumTemplate<SubsetMASK<unsigned int>>*>(node)) return 2;
    if (dynamic_cast<NodeSumTemplate<SubsetMASK<unsigned long long>>*>(node)) return 3;
    if (dynamic_cast<NodeSumTemplate<SubsetBits>*>(node)) return 4;
    if (dynamic_cast<NodeSumTemplate<Subset<unsigned short>>*>(node)) return 5;
    if (dynamic_cast<NodeSumTemplate<Subset<unsigned int>>*>(node)) return 6;
    return -1;
}
}  // namespace

TEST(DagTest, RepresentationBoundsAreInclusiveAtTheTop) {
    const std::pair<unsigned int, int> expected[] = {
        {1, 0}, {8, 0}, {9, 1}, {16, 1}, {17, 2}, {32, 2}, {33, 3},
        {64, 3}, {65, 4}, {256, 4}, {257, 5}, {65534, 5}, {65535, 6}};
    for (const auto& [nbChilds, representation] : expected)
        EXPECT_EQ(representationOfSum(nbChilds), representation) << nbChilds << " children";
}

TEST(DagTest, InitOnceAndOnlyWithObjectives) {
    TestGraph g;
    unsigned int x = g.boolean();
    unsigned int n = g.add(Not, {x});
    g.objective(n);
    g.close();
    Dag dag(g.fixed);
    EXPECT_FALSE(dag.isInit());
    dag.init();
    EXPECT_TRUE(dag.isInit());
    EXPECT_EQ(dag.currentValue(n), 1);
    EXPECT_THROW(dag.init(), KernelException);

    TestGraph none;
    none.boolean();
    none.close();
    Dag noObjective(none.fixed);
    try {
        noObjective.init();
        FAIL();
    } catch (const KernelException& e) {
        EXPECT_EQ(e.getExplanation(), "No objective.");
        EXPECT_EQ(e.getFunctionName(), "init");
    }
}

TEST(DagTest, StatsAndTypeNames) {
    TestGraph g;
    unsigned int x = g.boolean();
    g.objective(g.add(Not, {x}));
    g.close();
    std::ostringstream out;
    Dag(g.fixed).printStats(&out);
    EXPECT_EQ(out.str(), "Nb nodes : 2\nNb booleans : 1\nNb constraints : 0\nNb Objectives : 1\n");
    EXPECT_EQ(NodeTypeUtils::toString(ScalarProduct), "ScalarProduct");
    EXPECT_EQ(NodeTypeUtils::toString(static_cast<NodeType>(29)), "TypeUndef");
    EXPECT_FALSE(NodeTypeUtils::isNodeInner(Constant));
    EXPECT_FALSE(NodeTypeUtils::isNodeVariable(Constant));
    EXPECT_FALSE(NodeTypeUtils::isBooleanDomain(If));
    EXPECT_TRUE(NodeTypeUtils::isBooleanDomain(Xor));
}
