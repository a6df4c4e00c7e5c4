#include "ltlib/fileregistry/store_swap.h"

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::FileResult;

// The steps of one swap; whatever was done is undone at the end of an object that did not finish.
class Swap {
 public:
  explicit Swap(const std::string& pathname)
      : m_store(pathname), m_old(pathname + "_old"), m_aside(pathname + "_old_aside") {}
  ~Swap();
  Swap(const Swap&) = delete;
  Swap& operator=(const Swap&) = delete;

  void setOldAside();
  void keepStoreAsOld();
  void bringIn(const std::string& newName);
  void finish();

 private:
  static Platform::FileCalls& calls() { return Platform::fileCalls(); }
  static void demand(bool done) {
    if (!done) {
      throw QSException("kFileRegistry", __LINE__, kFailure, "registry file cannot be replaced");
    }
  }
  static FileResult rename(const std::string& from, const std::string& to) {
    return calls().rename(from.c_str(), to.c_str());
  }

  std::string m_store;
  std::string m_old;
  std::string m_aside;
  bool m_oldIsAside = false;
  bool m_linked = false;
  bool m_moved = false;
  bool m_broughtIn = false;
  bool m_finished = false;
};

void Swap::setOldAside() {
  Platform::FileStatus old;
  if (calls().status(m_old.c_str(), &old) == FileResult::kDone) {
    demand(old.regular);
  }
  const FileResult result = rename(m_old, m_aside);
  m_oldIsAside = result == FileResult::kDone;
  demand(m_oldIsAside || result == FileResult::kAbsent);
}

// A second name keeps the store file in its place; a rename serves where there are none.
void Swap::keepStoreAsOld() {
  FileResult result = calls().link(m_store.c_str(), m_old.c_str());
  m_linked = result == FileResult::kDone;
  if (result == FileResult::kUnsupported) {
    result = rename(m_store, m_old);
    m_moved = result == FileResult::kDone;
  }
  demand(result == FileResult::kDone || result == FileResult::kAbsent);
}

void Swap::bringIn(const std::string& newName) {
  m_broughtIn = rename(newName, m_store) == FileResult::kDone;
  demand(m_broughtIn);
}

void Swap::finish() {
  const FileResult flushed = calls().flushDirectory(m_store.c_str());
  demand(flushed == FileResult::kDone || flushed == FileResult::kUnsupported);
  m_finished = true;
}

Swap::~Swap() {
  if (m_finished) {
    (void)calls().remove(m_aside.c_str());
    return;
  }
  if (m_linked && !m_broughtIn) {
    // The store file never left its place; it only gives up its second name.
    (void)calls().remove(m_old.c_str());
  } else if (m_linked || m_moved) {
    (void)rename(m_old, m_store);
  } else if (m_broughtIn) {
    (void)calls().remove(m_store.c_str());
  }
  if (m_oldIsAside) {
    (void)rename(m_aside, m_old);
  }
}

}  // namespace

void swapStore(const std::string& newName, const std::string& pathname) {
  Swap swap(pathname);
  swap.setOldAside();
  swap.keepStoreAsOld();
  swap.bringIn(newName);
  swap.finish();
}

}  // namespace LTLib::detail
