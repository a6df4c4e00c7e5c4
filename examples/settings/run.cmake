# Writes, shows and clears the settings, each in a process of its own, with the stores in FOLDER.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
foreach(root IN ITEMS CURRENT_USER LOCAL_MACHINE)
  set(ENV{HKEY_${root}} ${FOLDER}/HKEY_${root}.cfg)
endforeach()

function(expect word expected)
  execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${word}
                  WORKING_DIRECTORY ${FOLDER} OUTPUT_VARIABLE output ERROR_VARIABLE output
                  RESULT_VARIABLE status)
  string(REPLACE "\r" "" output "${output}")
  if(NOT status EQUAL 0 OR NOT output STREQUAL expected)
    message(FATAL_ERROR "settings ${word} gave ${status} and\n${output}and not\n${expected}")
  endif()
endfunction()

set(key "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\Settings Demo")
expect(show "[${key}]\n")
expect(write "")
expect(show "[${key}]
Title = \"Hello, world\"
Retries = 3
Layout = 4 bytes
Recent = \"one.txt\" \"two.txt\"
[${key}\\Window]
Width = 800
")
expect(clear "")
expect(show "[${key}]\n")
