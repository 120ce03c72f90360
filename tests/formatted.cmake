# Formatted output against gfortran: oracle.f90 writes the records of every
# case of oracle_cases.txt through gfortran's own run-time library, and the
# tests compare libkrm's records with them. Editing does not depend on the
# ABI, so the i386 build uses the same 64-bit gfortran program; it is built
# by gfortran itself so that the library's ABI options never reach it.
find_program(KRM_GFORTRAN NAMES gfortran gfortran-12)
set(KRM_ORACLE_CASES ${CMAKE_CURRENT_SOURCE_DIR}/formatted/oracle_cases.txt)
set(KRM_ORACLE_OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/formatted_oracle_records.txt)
if(KRM_GFORTRAN)
  set(KRM_ORACLE_PROGRAM ${CMAKE_CURRENT_BINARY_DIR}/formatted_oracle)
  add_custom_command(
    OUTPUT ${KRM_ORACLE_PROGRAM}
    COMMAND ${KRM_GFORTRAN} -O0 -o ${KRM_ORACLE_PROGRAM} ${CMAKE_CURRENT_SOURCE_DIR}/formatted/oracle.f90
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/formatted/oracle.f90
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    COMMENT "Building the gfortran oracle of formatted output"
    VERBATIM)
  add_custom_command(
    OUTPUT ${KRM_ORACLE_OUTPUT}
    COMMAND ${KRM_ORACLE_PROGRAM} ${KRM_ORACLE_CASES} ${KRM_ORACLE_OUTPUT}
    DEPENDS ${KRM_ORACLE_PROGRAM} ${KRM_ORACLE_CASES}
    COMMENT "Writing the formatted output cases with gfortran"
    VERBATIM)
  add_custom_target(krm_formatted_oracle ALL DEPENDS ${KRM_ORACLE_OUTPUT})
  add_dependencies(krm_tests krm_formatted_oracle)
else()
  message(WARNING "gfortran not found: the formatted output tests against it will fail")
endif()
target_compile_definitions(krm_tests PRIVATE
  KRM_ORACLE_CASES="${KRM_ORACLE_CASES}" KRM_ORACLE_OUTPUT="${KRM_ORACLE_OUTPUT}")
# The case file names the tests: a changed file relinks the binary, so that
# the tests are discovered again.
set_source_files_properties(${CMAKE_CURRENT_SOURCE_DIR}/formatted/formatted_oracle_test.cpp
  PROPERTIES OBJECT_DEPENDS ${KRM_ORACLE_CASES})
