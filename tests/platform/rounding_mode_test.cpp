// The rounding direction as the library numbers it, from the processor's
// setting.
#include <gtest/gtest.h>

#include <fenv.h>

#include "platform/rounding_mode.h"

namespace {

TEST(RoundingMode, NumbersTheFourDirections) {
    const struct {
        int fe;
        int number;
    } cases[] = {{FE_TONEAREST, 0}, {FE_DOWNWARD, 1}, {FE_UPWARD, 2}, {FE_TOWARDZERO, 3}};
    int old = fegetround();
    for (const auto &c : cases) {
        ASSERT_EQ(fesetround(c.fe), 0);
        EXPECT_EQ(__xgetRD(), c.number) << c.fe;
        EXPECT_EQ(krm_rounding_direction(), c.number) << c.fe;
    }
    fesetround(old);
    EXPECT_EQ(__xgetRD(), 0);
}

}  // namespace
