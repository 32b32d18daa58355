// The LP writer: the written program is read back by a small reader of the
// format, and every 0-1 assignment of its columns is checked against the
// model itself. For each assignment of the decisions, some assignment of the
// auxiliary columns satisfies the rows exactly when the model's constraints
// hold, and every such completion gives the model's objective value: the
// linearisation is exact, not merely right at the optimum. Non-linear models
// are refused with the first non-linear expression named.

#include "api/quarrix.h"
#include "api/qxexception.h"
#include "api/qxexpression.h"
#include "api/qxlpwriter.h"
#include "api/qxmodel.h"
#include "api/qxsolution.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// A linear program as the writer writes it.
struct LpProgram {
    struct Row {
        std::string name;
        std::map<std::string, int64_t> terms;
        std::string sense;
        int64_t rhs = 0;
    };
    bool maximize = false;
    std::map<std::string, int64_t> objective;
    std::vector<Row> rows;
    std::map<std::string, int64_t> fixed;  // Bounds: name = value
    std::vector<std::string> binaries;
};

// Reads the sections, then the terms " + 3 x" of the objective and rows.
LpProgram readLp(const std::string& text) {
    LpProgram lp;
    std::istringstream lines(text);
    std::string section;
    std::vector<std::string> tokens;  // of the objective and the rows
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '\\') continue;
        if (line[0] != ' ') {
            section = line;
            if (line == "Maximize") lp.maximize = true;
            continue;
        }
        std::istringstream words(line);
        std::vector<std::string> ws;
        for (std::string w; words >> w;) ws.push_back(w);
        if (section == "Bounds") {
            EXPECT_EQ(ws.size(), 3u);
            EXPECT_EQ(ws[1], "=");
            lp.fixed[ws[0]] = std::stoll(ws[2]);
        } else if (section == "Binaries") {
            lp.binaries.insert(lp.binaries.end(), ws.begin(), ws.end());
        } else {
            tokens.insert(tokens.end(), ws.begin(), ws.end());
        }
    }
    // Split the token stream at "name:" labels.
    std::vector<std::pair<std::string, std::vector<std::string>>> items;
    for (const std::string& t : tokens) {
        if (t.back() == ':') items.push_back({t.substr(0, t.size() - 1), {}});
        else if (!items.empty()) items.back().second.push_back(t);
        else ADD_FAILURE() << "term before any label: " << t;
    }
    for (auto& [name, ts] : items) {
        std::map<std::string, int64_t> terms;
        size_t i = 0;
        std::string sense;
        int64_t rhs = 0;
        while (i < ts.size()) {
            if (ts[i] == "<=" || ts[i] == ">=" || ts[i] == "=") {
                sense = ts[i];
                rhs = std::stoll(ts.at(i + 1));
                i += 2;
                continue;
            }
            int64_t sign = 1;
            if (ts[i] == "+" || ts[i] == "-") sign = ts[i++] == "-" ? -1 : 1;
            int64_t coefficient = 1;
            if (i < ts.size() && (isdigit(static_cast<unsigned char>(ts[i][0])))) coefficient = std::stoll(ts[i++]);
            terms[ts.at(i++)] += sign * coefficient;
        }
        if (name == "obj") lp.objective = terms;
        else lp.rows.push_back({name, terms, sense, rhs});
    }
    return lp;
}

// The model's value at one assignment of its decisions: its objective, or
// nothing when a constraint is violated.
std::optional<int64_t> modelValue(QXModel* model, uint64_t decisions) {
    QXSolution* solution = model->getQuarrix()->getSolution();
    for (int i = 0; i < model->getNbDecisions(); ++i) solution->setValue(model->getDecision(i), (decisions >> i) & 1);
    for (int c = 0; c < model->getNbConstraints(); ++c)
        if (solution->getValue(model->getConstraint(c)) != 1) return std::nullopt;
    return solution->getValue(model->getObjective(0));
}

// Checks the written program against the model over every assignment. The
// decisions are the columns named after them (d0, d1, ...).
void expectExact(QXModel* model, const std::string& text) {
    const LpProgram lp = readLp(text);
    std::vector<std::string> decisionNames, auxiliaries;
    for (int i = 0; i < model->getNbDecisions(); ++i) decisionNames.push_back(model->getDecision(i)->getName());
    for (const std::string& b : lp.binaries)
        if (b.rfind("qx_", 0) == 0) auxiliaries.push_back(b);
    ASSERT_LE(auxiliaries.size(), 14u) << "too many columns to enumerate";
    const size_t nd = decisionNames.size();
    for (uint64_t d = 0; d < (uint64_t(1) << nd); ++d) {
        const std::optional<int64_t> expected = modelValue(model, d);
        bool anyFeasible = false;
        for (uint64_t a = 0; a < (uint64_t(1) << auxiliaries.size()); ++a) {
            std::map<std::string, int64_t> value = lp.fixed;
            for (size_t i = 0; i < nd; ++i) value[decisionNames[i]] = (d >> i) & 1;
            for (size_t i = 0; i < auxiliaries.size(); ++i) value[auxiliaries[i]] = (a >> i) & 1;
            auto evaluate = [&](const std::map<std::string, int64_t>& terms) {
                int64_t sum = 0;
                for (const auto& [name, coefficient] : terms) {
                    auto v = value.find(name);
                    // A decision the program does not use has no column.
                    sum += coefficient * (v == value.end() ? 0 : v->second);
                }
                return sum;
            };
            bool feasible = true;
            for (const LpProgram::Row& row : lp.rows) {
                const int64_t lhs = evaluate(row.terms);
                feasible = feasible && (row.sense == "<=" ? lhs <= row.rhs : row.sense == ">=" ? lhs >= row.rhs
                                                                                            : lhs == row.rhs);
            }
            if (!feasible) continue;
            anyFeasible = true;
            ASSERT_TRUE(expected.has_value()) << "decisions " << d << ": the rows hold, the model's constraints do not\n"
                                              << text;
            ASSERT_EQ(evaluate(lp.objective), *expected) << "decisions " << d << ", columns " << a << "\n" << text;
        }
        ASSERT_EQ(anyFeasible, expected.has_value()) << "decisions " << d << ": feasible in the model only\n" << text;
    }
}

std::string writeLp(QXModel* model) {
    std::ostringstream out;
    QXLpWriter::write(model, out);
    return out.str();
}

std::string errorOf(QXModel* model) {
    try {
        writeLp(model);
    } catch (const QXException& e) {
        return e.getExplanation();
    }
    return "";
}

// Small models built the way the language builds them.
struct Fixture {
    Quarrix solver;
    QXModel* m = solver.getModel();
    std::vector<QXExpression*> x;

    explicit Fixture(int n) {
        for (int i = 0; i < n; ++i) {
            x.push_back(m->createExpression(QXOperator::Bool));
            x.back()->setName("d" + std::to_string(i));
        }
    }
    QXExpression* op(QXOperator o, std::vector<QXExpression*> operands) {
        QXExpression* e = m->createExpression(o);
        for (QXExpression* operand : operands) e->addOperand(operand);
        return e;
    }
    QXExpression* c(int64_t v) { return m->createConstant(v); }
};

}  // namespace

TEST(LpWriter, KnapsackIsWrittenAsOneRow) {
    Fixture f(3);
    // The language's a + b + c: a chain of two-operand sums.
    QXExpression* weight = f.op(QXOperator::Sum, {f.op(QXOperator::Sum, {f.op(QXOperator::Prod, {f.x[0], f.c(3)}),
                                                                         f.op(QXOperator::Prod, {f.x[1], f.c(4)})}),
                                                  f.op(QXOperator::Prod, {f.x[2], f.c(5)})});
    QXExpression* value = f.op(QXOperator::Sum, {f.op(QXOperator::Prod, {f.x[0], f.c(4)}),
                                                 f.op(QXOperator::Prod, {f.x[1], f.c(5)}), f.x[2]});
    QXExpression* fits = f.op(QXOperator::Leq, {weight, f.c(8)});
    fits->setName("capacity");
    f.m->addConstraint(fits);
    f.m->addObjective(value, QXObjectiveDirection::Maximize);
    f.m->close();
    const std::string text = writeLp(f.m);
    EXPECT_NE(text.find("Maximize\n obj: + 4 d0 + 5 d1 + d2\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" capacity: + 3 d0 + 4 d1 + 5 d2 <= 8\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Binaries\n d0 d1 d2\nEnd\n"), std::string::npos) << text;
    expectExact(f.m, text);
}

TEST(LpWriter, LogicOperatorsAreLinearisedExactly) {
    // Each operator the writer linearises, as a value in the objective and
    // as a constraint, with negative scales and constants around it.
    using O = QXOperator;
    const std::vector<std::pair<const char*, O>> ops = {{"and", O::And}, {"or", O::Or}, {"xor", O::Xor},
                                                        {"min", O::Min}, {"max", O::Max}, {"prod", O::Prod},
                                                        {"eq", O::Eq},   {"neq", O::Neq}};
    for (const auto& [label, o] : ops) {
        for (int arity : {2, 3}) {
            if ((o == O::Eq || o == O::Neq) && arity == 3) continue;
            SCOPED_TRACE(std::string(label) + " of " + std::to_string(arity));
            Fixture f(4);
            std::vector<QXExpression*> operands(f.x.begin(), f.x.begin() + arity);
            operands[0] = f.op(O::Not, {f.x[0]});  // not inside
            QXExpression* value = f.op(o, operands);
            QXExpression* objective = f.op(O::Sum, {f.op(O::Prod, {value, f.c(-3)}), f.x[3], f.c(7)});
            // Only boolean operators can be constrained: min, max and products
            // are values only.
            const bool constrainable = o != O::Min && o != O::Max && o != O::Prod;
            f.m->addConstraint(f.op(constrainable ? o : O::Or, {f.x[1], f.x[3]}));
            f.m->addObjective(objective, QXObjectiveDirection::Minimize);
            f.m->close();
            expectExact(f.m, writeLp(f.m));
        }
    }
}

TEST(LpWriter, NestedProductsAreMultipliedOut) {
    // 3 * x0 * x1 as the language builds it, prod(prod(x0, 3), x1), and a
    // product of three booleans with a negative constant inside.
    using O = QXOperator;
    Fixture f(4);
    QXExpression* a = f.op(O::Prod, {f.op(O::Prod, {f.x[0], f.c(3)}), f.x[1]});
    QXExpression* b = f.op(O::Prod, {f.x[2], f.op(O::Prod, {f.x[0], f.c(-2)}), f.x[3]});
    f.m->addConstraint(f.op(O::Leq, {f.op(O::Sum, {a, b}), f.c(1)}));
    f.m->addObjective(f.op(O::Sum, {a, b, f.x[3]}), QXObjectiveDirection::Maximize);
    f.m->close();
    const std::string text = writeLp(f.m);
    EXPECT_NE(text.find("+ 3 qx_prod"), std::string::npos) << text;
    EXPECT_NE(text.find("- 2 qx_prod"), std::string::npos) << text;
    expectExact(f.m, text);
}

TEST(LpWriter, RandomLinearAndLogicModelsAreExact) {
    using O = QXOperator;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
        Fixture f(pick(2, 6));
        std::vector<QXExpression*> booleans(f.x.begin(), f.x.end());
        std::vector<QXExpression*> integers;
        auto anyBoolean = [&] { return booleans[pick(0, booleans.size() - 1)]; };
        for (int i = 0, n = pick(2, 5); i < n; ++i) {
            const O logic[] = {O::And, O::Or, O::Xor, O::Not, O::Eq, O::Neq};
            const O o = logic[pick(0, 5)];
            const int arity = o == O::Not ? 1 : (o == O::Eq || o == O::Neq) ? 2 : pick(1, 3);
            std::vector<QXExpression*> operands;
            for (int k = 0; k < arity; ++k) operands.push_back(anyBoolean());
            if (o == O::Eq || o == O::Neq || o == O::Xor) {
                if (operands.size() > 1 && operands[0] == operands[1]) continue;  // the model may fold it
            }
            booleans.push_back(f.op(o, operands));
        }
        for (int i = 0, n = pick(2, 4); i < n; ++i) {
            // Sums of scaled booleans, some shared by several users.
            QXExpression* s = f.op(O::Sum, {f.c(pick(-3, 3))});
            for (int k = 0, terms = pick(1, 4); k < terms; ++k)
                s->addOperand(pick(0, 1) ? anyBoolean() : f.op(O::Prod, {anyBoolean(), f.c(pick(-5, 5))}));
            if (!integers.empty() && pick(0, 1)) s->addOperand(integers[pick(0, integers.size() - 1)]);
            integers.push_back(s);
        }
        const O comparisons[] = {O::Leq, O::Lt, O::Geq, O::Gt, O::Eq};
        for (int i = 0, n = pick(1, 3); i < n; ++i) {
            QXExpression* lhs = integers[pick(0, integers.size() - 1)];
            f.m->addConstraint(f.op(comparisons[pick(0, 4)], {lhs, pick(0, 1) ? f.c(pick(-2, 4)) : integers[0]}));
        }
        if (pick(0, 1)) f.m->addConstraint(anyBoolean());
        QXExpression* objective = f.op(O::Sum, {integers.back()});
        objective->addOperand(f.op(O::Prod, {anyBoolean(), f.c(pick(-4, 4))}));
        f.m->addObjective(objective, pick(0, 1) ? QXObjectiveDirection::Maximize : QXObjectiveDirection::Minimize);
        f.m->close();
        expectExact(f.m, writeLp(f.m));
    }
}

TEST(LpWriter, RefusesNonLinearModelsNamingTheFirstExpression) {
    using O = QXOperator;
    {
        Fixture f(2);
        QXExpression* pick = f.op(O::Iif, {f.x[0], f.c(3), f.c(5)});
        pick->setName("cost");
        QXExpression* late = f.op(O::Abs, {f.op(O::Sum, {f.x[1], f.c(-1)})});
        f.m->addConstraint(f.op(O::Leq, {late, f.c(1)}));
        f.m->addObjective(pick, QXObjectiveDirection::Minimize);
        f.m->close();
        EXPECT_EQ(errorOf(f.m), "The model is not linear: 'cost' (iif, expression 4) is the operator iif.");
    }
    {
        // A comparison inside a sum: a soft constraint, not a row.
        Fixture f(2);
        QXExpression* soft = f.op(O::Leq, {f.op(O::Sum, {f.x[0], f.x[1]}), f.c(1)});
        f.m->addObjective(f.op(O::Sum, {soft, f.x[0]}), QXObjectiveDirection::Maximize);
        f.m->close();
        EXPECT_EQ(errorOf(f.m), "The model is not linear: expression 4 (leq) is a comparison used as a value.");
    }
    {
        Fixture f(2);
        QXExpression* s = f.op(O::Sum, {f.x[0], f.x[1]});
        f.m->addObjective(f.op(O::Prod, {s, s}), QXObjectiveDirection::Minimize);
        f.m->close();
        EXPECT_EQ(errorOf(f.m), "The model is not linear: expression 3 (prod) is a product of non-boolean factors.");
    }
    {
        // The first in the model's order, whichever the writer meets first.
        Fixture f(2);
        QXExpression* first = f.op(O::Mod, {f.x[0], f.c(2)});
        QXExpression* second = f.op(O::Div, {f.x[1], f.c(3)});
        f.m->addObjective(f.op(O::Sum, {second, first}), QXObjectiveDirection::Minimize);
        f.m->close();
        EXPECT_EQ(errorOf(f.m), "The model is not linear: expression 3 (mod) is the operator mod.");
    }
    {
        Fixture f(2);
        f.m->addObjective(f.x[0], QXObjectiveDirection::Minimize);
        f.m->addObjective(f.x[1], QXObjectiveDirection::Minimize);
        f.m->close();
        EXPECT_EQ(errorOf(f.m), "The LP format holds one objective; this model has 2.");
    }
    {
        Fixture f(1);
        f.m->addObjective(f.x[0], QXObjectiveDirection::Minimize);
        EXPECT_NE(errorOf(f.m), "");  // not closed: state Modeling
    }
}

TEST(LpWriter, LongChainsAndNamesThatAreNotLpNames) {
    // The language's s = s + w[i] * x[i] over many items: a chain as deep
    // as the items are many, written without recursion.
    Quarrix solver;
    QXModel* m = solver.getModel();
    const int n = 200000;
    QXExpression* s = m->createConstant(0);
    for (int i = 0; i < n; ++i) {
        QXExpression* x = m->createExpression(QXOperator::Bool);
        x->setName("x[" + std::to_string(i) + "]");
        s = m->createExpression(QXOperator::Sum, s, m->createExpression(QXOperator::Prod, x, 1 + i % 7));
    }
    m->addConstraint(m->createExpression(QXOperator::Leq, s, 1000));
    m->addObjective(s, QXObjectiveDirection::Maximize);
    m->close();
    const std::string text = writeLp(m);
    EXPECT_NE(text.find(" + x_0_ + 2 x_1_"), std::string::npos);
    EXPECT_NE(text.find("x_199999_"), std::string::npos);
    EXPECT_EQ(text.find('['), std::string::npos);
}
