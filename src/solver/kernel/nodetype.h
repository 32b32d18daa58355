#pragma once

// The kinds of kernel node. The codes index per-type tables: keep them in
// this order (alphabetical after the two variable kinds). Coupled lists:
// NodeTypeUtils::toString, NodeTypeUtils::computeBounds, Dag::mallocNodes.
enum NodeType : unsigned int {
    Boolean = 0,
    Integer = 1,
    Abs = 2,
    And = 3,
    BooleanSum = 4,
    Constant = 5,
    Distance = 6,
    Divide = 7,
    Eq = 8,
    Geq = 9,
    Gt = 10,
    If = 11,
    Leq = 12,
    Lt = 13,
    Max = 14,
    Min = 15,
    Modulo = 16,
    Neq = 17,
    Not = 18,
    Or = 19,
    Product = 20,
    Scalar = 21,
    ScalarMax = 22,
    ScalarMin = 23,
    ScalarProduct = 24,
    ScalarSum = 25,
    Sqrt = 26,
    Sum = 27,
    Xor = 28
};

constexpr unsigned int NB_NODE_TYPES = 29;
