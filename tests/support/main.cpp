#include <gtest/gtest.h>

#include "support/child.h"

#if defined(__SANITIZE_ADDRESS__)
// Tests ask for impossible amounts of memory and expect a null pointer back.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }
#endif

int main(int argc, char **argv) {
    krm_test::run_scenario_if_asked();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
