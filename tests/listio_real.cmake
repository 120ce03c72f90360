# List-directed output of reals: the shortest-digit tests take REAL(16)
# values from GCC's __float128 (libquadmath), and on x86-64, where its
# library is installed, judge the digits against a reference written with
# GMP's whole numbers.
target_link_libraries(krm_tests PRIVATE quadmath)
if(KRM_ARCH STREQUAL "x86_64")
  target_link_libraries(krm_tests PRIVATE gmp)
  target_compile_definitions(krm_tests PRIVATE KRM_TEST_GMP)
endif()

# Every REAL(4) value through both shortest-digit methods. Built on request
# (--target cvt_real_exhaustive) and run by hand; not a ctest test.
add_executable(cvt_real_exhaustive EXCLUDE_FROM_ALL exhaustive/cvt_real_exhaustive.cpp)
target_link_libraries(cvt_real_exhaustive PRIVATE krm_static pthread)
target_compile_options(cvt_real_exhaustive PRIVATE -Wall -Wextra)
