// What the tool says of itself, in its help and in its manual page.
#ifndef LTREG_CLI_ABOUT_H
#define LTREG_CLI_ABOUT_H

namespace ltreg {

inline constexpr char kAboutKeys[] =
    "KEY is a root's name, a backslash and a path, as in 'HKLM\\Software\\Demo'. The roots are\n"
    "HKLM, HKCU, HKCC, HKU and HKCR, or by their long names HKEY_LOCAL_MACHINE and so on, in any\n"
    "letter case. References such as %SharedRoot% are replaced by the values of the configuration\n"
    "variables. Words of your own that begin with '-' go behind '--'.";

inline constexpr char kAboutExits[] =
    "Exit codes: 0 done, 1 absent, 2 wrong usage, 3 bad input, 4 the store or its lock failed,\n"
    "6 the store changed since it was read.\n"
    "Data goes to standard output, everything else to standard error.";

inline constexpr char kAboutStore[] = "The store file of the root, whatever the environment says";
inline constexpr char kAboutWait[] =
    "Seconds until the wait for a lock that another process holds ends; no end without it";
inline constexpr char kAboutBackend[] =
    "Where roots lie, whatever programs go by: in store files, or in the operating system's "
    "registry";

}  // namespace ltreg

#endif  // LTREG_CLI_ABOUT_H
