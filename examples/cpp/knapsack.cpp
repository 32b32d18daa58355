// A small knapsack built through the C++ API: choose items of the largest
// total value whose total weight fits the capacity.
#include <quarrix/quarrix.h>
#include <quarrix/qxexception.h>
#include <quarrix/qxexpression.h>
#include <quarrix/qxmodel.h>
#include <quarrix/qxparam.h>
#include <quarrix/qxphase.h>

#include <iostream>
#include <vector>

int main() {
    const std::vector<int> weights = {10, 60, 30, 40, 30, 20, 20, 2};
    const std::vector<int> values = {1, 10, 15, 40, 60, 90, 100, 15};
    const int capacity = 102;

    Quarrix solver;
    QXModel* model = solver.getModel();
    try {
        std::vector<QXExpression*> take;
        QXExpression* weight = model->createExpression(QXOperator::Sum);
        QXExpression* value = model->createExpression(QXOperator::Sum);
        for (size_t i = 0; i < weights.size(); ++i) {
            QXExpression* x = model->createExpression(QXOperator::Bool);
            x->setName("x[" + std::to_string(i) + "]");
            take.push_back(x);
            weight->addOperand(model->createExpression(QXOperator::Prod, x, weights[i]));
            value->addOperand(model->createExpression(QXOperator::Prod, x, values[i]));
        }
        value->setName("value");
        model->addConstraint(model->createExpression(QXOperator::Leq, weight, capacity));
        model->addObjective(value, QXObjectiveDirection::Maximize);
        model->close();

        // A first solution given by hand: items 3, 5 and 6.
        for (int i : {3, 5, 6}) take[i]->setValue(1);
        std::cout << "weight " << weight->getValue() << " value " << value->getValue()
                  << std::endl;

        solver.getParam()->setVerbosity(0);
        solver.createPhase()->setTimeLimit(1);
        solver.solve();
        std::cout << "best value " << value->getValue() << std::endl;
    } catch (const QXException& e) {
        std::cerr << e.getMessage() << std::endl;
        return 1;
    }
    return 0;
}
