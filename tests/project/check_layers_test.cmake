# Plants one violation at a time into a small sound tree and wants check_layers.cmake to name it:
#   cmake -DWORK=<scratch folder> -DRULES=<file> -P check_layers_test.cmake
cmake_minimum_required(VERSION 3.25)
set(failures "")

# Runs the check over a fresh sound tree with one more line at the end of `file`. With `expected`
# empty the check has to pass, else it has to fail and say that.
function(case file line expected)
  file(REMOVE_RECURSE "${WORK}")
  file(WRITE "${WORK}/ltlib/export.h" "#if defined(_WIN32)\n#endif\n")
  file(WRITE "${WORK}/ltlib/ltlib.h"
       "#include \"ltlib/export.h\"\n#include \"ltlib/foundation/a.h\"\n")
  file(WRITE "${WORK}/ltlib/foundation/a.h" "#include <string>\n\n#include \"ltlib/export.h\"\n")
  file(WRITE "${WORK}/ltlib/foundation/private.h"
       "#ifndef GUARD\n#include \"ltlib/foundation/a.h\"\n#endif\n")
  file(WRITE "${WORK}/ltlib/foundation/a.cpp"
       "#include \"ltlib/foundation/a.h\"\n#include \"ltlib/platform/p.h\"\n")
  file(WRITE "${WORK}/ltlib/platform/p.h" "#include <cstddef>\n")
  file(WRITE "${WORK}/ltlib/platform/linux/side.h" "#include <unistd.h>\n")
  file(WRITE "${WORK}/ltlib/fileregistry/file_registry_manager.h" "#include <map>\n")
  file(WRITE "${WORK}/ltlib/registry/backend_choice.cpp"
       "#include \"ltlib/fileregistry/file_registry_manager.h\"\n")
  file(WRITE "${WORK}/ltreg/cli/main.cpp" "#include <CLI/CLI.hpp>\n#include \"ltlib/ltlib.h\"\n")
  file(APPEND "${WORK}/${file}" "${line}\n")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" "-DROOT=${WORK}" "-DRULES=${RULES}" -P
            "${CMAKE_CURRENT_LIST_DIR}/check_layers.cmake"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  # Long messages come wrapped.
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  string(FIND "${output}" "${expected}" at)
  if((expected STREQUAL "" AND NOT result EQUAL 0)
     OR (NOT expected STREQUAL "" AND (result EQUAL 0 OR at EQUAL -1)))
    list(APPEND failures "${file} with '${line}' gave: ${output}")
    set(failures "${failures}" PARENT_SCOPE)
  endif()
endfunction()

set(layer "its layer does not include")
set(foreign "is no header of the standard library")
case(ltlib/foundation/a.cpp "" "")
case(ltlib/platform/p.h "#include \"ltlib/foundation/a.h\"" "${layer}")
case(ltlib/foundation/a.cpp "#include \"ltlib/fileregistry/file_registry_manager.h\"" "${layer}")
case(ltlib/registry/other.cpp "#include \"ltlib/fileregistry/file_registry_manager.h\"" "${layer}")
case(ltlib/registry/other.cpp "  #  include \"ltlib/ltlib.h\"" "${layer}")
case(examples/e.cpp "#include \"ltlib/foundation/a.h\"" "${layer}")
case(ltlib/foundation/a.cpp "#include \"private.h\"" "names no file from the root")
case(ltlib/foundation/a.cpp "#include HEADER" "an include that names no file")
case(ltlib/platform/p.h "#include \"ltlib/platform/linux/side.h\"" "is for ltlib/platform/linux/")
case(ltlib/foundation/a.h "#include <windows.h>" "${foreign}")
case(ltlib/foundation/a.cpp "#include <unistd.h>" "${foreign}")
case(ltlib/foundation/a.cpp "#include <CLI/CLI.hpp>" "${foreign}")
case(ltlib/foundation/a.cpp "#include <time.h>" "${foreign}")
case(ltlib/foundation/a.h "#include \"ltlib/foundation/private.h\"" "a public header includes")
case(ltlib/ltlib.h "#include \"ltlib/platform/p.h\"" "${layer}")
case(ltlib/foundation/a.cpp "#ifdef _WIN32" "asks for the operating system")
case(ltreg/cli/main.cpp "#if !defined(__linux__)" "asks for the operating system")
case(ltlib/platform/p.h "#if defined(_WIN32)" "")
case(ltlib/platform/linux/side.h "#include \"ltlib/platform/linux/side.h\"" "in a circle")
case(ltlib/foundation/a.h "#include \"ltlib/foundation/private.h\"" "a.h -> ltlib/foundation/private.h")

if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "the check misjudged:\n  ${text}")
endif()
