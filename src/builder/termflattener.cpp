#include "builder/termflattener.h"


#include "builder/dagdefinitionbuilder.h"
#include "builder/expressiontools.h"
#include "solver/kernel/kernelconstants.h"

namespace {
// Wrapping power: the value of a constant factor met `count` times.
long long power(long long base, long long count) {
    long long result = 1;
    while (count > 0) {
        if (count & 1) result = WrapArith::mul(result, base);
        base = WrapArith::mul(base, base);
        count >>= 1;
    }
    return result;
}
}  // namespace

void TermFlattener::ensureSize(std::size_t count) {
    if (scratch.size() >= count) return;
    scratch.resize(count, Scratch{0, 0, -1, 0, 0, 0});
}

TermFlattener::Role TermFlattener::roleOf(ModelExpr expr, QXOperator op,
                                          const DagDefinitionBuilder& builder, bool marking,
                                          long long& factor, ModelExpr& single) const {
    if (builder.isConstant(expr)) return ConstantRole;
    if (ExpressionTools::isUnary(expr)) {
        factor = 1;
        single = expr.getOperand(0);
        return ThroughRole;
    }
    // Inside a product, a product by a constant is an ordinary nested product.
    if (op != QXOperator::Prod && builder.isScalar(expr, factor, single)) return ThroughRole;
    if (expr.getOperator() == op &&
        (marking || builder.getMark(expr) != DagDefinitionBuilder::NODE_MARK))
        return NestedRole;
    return TermRole;
}

void TermFlattener::flatten(ModelExpr root, const DagDefinitionBuilder& builder,
                            bool marking, FlatTerms& out) {
    out = FlatTerms();
    const QXOperator op = root.getOperator();
    if (op == QXOperator::Min || op == QXOperator::Max)
        flattenExtremum(root, builder, marking, out);
    else
        flattenLinear(root, builder, marking, out);
}

// Sums and products. First the expressions under the root that the walk may
// go through are listed in post-order (each once); then, users before
// operands, each reached expression hands its weight on to its operands.
void TermFlattener::flattenLinear(ModelExpr root, const DagDefinitionBuilder& builder,
                                  bool marking, FlatTerms& out) {
    const QXOperator op = root.getOperator();
    const bool isProduct = op == QXOperator::Prod;
    const ModelGraph& graph = builder.getModel();
    ensureSize(static_cast<std::size_t>(graph.getNbExpressions()));
    if (++stamp == 0) {
        for (Scratch& entry : scratch) entry.stamp = 0;
        stamp = 1;
    }
    order.clear();
    auto visit = [&](ModelExpr expr, Role role) {
        Scratch& entry = scratch[expr.getIndex()];
        entry.stamp = stamp;
        entry.weight = 0;
        entry.reached = 0;
        entry.role = role;
        stack.push_back({expr, 0});
    };
    visit(root, NestedRole);
    while (!stack.empty()) {
        Frame& top = stack.back();
        const Scratch& entry = scratch[top.expr.getIndex()];
        ModelExpr next;
        if (entry.role == ThroughRole) {
            if (top.next++ == 0) next = graph.getExpression(entry.single);
        } else if (entry.role == NestedRole) {
            if (top.next < top.expr.getNbOperands()) next = top.expr.getOperand(top.next++);
        }
        if (next.isNull()) {
            order.push_back(top.expr);
            stack.pop_back();
            continue;
        }
        Scratch& reachedEntry = scratch[next.getIndex()];
        if (reachedEntry.stamp == stamp) continue;
        long long factor = 1;
        ModelExpr single;
        Role role = roleOf(next, op, builder, marking, factor, single);
        reachedEntry.factor = factor;
        reachedEntry.single = single.getIndex();
        visit(next, role);
    }

    auto hand = [&](int32_t j, long long weight) {
        Scratch& entry = scratch[j];
        entry.weight = isProduct ? entry.weight + weight : WrapArith::add(entry.weight, weight);
        entry.reached = 1;
    };
    scratch[root.getIndex()].weight = 1;
    scratch[root.getIndex()].reached = 1;
    out.constant = isProduct ? 1 : 0;
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        ModelExpr expr = *it;
        const Scratch& entry = scratch[expr.getIndex()];
        if (!entry.reached) continue;
        const long long weight = entry.weight;
        Role role = static_cast<Role>(entry.role);
        // A product met twice under the root is a power of it: kept whole.
        if (role == NestedRole && isProduct && expr != root && weight != 1) role = TermRole;
        switch (role) {
        case ConstantRole: {
            const long long value = builder.getConstant(expr);
            out.constant = isProduct ? WrapArith::mul(out.constant, power(value, weight))
                                     : WrapArith::add(out.constant, WrapArith::mul(weight, value));
            out.hasConstant = true;
            break;
        }
        case ThroughRole:
            if (isProduct)
                hand(entry.single, weight);
            else if (entry.factor != 0)
                hand(entry.single, WrapArith::mul(weight, entry.factor));
            break;
        case NestedRole:
            if (expr != root) out.absorbed.push_back(expr);
            for (int k = 0; k < expr.getNbOperands(); ++k) hand(expr.getOperand(k).getIndex(), weight);
            break;
        case TermRole:
            out.terms.emplace_back(expr, weight);
            break;
        }
    }
}

// Minima and maxima are idempotent: a term is kept once per coefficient
// however often it is met, so the walk is over (expression, coefficient)
// pairs. Nested operators are seen through only with the coefficient 1
// (k * min(a, b) is min(k * a, k * b) only for positive k without overflow),
// so the pairs with other coefficients form chains and the walk stays
// linear in practice.
void TermFlattener::flattenExtremum(ModelExpr root, const DagDefinitionBuilder& builder,
                                    bool marking, FlatTerms& out) {
    const QXOperator op = root.getOperator();
    const bool isMax = op == QXOperator::Max;
    auto offerConstant = [&](long long value) {
        if (!out.hasConstant || (isMax ? value > out.constant : value < out.constant))
            out.constant = value;
        out.hasConstant = true;
    };
    seen.clear();
    pending.clear();
    for (int k = root.getNbOperands() - 1; k >= 0; --k) pending.emplace_back(root.getOperand(k), 1);
    while (!pending.empty()) {
        const auto [expr, coefficient] = pending.back();
        pending.pop_back();
        if (!seen.emplace(expr.getIndex(), coefficient).second) continue;
        long long factor = 1;
        ModelExpr single;
        Role role = roleOf(expr, op, builder, marking, factor, single);
        if (role == NestedRole && coefficient != 1) role = TermRole;
        switch (role) {
        case ConstantRole:
            offerConstant(WrapArith::mul(coefficient, builder.getConstant(expr)));
            break;
        case ThroughRole: {
            const long long scaled = WrapArith::mul(coefficient, factor);
            if (scaled == 0)
                offerConstant(0);
            else
                pending.emplace_back(single, scaled);
            break;
        }
        case NestedRole:
            out.absorbed.push_back(expr);
            for (int k = expr.getNbOperands() - 1; k >= 0; --k)
                pending.emplace_back(expr.getOperand(k), 1);
            break;
        case TermRole:
            out.terms.emplace_back(expr, coefficient);
            break;
        }
    }
}
