# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

# Where things go when they are installed. Everything finds everything else by relative paths, so that an installed tree
# may be moved, and a package unpacked anywhere.

include(GNUInstallDirs)
find_program(GZIP gzip REQUIRED)

set(NUBIS_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/nubis_lite")
set(NUBIS_INSTALL_PLATFORM_INCLUDEDIR "${NUBIS_INSTALL_INCLUDEDIR}/platform")
set(NUBIS_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/NubisLite")
# Not below CMAKE_INSTALL_DATADIR: the host layer looks for share/nubis/manifests and nowhere else.
set(NUBIS_INSTALL_MANIFESTDIR share/nubis/manifests)

# The way from one folder to another, both relative to the prefix.
function(nubis_relative_path result from to)
  file(RELATIVE_PATH path "/${from}" "/${to}")
  set(${result} "${path}" PARENT_SCOPE)
endfunction()

nubis_relative_path(NUBIS_LIBDIR_FROM_BINDIR "${CMAKE_INSTALL_BINDIR}" "${CMAKE_INSTALL_LIBDIR}")
nubis_relative_path(NUBIS_BINDIR_FROM_MANIFESTDIR "${NUBIS_INSTALL_MANIFESTDIR}" "${CMAKE_INSTALL_BINDIR}")

# A shared library with its version, and a symbolic link for the linker, which only those need who build against it.
function(nubis_install_library target)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${target} EXPORT NubisLiteTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${ARGN})
endfunction()

function(nubis_install_program target)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${NUBIS_LIBDIR_FROM_BINDIR}")
  install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
endfunction()

# What of a library's symbols is seen from outside.
function(nubis_version_script target map)
  target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
endfunction()
