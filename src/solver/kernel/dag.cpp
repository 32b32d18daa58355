#include "solver/kernel/dag.h"

#include "api/kernelexception.h"
#include "solver/kernel/subset.h"
#include "solver/kernel/subsetbits.h"
#include "solver/kernel/subsetmask.h"
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

namespace {
const char* const SOURCE = "src/solver/kernel/dag";

// The smallest subset representation that fits n children: one machine
// word up to 64, a short bit array up to 256, a sparse set beyond.
template <template <class> class Family>
std::unique_ptr<Node> createNodeInnerChilds(const DagFixedFields& fixed, unsigned int node) {
    unsigned int n = fixed.nbChilds(node);
    if (n <= 8) return std::make_unique<Family<SubsetMASK<unsigned char>>>(fixed, node);
    if (n <= 16) return std::make_unique<Family<SubsetMASK<unsigned short>>>(fixed, node);
    if (n <= 32) return std::make_unique<Family<SubsetMASK<unsigned int>>>(fixed, node);
    if (n <= 64) return std::make_unique<Family<SubsetMASK<unsigned long long>>>(fixed, node);
    if (n <= 256) return std::make_unique<Family<SubsetBits>>(fixed, node);
    if (n + 1 < 65536) return std::make_unique<Family<Subset<unsigned short>>>(fixed, node);
    return std::make_unique<Family<Subset<unsigned int>>>(fixed, node);
}
}  // namespace

Dag::Dag(const DagFixedFields& fixedFields)
    : fixed(fixedFields),
      nodes(fixedFields.nbNodes(), nullptr),
      values(2 * static_cast<std::size_t>(fixedFields.nbNodes()), 0),
      modifiedFlags(fixedFields.nbNodes(), 0) {
    mallocNodes();
}

Dag::~Dag() = default;

void Dag::mallocNodes() {
    // Stateless classes: one array per class, the node's index in its type
    // is its index in the array.
    ObjectsAllocator<Node>* pools[NB_NODE_TYPES] = {};
    auto addPool = [&](NodeType type, auto tag) {
        using Class = typename decltype(tag)::type;
        pools[type] = statelessNodes.addPool<Class>(NodeTypeUtils::toString(type), fixed.nbNodesOfType(type));
    };
    addPool(Boolean, std::common_type<NodeBooleanVar>());
    addPool(Integer, std::common_type<NodeIntegerVar>());
    addPool(Constant, std::common_type<NodeConstant>());
    addPool(Abs, std::common_type<NodeAbs>());
    addPool(Distance, std::common_type<NodeDistance>());
    addPool(Divide, std::common_type<NodeDivide>());
    addPool(Eq, std::common_type<NodeEq>());
    addPool(Geq, std::common_type<NodeGeq>());
    addPool(Gt, std::common_type<NodeGt>());
    addPool(If, std::common_type<NodeIf>());
    addPool(Leq, std::common_type<NodeLeq>());
    addPool(Lt, std::common_type<NodeLt>());
    addPool(Modulo, std::common_type<NodeModulo>());
    addPool(Neq, std::common_type<NodeNeq>());
    addPool(Not, std::common_type<NodeNot>());
    addPool(Scalar, std::common_type<NodeScalar>());
    addPool(Sqrt, std::common_type<NodeSqrt>());

    statefulNodes.reserve(fixed.nbNodes());
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node) {
        NodeType type = fixed.type(node);
        std::unique_ptr<Node> object;
        switch (type) {
            case And: object = createNodeInnerChilds<NodeAndTemplate>(fixed, node); break;
            case Or: object = createNodeInnerChilds<NodeOrTemplate>(fixed, node); break;
            case Xor: object = createNodeInnerChilds<NodeXorTemplate>(fixed, node); break;
            case Sum: object = createNodeInnerChilds<NodeSumTemplate>(fixed, node); break;
            case ScalarSum: object = createNodeInnerChilds<NodeScalarSumTemplate>(fixed, node); break;
            case BooleanSum: object = createNodeInnerChilds<NodeBooleanSumTemplate>(fixed, node); break;
            case Max: object = createNodeInnerChilds<NodeMaxTemplate>(fixed, node); break;
            case Min: object = createNodeInnerChilds<NodeMinTemplate>(fixed, node); break;
            case ScalarMax: object = createNodeInnerChilds<NodeScalarMaxTemplate>(fixed, node); break;
            case ScalarMin: object = createNodeInnerChilds<NodeScalarMinTemplate>(fixed, node); break;
            case Product: object = createNodeInnerChilds<NodeProductTemplate>(fixed, node); break;
            case ScalarProduct: object = createNodeInnerChilds<NodeScalarProductTemplate>(fixed, node); break;
            default:
                nodes[node] = pools[type]->getObject(fixed.indexInType(node));
                continue;
        }
        nodes[node] = object.get();
        statefulNodes.push_back(std::move(object));
    }
}

void Dag::init() {
    if (initialized)
        throw KernelException(SOURCE, __LINE__, "init",
                              "You cannot modify the structure of the dag : Dag already initialized.");
    if (fixed.objectives().size() != fixed.directions().size())
        throw KernelException(SOURCE, __LINE__, "init",
                              "Different number of directions and operators in the objective.");
    if (fixed.objectives().empty()) throw KernelException(SOURCE, __LINE__, "init", "No objective.");
    callNodesInit();
    initialized = true;
    propagation.init(*this);
}

void Dag::callNodesInit() {
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node) nodes[node]->init(*this, node);
}

void Dag::check() const {
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node) nodes[node]->check(*this, node);
}

void Dag::printStats(std::ostream* out) const {
    *out << "Nb nodes : " << fixed.nbNodes() << std::endl;
    *out << "Nb booleans : " << fixed.nbBooleans() << std::endl;
    *out << "Nb constraints : " << fixed.nbConstraints() << std::endl;
    *out << "Nb Objectives : " << fixed.objectives().size() << std::endl;
}
