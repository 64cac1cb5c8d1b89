# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

find_package(GTest REQUIRED)
find_package(rapidcheck REQUIRED)
include(GoogleTest)

# One test program: every TEST in it becomes a test of ctest, run in a process of its own, so that tests that start
# services or change the environment never meet each other.
#
#   nubis_add_test(NAME ipc_test SOURCES a_test.cpp b_test.cpp LIBRARIES nubis_host [LABELS integration] [TIMEOUT 60])
function(nubis_add_test)
  cmake_parse_arguments(PARSE_ARGV 0 TEST "" "NAME;TIMEOUT" "SOURCES;LIBRARIES;LABELS")
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 60)
  endif()
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  target_link_libraries(${TEST_NAME} PRIVATE nubis_options ${TEST_LIBRARIES} GTest::gmock GTest::gtest_main rapidcheck)
  list(LENGTH TEST_SOURCES sources)
  if(sources GREATER 2)
    nubis_precompile(${TEST_NAME} <gmock/gmock.h> <gtest/gtest.h>)
  endif()
  set_target_properties(${TEST_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  gtest_discover_tests(${TEST_NAME}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}")
endfunction()
