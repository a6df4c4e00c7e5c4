#include "ltlib/variables/variable_manager_impl.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <utility>

#include "ltlib/platform/fork.h"
#include "ltlib/variables/expansion.h"

namespace {

using LTLib::VariableOrigin;
using LTLib::detail::TableLock;
using LTLib::Platform::SoleWork;

using ReadGuard = std::shared_lock<TableLock>;
using WriteGuard = std::unique_lock<TableLock>;

constexpr char kCurrentConfig[] = "CurrentConfig";

void clear(volatile void* flag) noexcept {
  static_cast<volatile std::atomic<bool>*>(flag)->store(false);
}

bool holdsMark(std::string_view text) {
  return text.find('%') != std::string_view::npos;
}

}  // namespace

// The table as it stands while the lock is held.
class QSConfigVariableManagerImpl::FixedSource final : public LTLib::detail::ReplacementSource {
 public:
  explicit FixedSource(const Variables& variables) : m_variables(variables) {}

  bool isFixed() const override { return true; }

  bool find(std::string_view name, std::string_view& replacement) override {
    const auto variable = m_variables.find(name);
    if (variable == m_variables.end()) {
      return false;
    }
    replacement = variable->second.value;
    return true;
  }

 private:
  const Variables& m_variables;
};

// The table and the resolvers as they stand at each replacement.
class QSConfigVariableManagerImpl::ResolvingSource final : public LTLib::detail::ReplacementSource {
 public:
  explicit ResolvingSource(QSConfigVariableManagerImpl& manager) : m_manager(manager) {}

  bool isFixed() const override { return false; }

  bool find(std::string_view name, std::string_view& replacement) override {
    if (!copy(name)) {
      return false;
    }
    m_replacement = m_value;
    // A failing resolver passes on, with what it left in the replacement.
    for (QSVariableResolver* resolver : m_resolvers) {
      if (resolver->Resolve(m_name, m_value, m_replacement) >= 0) {
        break;
      }
    }
    replacement = m_replacement;
    return true;
  }

 private:
  // What the resolvers see are copies, since they may change the table themselves.
  bool copy(std::string_view name) {
    const ReadGuard hold(m_manager.m_lock);
    const auto variable = m_manager.m_variables.find(name);
    if (variable == m_manager.m_variables.end()) {
      return false;
    }
    m_name = variable->first;
    m_value = variable->second.value;
    m_resolvers = m_manager.m_resolvers;
    return true;
  }

  QSConfigVariableManagerImpl& m_manager;
  std::string m_name;
  std::string m_value;
  std::string m_replacement;
  std::vector<QSVariableResolver*> m_resolvers;
};

QSConfigVariableManagerImpl::QSConfigVariableManagerImpl(LTLib::detail::FirstUseSources sources)
    : m_sources(std::move(sources)) {}

QSResult QSConfigVariableManagerImpl::AddVariable(const std::string& name,
                                                  const std::string& value) {
  return add(name, value, VariableOrigin::kRegistered);
}

QSResult QSConfigVariableManagerImpl::add(const std::string& name, const std::string& value,
                                          VariableOrigin origin) {
  if (holdsMark(name)) {
    return LTLib::kFailure;
  }
  const WriteGuard hold(m_lock);
  return define(name, value, origin);
}

QSResult QSConfigVariableManagerImpl::AddVariables(QSREGISTRYVARIABLE* table) {
  if (table == nullptr) {
    return LTLib::kSuccess;
  }
  const VariableOrigin origin = table == LTLib::detail::s_defaultVariables
                                    ? VariableOrigin::kDefault
                                    : VariableOrigin::kRegistered;
  const WriteGuard hold(m_lock);
  for (const QSREGISTRYVARIABLE* row = table; row->name != nullptr; ++row) {
    if (holdsMark(row->name)) {
      continue;
    }
    if (const QSResult result = define(row->name, row->value, origin); result < 0) {
      return result;
    }
  }
  return LTLib::kSuccess;
}

QSResult QSConfigVariableManagerImpl::define(std::string_view name, std::string_view value,
                                             VariableOrigin origin) {
  const bool isNew =
      m_variables.try_emplace(std::string(name), Variable{std::string(value), origin}).second;
  return isNew ? LTLib::kSuccess : LTLib::kAlreadyPresent;
}

QSResult QSConfigVariableManagerImpl::SetVariable(const std::string& name,
                                                  const std::string& value) {
  const WriteGuard hold(m_lock);
  return change(name, value, VariableOrigin::kChanged);
}

QSResult QSConfigVariableManagerImpl::change(const std::string& name, const std::string& value,
                                             VariableOrigin origin) {
  const auto variable = m_variables.find(name);
  if (variable == m_variables.end()) {
    return LTLib::kNotFound;
  }
  variable->second = {value, origin};
  // Whoever sets the configuration has decided it: the file is for programs that do not.
  if (name == kCurrentConfig) {
    m_configFilePending = false;
  }
  return LTLib::kSuccess;
}

QSResult QSConfigVariableManagerImpl::RemoveVariable(const std::string& name) {
  const WriteGuard hold(m_lock);
  return m_variables.erase(name) != 0 ? LTLib::kSuccess : LTLib::kNotFound;
}

QSResult QSConfigVariableManagerImpl::ExpandString(std::string& text) {
  return expand(text, nullptr);
}

QSResult QSConfigVariableManagerImpl::expand(std::string& text,
                                             std::vector<LTLib::ExpansionStep>* steps) {
  // The load itself expands, as reading the registry does: the mark ends that recursion.
  if (!m_publicVariablesLoaded && !m_publicVariablesLoading) {
    loadAtFirstUse();
  }
  if (!holdsMark(text)) {
    return LTLib::kSuccess;
  }
  {
    // Without resolvers nothing foreign runs, so that the whole expansion may hold the lock.
    const ReadGuard hold(m_lock);
    if (m_resolvers.empty()) {
      FixedSource source(m_variables);
      return LTLib::detail::expandReferences(text, source, steps);
    }
  }
  ResolvingSource source(*this);
  return LTLib::detail::expandReferences(text, source, steps);
}

// The thread that sets the loading flag runs the load. An exception out of the registry leaves the
// flag set: the load is not tried again, and the expansions to come work with what there is. Not
// inline, since every expansion goes through the caller and would pay for the registers saved here.
[[gnu::noinline]] void QSConfigVariableManagerImpl::loadAtFirstUse() {
  SoleWork work(&m_publicVariablesLoading, clear);
  if (!work.beginIf([this] { return !m_publicVariablesLoading.exchange(true); })) {
    return;
  }
  // Another thread may have finished between the look at the one flag and at the other.
  if (!m_publicVariablesLoaded) {
    try {
      readConfigFile();
    } catch (...) {
      // Failing here leaves the whole load to the next expansion.
      work.endWith([this] { m_publicVariablesLoading = false; });
      throw;
    }
    m_sources.loadPublicVariables([this](const std::string& name, const std::string& value) {
      (void)add(name, value, VariableOrigin::kPublicVariable);
    });
    m_publicVariablesLoaded = true;
  }
  work.endWith([this] { m_publicVariablesLoading = false; });
}

// Comes before the registry is looked at, whose key of public variables lies below CurrentConfig.
void QSConfigVariableManagerImpl::readConfigFile() {
  if (!m_configFilePending) {
    return;
  }
  const std::optional<std::string> word = m_sources.readConfigFile();
  const WriteGuard hold(m_lock);
  // A program that set the configuration while the file was being read has the last word.
  if (word && m_configFilePending) {
    (void)change(kCurrentConfig, *word, VariableOrigin::kConfigFile);
  }
}

QSResult QSConfigVariableManagerImpl::IsVariableDefined(const std::string& name, bool& defined) {
  const ReadGuard hold(m_lock);
  defined = m_variables.contains(name);
  return LTLib::kSuccess;
}

QSResult QSConfigVariableManagerImpl::AddResolver(QSVariableResolver* resolver) {
  if (resolver == nullptr) {
    return LTLib::kNullArgument;
  }
  const WriteGuard hold(m_lock);
  if (std::find(m_resolvers.begin(), m_resolvers.end(), resolver) != m_resolvers.end()) {
    return LTLib::kAlreadyPresent;
  }
  m_resolvers.push_back(resolver);
  return LTLib::kSuccess;
}

QSResult QSConfigVariableManagerImpl::RemoveResolver(QSVariableResolver* resolver) {
  const WriteGuard hold(m_lock);
  const auto place = std::find(m_resolvers.begin(), m_resolvers.end(), resolver);
  if (place == m_resolvers.end()) {
    return LTLib::kNotFound;
  }
  m_resolvers.erase(place);
  return LTLib::kSuccess;
}

std::vector<LTLib::VariableReport> QSConfigVariableManagerImpl::report() {
  const ReadGuard hold(m_lock);
  std::vector<LTLib::VariableReport> all;
  all.reserve(m_variables.size());
  for (const auto& [name, variable] : m_variables) {
    all.push_back({name, variable.value, variable.origin});
  }
  std::sort(all.begin(), all.end(),
            [](const auto& one, const auto& other) { return one.name < other.name; });
  return all;
}
