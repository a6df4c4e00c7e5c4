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
    "Exit codes: 0 done, 1 absent or different, 2 wrong usage, 3 bad input, 4 the store or its lock"
    " failed,\n5 a component failed, 6 conflict: the store changed on disk since it was read.\n"
    "Data goes to standard output, everything else to standard error.";

// A name, a tab and what it does or holds, each in a line.
inline constexpr char kAboutEnvironment[] =
    "HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, ...\tThe store file of the root of that name; set to"
    " nothing the root has none\n"
    "NO_COLOR\tSet to anything, colours are left out unless --color says otherwise\n"
    "PAGER\tThe command that --pager pipes the output into; less or more without it\n"
    "LTTRACER\tSends the library's diagnostic lines to standard error";
inline constexpr char kAboutFiles[] =
    "HKEY_LOCAL_MACHINE.cfg, ...\tThe store file of a root, in the current folder where the"
    " environment names no other\n"
    "*.cfg_old\tThe version before the last save\n"
    "*.cfg_new\tWhat a save is writing, or was when it was cut off\n"
    "*.cfg_dropped, ...\tLines that a save with --force has dropped\n"
    "qsconfig.dat\tIn the folder of stores, the name of the lock that their programs share\n"
    "registry.dat\tBeside the library, has programs of Windows use store files\n"
    "LIBRARY.classes\tBeside a component library, classes that its own file does not tell";

}  // namespace ltreg

#endif  // LTREG_CLI_ABOUT_H
