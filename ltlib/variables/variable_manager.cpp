#include "ltlib/variables/variable_manager.h"

#include <memory>
#include <utility>
#include <vector>

#include "ltlib/foundation/do_once.h"
#include "ltlib/platform/fork.h"
#include "ltlib/variables/variable_manager_impl.h"

namespace LTLib::detail {

constinit QSREGISTRYVARIABLE s_defaultVariables[] = {
    {"CompanyName", "Tarn Quillmere"},
    {"DesktopVersion", "RZ 7.0"},
    {"PortalVersion", "3.0"},
    {"MarlinVersion", "1.0"},
    {"CompanyRoot", "Software\\%CompanyName%"},
    {"CurrentConfig", "default"},
    {"QSRoot", "%CompanyRoot%\\Suite %DesktopVersion%\\%CurrentConfig%"},
    {"ClientRoot", "%QSRoot%\\Quillmere"},
    {"PortalRoot", "%QSRoot%\\Lumenpane"},
    {"MarlinRoot", "%QSRoot%\\Netsieve"},
    {"SharedRoot", "%QSRoot%\\Shared"},
    {"CLASSID", "%SharedRoot%\\CLASSID"},
    {"PublicVariables", "%SharedRoot%\\PublicVars"},
    {nullptr, nullptr},
};

}  // namespace LTLib::detail

namespace {

using LTLib::Platform::ForkedChildHook;
using LTLib::Platform::ProcessLock;
using LTLib::Platform::processLock;
using LTLib::Platform::ThreadLockScope;

// All of this is ready before any code of the library runs, so that registrars of other
// modules may come first.
constinit ltDoOnce_t s_once;
constinit std::atomic<QSConfigVariableManagerImpl*> s_instance{nullptr};
constinit std::atomic<bool> s_tornDown{false};
constinit bool s_defaultsQueued = false;
constinit std::vector<QSREGISTRYVARIABLE*>* s_pendingTables = nullptr;

// Held while tables wait in line and while they become the manager's.
LTLib::Platform::ThreadLock& pendingGuard() {
  return processLock(ProcessLock::kPendingTables);
}

// Nothing after the teardown: nobody would free the list any more.
void appendPending(QSREGISTRYVARIABLE* table) {
  const ThreadLockScope hold(pendingGuard());
  if (s_tornDown) {
    return;
  }
  if (s_pendingTables == nullptr) {
    s_pendingTables = new std::vector<QSREGISTRYVARIABLE*>;
  }
  s_pendingTables->push_back(table);
}

// The child of a fork runs this again from its start if it was cut off.
void constructManager() {
  if (s_tornDown || s_instance != nullptr) {
    return;
  }
  // Built aside and published last: the child of a fork that cut this off must find none.
  auto manager = std::make_unique<QSConfigVariableManagerImpl>();
  if (!s_defaultsQueued) {
    appendPending(LTLib::detail::s_defaultVariables);
    s_defaultsQueued = true;
  }
  const ThreadLockScope hold(pendingGuard());
  for (QSREGISTRYVARIABLE* table : *s_pendingTables) {
    manager->AddVariables(table);
  }
  s_pendingTables->clear();
  s_instance = manager.release();
}

// The two exit handlers. Handlers run last-in first-out: the tables go first.
struct ManagerTeardown {
  ~ManagerTeardown() {
    s_tornDown = true;
    delete s_instance.exchange(nullptr);
  }
};

struct PendingTablesTeardown {
  ~PendingTablesTeardown() {
    const ThreadLockScope hold(pendingGuard());
    delete std::exchange(s_pendingTables, nullptr);
  }
};

const ManagerTeardown s_managerTeardown;
const PendingTablesTeardown s_pendingTablesTeardown;

const ForkedChildHook s_childHook([]() noexcept {
  if (QSConfigVariableManagerImpl* const manager = s_instance) {
    manager->forgetThreads();
  }
});

}  // namespace

QSConfigVariableManagerImpl* QSConfigVariableManagerImpl::instance() {
  ltDoOnce(s_once, constructManager);
  return s_instance;
}

QSConfigVariableManager* QSConfigVariableManager::GetInstance() {
  return QSConfigVariableManagerImpl::instance();
}

QSConfigVariableManager::~QSConfigVariableManager() = default;

QSVariableRegistrar::QSVariableRegistrar(QSREGISTRYVARIABLE* table) {
  // Makes the manager first, so that the library's own table is ahead of this one.
  if (QSConfigVariableManager* const manager = QSConfigVariableManager::GetInstance()) {
    manager->AddVariables(table);
  }
  appendPending(table);
}

QSResult QSExpandString(std::string& text) {
  QSConfigVariableManager* const manager = QSConfigVariableManager::GetInstance();
  return manager != nullptr ? manager->ExpandString(text) : LTLib::kFailure;
}
