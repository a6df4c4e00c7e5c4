#include "ltreg/registry/lock_notice.h"

#include <chrono>

#include "ltlib/ltlib.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {

std::string whoHolds(const std::string& pathname) {
  for (const LTLib::StoreLock& lock : LTLib::storeLocks(pathname)) {
    if (lock.holder != 0) {
      return "the lock " + inQuotes(lock.place) + " is held by process " +
             std::to_string(lock.holder) +
             (lock.program.empty() ? std::string() : " (" + escapeControls(lock.program) + ')');
    }
  }
  return {};
}

// The waiting itself stays with the thread that needs the store.
LockNotice::LockNotice(const std::string& pathname)
    : m_thread([this, pathname] {
        std::unique_lock hold(m_mutex);
        if (!m_ended.wait_for(hold, std::chrono::seconds(1), [this] { return m_over; })) {
          const std::string holder = whoHolds(pathname);
          complain("waiting for the store " + inQuotes(pathname) + ": " +
                   (holder.empty() ? "another process holds a lock of its folder" : holder));
        }
      }) {}

LockNotice::~LockNotice() {
  {
    const std::lock_guard hold(m_mutex);
    m_over = true;
  }
  m_ended.notify_one();
  m_thread.join();
}

}  // namespace ltreg
