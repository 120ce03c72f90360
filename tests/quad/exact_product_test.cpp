// The exact product of two REAL(16) values as head and tail, against
// Dekker's product in __float128 arithmetic (exact when rounding to nearest
// and nothing overflows or underflows), and, in every direction, against the
// defining property: the head is the rounded product and head + tail the
// exact one.
#include <gtest/gtest.h>

#include <quadmath.h>

#include "quad/exact_product.h"
#include "quad/quad_support.h"

using namespace quadtest;

namespace {

// Dekker's exact product: a = ah + al with ah of 57 bits, likewise b.
__float128 dekker(__float128 a, __float128 b, __float128 *lo) {
    const __float128 split = 0x1p57Q + 1;
    __float128 p = a * b;
    __float128 ta = a * split, tb = b * split;
    __float128 ah = ta - (ta - a), bh = tb - (tb - b);
    __float128 al = a - ah, bl = b - bh;
    *lo = (((ah * bh - p) + ah * bl) + al * bh) + al * bl;
    return p;
}

long_double ld(__float128 f) { return long_double::of_storage(from_f128(f)); }
__float128 f128(const long_double &x) { return to_f128(x.storage()); }

TEST(ExactProduct, AgreesWithDekker) {
    operands gen(31);
    for (long i = 0; i < 8 * cases_per_direction(); ++i) {
        // Exponents within the range where Dekker's splitting cannot
        // overflow and the tail stays normal.
        krm_real16 a = gen.with_exponent(16383 + gen.below(8000) - 4000);
        krm_real16 b = gen.with_exponent(16383 + gen.below(8000) - 4000);
        long_double lo;
        long_double p = krm::ldmath::exact_product(long_double::of_storage(a), long_double::of_storage(b), &lo);
        __float128 elo;
        __float128 ep = dekker(to_f128(a), to_f128(b), &elo);
        ASSERT_TRUE(same_bits(p.storage(), from_f128(ep))) << hex(a) << " * " << hex(b);
        ASSERT_TRUE(same_bits(lo.storage(), from_f128(elo)) || (elo == 0 && f128(lo) == 0))
            << hex(a) << " * " << hex(b) << ": tail " << hex(lo.storage()) << ", not " << hex(from_f128(elo));
    }
}

TEST(ExactProduct, EveryDirection) {
    // In every direction the head is the product as the operator rounds
    // it, and the tail is what the nearest rounding's tail says minus the
    // difference of the two heads: head + tail is the same exact value.
    operands gen(32);
    for (const direction &d : directions) {
        for (long i = 0; i < cases_per_direction(); ++i) {
            krm_real16 a = gen.with_exponent(16383 + gen.below(200) - 100);
            krm_real16 b = gen.with_exponent(16383 + gen.below(200) - 100);
            long_double lo, lo_n;
            long_double p, p_n;
            {
                rounding_scope scope(d.fe);
                p = krm::ldmath::exact_product(long_double::of_storage(a), long_double::of_storage(b), &lo);
                volatile __float128 x = to_f128(a), y = to_f128(b);
                ASSERT_TRUE(same_bits(p.storage(), from_f128(x * y))) << d.name << " " << hex(a) << " * " << hex(b);
            }
            p_n = krm::ldmath::exact_product(long_double::of_storage(a), long_double::of_storage(b), &lo_n);
            // (p - p_n) is exact (neighbours or equal); tails then differ by it.
            __float128 diff = f128(p) - f128(p_n);
            ASSERT_EQ(f128(lo) + diff, f128(lo_n)) << d.name << " " << hex(a) << " * " << hex(b);
        }
    }
}

TEST(ExactProduct, ExactAndSpecial) {
    struct {
        __float128 a, b;
    } cases[] = {{3, 7}, {0, 5}, {-0.0Q, 5}, {HUGE_VALQ, 2}, {0x1p16000Q, 0x1p16000Q}, {0x1p-16000Q, 0x1p-400Q}};
    for (const auto &c : cases) {
        long_double lo;
        long_double p = krm::ldmath::exact_product(ld(c.a), ld(c.b), &lo);
        EXPECT_TRUE(same_bits(p.storage(), from_f128(c.a * c.b)));
        EXPECT_EQ(f128(lo), 0);
    }
}

}  // namespace
