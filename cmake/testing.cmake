# qorn_add_test(NAME SOURCES a.cc LIBS lib): a GoogleTest program, each of its tests one of CTest's.
# qorn_add_program_tests(FILE): Python tests of the build's programs, each of them one of CTest's, with
# the label "program".

# Seconds after which a test hangs, however busy the machine: it prints the stacks of its threads and
# fails, and a little later CTest kills what is left.
set(qorn_test_seconds 300)
set(qorn_test_timeout 330)

if(QORN_BUILD_TESTS)
  enable_testing()
  find_package(GTest REQUIRED)
  include(GoogleTest)
  # ThreadSanitizer does not start where the kernel randomises addresses widely.
  if(QORN_SANITIZE MATCHES thread)
    set(qorn_test_launcher setarch -R)
  endif()
  # Not sanitized: what programs under test start gets it too, and has no sanitizer's runtime.
  add_library(qorn_crash_report SHARED ${CMAKE_SOURCE_DIR}/tests/crash_report.cc)
  target_compile_options(qorn_crash_report PRIVATE -fno-sanitize=all)
  target_link_options(qorn_crash_report PRIVATE -fno-sanitize=all)
endif()

function(qorn_add_test name)
  if(NOT QORN_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gtest_main GTest::gmock Threads::Threads
    -Wl,--no-as-needed qorn_crash_report)
  target_link_options(${name} PRIVATE -rdynamic)
  if(qorn_test_launcher)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${qorn_test_launcher}")
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${qorn_test_timeout} ENVIRONMENT QORN_TEST_SECONDS=${qorn_test_seconds})
endfunction()

# The tests run in the folder of their file, with all programs and libraries of this machine's build.
function(qorn_add_program_tests file)
  if(NOT QORN_BUILD_TESTS OR CMAKE_CROSSCOMPILING)
    return()
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  cmake_path(ABSOLUTE_PATH file)
  cmake_path(GET file PARENT_PATH folder)
  cmake_path(GET file STEM module)
  file(STRINGS ${file} lines REGEX "^class |^    def test_")
  foreach(line IN LISTS lines)
    if(line MATCHES "^class ([A-Za-z0-9_]+)")
      set(class ${CMAKE_MATCH_1})
      continue()
    endif()
    string(REGEX REPLACE " +def ([a-z0-9_]+).*" "${class}.\\1" test "${line}")
    add_test(NAME ${test} WORKING_DIRECTORY ${folder}
      COMMAND ${qorn_test_launcher} /usr/bin/python3 -B -X utf8 -m unittest ${module}.${test})
    # ThreadSanitizer would let each of many short programs sleep for a second at its end.
    set_tests_properties(${test} PROPERTIES TIMEOUT ${qorn_test_timeout} LABELS program
      ENVIRONMENT "PYTHONPATH=${CMAKE_SOURCE_DIR}/tests:${CMAKE_SOURCE_DIR}/devcloud/python;QORN_BUILD=${CMAKE_BINARY_DIR};TSAN_OPTIONS=atexit_sleep_ms=50")
  endforeach()
endfunction()
