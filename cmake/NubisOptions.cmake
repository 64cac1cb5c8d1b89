# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

# What every target of the project is compiled with. Targets link nubis_options; nothing is set globally, so that
# generated sources and imported targets stay as they are.

option(NUBIS_BUILD_TESTS "Build the tests" ON)
option(NUBIS_BUILD_BENCHMARKS "Build the benchmarks" ON)
option(NUBIS_COVERAGE "Instrument for coverage reports" OFF)
option(NUBIS_FUZZ "Instrument for libFuzzer, and link the fuzzers with it (clang only)" OFF)
option(NUBIS_PRECOMPILE "Precompile the headers that most sources of a target read, which builds in half the time" OFF)
set(NUBIS_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined or thread")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Debug)
endif()

find_program(NUBIS_CCACHE ccache)
if(NUBIS_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${NUBIS_CCACHE}")
  if(NUBIS_PRECOMPILE)
    # Without these ccache does not dare to keep what was compiled with a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
      "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${NUBIS_CCACHE}")
  endif()
endif()

add_library(nubis_options INTERFACE)
target_compile_options(nubis_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wimplicit-fallthrough -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>)

if(NUBIS_SANITIZE)
  target_compile_options(nubis_options INTERFACE
    -fsanitize=${NUBIS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(nubis_options INTERFACE -fsanitize=${NUBIS_SANITIZE})
endif()
if(NUBIS_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "NUBIS_FUZZ needs clang, whose part libFuzzer is")
  endif()
  target_compile_options(nubis_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(NUBIS_COVERAGE)
  target_compile_options(nubis_options INTERFACE --coverage)
  target_link_options(nubis_options INTERFACE --coverage)
endif()

# A target of many sources, and the heavy headers that most of them read besides those of the standard library. Only in
# builds with NUBIS_PRECOMPILE: the others prove that every source includes what it needs.
function(nubis_precompile target)
  if(NUBIS_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <atomic> <chrono> <condition_variable> <filesystem> <fstream> <functional> <map> <memory> <mutex>
      <optional> <set> <sstream> <string> <thread> <unordered_map> <vector> ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>)
  endif()
endfunction()
