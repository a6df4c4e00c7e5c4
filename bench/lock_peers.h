// The locks of the library and of its peers, with the operations of the standard library's locks.
#ifndef LTLIB_BENCH_LOCK_PEERS_H
#define LTLIB_BENCH_LOCK_PEERS_H

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

#include <mutex>
#include <shared_mutex>

#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_GLIB_2_0
#include <glib.h>
#endif
#ifdef LTLIB_BENCH_QT5CORE
#include <QMutex>
#include <QReadWriteLock>
#endif
#ifdef LTLIB_BENCH_BOOST_INTERPROCESS_SYNC_NAMED_MUTEX_HPP
#include <boost/interprocess/sync/named_mutex.hpp>
#endif

namespace LTLib::Bench {

class PthreadMutex {
 public:
  void lock() { pthread_mutex_lock(&m_lock); }
  void unlock() { pthread_mutex_unlock(&m_lock); }

 private:
  pthread_mutex_t m_lock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

struct OwnRWLock : RWLock {
  void lock() { writeLock(); }
  void lock_shared() { readLock(); }
  void unlock_shared() { unlock(); }
};

class PthreadRWLock {
 public:
  void lock() { pthread_rwlock_wrlock(&m_lock); }
  void unlock() { pthread_rwlock_unlock(&m_lock); }
  void lock_shared() { pthread_rwlock_rdlock(&m_lock); }
  void unlock_shared() { unlock(); }

 private:
  pthread_rwlock_t m_lock = PTHREAD_RWLOCK_INITIALIZER;
};

#ifdef LTLIB_BENCH_GLIB_2_0
class GLibMutex {
 public:
  GLibMutex() { g_rec_mutex_init(&m_lock); }
  void lock() { g_rec_mutex_lock(&m_lock); }
  void unlock() { g_rec_mutex_unlock(&m_lock); }

 private:
  GRecMutex m_lock;
};

class GLibRWLock {
 public:
  GLibRWLock() { g_rw_lock_init(&m_lock); }
  void lock() { g_rw_lock_writer_lock(&m_lock); }
  void unlock() { g_rw_lock_writer_unlock(&m_lock); }
  void lock_shared() { g_rw_lock_reader_lock(&m_lock); }
  void unlock_shared() { g_rw_lock_reader_unlock(&m_lock); }

 private:
  GRWLock m_lock;
};
#endif

#ifdef LTLIB_BENCH_QT5CORE
class QtRWLock {
 public:
  void lock() { m_lock.lockForWrite(); }
  void unlock() { m_lock.unlock(); }
  void lock_shared() { m_lock.lockForRead(); }
  void unlock_shared() { m_lock.unlock(); }

 private:
  QReadWriteLock m_lock;
};
#endif

// Locks between processes are opened by each process for itself.

struct OwnNamedMutex : NamedMutex {
  OwnNamedMutex() : NamedMutex("ltlib-bench") {}
};

/// The least that a lock between processes can cost here: no name, no owner, no re-entry.
class Flock {
 public:
  void lock() { flock(m_descriptor, LOCK_EX); }
  void unlock() { flock(m_descriptor, LOCK_UN); }

 private:
  int m_descriptor = open("/dev/shm/ltlib-bench-flock", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
};

#ifdef LTLIB_BENCH_BOOST_INTERPROCESS_SYNC_NAMED_MUTEX_HPP
class BoostNamedMutex {
 public:
  void lock() { m_lock.lock(); }
  void unlock() { m_lock.unlock(); }

 private:
  boost::interprocess::named_mutex m_lock{boost::interprocess::open_or_create, "ltlib-bench-boost"};
};
#endif

}  // namespace LTLib::Bench

#endif  // LTLIB_BENCH_LOCK_PEERS_H
