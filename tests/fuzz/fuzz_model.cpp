// The model API driven by the input as a trace: decisions, expressions of
// every operator over earlier expressions and integers, constraints and
// objectives; then the model closes, the trace's start values are set, a
// search of a few hundred iterations runs, and every expression's value is
// read back and checked against an evaluation from scratch over the
// decisions' values. Calls the API refuses are part of the trace: each must
// fail with a QXException and change nothing.

#include "api/quarrix.h"
#include "api/qxexception.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxoperator.h"
#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "fuzzmemory.h"

namespace {

class Trace {
public:
    Trace(const uint8_t* data, size_t size) : data(data), size(size) {}
    bool more() const { return at < size; }
    uint8_t byte() { return at < size ? data[at++] : 0; }
    int64_t integer() {
        switch (byte() % 4) {
        case 0: return static_cast<int8_t>(byte());
        case 1: return byte() % 2;
        default: {
            int64_t v = 0;
            for (int i = 0; i < 8; ++i) v = (v << 8) | byte();
            return v;
        }
        }
    }

private:
    const uint8_t* data;
    size_t size;
    size_t at = 0;
};

[[noreturn]] void mismatch(const QXExpression* e, int64_t api, int64_t scratch) {
    std::fprintf(stderr, "expression %d (%s): API value %lld, from scratch %lld\n", e->getIndex(),
                 e->toString().c_str(), (long long)api, (long long)scratch);
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput running;
    Trace trace(data, size);
    Quarrix solver;
    QXModel* model = solver.getModel();
    std::vector<QXExpression*> all;
    const int nbOperators = 22;
    try {
        for (int step = 0; step < 400 && trace.more(); ++step) {
            const uint8_t action = trace.byte() % 8;
            if (action < 2 || all.empty()) {
                all.push_back(model->createExpression(QXOperator::Bool));
                continue;
            }
            if (action == 6) {
                model->addConstraint(all[trace.byte() % all.size()]);
                continue;
            }
            if (action == 7) {
                model->addObjective(all[trace.byte() % all.size()],
                                    trace.byte() % 2 ? QXObjectiveDirection::Maximize
                                                     : QXObjectiveDirection::Minimize);
                continue;
            }
            const QXOperator op = static_cast<QXOperator>(trace.byte() % nbOperators);
            std::vector<QXOperand> operands;
            const int n = trace.byte() % 4;
            for (int k = 0; k < n; ++k) {
                if (trace.byte() % 3 == 0) operands.emplace_back(trace.integer());
                else operands.emplace_back(all[trace.byte() % all.size()]);
            }
            try {
                QXExpression* e = n == 0   ? model->createExpression(op)
                                  : n == 1 ? model->createExpression(op, operands[0])
                                  : n == 2 ? model->createExpression(op, operands[0], operands[1])
                                           : model->createExpression(op, operands[0], operands[1],
                                                                     operands[2]);
                all.push_back(e);
            } catch (const QXException&) {
            }
        }
        model->close();
    } catch (const QXException&) {
        return 0;  // a refused closing (no objective, a constant error): nothing to solve
    } catch (const std::bad_alloc&) {
        return 0;
    }

    try {
        QXSolution* solution = solver.getSolution();
        for (QXExpression* e : all)
            if (e->isDecision() && trace.more()) solution->setValue(e, trace.byte() % 2);
        solver.getParam()->setNbThreads(1);
        solver.getParam()->setVerbosity(0);
        solver.getParam()->setSeed(trace.byte());
        solver.createPhase()->setIterationLimit(50 + trace.byte() * 2);
        solver.solve();
    } catch (const QXException&) {
        return 0;  // an arithmetic error in the start point, say
    }

    // Every expression against its value computed from its operands.
    // An expression undefined at this point (a division by zero, the root of
    // a negative number) is not compared, nor is anything above it.
    const int count = model->getNbExpressions();
    std::vector<int64_t> value(count);
    std::vector<bool> defined(count, true);
    for (int i = 0; i < count; ++i) {
        const QXExpression* e = model->getExpression(i);
        int64_t api;
        try {
            api = e->getValue();
        } catch (const QXException&) {
            defined[i] = false;
            continue;
        }
        if (e->isDecision()) {
            if (api != 0 && api != 1) mismatch(e, api, -1);
            value[i] = api;
            continue;
        }
        if (e->isConstant()) {
            value[i] = api;
            continue;
        }
        std::vector<int64_t> operandValues;
        bool operandsDefined = true;
        for (int k = 0; k < e->getNbOperands(); ++k) {
            const int operand = e->getOperand(k)->getIndex();
            operandsDefined = operandsDefined && defined[operand];
            operandValues.push_back(value[operand]);
        }
        value[i] = api;
        if (!operandsDefined) {
            defined[i] = false;
            continue;
        }
        int64_t scratch;
        try {
            scratch = QXExpression::evaluate(e->getOperator(), operandValues);
        } catch (const QXException&) {
            defined[i] = false;
            continue;
        }
        if (scratch != api) mismatch(e, api, scratch);
    }
    return 0;
}
