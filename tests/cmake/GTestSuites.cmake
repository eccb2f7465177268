# Registers a GoogleTest program with CTest as one test per test suite
# ("Suite" runs --gtest_filter=Suite.*). A suite's cases then share one
# process and the fixtures it sets up once (the shared emulator above all),
# instead of paying a process and an emulator start per case; the suites of
# all programs still run in parallel under ctest -j.
#
# The suites are listed after each build, like gtest_discover_tests does with
# cases, so adding a test needs no change here. The target property
# OCW_SUITE_PROPERTIES (text of "NAME value" pairs) is added to every suite.
set(_ocw_gtest_suites_script ${CMAKE_CURRENT_LIST_FILE})

function(ocw_add_gtest_suites target label timeout)
  set(suites_file "${CMAKE_CURRENT_BINARY_DIR}/${target}_suites.cmake")
  set(include_file "${CMAKE_CURRENT_BINARY_DIR}/${target}_include.cmake")
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -D OCW_EXE=$<TARGET_FILE:${target}> -D OCW_OUT=${suites_file}
            -D OCW_LABEL=${label} -D OCW_TIMEOUT=${timeout}
            "-DOCW_EXTRA=$<TARGET_PROPERTY:${target},OCW_SUITE_PROPERTIES>" -P ${_ocw_gtest_suites_script}
    VERBATIM)
  file(WRITE "${include_file}"
    "if(EXISTS \"${suites_file}\")\n  include(\"${suites_file}\")\nelse()\n"
    "  add_test(${target}_NOT_BUILT ${target}_NOT_BUILT)\nendif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${include_file}")
endfunction()

# Script mode: list the suites of OCW_EXE and write the CTest file.
if(CMAKE_SCRIPT_MODE_FILE AND OCW_EXE)
  execute_process(COMMAND "${OCW_EXE}" --gtest_list_tests
                  OUTPUT_VARIABLE listing RESULT_VARIABLE rc TIMEOUT 60)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${OCW_EXE} --gtest_list_tests failed: ${rc}")
  endif()
  string(REPLACE "\n" ";" lines "${listing}")
  set(content "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^([^ #][^ ]*)\\.")
      set(suite "${CMAKE_MATCH_1}")
      string(APPEND content
        "add_test([==[${suite}]==] [==[${OCW_EXE}]==] [==[--gtest_filter=${suite}.*]==])\n"
        "set_tests_properties([==[${suite}]==] PROPERTIES LABELS ${OCW_LABEL} TIMEOUT ${OCW_TIMEOUT} ${OCW_EXTRA})\n")
    endif()
  endforeach()
  file(WRITE "${OCW_OUT}" "${content}")
endif()
