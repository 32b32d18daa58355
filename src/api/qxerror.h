#pragma once

#include <string>

// Message texts shared by the API and the kernel, defined once.
namespace QXERROR {
extern const std::string BadValue;
extern const std::string ActiveViolatedConstraints;
extern const std::string CannotModifyDag;
extern const std::string DagAlreadyInit;
extern const std::string DagMustBeInit;
extern const std::string NeedDag;
extern const std::string IncorrectNodeType;
}  // namespace QXERROR
