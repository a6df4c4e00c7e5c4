// Telling people what a command waits for.
#ifndef LTREG_REGISTRY_LOCK_NOTICE_H
#define LTREG_REGISTRY_LOCK_NOTICE_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace ltreg {

/// Which lock of a store's folder another process holds; empty where that cannot be told.
[[nodiscard]] std::string whoHolds(const std::string& pathname);

/// Stands around what may wait for the locks of a store: after a second it complains of the wait.
class LockNotice {
 public:
  explicit LockNotice(const std::string& pathname);
  ~LockNotice();
  LockNotice(const LockNotice&) = delete;
  LockNotice& operator=(const LockNotice&) = delete;

 private:
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_over = false;
  std::thread m_thread;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_LOCK_NOTICE_H
