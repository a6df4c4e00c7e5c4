// Memory that runs out at any one allocation: every operation leaves the tree and the files as they
// were before it or after it, and works once there is memory again.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "ltlib/foundation/kqsresult.h"
#include "tests/support/store_fixture.h"

namespace {

constexpr long kNoLimit = -1;
thread_local constinit long t_left =
    kNoLimit;  // allocations of this thread ahead of one that fails
thread_local constinit bool t_lasting = false;  // whether those behind it fail as well

bool failsNow() {
  if (t_left != 0) {
    t_left -= t_left > 0 ? 1 : 0;
    return false;
  }
  t_left = t_lasting ? 0 : kNoLimit;
  return true;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = failsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

// What asks in this way tells by its result, which a test of the calls of files brings about.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size);
}

// Inlined, it would look to the compiler as if what `new` gave went to a `free` of another kind.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace {

namespace fs = std::filesystem;
using namespace LTLib::Testing;

// More keys and values than are searched without an index.
std::string longStore() {
  std::string values = "[A\\B]\n";
  std::string keys;
  for (int i = 0; i < 12; ++i) {
    values += "\"value" + std::to_string(i) + "\"=string:\"a text\"\n";
    keys += "[A\\B\\Key" + std::to_string(i) + "]\n\"Default\"=ulong:1\n";
  }
  return values + keys;
}

using Step = std::function<void()>;

struct Case {
  Step prepare;
  Step operate;
  bool loads = false;  // and may leave a part, which the next load must complete
};

class StoreMemory : public StoreTest {
 protected:
  // What can be seen of the root and its files.
  [[nodiscard]] std::string state() const {
    return showRoot() + readFile(store()) + readFile(store() + "_old") +
           std::to_string(m_folder.names().size());
  }

  // Loads the long store, and leaves a gap among its keys.
  void loadLong() {
    restartWith(longStore());
    EXPECT_EQ(m_manager.regDeleteKey(kRoot, "A\\B\\Key5"), 0);
    fs::remove(store() + "_old");
  }

  // A tree that failed loads have left a part of the store in, which is mended by then.
  void loadInPart() {
    restartWith("[a\\b]\n\"n\"=ulong:1\n[A\\C]\n\"gone\"=ulong:1\n[]\n");
    EXPECT_FALSE(load());
    EXPECT_EQ(OpenKey("A\\D").setNumber("set", 3), 0);
    EXPECT_EQ(m_manager.regDeleteKey(kRoot, "A\\C"), 0);
    EXPECT_FALSE(load());
    m_folder.write("HKEY_LOCAL_MACHINE.cfg",
                   "[A\\B]\n\"n\"=ulong:1\n\"m\"=ulong:2\n[A\\New\\Deep]\n\"x\"=dir:\"y\"\n");
  }

  // Whether the operation came to its end before so many allocations were made.
  static bool endsWith(long allocations, const Step& operate) {
    t_left = allocations;
    bool ended = true;
    try {
      operate();
    } catch (const std::exception&) {
      ended = false;
    }
    return std::exchange(t_left, kNoLimit) > 0 && ended;
  }

  void failEach(const Case& row) {
    row.prepare();
    const std::string before = state();
    row.operate();
    const std::string after = state();
    for (const bool lasting : {false, true}) {
      t_lasting = lasting;
      bool ended = false;
      for (long allocations = 0; !ended && !HasFailure(); ++allocations) {
        row.prepare();
        ended = endsWith(allocations, row.operate);
        if (const std::string left = state(); !ended && left != after) {
          EXPECT_TRUE(row.loads || left == before) << allocations << '\n' << left;
          row.operate();
        }
        EXPECT_EQ(state(), after) << allocations;
      }
    }
    EXPECT_TRUE(locksAreFree());
  }
};

TEST_F(StoreMemory, MayRunOutInEachOperation) {
  const Step whole = [this] { loadLong(); };
  const Step query = [] {
    try {
      (void)OpenKey("A\\B").text("n");
    } catch (const QSException&) {
      // as a load that fails gives it
    }
  };
  const Case cases[] = {
      {whole, [] { OpenKey("A\\B").set("a new value", std::string(50, 'x')); }},
      {whole, [] { OpenKey("A\\B").set("list", std::string("a\0b\0\0", 5), REG_MULTI_SZ); }},
      {whole, [] { OpenKey("A\\New\\Deep\\Way").setNumber("n", 3); }},
      {whole, [] { OpenKey("A\\B").remove("value3"); }},
      {whole, [this] { m_manager.regDeleteKey(kRoot, "A\\B\\Key3"); }},
      {whole, [this] { (void)save(); }},
      {[this] { restartWith(longStore()); }, query, true},
      {[this] { loadInPart(); }, query, true},
      {[this] { restartWith("[A\\B]\n\"n\"=ulong:1\n\"m\"=string:\"open\n"); }, query, true},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(&row - cases);
    failEach(row);
  }
}

}  // namespace
