#pragma once

#include "solver/kernel/nodetype.h"

#include <string>

class TemporaryDagFixedFields;

enum NodeDomain : unsigned int { BooleanDomain = 0, IntegerDomain = 1 };

// Classification of node types, and dispatch of the per-class bound
// computations used while closing the fixed fields.
namespace NodeTypeUtils {
// The type's name; "TypeUndef" for a code outside the enumeration.
std::string toString(NodeType type);

inline bool isNodeBoolean(NodeType t) { return t == Boolean; }
inline bool isNodeInteger(NodeType t) { return t == Integer; }
inline bool isNodeConstant(NodeType t) { return t == Constant; }
inline bool isNodeVariable(NodeType t) { return t == Boolean || t == Integer; }
inline bool isNodeInner(NodeType t) { return t != Boolean && t != Integer && t != Constant; }

// True for the eleven boolean-valued types.
bool isBooleanDomain(NodeType t);
// True for the types whose children carry one coefficient each.
bool hasChildCoefficients(NodeType t);

// The value domain of a node; prints "Error computeDomain" and exits with
// status 1 on an unknown type code.
NodeDomain computeDomain(const TemporaryDagFixedFields& temporary, unsigned int node);

// Bounds of a node from its children's bounds (children first).
void computeBounds(NodeType type, const TemporaryDagFixedFields& temporary, unsigned int node,
                   long long& min, long long& max);
}  // namespace NodeTypeUtils
