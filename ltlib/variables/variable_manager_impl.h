// The one kind of variable manager, and how it comes and goes.
#ifndef LTLIB_VARIABLES_VARIABLE_MANAGER_IMPL_H
#define LTLIB_VARIABLES_VARIABLE_MANAGER_IMPL_H

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ltlib/variables/first_use_load.h"
#include "ltlib/variables/name_hash.h"
#include "ltlib/variables/table_lock.h"
#include "ltlib/variables/variable_manager.h"
#include "ltlib/variables/variable_report.h"

namespace LTLib::detail {
/// The library's own variables.
extern QSREGISTRYVARIABLE s_defaultVariables[];
}  // namespace LTLib::detail

class QSConfigVariableManagerImpl final : public QSConfigVariableManager {
 public:
  struct Variable {
    std::string value;
    LTLib::VariableOrigin origin;
  };
  // A sorted map takes twice as long for the few variables of a plain process, and six times as
  // long for 1,000.
  using Variables =
      std::unordered_map<std::string, Variable, LTLib::detail::NameHash, std::equal_to<>>;

  explicit QSConfigVariableManagerImpl(LTLib::detail::FirstUseSources sources = {});

  /// As GetInstance, for those who need more than the public class.
  static QSConfigVariableManagerImpl* instance();

  QSResult AddVariable(const std::string& name, const std::string& value) override;
  QSResult AddVariables(QSREGISTRYVARIABLE* table) override;
  QSResult SetVariable(const std::string& name, const std::string& value) override;
  QSResult RemoveVariable(const std::string& name) override;
  QSResult ExpandString(std::string& text) override;
  QSResult IsVariableDefined(const std::string& name, bool& defined) override;
  QSResult AddResolver(QSVariableResolver* resolver) override;
  QSResult RemoveResolver(QSVariableResolver* resolver) override;

  /// ExpandString that notes its replacements where `steps` is not null.
  QSResult expand(std::string& text, std::vector<LTLib::ExpansionStep>* steps);

  std::vector<LTLib::VariableReport> report();

  /// In the child of a fork: frees the table from readers that do not exist there.
  void forgetThreads() { m_lock.forgetThreads(); }

 private:
  class FixedSource;
  class ResolvingSource;

  void loadAtFirstUse();
  void readConfigFile();
  QSResult add(const std::string& name, const std::string& value, LTLib::VariableOrigin origin);

  // Both require that the caller writes.
  QSResult define(std::string_view name, std::string_view value, LTLib::VariableOrigin origin);
  QSResult change(const std::string& name, const std::string& value, LTLib::VariableOrigin origin);

  const LTLib::detail::FirstUseSources m_sources;

  // Guards the resolvers and the variables; never held while a resolver runs or anything outside
  // the table is read.
  LTLib::detail::TableLock m_lock;
  std::vector<QSVariableResolver*> m_resolvers;
  Variables m_variables;

  std::atomic<bool> m_publicVariablesLoaded{false};
  std::atomic<bool> m_publicVariablesLoading{false};
  std::atomic<bool> m_configFilePending{true};
};

#endif  // LTLIB_VARIABLES_VARIABLE_MANAGER_IMPL_H
