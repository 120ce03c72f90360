// The reduction of large arguments by pi/2, against exact remainders that
// mpmath computed with more bits than the largest REAL(16) has
// (tools/rem_pio2m_cases.py): random arguments over the whole exponent
// range, arguments next to a multiple of pi/2 whose remainder cancels 113
// bits and more, the largest finite value and powers of two.

#include <gtest/gtest.h>

#include <math.h>
#include <stdint.h>

#include "platform/rem_pio2m.h"

namespace {

struct reduction_case {
    const char *name;
    uint32_t pieces[5];
    int count;
    int e0;
    int quotient_mod_8;
    double remainder[3];
};

void PrintTo(const reduction_case &c, std::ostream *os) { *os << c.name; }

const reduction_case kCases[] = {
#include "platform/rem_pio2m_cases.inc"
};

class Reduction : public ::testing::TestWithParam<reduction_case> {};

TEST_P(Reduction, QuotientBitsAndRemainderAsThreeNearestDoubles) {
    const reduction_case &c = GetParam();
    double x[5];
    for (int i = 0; i < c.count; ++i) x[i] = c.pieces[i];
    double y[3] = {1, 2, 3};
    const int n = __rem_pio2m(x, y, c.e0, c.count, 3, _TBL_ipio2l_inf);
    EXPECT_EQ(n, c.quotient_mod_8);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(y[i], c.remainder[i]) << "y[" << i << "] " << y[i];
}

INSTANTIATE_TEST_SUITE_P(Cases, Reduction, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<reduction_case> &info) { return std::string(info.param.name); });

// Fewer doubles for the lower precision classes: the same leading ones, and
// nothing written past them.
TEST(ReductionPrecision, ClassesGiveOneTwoTwoThreeDoubles) {
    const reduction_case &c = kCases[0];
    double x[5];
    for (int i = 0; i < c.count; ++i) x[i] = c.pieces[i];
    const int expected_outputs[4] = {1, 2, 2, 3};
    for (int prec = 0; prec < 4; ++prec) {
        double y[4] = {7, 7, 7, 7};
        EXPECT_EQ(__rem_pio2m(x, y, c.e0, c.count, prec, _TBL_ipio2l_inf), c.quotient_mod_8);
        for (int i = 0; i < 4; ++i) {
            if (i < expected_outputs[prec])
                EXPECT_EQ(y[i], c.remainder[i]) << "prec " << prec << " y[" << i << "]";
            else
                EXPECT_EQ(y[i], 7.0) << "prec " << prec << " wrote y[" << i << "]";
        }
    }
}

// A zero piece at the end stands for nothing.
TEST(ReductionPieces, TrailingZeroPiecesChangeNothing) {
    const reduction_case &c = kCases[0];
    double x[5] = {0, 0, 0, 0, 0};
    for (int i = 0; i < c.count; ++i) x[i] = c.pieces[i];
    double y1[3], y2[3];
    const int n1 = __rem_pio2m(x, y1, c.e0, c.count, 3, _TBL_ipio2l_inf);
    double longer[6] = {x[0], x[1], x[2], x[3], x[4], 0};
    const int n2 = __rem_pio2m(longer, y2, c.e0, c.count + 1, 3, _TBL_ipio2l_inf);
    EXPECT_EQ(n1, n2);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(y1[i], y2[i]);
}

// Small arguments, where 2/pi matters from its first bit: checked against
// 80-bit arithmetic, which is exact enough there.
TEST(ReductionSmall, AgreesWithDoubleArithmetic) {
    const struct {
        uint32_t piece;
        int e0;
    } small[] = {{0xC90FDB, -23}, {0x800000, -22}, {0x800000, -20}, {0xFFFFFF, -18}, {0x9A3B17, -10}};
    for (const auto &s : small) {
        const double x[1] = {static_cast<double>(s.piece)};
        double y[3];
        const int n = __rem_pio2m(x, y, s.e0, 1, 3, _TBL_ipio2l_inf);
        const long double half_pi = 1.570796326794896619231321691639751442L;
        const long double v = ldexpl(s.piece, s.e0);
        const long double q = nearbyintl(v / half_pi);
        EXPECT_EQ(n, static_cast<int>(fmodl(q, 8.0L)));
        EXPECT_NEAR(y[0], static_cast<double>(v - q * half_pi), 1e-14) << static_cast<double>(v);
        EXPECT_LE(fabs(y[0]), M_PI_4 + 1e-15);
        EXPECT_LE(fabs(y[1]), ldexp(fabs(y[0]), -52));
    }
}

// The table starts with the well-known first digits of 2/pi.
TEST(ReductionTable, FirstWordsOfTwoOverPi) {
    EXPECT_EQ(_TBL_ipio2l_inf[0], 0xA2F983);
    EXPECT_EQ(_TBL_ipio2l_inf[1], 0x6E4E44);
    for (int i = 0; i < krm::platform::two_over_pi_words; ++i) {
        EXPECT_GE(_TBL_ipio2l_inf[i], 0);
        EXPECT_LT(_TBL_ipio2l_inf[i], 1 << 24);
    }
}

}  // namespace
