// Memory that runs out at any one allocation: every operation leaves the tree and the files as they
// were before it or after it, and works once there is memory again.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "tests/support/store_fixture.h"

namespace {

constexpr long kNever = -1;
thread_local constinit long t_left = kNever;  // allocations of this thread ahead of one that fails
thread_local constinit bool t_lasting = false;  // whether those behind it fail as well

bool failsNow() {
  if (t_left != 0) {
    t_left -= t_left > 0 ? 1 : 0;
    return false;
  }
  t_left = t_lasting ? 0 : kNever;
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
  std::string text = "[A\\B]\n";
  for (int i = 0; i < 12; ++i) {
    text += "\"value" + std::to_string(i) + "\"=string:\"a text\"\n";
  }
  for (int i = 0; i < 12; ++i) {
    text += "[A\\B\\Key" + std::to_string(i) + "]\n\"Default\"=ulong:1\n";
  }
  return text;
}

class StoreMemory : public StoreTest {
 protected:
  using Step = std::function<void()>;

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
    return std::exchange(t_left, kNever) > 0 && ended;
  }

  void failEach(const char* label, bool loads, const Step& prepare, const Step& operate) {
    SCOPED_TRACE(label);
    prepare();
    const std::string before = state();
    operate();
    const std::string after = state();
    for (const bool lasting : {false, true}) {
      t_lasting = lasting;
      for (long allocations = 0; !HasFailure(); ++allocations) {
        prepare();
        if (endsWith(allocations, operate)) {
          EXPECT_EQ(state(), after);
          EXPECT_GT(allocations, 0);
          break;
        }
        // A load that failed may have left a part, which the next one must complete.
        if (const std::string left = state(); left != after) {
          EXPECT_TRUE(loads || left == before) << allocations << '\n' << left;
          operate();
        }
        EXPECT_EQ(state(), after) << allocations;
      }
    }
    EXPECT_TRUE(locksAreFree());
  }
};

TEST_F(StoreMemory, MayRunOutInEachOperation) {
  const std::pair<const char*, Step> cases[] = {
      {"a new value", [] { OpenKey("A\\B").set("a new value", std::string(50, 'x')); }},
      {"a list",
       [] {
         OpenKey("A\\B").set("list", {"a\0b\0\0", 5}, REG_MULTI_SZ);
       }},
      {"a number", [] { OpenKey("A\\B").setNumber("value3", 3); }},
      {"new keys", [] { OpenKey("A\\New\\Deep\\Way").setNumber("n", 3); }},
      {"a bracketed key", [] { OpenKey("[more]").set("n", "x"); }},
      {"a query", [] { (void)OpenKey("A\\B").text("value3"); }},
      {"a value deleted", [] { OpenKey("A\\B").remove("value3"); }},
      {"a key deleted", [this] { m_manager.regDeleteKey(kRoot, "A\\B\\Key3"); }},
      {"an enumeration",
       [this] {
         char name[20];
         unsigned int size = sizeof name;
         m_manager.regEnumKeyEx(OpenKey("A\\B").get(), 7, name, &size);
       }},
      {"a save", [this] { (void)save(); }},
  };
  for (const auto& [label, operate] : cases) {
    failEach(
        label, false, [this] { loadLong(); }, operate);
  }
}

TEST_F(StoreMemory, MayRunOutInALoad) {
  const Step query = [] {
    try {
      (void)OpenKey("A\\B").text("n");
    } catch (const QSException&) {
      // as a load that fails gives it
    }
  };
  failEach(
      "the first", true, [this] { restartWith(longStore()); }, query);
  failEach(
      "one that completes another", true, [this] { loadInPart(); }, query);
  const Step lay = [this] { restartWith("[A\\B]\n\"n\"=ulong:1\n\"m\"=string:\"open\n"); };
  failEach("one that fails", true, lay, query);
}

}  // namespace
