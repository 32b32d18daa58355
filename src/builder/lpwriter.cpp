#include "builder/lpwriter.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "api/kernelexception.h"

namespace {

const char* const kSource = "src/builder/lpwriter";

[[noreturn]] void fail(int line, const std::string& message) {
    throw KernelException(kSource, line, "write", message);
}

int64_t checkedMul(int64_t a, int64_t b) {
    int64_t r;
    if (__builtin_mul_overflow(a, b, &r)) fail(__LINE__, "A coefficient of the linear program exceeds 64 bits.");
    return r;
}

int64_t checkedAdd(int64_t a, int64_t b) {
    int64_t r;
    if (__builtin_add_overflow(a, b, &r)) fail(__LINE__, "A coefficient of the linear program exceeds 64 bits.");
    return r;
}

// LP names: letters, digits and underscores, not starting with a digit; the
// language's x[3][4] becomes x_3__4_.
std::string lpName(const std::string& name) {
    std::string s;
    for (char c : name) {
        const bool keep = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        s += keep ? c : '_';
    }
    if (s.empty() || (s[0] >= '0' && s[0] <= '9')) s = "x" + s;
    return s;
}

bool isComparison(QXOperator op) {
    return op == QXOperator::Leq || op == QXOperator::Lt || op == QXOperator::Geq || op == QXOperator::Gt ||
           op == QXOperator::Eq || op == QXOperator::Neq;
}

// Operators whose value a column stands for when used as a value: the
// conjunctions (and, min, product: all operands 1), disjunctions (or, max)
// and parities (xor, and == or != between two booleans).
enum class Logic { None, Conjunction, Disjunction, Parity, Equivalence };

}  // namespace

LpWriter::LpWriter(const ModelGraph& model_, std::ostream* out_) : model(model_), out(*out_) {
    if (!model.isClosed()) throw KernelException(kSource, __LINE__, "LpWriter", "The model must be closed.");
    if (model.getNbObjectives() != 1)
        throw KernelException(kSource, __LINE__, "LpWriter",
                              "The LP format holds one objective; this model has " +
                                  std::to_string(model.getNbObjectives()) + ".");
}

std::string LpWriter::exprLabel(int32_t expr) const {
    const std::string* name = model.getName(expr);
    const std::string op = getOperatorInfo(model.getExpression(expr).getOperator()).name;
    if (name) return "'" + *name + "' (" + op + ", expression " + std::to_string(expr) + ")";
    return "expression " + std::to_string(expr) + " (" + op + ")";
}

// Orders the reachable expressions operands first (an explicit stack: the
// language builds sums as long chains), counts their users, and decides
// which are booleans and which need a column of their own.
void LpWriter::classify() {
    const int n = model.getNbExpressions();
    reached.assign(n, 0);
    boolean.assign(n, 0);
    usedAsValue.assign(n, 0);
    nbParents.assign(n, 0);
    memo.resize(n);
    decisionColumn.assign(n, -1);

    std::vector<int32_t> roots;
    for (int i = 0; i < model.getNbConstraints(); ++i) roots.push_back(model.getConstraint(i).getIndex());
    roots.push_back(model.getObjective(0).getIndex());
    usedAsValue[model.getObjective(0).getIndex()] = 1;

    std::vector<std::pair<int32_t, int>> stack;  // expression, next operand
    for (int32_t root : roots) {
        if (reached[root]) continue;
        reached[root] = 1;
        stack.push_back({root, 0});
        while (!stack.empty()) {
            auto& [expr, next] = stack.back();
            ModelExpr e = model.getExpression(expr);
            if (next < e.getNbOperands()) {
                int32_t operand = e.getOperand(next++).getIndex();
                ++nbParents[operand];
                usedAsValue[operand] = 1;
                if (!reached[operand]) {
                    reached[operand] = 1;
                    stack.push_back({operand, 0});
                }
                continue;
            }
            order.push_back(expr);
            stack.pop_back();
        }
    }

    for (int32_t expr : order) {
        ModelExpr e = model.getExpression(expr);
        const QXOperator op = e.getOperator();
        const bool allBoolean = allBooleanOperands(e);
        switch (op) {
            case QXOperator::Bool:
            case QXOperator::And:
            case QXOperator::Or:
            case QXOperator::Xor:
            case QXOperator::Not:
                boolean[expr] = 1;
                break;
            case QXOperator::Const:
                boolean[expr] = e.getValue() == 0 || e.getValue() == 1;
                break;
            case QXOperator::Min:
            case QXOperator::Max:
            case QXOperator::Prod:
                boolean[expr] = allBoolean;
                break;
            default:
                boolean[expr] = isComparison(op);
        }
    }
}

namespace {

// The logic an expression computes when its operands are booleans.
Logic logicOf(ModelExpr e, bool allBoolean) {
    switch (e.getOperator()) {
        case QXOperator::And: return Logic::Conjunction;
        case QXOperator::Or: return Logic::Disjunction;
        case QXOperator::Xor: return Logic::Parity;
        case QXOperator::Min: return allBoolean && e.getNbOperands() > 1 ? Logic::Conjunction : Logic::None;
        case QXOperator::Max: return allBoolean && e.getNbOperands() > 1 ? Logic::Disjunction : Logic::None;
        case QXOperator::Neq: return allBoolean ? Logic::Parity : Logic::None;
        case QXOperator::Eq: return allBoolean ? Logic::Equivalence : Logic::None;
        default: return Logic::None;
    }
}

}  // namespace

// The first expression, in the model's order, that the writer cannot put in
// linear form where it is used.
void LpWriter::checkLinear() const {
    int32_t first = -1;
    std::string why;
    for (int32_t expr : order) {
        ModelExpr e = model.getExpression(expr);
        const QXOperator op = e.getOperator();
        const bool allBoolean = allBooleanOperands(e);
        std::string problem;
        switch (op) {
            case QXOperator::Bool:
            case QXOperator::Const:
            case QXOperator::Sum:
            case QXOperator::Not:
            case QXOperator::And:
            case QXOperator::Or:
            case QXOperator::Xor:
                break;
            case QXOperator::Prod: {
                const Product p = flatten(expr);
                bool booleans = true;
                for (int32_t f : p.factors) booleans = booleans && isBoolean(f);
                if (p.factors.size() > 1 && !booleans) problem = "a product of non-boolean factors";
                break;
            }
            case QXOperator::Min:
            case QXOperator::Max:
                if (e.getNbOperands() > 1 && !allBoolean) problem = "a minimum or maximum over integers";
                break;
            case QXOperator::Eq:
            case QXOperator::Neq:
                if (usedAsValue[expr] && !allBoolean) problem = "a comparison of integers used as a value";
                else if (op == QXOperator::Neq && !allBoolean) problem = "!= between integers";
                break;
            case QXOperator::Leq:
            case QXOperator::Lt:
            case QXOperator::Geq:
            case QXOperator::Gt:
                if (usedAsValue[expr]) problem = "a comparison used as a value";
                break;
            default:
                problem = "the operator " + std::string(getOperatorInfo(op).name);
        }
        if (!problem.empty() && (first < 0 || expr < first)) {
            first = expr;
            why = problem;
        }
    }
    if (first >= 0)
        fail(__LINE__, "The model is not linear: " + exprLabel(first) + " is " + why + ".");
}

bool LpWriter::allBooleanOperands(ModelExpr e) const {
    for (int i = 0; i < e.getNbOperands(); ++i)
        if (!isBoolean(e.getOperand(i).getIndex())) return false;
    return true;
}

// A product with its nested products multiplied out (a * x * y is built as
// prod(prod(a, x), y)): the product of its constants and its other factors.
LpWriter::Product LpWriter::flatten(int32_t expr) const {
    Product p;
    std::vector<int32_t> stack = {expr};
    while (!stack.empty()) {
        ModelExpr e = model.getExpression(stack.back());
        stack.pop_back();
        for (int i = 0; i < e.getNbOperands(); ++i) {
            ModelExpr operand = e.getOperand(i);
            if (operand.getOperator() == QXOperator::Const) p.constant = checkedMul(p.constant, operand.getValue());
            else if (operand.getOperator() == QXOperator::Prod) stack.push_back(operand.getIndex());
            else p.factors.push_back(operand.getIndex());
        }
    }
    return p;
}

std::string LpWriter::uniqueName(const std::string& wanted, std::set<std::string>& taken) {
    std::string name = lpName(wanted);
    for (int k = 1; taken.count(name); ++k) name = lpName(wanted) + "_" + std::to_string(k);
    taken.insert(name);
    return name;
}

int32_t LpWriter::newColumn(const std::string& name) {
    columnNames.push_back(uniqueName(name, columnNamesTaken));
    return static_cast<int32_t>(columnNames.size()) - 1;
}

void LpWriter::addRow(const std::string& name, Linear lhs, Sense sense) {
    bool constant = true;
    for (const auto& term : lhs.terms) constant = constant && term.second == 0;
    if (constant) {  // nothing to write when it holds whatever the columns
        const int64_t c = lhs.constant;
        if ((sense == Sense::Leq && c <= 0) || (sense == Sense::Geq && c >= 0) || (sense == Sense::Eq && c == 0))
            return;
    }
    rows.push_back({uniqueName(name, rowNamesTaken), std::move(lhs), sense});
}

void LpWriter::expandInto(int32_t root, int64_t rootScale, Linear& target) const {
    std::vector<std::pair<int32_t, int64_t>> stack = {{root, rootScale}};
    while (!stack.empty()) {
        auto [expr, scale] = stack.back();
        stack.pop_back();
        if (scale == 0) continue;
        if (decisionColumn[expr] >= 0) {
            int64_t& c = target.terms[decisionColumn[expr]];
            c = checkedAdd(c, scale);
            continue;
        }
        ModelExpr e = model.getExpression(expr);
        if (memo[expr]) {
            // A boolean operator's column, or a form shared by several users;
            // a product's column stands for its non-constant factors only.
            const int64_t factor =
                e.getOperator() == QXOperator::Prod ? checkedMul(scale, flatten(expr).constant) : scale;
            for (const auto& [column, coefficient] : memo[expr]->terms) {
                int64_t& c = target.terms[column];
                c = checkedAdd(c, checkedMul(factor, coefficient));
            }
            target.constant = checkedAdd(target.constant, checkedMul(factor, memo[expr]->constant));
            continue;
        }
        switch (e.getOperator()) {
            case QXOperator::Const:
                target.constant = checkedAdd(target.constant, checkedMul(scale, e.getValue()));
                break;
            case QXOperator::Sum:
                for (int i = 0; i < e.getNbOperands(); ++i) stack.push_back({e.getOperand(i).getIndex(), scale});
                break;
            case QXOperator::Prod: {
                // One factor at most: more have a column.
                const Product p = flatten(expr);
                const int64_t factor = checkedMul(scale, p.constant);
                if (p.factors.empty()) target.constant = checkedAdd(target.constant, factor);
                else stack.push_back({p.factors[0], factor});
                break;
            }
            case QXOperator::Not:
                target.constant = checkedAdd(target.constant, scale);
                stack.push_back({e.getOperand(0).getIndex(), checkedMul(scale, -1)});
                break;
            default:
                // min or max of one operand; checkLinear refused the others.
                stack.push_back({e.getOperand(0).getIndex(), scale});
        }
    }
}

LpWriter::Linear LpWriter::form(int32_t expr) const {
    Linear f;
    expandInto(expr, 1, f);
    return f;
}

void LpWriter::addScaled(Linear& target, const Linear& source, int64_t scale) {
    for (const auto& [column, coefficient] : source.terms) {
        int64_t& c = target.terms[column];
        c = checkedAdd(c, checkedMul(scale, coefficient));
    }
    target.constant = checkedAdd(target.constant, checkedMul(scale, source.constant));
}

// A column y for a boolean operator used as a value, tied to its operands'
// forms f_i by the standard rows; the memo then hands y on to its users.
void LpWriter::makeAuxiliary(int32_t expr) {
    ModelExpr e = model.getExpression(expr);
    std::vector<Linear> operands;
    if (e.getOperator() == QXOperator::Prod) {
        // The column stands for the non-constant factors; the constant ones
        // scale it where it is used (expandInto).
        for (int32_t factor : flatten(expr).factors) operands.push_back(form(factor));
    } else {
        for (int i = 0; i < e.getNbOperands(); ++i) operands.push_back(form(e.getOperand(i).getIndex()));
    }
    const std::string base = "qx_" + std::string(getOperatorInfo(e.getOperator()).name) + std::to_string(expr);
    auto column = [](int32_t c, int64_t coefficient) {
        Linear f;
        f.terms[c] = coefficient;
        return f;
    };
    const int64_t k = static_cast<int64_t>(operands.size());
    Linear value;
    switch (logicOf(e, true)) {
        case Logic::None:  // a product of booleans
        case Logic::Conjunction: {
            const int32_t y = newColumn(base);
            Linear all = column(y, 1);
            for (const Linear& f : operands) {
                Linear below = column(y, 1);  // y <= f_i
                addScaled(below, f, -1);
                addRow(base, below, Sense::Leq);
                addScaled(all, f, -1);
            }
            all.constant = checkedAdd(all.constant, k - 1);  // y >= sum f_i - (k - 1)
            addRow(base, all, Sense::Geq);
            value = column(y, 1);
            break;
        }
        case Logic::Disjunction: {
            const int32_t y = newColumn(base);
            Linear all = column(y, 1);
            for (const Linear& f : operands) {
                Linear above = column(y, 1);  // y >= f_i
                addScaled(above, f, -1);
                addRow(base, above, Sense::Geq);
                addScaled(all, f, -1);
            }
            addRow(base, all, Sense::Leq);  // y <= sum f_i
            value = column(y, 1);
            break;
        }
        case Logic::Parity:
        case Logic::Equivalence: {
            // xor(f_0, ..., f_k-1) as a chain of two-operand parities.
            Linear acc = operands[0];
            for (size_t i = 1; i < operands.size(); ++i) {
                const int32_t t = newColumn(i + 1 == operands.size() ? base : base + "_" + std::to_string(i));
                const Linear& f = operands[i];
                Linear r1 = column(t, 1), r2 = column(t, 1), r3 = column(t, 1), r4 = column(t, 1);
                addScaled(r1, acc, -1), addScaled(r1, f, -1);  // t <= a + b
                addScaled(r2, acc, -1), addScaled(r2, f, 1);   // t >= a - b
                addScaled(r3, acc, 1), addScaled(r3, f, -1);   // t >= b - a
                addScaled(r4, acc, 1), addScaled(r4, f, 1);    // t <= 2 - a - b
                r4.constant = checkedAdd(r4.constant, -2);
                addRow(base, r1, Sense::Leq);
                addRow(base, r2, Sense::Geq);
                addRow(base, r3, Sense::Geq);
                addRow(base, r4, Sense::Leq);
                acc = column(t, 1);
            }
            value = acc;
            if (e.getOperator() == QXOperator::Eq) {  // 1 - xor
                Linear equal;
                equal.constant = 1;
                addScaled(equal, acc, -1);
                value = equal;
            }
            break;
        }
    }
    memo[expr] = std::make_unique<Linear>(std::move(value));
}

void LpWriter::addConstraint(int rank) {
    const int32_t expr = model.getConstraint(rank).getIndex();
    ModelExpr e = model.getExpression(expr);
    const std::string* given = model.getName(expr);
    const std::string name = given ? *given : "c" + std::to_string(rank);
    auto operandForm = [&](int i) { return form(e.getOperand(i).getIndex()); };
    auto atLeastOne = [&](Linear f) {  // f >= 1
        f.constant = checkedAdd(f.constant, -1);
        addRow(name, std::move(f), Sense::Geq);
    };
    switch (e.getOperator()) {
        case QXOperator::Leq:
        case QXOperator::Lt:
        case QXOperator::Geq:
        case QXOperator::Gt:
        case QXOperator::Eq: {
            Linear lhs = operandForm(0);
            addScaled(lhs, operandForm(1), -1);
            const QXOperator op = e.getOperator();
            // Over the integers, a < b is a - b <= -1.
            if (op == QXOperator::Lt) lhs.constant = checkedAdd(lhs.constant, 1);
            if (op == QXOperator::Gt) lhs.constant = checkedAdd(lhs.constant, -1);
            const Sense sense = op == QXOperator::Eq                              ? Sense::Eq
                                : op == QXOperator::Leq || op == QXOperator::Lt ? Sense::Leq
                                                                                : Sense::Geq;
            addRow(name, std::move(lhs), sense);
            return;
        }
        case QXOperator::Neq: {  // between booleans: exactly one is 1
            Linear lhs = operandForm(0);
            addScaled(lhs, operandForm(1), 1);
            lhs.constant = checkedAdd(lhs.constant, -1);
            addRow(name, std::move(lhs), Sense::Eq);
            return;
        }
        case QXOperator::And:
            for (int i = 0; i < e.getNbOperands(); ++i) atLeastOne(operandForm(i));
            return;
        case QXOperator::Or: {
            Linear any;
            for (int i = 0; i < e.getNbOperands(); ++i) addScaled(any, operandForm(i), 1);
            atLeastOne(std::move(any));
            return;
        }
        case QXOperator::Xor:
            if (e.getNbOperands() == 2) {
                Linear lhs = operandForm(0);
                addScaled(lhs, operandForm(1), 1);
                lhs.constant = checkedAdd(lhs.constant, -1);
                addRow(name, std::move(lhs), Sense::Eq);
                return;
            }
            if (e.getNbOperands() > 2 && !memo[expr]) makeAuxiliary(expr);
            break;
        default:
            break;
    }
    atLeastOne(form(expr));  // a decision, a not, or a column's value
}

void LpWriter::translate() {
    for (int i = 0; i < model.getNbDecisions(); ++i) {
        const int32_t expr = model.getDecision(i).getIndex();
        if (!reached[expr]) continue;
        const std::string* name = model.getName(expr);
        decisionColumn[expr] = newColumn(name ? *name : "b" + std::to_string(i));
    }
    for (int32_t expr : order) {
        ModelExpr e = model.getExpression(expr);
        const QXOperator op = e.getOperator();
        const bool logic = op == QXOperator::Prod ? flatten(expr).factors.size() > 1
                                                  : e.getNbOperands() > 1 && logicOf(e, allBooleanOperands(e)) != Logic::None;
        if (usedAsValue[expr] && logic) makeAuxiliary(expr);
        else if (op == QXOperator::Sum && nbParents[expr] > 1) memo[expr] = std::make_unique<Linear>(form(expr));
    }
    for (int i = 0; i < model.getNbConstraints(); ++i) addConstraint(i);
    objective = form(model.getObjective(0).getIndex());
}

void LpWriter::writeLinear(const Linear& f, std::vector<uint8_t>& used) {
    int written = 0;
    for (const auto& [column, coefficient] : f.terms) {
        if (coefficient == 0) continue;
        if (written > 0 && written % 8 == 0) out << "\n  ";
        out << (coefficient < 0 ? " - " : " + ");
        if (coefficient != 1 && coefficient != -1) {
            // The magnitude of INT64_MIN does not fit a signed integer.
            out << (coefficient < 0 ? 0 - static_cast<uint64_t>(coefficient) : static_cast<uint64_t>(coefficient))
                << " ";
        }
        out << columnNames[column];
        used[column] = 1;
        ++written;
    }
    if (written == 0) out << " 0 " << columnNames[oneColumn];
}

void LpWriter::write() {
    classify();
    checkLinear();
    rowNamesTaken.insert("obj");
    translate();

    // Constants that no column carries (a constant objective term, a row
    // without columns) go on a column fixed to 1.
    auto needsOne = [](const Linear& f) {
        for (const auto& term : f.terms)
            if (term.second != 0) return false;
        return true;
    };
    bool one = objective.constant != 0 || needsOne(objective);
    for (const Row& row : rows) one = one || needsOne(row.lhs);
    if (one) oneColumn = newColumn("qx_one");
    auto carryConstant = [&](Linear& f) {
        if (oneColumn >= 0 && (needsOne(f) || &f == &objective)) {
            f.terms[oneColumn] = checkedAdd(f.terms[oneColumn], f.constant);
            f.constant = 0;
        }
    };
    carryConstant(objective);
    for (Row& row : rows) carryConstant(row.lhs);

    std::vector<uint8_t> used(columnNames.size(), 0);
    out << "\\ Written by Quarrix: " << model.getNbDecisions() << " decisions, " << columnNames.size()
        << " columns, " << rows.size() << " rows\n";
    out << (model.getObjectiveDirection(0) == 1 ? "Maximize" : "Minimize") << "\n obj:";
    writeLinear(objective, used);
    out << "\nSubject To\n";
    for (const Row& row : rows) {
        out << " " << row.name << ":";
        writeLinear(row.lhs, used);
        out << (row.sense == Sense::Leq ? " <= " : row.sense == Sense::Geq ? " >= " : " = ");
        // lhs + constant (sense) 0, written as lhs (sense) -constant.
        if (row.lhs.constant == INT64_MIN) out << "9223372036854775808\n";
        else out << -row.lhs.constant << "\n";
    }
    if (oneColumn >= 0) out << "Bounds\n " << columnNames[oneColumn] << " = 1\n";
    out << "Binaries\n";
    int written = 0;
    for (size_t c = 0; c < columnNames.size(); ++c) {
        if (!used[c] || static_cast<int32_t>(c) == oneColumn) continue;
        out << (written % 8 == 0 ? (written ? "\n " : " ") : " ") << columnNames[c];
        ++written;
    }
    out << "\nEnd\n";
}
