// What could come next on a command line, and what a shell makes of it.
#include "tests/ltreg/ltreg_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;

constexpr char kKeys[] =
    "[A\\B]\n\"n\"=ulong:1\n\"two words\"=ulong:1\n\n[A\\B\\In side]\n\"n\"=ulong:1\n\n"
    "[Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\CLASSID\\X.Y]\n"
    "\"InprocServer\"=string:\"x\"\n\n";

class LtregCompletion : public LtregTest {};

TEST_F(LtregCompletion, TellsWhatComesNext) {
  const std::pair<const char*, const char*> rows[] = {
      {"ex", "export\nexplain\nexpand\n"},
      {"component un", "unregister\n"},
      {"component check x", "X.Y\n"},
      {"nothing x", ""},
      {"get H", "HKLM\\\nHKCU\\\nHKCC\\\nHKU\\\nHKCR\\\n"},
      {"get hklm\\a\\", "hklm\\a\\B\n"},
      {"--null get HKLM\\A\\B\\i", "HKLM\\A\\B\\In side\n"},
      {"get @ ''", "n\ntwo words\n"},
      {"get @ n t", "two words\n"},
      {"set @ n --type b", "binary\n"},
      {"set --type list @ N", "n\n"},
      {"find @ x --i", "--in\n--ignore-case\n"},
      {"get --store absent.cfg HKLM\\A", ""},
      {"--store absent.cfg get HKLM\\A", ""},
      {"component check --timeout 3 x", "X.Y\n"},
      {"list --color a", "auto\nalways\n"},
      {"query @ --value t", "two words\n"},
      {"diff HKLM\\a\\", "HKLM\\a\\B\n"},
      {"path HKC", "HKCU\nHKCC\nHKCR\n"},
      {"get nowhere\\x", ""},
      {"expand ''", ""},
  };
  for (const auto& [words, expected] : rows) {
    shows(std::string("complete -- ") + words, expected, kKeys);
  }
}

TEST_F(LtregCompletion, AShellInsertsWordsAsItQuotesThem) {
  if (kOnWindows) {
    GTEST_SKIP() << "it takes a shell";
  }
  m_folder.write(kStore, kKeys);
  m_folder.write("ask.sh", R"sh(tool=$1; compopt() { :; }; ltreg() { "$tool" "$@"; }
eval "$(ltreg completion bash)"
ask() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _ltreg; printf '<%s>' "${COMPREPLY[@]}"; }
ask ltreg get "'HKLM\A\B\\"
ask ltreg get 'HKLM\\A\\B\\'
ask ltreg get "'HKLM\A\B'" tw
for shell in zsh fish; do
  ltreg completion $shell >$shell.txt
  if command -v $shell >/dev/null; then $shell -n $shell.txt && grep -q 'ltreg complete --' $shell.txt || echo $shell; fi
done
)sh");
  EXPECT_EQ(RunningProgram("/bin/bash", {"ask.sh", m_program}, m_folder.path()).wait().output,
            "<HKLM\\A\\B\\In side><HKLM\\\\A\\\\B\\\\In\\ side><two\\ words>");
  fails(2, "completion ksh", "'ksh' is none of bash, zsh, fish; did you mean 'zsh'?", kOne);
}

}  // namespace
