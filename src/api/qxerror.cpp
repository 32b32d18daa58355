#include "api/qxerror.h"

namespace QXERROR {
const std::string BadValue = "Bad argument value.";
const std::string ActiveViolatedConstraints = "One or more active constraints are violated.";
const std::string CannotModifyDag = "The dag cannot be modified because already init.";
const std::string DagAlreadyInit =
    "You cannot modify the structure of the dag : Dag already initialized.";
const std::string DagMustBeInit = "The dag must be initialized.";
const std::string NeedDag = "A dag is needed.";
const std::string IncorrectNodeType = "Incorrect operator type.";
}  // namespace QXERROR
