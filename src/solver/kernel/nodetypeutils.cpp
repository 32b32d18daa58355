#include "solver/kernel/nodetypeutils.h"

#include "solver/kernel/subsetmask.h"
#include "solver/kernel/temporarydagfixedfields.h"
#include "solver/node/nodeabs.h"
#include "solver/node/nodecomparison.h"
#include "solver/node/nodeconstant.h"
#include "solver/node/nodedistance.h"
#include "solver/node/nodedivide.h"
#include "solver/node/nodeextremumtemplate.h"
#include "solver/node/nodeif.h"
#include "solver/node/nodelogictemplate.h"
#include "solver/node/nodemodulo.h"
#include "solver/node/nodenot.h"
#include "solver/node/nodeproducttemplate.h"
#include "solver/node/nodescalar.h"
#include "solver/node/nodesqrt.h"
#include "solver/node/nodesumtemplate.h"
#include "solver/node/nodevariable.h"

#include <cstdlib>
#include <iostream>

namespace {
const char* const NAMES[NB_NODE_TYPES] = {
    "Boolean", "Integer", "Abs", "And", "BooleanSum", "Constant", "Distance", "Divide",
    "Eq", "Geq", "Gt", "If", "Leq", "Lt", "Max", "Min", "Modulo", "Neq", "Not", "Or",
    "Product", "Scalar", "ScalarMax", "ScalarMin", "ScalarProduct", "ScalarSum", "Sqrt",
    "Sum", "Xor"};

// The bounds of a family do not depend on its subset representation.
template <template <class> class Family>
using AnyArity = Family<SubsetMASK<unsigned char>>;
}  // namespace

namespace NodeTypeUtils {

std::string toString(NodeType type) {
    return type < NB_NODE_TYPES ? NAMES[type] : "TypeUndef";
}

bool isBooleanDomain(NodeType t) {
    switch (t) {
        case Boolean: case And: case Eq: case Geq: case Gt: case Leq: case Lt:
        case Neq: case Not: case Or: case Xor:
            return true;
        default:
            return false;
    }
}

bool hasChildCoefficients(NodeType t) {
    return t == ScalarMax || t == ScalarMin || t == ScalarProduct || t == ScalarSum;
}

NodeDomain computeDomain(const TemporaryDagFixedFields& temporary, unsigned int node) {
    NodeType type = temporary.type(node);
    if (type >= NB_NODE_TYPES) {
        std::cout << "Error computeDomain" << std::endl;
        std::exit(1);
    }
    return isBooleanDomain(type) ? BooleanDomain : IntegerDomain;
}

void computeBounds(NodeType type, const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                   long long& max) {
    switch (type) {
        case Boolean: NodeBooleanVar::computeBounds(t, node, min, max); break;
        case Integer: NodeIntegerVar::computeBounds(t, node, min, max); break;
        case Abs: NodeAbs::computeBounds(t, node, min, max); break;
        case And: AnyArity<NodeAndTemplate>::computeBounds(t, node, min, max); break;
        case BooleanSum: AnyArity<NodeBooleanSumTemplate>::computeBounds(t, node, min, max); break;
        case Constant: NodeConstant::computeBounds(t, node, min, max); break;
        case Distance: NodeDistance::computeBounds(t, node, min, max); break;
        case Divide: NodeDivide::computeBounds(t, node, min, max); break;
        case Eq: NodeEq::computeBounds(t, node, min, max); break;
        case Geq: NodeGeq::computeBounds(t, node, min, max); break;
        case Gt: NodeGt::computeBounds(t, node, min, max); break;
        case If: NodeIf::computeBounds(t, node, min, max); break;
        case Leq: NodeLeq::computeBounds(t, node, min, max); break;
        case Lt: NodeLt::computeBounds(t, node, min, max); break;
        case Max: AnyArity<NodeMaxTemplate>::computeBounds(t, node, min, max); break;
        case Min: AnyArity<NodeMinTemplate>::computeBounds(t, node, min, max); break;
        case Modulo: NodeModulo::computeBounds(t, node, min, max); break;
        case Neq: NodeNeq::computeBounds(t, node, min, max); break;
        case Not: NodeNot::computeBounds(t, node, min, max); break;
        case Or: AnyArity<NodeOrTemplate>::computeBounds(t, node, min, max); break;
        case Product: AnyArity<NodeProductTemplate>::computeBounds(t, node, min, max); break;
        case Scalar: NodeScalar::computeBounds(t, node, min, max); break;
        case ScalarMax: AnyArity<NodeScalarMaxTemplate>::computeBounds(t, node, min, max); break;
        case ScalarMin: AnyArity<NodeScalarMinTemplate>::computeBounds(t, node, min, max); break;
        case ScalarProduct: AnyArity<NodeScalarProductTemplate>::computeBounds(t, node, min, max); break;
        case ScalarSum: AnyArity<NodeScalarSumTemplate>::computeBounds(t, node, min, max); break;
        case Sqrt: NodeSqrt::computeBounds(t, node, min, max); break;
        case Sum: AnyArity<NodeSumTemplate>::computeBounds(t, node, min, max); break;
        case Xor: AnyArity<NodeXorTemplate>::computeBounds(t, node, min, max); break;
    }
}

}  // namespace NodeTypeUtils
