# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0

# A test of ctest that has a drive service to itself: one starts for it in fresh folders, takes the catalogue files, and
# is gone with everything it wrote when the command has ended. The test passes if the command returns 0. Such tests may
# run at the same time; they see nothing of each other, nor of the services of this machine.
#
#   nubis_add_service_test(NAME my_test COMMAND my_test [ARGUMENT...] [CATALOGUE notes.json...] [LABELS LABEL...]
#                          [TIMEOUT SECONDS])
#
# COMMAND is a program that the project builds, defined before, or any other. Catalogue files are relative to the present
# source folder. The test ends after TIMEOUT, 60 if it is left out. The command finds the tool `nubis` in PATH.
function(nubis_add_service_test)
  cmake_parse_arguments(PARSE_ARGV 0 TEST "" "NAME;TIMEOUT" "COMMAND;CATALOGUE;LABELS")
  if(NOT TEST_NAME OR NOT TEST_COMMAND OR TEST_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "nubis_add_service_test takes NAME, COMMAND, CATALOGUE, LABELS and TIMEOUT")
  endif()
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 60)
  endif()
  if(TARGET nubis)
    set(nubis "$<TARGET_FILE:nubis>")
    set(folder "$<TARGET_FILE_DIR:nubis>")
  else()
    find_program(NUBIS_PROGRAM nubis HINTS "${NubisLite_BINDIR}" REQUIRED
      DOC "The tool that starts services for tests, of the package nubis-lite-tools")
    set(nubis "${NUBIS_PROGRAM}")
    cmake_path(GET NUBIS_PROGRAM PARENT_PATH folder)
  endif()
  set(catalogues "")
  foreach(file IN LISTS TEST_CATALOGUE)
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND catalogues --catalogue "${file}")
  endforeach()
  list(POP_FRONT TEST_COMMAND program)
  if(TARGET ${program})
    set(program "$<TARGET_FILE:${program}>")
  endif()
  add_test(NAME ${TEST_NAME} COMMAND "${nubis}" service exec ${catalogues} -- "${program}" ${TEST_COMMAND})
  set_tests_properties(${TEST_NAME} PROPERTIES
    TIMEOUT ${TEST_TIMEOUT}
    LABELS "${TEST_LABELS}"
    ENVIRONMENT_MODIFICATION "PATH=path_list_prepend:${folder}")
endfunction()
