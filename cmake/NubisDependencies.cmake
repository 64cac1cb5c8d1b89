# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

# Every library from outside the project, found here and nowhere else. scripts/setup installs the packages.

find_package(Threads REQUIRED)
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
find_package(PkgConfig REQUIRED)
# Not find_package(CapnProto): its configuration demands a libatomic that is neither used nor installed here.
pkg_check_modules(CAPNP_RPC REQUIRED IMPORTED_TARGET capnp-rpc)
find_program(CAPNP_COMPILER capnp REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
pkg_check_modules(UUID REQUIRED IMPORTED_TARGET uuid)
find_package(SQLiteCpp REQUIRED)
pkg_check_modules(RAPIDJSON REQUIRED IMPORTED_TARGET RapidJSON)
find_package(CLI11 REQUIRED)
if(NUBIS_BUILD_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
