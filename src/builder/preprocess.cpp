#include "builder/preprocess.h"

#include "builder/dagdefinitionbuilder.h"
#include "builder/dagdefinitionbuildertools.h"
#include "builder/expressiontools.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/nodetypeutils.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

// The flattened terms of a non-unary root, with their nodes. A unary root
// (one operand) shares its operand's node and returns false.
bool flattenForNode(ModelExpr expr, DagDefinitionBuilder& builder, FlatTerms& flat) {
    if (ExpressionTools::isUnary(expr)) {
        builder.setNode(expr, builder.getNode(expr.getOperand(0)));
        return false;
    }
    builder.getFlattener().flatten(expr, builder, false, flat);
    return true;
}

using NodeTerms = std::vector<std::pair<unsigned int, long long>>;

// The flattened terms as (node, weight) pairs sorted by node, `extra`
// included: terms reached through different expressions of one node (x and
// and(x)) meet here. `byNode`: one pair per node, the weights added
// (wrapping); otherwise one pair per distinct (node, weight). A sorted
// vector rather than a map: a sum of a million terms costs 16 bytes a term
// and one sort.
void nodeTerms(const FlatTerms& flat, const DagDefinitionBuilder& builder, bool byNode,
               const NodeTerms& extra, NodeTerms& out) {
    out.clear();
    out.reserve(flat.terms.size() + extra.size());
    for (const auto& term : flat.terms) out.emplace_back(builder.getNode(term.first), term.second);
    out.insert(out.end(), extra.begin(), extra.end());
    std::sort(out.begin(), out.end());
    std::size_t kept = 0;
    for (const auto& term : out) {
        if (kept > 0 && out[kept - 1].first == term.first &&
            (byNode || out[kept - 1].second == term.second)) {
            if (byNode) out[kept - 1].second = WrapArith::add(out[kept - 1].second, term.second);
            continue;
        }
        out[kept++] = term;
    }
    out.resize(kept);
}

// Min or Max: children sorted by node, each (node, coefficient) once.
void createExtremum(TemporaryDagFixedFields& temporary, ModelExpr expr,
                    DagDefinitionBuilder& builder, NodeType plain, NodeType scaled) {
    FlatTerms flat;
    if (!flattenForNode(expr, builder, flat)) return;
    if (flat.terms.empty()) {
        builder.setNode(expr, builder.createConstant(temporary, flat.constant));
        return;
    }
    NodeTerms extra, terms;
    if (flat.hasConstant) extra.emplace_back(builder.createConstant(temporary, flat.constant), 1);
    nodeTerms(flat, builder, false, extra, terms);
    std::vector<unsigned int> childs;
    std::vector<long long> coefficients;
    childs.reserve(terms.size());
    coefficients.reserve(terms.size());
    bool allOne = true;
    for (const auto& term : terms) {
        childs.push_back(term.first);
        coefficients.push_back(term.second);
        allOne = allOne && term.second == 1;
    }
    if (allOne)
        builder.setNode(expr, builder.createInnerNode(temporary, plain, childs));
    else
        builder.setNode(expr, builder.createInnerNode(temporary, scaled, childs, coefficients));
}

}  // namespace

void PreprocessSum::mark(ModelExpr expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessSum::createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                               DagDefinitionBuilder& builder) {
    FlatTerms flat;
    if (!flattenForNode(expr, builder, flat)) return;
    if (flat.terms.empty()) {
        builder.setNode(expr, builder.createConstant(temporary, flat.constant));
        return;
    }
    NodeTerms extra, terms;
    if (flat.constant != 0) extra.emplace_back(builder.createConstant(temporary, 1), flat.constant);
    nodeTerms(flat, builder, true, extra, terms);
    std::vector<unsigned int> childs;
    std::vector<long long> coefficients;
    childs.reserve(terms.size());
    coefficients.reserve(terms.size());
    bool isSum = true, allBoolean = true;
    for (const auto& term : terms) {
        childs.push_back(term.first);
        coefficients.push_back(term.second);
        isSum = isSum && term.second == 1;
        allBoolean = allBoolean && NodeTypeUtils::computeDomain(temporary, term.first) == BooleanDomain;
    }
    if (isSum)
        builder.setNode(expr, builder.createInnerNode(temporary, allBoolean ? BooleanSum : Sum, childs));
    else
        builder.setNode(expr, builder.createInnerNode(temporary, ScalarSum, childs, coefficients));
}

void PreprocessProduct::mark(ModelExpr expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessProduct::createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                                   DagDefinitionBuilder& builder) {
    FlatTerms flat;
    if (!flattenForNode(expr, builder, flat)) return;
    const long long factor = flat.constant;  // 1 when no constant was met
    if (flat.terms.empty() || factor == 0) {
        builder.setNode(expr, builder.createConstant(temporary, factor));
        return;
    }
    NodeTerms multiplicities;
    nodeTerms(flat, builder, true, {}, multiplicities);
    std::vector<unsigned int> childs;
    for (const auto& term : multiplicities) childs.insert(childs.end(), term.second, term.first);
    if (factor == 1) {
        builder.setNode(expr, builder.createInnerNode(temporary, Product, childs));
    } else if (childs.size() == 1) {
        builder.setNode(expr, builder.createScalar(temporary, factor, childs[0]));
    } else {
        std::vector<long long> coefficients(childs.size(), 1);
        coefficients[0] = factor;
        builder.setNode(expr, builder.createInnerNode(temporary, ScalarProduct, childs, coefficients));
    }
}

void PreprocessMin::mark(ModelExpr expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessMin::createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                               DagDefinitionBuilder& builder) {
    createExtremum(temporary, expr, builder, Min, ScalarMin);
}

void PreprocessMax::mark(ModelExpr expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessMax::createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                               DagDefinitionBuilder& builder) {
    createExtremum(temporary, expr, builder, Max, ScalarMax);
}
