#include "builder/preprocess.h"

#include "api/qxexpression.h"
#include "builder/dagdefinitionbuilder.h"
#include "builder/dagdefinitionbuildertools.h"
#include "builder/expressiontools.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/nodetypeutils.h"

#include <map>

namespace {

// The flattened terms of a non-unary root, with their nodes. A unary root
// (one operand) shares its operand's node and returns false.
bool flattenForNode(const QXExpression* expr, DagDefinitionBuilder& builder, FlatTerms& flat) {
    if (ExpressionTools::isUnary(expr)) {
        builder.setNode(expr, builder.getNode(expr->getOperand(0)));
        return false;
    }
    builder.getFlattener().flatten(expr, builder, false, flat);
    return true;
}

// Min or Max: children sorted by node, each (node, coefficient) once.
void createExtremum(TemporaryDagFixedFields& temporary, const QXExpression* expr,
                    DagDefinitionBuilder& builder, NodeType plain, NodeType scaled) {
    FlatTerms flat;
    if (!flattenForNode(expr, builder, flat)) return;
    if (flat.terms.empty()) {
        builder.setNode(expr, builder.createConstant(temporary, flat.constant));
        return;
    }
    std::map<std::pair<unsigned int, long long>, bool> terms;
    for (const auto& term : flat.terms) terms[{builder.getNode(term.first), term.second}] = true;
    if (flat.hasConstant) terms[{builder.createConstant(temporary, flat.constant), 1}] = true;
    std::vector<unsigned int> childs;
    std::vector<long long> coefficients;
    bool allOne = true;
    for (const auto& term : terms) {
        childs.push_back(term.first.first);
        coefficients.push_back(term.first.second);
        allOne = allOne && term.first.second == 1;
    }
    if (allOne)
        builder.setNode(expr, builder.createInnerNode(temporary, plain, childs));
    else
        builder.setNode(expr, builder.createInnerNode(temporary, scaled, childs, coefficients));
}

}  // namespace

void PreprocessSum::mark(const QXExpression* expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessSum::createNode(TemporaryDagFixedFields& temporary, const QXExpression* expr,
                               DagDefinitionBuilder& builder) {
    FlatTerms flat;
    if (!flattenForNode(expr, builder, flat)) return;
    if (flat.terms.empty()) {
        builder.setNode(expr, builder.createConstant(temporary, flat.constant));
        return;
    }
    // By node: a term reached through different expressions of the same
    // node (x and and(x)) adds up.
    std::map<unsigned int, long long> terms;
    for (const auto& term : flat.terms) {
        long long& coefficient = terms[builder.getNode(term.first)];
        coefficient = WrapArith::add(coefficient, term.second);
    }
    if (flat.constant != 0) {
        long long& coefficient = terms[builder.createConstant(temporary, 1)];
        coefficient = WrapArith::add(coefficient, flat.constant);
    }
    std::vector<unsigned int> childs;
    std::vector<long long> coefficients;
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

void PreprocessProduct::mark(const QXExpression* expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessProduct::createNode(TemporaryDagFixedFields& temporary, const QXExpression* expr,
                                   DagDefinitionBuilder& builder) {
    FlatTerms flat;
    if (!flattenForNode(expr, builder, flat)) return;
    const long long factor = flat.constant;  // 1 when no constant was met
    if (flat.terms.empty() || factor == 0) {
        builder.setNode(expr, builder.createConstant(temporary, factor));
        return;
    }
    std::map<unsigned int, long long> multiplicities;
    for (const auto& term : flat.terms) multiplicities[builder.getNode(term.first)] += term.second;
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

void PreprocessMin::mark(const QXExpression* expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessMin::createNode(TemporaryDagFixedFields& temporary, const QXExpression* expr,
                               DagDefinitionBuilder& builder) {
    createExtremum(temporary, expr, builder, Min, ScalarMin);
}

void PreprocessMax::mark(const QXExpression* expr, DagDefinitionBuilder& builder) {
    DagDefinitionBuilderTools::flatteningMarker(expr, builder);
}

void PreprocessMax::createNode(TemporaryDagFixedFields& temporary, const QXExpression* expr,
                               DagDefinitionBuilder& builder) {
    createExtremum(temporary, expr, builder, Max, ScalarMax);
}
