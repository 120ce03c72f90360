# REAL(16) and decimal conversion tests: their oracles and the long sweeps.
#
# GCC's __float128 with libquadmath is the oracle in both builds; MPFR (and
# GMP) where installed for the build's ABI, for the square root and the exact
# decimal references. The oracle's operations must not be folded or moved
# across fesetround.
file(GLOB KRM_QUAD_TEST_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/quad/*.cpp)
set_source_files_properties(${KRM_QUAD_TEST_SOURCES} PROPERTIES
  COMPILE_OPTIONS "-frounding-math;-fext-numeric-literals")
target_link_libraries(krm_tests PRIVATE quadmath)
if(KRM_ARCH STREQUAL "x86_64")
  target_link_libraries(krm_tests PRIVATE mpfr gmp)
  target_compile_definitions(krm_tests PRIVATE KRM_TEST_MPFR)
endif()

# The long sweep of the REAL(16) primitives: built on request
# (--target quad_sweep), run by hand, never by ctest.
add_executable(quad_sweep EXCLUDE_FROM_ALL sweep/quad_sweep.cpp quad/quad_support.cpp)
target_include_directories(quad_sweep PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_options(quad_sweep PRIVATE -frounding-math -fext-numeric-literals -Wall -Wextra)
target_link_libraries(quad_sweep PRIVATE krm_static quadmath)

# The long sweep of the decimal conversions against the exact references,
# both ways: built on request (--target decimal_sweep), run by hand.
add_executable(decimal_sweep EXCLUDE_FROM_ALL sweep/decimal_sweep.cpp
  support/exact_decimal.cpp support/decimal_harness.cpp)
target_include_directories(decimal_sweep PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(decimal_sweep PRIVATE krm_static GTest::gtest pthread)
