#include <gtest/gtest.h>

#include "support/child.h"

int main(int argc, char **argv) {
    krm_test::run_scenario_if_asked();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
