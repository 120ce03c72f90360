// The long_double class: class order (top word first) against the storage
// order of the primitives, and each operator giving what its primitive
// gives. Plus the named edge cases, told in class terms.
#include <gtest/gtest.h>

#include <limits.h>
#include <quadmath.h>

#include "quad/ldbl_constants.h"
#include "quad/quad_support.h"

using namespace quadtest;

namespace {

krm_real16 storage_of(const long_double &x) { return x.storage(); }

TEST(QuadClass, WordOrders) {
    long_double x(0x3FFF0000u, 0x11111111u, 0x22222222u, 0x33333333u);
    EXPECT_EQ(x.word[0], 0x3FFF0000u);
    EXPECT_EQ(x.word[3], 0x33333333u);
    krm_real16 s = x.storage();
    EXPECT_TRUE(same_bits(s, words(0x3FFF0000u, 0x11111111u, 0x22222222u, 0x33333333u))) << hex(s);
    EXPECT_EQ(s.word[0], 0x33333333u);
    long_double back = long_double::of_storage(s);
    EXPECT_EQ(memcmp(back.word, x.word, 16), 0);
    static_assert(sizeof(long_double) == 16, "four words");
}

TEST(QuadClass, ConstantsOfEachUnit) {
    struct {
        const char *what;
        long_double value;
        __float128 expected;
    } cases[] = {
        {"_ldbl_min_subnormal", _ldbl_min_subnormal, 0x1p-16494Q},
        {"_ldbl_max_subnormal", _ldbl_max_subnormal, 0x1p-16382Q - 0x1p-16494Q},
        {"_ldbl_min_normal", _ldbl_min_normal, 0x1p-16382Q},
        {"_ldbl_max_normal", _ldbl_max_normal, FLT128_MAX},
        {"_ldbl_infinity", _ldbl_infinity, __builtin_infq()},
        {"_ldbl_epsilon", _ldbl_epsilon, 0x1p-112Q},
    };
    for (const auto &c : cases)
        EXPECT_TRUE(same_bits(c.value.storage(), from_f128(c.expected))) << c.what << ": " << hex(c.value.storage());
    EXPECT_TRUE(same_bits(_ldbl_quiet_nan.storage(), words(0x7FFF8000u, 0, 0, 0)));
    EXPECT_TRUE(same_bits(_ldbl_signalling_nan.storage(), words(0x7FFF0000u, 0, 0, 1)));
}

// Every operator is its primitive between two word reversals.
TEST(QuadClass, OperatorsAreThePrimitives) {
    operands gen(0xA001);
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (int i = 0; i < scaled(20000); ++i) {
            krm_real16 a, b, r;
            gen.for_mul(a, b, false);
            if (gen.below(3) == 0) gen.for_add(a, b);
            long_double x = long_double::of_storage(a), y = long_double::of_storage(b);
            _Qadd(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(x + y), r));
            _Qsub(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(x - y), r));
            _Qmul(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(x * y), r));
            _Qdiv(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(x / y), r));
            long_double z = x;
            z += y;
            _Qadd(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(z), r));
            z = x;
            z -= y;
            _Qsub(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(z), r));
            z = x;
            z *= y;
            _Qmul(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(z), r));
            z = x;
            z /= y;
            _Qdiv(&r, &a, &b);
            ASSERT_TRUE(same_bits(storage_of(z), r));
            _Qneg(&r, &a);
            ASSERT_TRUE(same_bits(storage_of(-x), r));
            ASSERT_EQ(x == y, _Qeq(&a, &b) == 1);
            ASSERT_EQ(x != y, _Qne(&a, &b) == 1);
            ASSERT_EQ(x < y, _Qlt(&a, &b) == 1);
            ASSERT_EQ(x <= y, _Qle(&a, &b) == 1);
            ASSERT_EQ(x > y, _Qgt(&a, &b) == 1);
            ASSERT_EQ(x >= y, _Qge(&a, &b) == 1);
            krm_real16 p = a;
            p.word[3] &= 0x7FFFFFFFu;
            __Qsqrt(&r, &p);
            ASSERT_TRUE(same_bits(storage_of(sqrtl(long_double::of_storage(p))), r));
            ASSERT_EQ(static_cast<int>(x), _Qqtoi(&a));
            ASSERT_EQ(static_cast<long long>(x), _Qqtoll(&a));
            ASSERT_EQ(static_cast<unsigned long long>(x), _Qqtoull(&a));
            double dx = static_cast<double>(x), dq = _Qqtod(&a);
            ASSERT_EQ(memcmp(&dx, &dq, 8), 0);
        }
    }
}

TEST(QuadClass, Constructors) {
    const int ints[] = {0, 7, -7, INT_MIN, INT_MAX};
    for (int v : ints) EXPECT_TRUE(same_bits(long_double(v).storage(), from_f128(v))) << v;
    const long long longs[] = {0, -3, LLONG_MIN, LLONG_MAX};
    for (long long v : longs) EXPECT_TRUE(same_bits(long_double(v).storage(), from_f128(v))) << v;
    const unsigned long long ulongs[] = {0, 5, ULLONG_MAX};
    for (unsigned long long v : ulongs) EXPECT_TRUE(same_bits(long_double(v).storage(), from_f128(v))) << v;
    const double doubles[] = {0.0, -0.0, 0.1, -1e300, 4.9e-324, __builtin_inf()};
    for (double v : doubles) EXPECT_TRUE(same_bits(long_double(v).storage(), from_f128(v))) << v;
    // Mixed expressions take the class's operators.
    long_double x(3);
    EXPECT_TRUE(x + 1 == long_double(4));
    EXPECT_TRUE(x * 0.5 == long_double(1.5));
    EXPECT_TRUE(x > 2);
}

// The named edge cases, in class terms and round to nearest.
TEST(QuadClass, NamedEdgeCases) {
    rounding_scope mode(FE_TONEAREST);
    long_double one(1);
    long_double next_after_one(0x3FFF0000u, 0u, 0u, 1u);
    long_double half_eps = _ldbl_epsilon * long_double(0.5);
    EXPECT_TRUE(same_bits((one + _ldbl_epsilon).storage(), next_after_one.storage()));
    EXPECT_TRUE(same_bits((one + half_eps).storage(), one.storage()));
    // Just over half the last place (by one unit of its own last place): up.
    EXPECT_TRUE(same_bits((one + (half_eps + half_eps * _ldbl_epsilon)).storage(), next_after_one.storage()));
    EXPECT_TRUE(same_bits((_ldbl_min_normal * long_double(0.5)).storage(), words(0x00008000u, 0, 0, 0)));
    EXPECT_TRUE(same_bits((_ldbl_min_subnormal * long_double(0.5)).storage(), words(0, 0, 0, 0)));
    EXPECT_TRUE(same_bits((_ldbl_infinity + -_ldbl_infinity).storage(), default_nan()));
    EXPECT_FALSE(same_bits(default_nan(), _ldbl_quiet_nan.storage()));
    EXPECT_TRUE(same_bits(sqrtl(long_double(0u, 0u, 0u, 0u) * long_double(-1)).storage(), words(0x80000000u, 0, 0, 0)));
    EXPECT_TRUE(same_bits(sqrtl(long_double(-1)).storage(), default_nan()));
    EXPECT_EQ(static_cast<int>(long_double(2147483648.0)), INT_MIN);
    EXPECT_TRUE(long_double(0.0) == long_double(-0.0));
    EXPECT_TRUE(_ldbl_quiet_nan != _ldbl_quiet_nan);
}

}  // namespace
