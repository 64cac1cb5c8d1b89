# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

# What users of an installed tree find it by, and the Debian packages. After everything that is installed.

include(CMakePackageConfigHelpers)

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/NubisLiteConfig.cmake.in"
  "${CMAKE_BINARY_DIR}/NubisLiteConfig.cmake"
  INSTALL_DESTINATION "${NUBIS_INSTALL_CMAKEDIR}"
  PATH_VARS CMAKE_INSTALL_BINDIR
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/NubisLiteConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/NubisLiteConfig.cmake" "${CMAKE_BINARY_DIR}/NubisLiteConfigVersion.cmake"
    "${CMAKE_CURRENT_LIST_DIR}/NubisServiceTest.cmake"
  DESTINATION "${NUBIS_INSTALL_CMAKEDIR}" COMPONENT development)
install(EXPORT NubisLiteTargets NAMESPACE NubisLite::
  DESTINATION "${NUBIS_INSTALL_CMAKEDIR}" COMPONENT development)

nubis_relative_path(NUBIS_PREFIX_FROM_PKGCONFIG "${CMAKE_INSTALL_LIBDIR}/pkgconfig" "")
foreach(name IN ITEMS nubis_lite nubis_host)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in" "${CMAKE_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${CMAKE_BINARY_DIR}/${name}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nubis-lite)
set(CPACK_PACKAGE_VENDOR "The libnubis_lite authors")
set(CPACK_PACKAGE_CONTACT "The libnubis_lite authors <libnubis-lite@localhost>")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
# Each package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL runtime development tools)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# "(= version)" between the packages: the tools use what only this version of the host layer is known to have.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libnubis-lite${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS nubis-lite-tools)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "client library for a cloud record database
Programs use it to keep typed records in containers, to query them and to
follow their changes. It talks to a drive service, which comes in
nubis-lite-tools.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libnubis-lite-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS libjsoncpp-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS
  "cmake, libgtest-dev, libsqlitecpp-dev, libssl-dev, nubis-lite-tools, pkg-config")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "client library for a cloud record database, development files
The headers of the library and of the layer that it runs on, with what CMake
and pkg-config find them by, and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nubis-lite-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
# Its lists are what `nubis demo` works on.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS iso-codes)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "bash-completion, man-db")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "drive service and command line tool of a cloud record database
A local drive service, which keeps the records in SQLite and starts when a
program needs it, and nubis, which offers every operation of the library to
the shell.")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES "${CMAKE_CURRENT_LIST_DIR}/copyright"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}" COMPONENT ${component})
endforeach()
set(examples "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME}/examples")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/" DESTINATION "${examples}" COMPONENT development)

include(CPack)
