#pragma once

// Random models through the API, for the tests of the graph compiler and of
// the model writer: every operator, nested two-operand sum chains, n-ary
// operators with up to 300 operands, shared subexpressions, folded constant
// subexpressions, unused expressions, and constants up to the 64-bit
// extremes so that values wrap. Divisors and square-root operands are built
// so that they can never be 0 or negative, whatever the decisions.

#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxoperator.h"
#include "builder/expressiontools.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

class RandomModel {
public:
    // `forLanguage`: a model the language can read back the same: no
    // objective on a constant (the language declares objectives on
    // expressions only, and computes constant subexpressions as plain
    // integers), and no constant 9223372036854775807 (the compiler's "not
    // constant" mark, which it never folds while the language does).
    RandomModel(QXModel* model, unsigned int seed, bool forLanguage = false)
        : model(model), random(seed), forLanguage(forLanguage) {
        for (unsigned int i = 0, n = pick(3, 30); i < n; ++i) {
            QXExpression* x = model->createExpression(QXOperator::Bool);
            remember(x, false, 0);
            decisions.push_back(x);
        }
        for (unsigned int i = 0, n = pick(20, 120); i < n; ++i) addRandomExpression();
        declare();
    }

    // Values for every decision, 0 or 1, in decision order.
    std::vector<int64_t> randomDecisionValues() {
        std::vector<int64_t> values;
        for (std::size_t i = 0; i < decisions.size(); ++i) values.push_back(pick(0, 1));
        return values;
    }

    QXModel* model;
    std::mt19937 random;
    std::vector<QXExpression*> decisions;

private:
    unsigned int pick(unsigned int low, unsigned int high) {
        return std::uniform_int_distribution<unsigned int>(low, high)(random);
    }

    void remember(QXExpression* e, bool constant, int64_t value) {
        folded.resize(e->getIndex() + 1, 0);
        foldedValues.resize(e->getIndex() + 1, 0);
        folded[e->getIndex()] = constant ? 1 : 0;
        foldedValues[e->getIndex()] = value;
        all.push_back(e);
        if (isBoolean(e)) booleans.push_back(e);
    }
    static bool isBoolean(const QXExpression* e) {
        if (e->getOperator() == QXOperator::Const) {
            const int64_t v = e->getValue();
            return v == 0 || v == 1;
        }
        return getOperatorInfo(e->getOperator()).resultType == QXValueType::Boolean;
    }
    bool isFolded(const QXExpression* e) const { return folded[e->getIndex()] != 0; }

    int64_t constantValue() {
        static const int64_t SMALL[] = {0, 1, 2, 3, -1, -2, 5, -7, 10, 100};
        static const int64_t LARGE[] = {int64_t(1) << 31,
                                        -(int64_t(1) << 40),
                                        int64_t(1) << 62,
                                        std::numeric_limits<int64_t>::max(),
                                        std::numeric_limits<int64_t>::min(),
                                        std::numeric_limits<int64_t>::max() - 1,
                                        std::numeric_limits<int64_t>::min() + 1};
        if (pick(0, 9) < 8) return SMALL[pick(0, 9)];
        const int64_t v = LARGE[pick(0, 6)];
        return v == std::numeric_limits<int64_t>::max() && forLanguage ? v - 1 : v;
    }
    QXExpression* constant(int64_t v) {
        QXExpression* c = model->createConstant(v);
        // Every expression passes through remember, so a new one is past
        // the end of `folded`.
        if (static_cast<std::size_t>(c->getIndex()) >= folded.size()) remember(c, true, v);
        return c;
    }

    // An earlier expression, favouring recent ones so that graphs get deep.
    QXExpression* anyOperand() {
        if (pick(0, 7) == 0) return constant(constantValue());
        const unsigned int n = static_cast<unsigned int>(all.size());
        return all[pick(0, 1) ? pick(0, n - 1) : pick(n > 20 ? n - 20 : 0, n - 1)];
    }
    QXExpression* booleanOperand() {
        if (pick(0, 15) == 0) return constant(pick(0, 1));
        const unsigned int n = static_cast<unsigned int>(booleans.size());
        return booleans[pick(0, 1) ? pick(0, n - 1) : pick(n > 10 ? n - 10 : 0, n - 1)];
    }

    QXExpression* make(QXOperator op, const std::vector<QXExpression*>& operands) {
        bool constant = op != QXOperator::Bool;
        ExpressionTools::Values values;
        for (QXExpression* operand : operands) {
            constant = constant && isFolded(operand);
            if (constant) values.push_back(foldedValues[operand->getIndex()]);
        }
        const int64_t value = constant ? ExpressionTools::callEvaluator(op, values) : 0;
        // Computed to the "not constant" mark: its first operand instead.
        if (forLanguage && constant && value == std::numeric_limits<int64_t>::max())
            return operands[0];
        QXExpression* e = model->createExpression(op);
        for (QXExpression* operand : operands) e->addOperand(operand);
        remember(e, constant, value);
        return e;
    }

    // Never 0: a non-zero constant, max(e, 1), min(e, -1), or a choice
    // between two non-zero constants.
    QXExpression* divisor() {
        switch (pick(0, 3)) {
        case 0: {
            int64_t v = constantValue();
            return constant(v == 0 ? 3 : v);
        }
        case 1: return make(QXOperator::Max, {anyOperand(), constant(1)});
        case 2: return make(QXOperator::Min, {constant(-1), anyOperand()});
        default: return make(QXOperator::Iif, {booleanOperand(), constant(-3), constant(4)});
        }
    }
    // Never negative.
    QXExpression* rootOperand() {
        switch (pick(0, 2)) {
        case 0: return make(QXOperator::Max, {anyOperand(), constant(0)});
        case 1: return booleanOperand();
        default: return constant(pick(0, 1000));
        }
    }

    unsigned int arity() {
        if (pick(0, 9) < 7) return pick(1, 6);
        return pick(0, 3) == 0 ? pick(100, 300) : pick(7, 40);
    }

    void addRandomExpression() {
        std::vector<QXExpression*> ops;
        const unsigned int choice = pick(0, 21);
        // Codes 2 and 3 (decision, constant) stand for the chain and a bare
        // constant: decisions are all made first.
        switch (choice) {
        case 2: {  // s = s + x, as a model written in a loop produces
            QXExpression* s = anyOperand();
            for (unsigned int i = 0, n = pick(2, 60); i < n; ++i)
                s = make(QXOperator::Sum, {s, pick(0, 3) ? booleanOperand() : anyOperand()});
            return;
        }
        case 3: constant(constantValue()); return;
        default: break;
        }
        const QXOperator op = static_cast<QXOperator>(choice);
        switch (op) {
        case QXOperator::Abs: make(op, {anyOperand()}); break;
        case QXOperator::Not: make(op, {booleanOperand()}); break;
        case QXOperator::Sqrt: make(op, {rootOperand()}); break;
        case QXOperator::Div:
        case QXOperator::Mod: make(op, {anyOperand(), divisor()}); break;
        case QXOperator::Iif: make(op, {booleanOperand(), anyOperand(), anyOperand()}); break;
        case QXOperator::And:
        case QXOperator::Or:
        case QXOperator::Xor:
            for (unsigned int i = 0, n = arity(); i < n; ++i) ops.push_back(booleanOperand());
            make(op, ops);
            break;
        case QXOperator::Max:
        case QXOperator::Min:
        case QXOperator::Prod:
        case QXOperator::Sum:
            for (unsigned int i = 0, n = arity(); i < n; ++i) {
                // Products by a constant, as `-x` or `3 * x` are written.
                if (pick(0, 4) == 0)
                    ops.push_back(make(QXOperator::Prod, {constant(constantValue()), anyOperand()}));
                else
                    ops.push_back(anyOperand());
            }
            make(op, ops);
            break;
        default: make(op, {anyOperand(), anyOperand()}); break;  // comparisons, dist
        }
    }

    // Constraints only on boolean expressions that surely get a node of
    // their own: two constraints on one node are refused by the compiler.
    void declare() {
        std::vector<QXExpression*> candidates;
        for (QXExpression* e : booleans) {
            const QXOperator op = e->getOperator();
            const bool collapses = e->getNbOperands() == 1 && op != QXOperator::Not;
            if (!isFolded(e) && !collapses) candidates.push_back(e);
        }
        std::shuffle(candidates.begin(), candidates.end(), random);
        for (unsigned int k = 0, n = std::min<unsigned int>(pick(0, 5), candidates.size()); k < n; ++k)
            model->addConstraint(candidates[k]);
        for (unsigned int k = 0, n = pick(1, 3); k < n;) {
            QXExpression* e = all[pick(0, static_cast<unsigned int>(all.size()) - 1)];
            if (forLanguage && isFolded(e)) continue;
            model->addObjective(e, pick(0, 1) ? QXObjectiveDirection::Maximize
                                              : QXObjectiveDirection::Minimize);
            ++k;
        }
    }

    bool forLanguage;
    std::vector<QXExpression*> all;
    std::vector<QXExpression*> booleans;
    std::vector<unsigned char> folded;  // by expression index
    std::vector<int64_t> foldedValues;  // by expression index, where folded
};
