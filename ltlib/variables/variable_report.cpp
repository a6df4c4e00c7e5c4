#include "ltlib/variables/variable_report.h"

#include "ltlib/variables/variable_manager_impl.h"

namespace LTLib {

std::vector<VariableReport> reportVariables() {
  QSConfigVariableManagerImpl* const manager = QSConfigVariableManagerImpl::instance();
  return manager != nullptr ? manager->report() : std::vector<VariableReport>();
}

QSResult traceExpansion(std::string& text, std::vector<ExpansionStep>& steps) {
  QSConfigVariableManagerImpl* const manager = QSConfigVariableManagerImpl::instance();
  return manager != nullptr ? manager->expand(text, &steps) : kFailure;
}

}  // namespace LTLib
