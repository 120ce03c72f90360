// The case tables of the primitives: which NaN survives, the default NaN,
// infinities and zeros, signed zero results, overflow and underflow by
// direction, and the named edge cases. Where the library departs from IEEE
// 754 on purpose (the NaN that survives, the all-ones default NaN) the
// expected values follow the library's rule, as noted at each table.
#include <gtest/gtest.h>

#include "quad/quad_support.h"

using namespace quadtest;

namespace {

// Values, storage order written from the top word down.
const krm_real16 zero = words(0, 0, 0, 0);
const krm_real16 mzero = words(0x80000000u, 0, 0, 0);
const krm_real16 one = words(0x3FFF0000u, 0, 0, 0);
const krm_real16 mone = words(0xBFFF0000u, 0, 0, 0);
const krm_real16 two = words(0x40000000u, 0, 0, 0);
const krm_real16 four = words(0x40010000u, 0, 0, 0);
const krm_real16 five = words(0x40014000u, 0, 0, 0);
const krm_real16 mfive = words(0xC0014000u, 0, 0, 0);
const krm_real16 half = words(0x3FFE0000u, 0, 0, 0);
const krm_real16 inf = words(0x7FFF0000u, 0, 0, 0);
const krm_real16 minf = words(0xFFFF0000u, 0, 0, 0);
const krm_real16 max = words(0x7FFEFFFFu, ~0u, ~0u, ~0u);
const krm_real16 mmax = words(0xFFFEFFFFu, ~0u, ~0u, ~0u);
const krm_real16 min_normal = words(0x00010000u, 0, 0, 0);
const krm_real16 min_sub = words(0, 0, 0, 1);
const krm_real16 mmin_sub = words(0x80000000u, 0, 0, 1);
const krm_real16 epsilon = words(0x3F8F0000u, 0, 0, 0);             // 2^-112
const krm_real16 half_epsilon = words(0x3F8E0000u, 0, 0, 0);        // 2^-113
const krm_real16 over_half_epsilon = words(0x3F8E0000u, 0, 0, 1);   // just above 2^-113
const krm_real16 after_one = words(0x3FFF0000u, 0, 0, 1);
const krm_real16 dnan = default_nan();

// NaNs: q quiet, s signalling, each with a payload so that one can tell
// which came out.
const krm_real16 q1 = words(0x7FFF8000u, 0, 0, 1);
const krm_real16 q7 = words(0x7FFF8000u, 0, 0, 7);
const krm_real16 q9 = words(0x7FFF9000u, 0, 0, 0);
const krm_real16 mq0 = words(0xFFFF8000u, 0, 0, 0);
const krm_real16 s1 = words(0x7FFF0000u, 0, 0, 1);
const krm_real16 s2 = words(0x7FFF0000u, 0, 0, 2);
const krm_real16 ms1 = words(0xFFFF0000u, 0, 0, 1);
const krm_real16 s1_quiet = words(0x7FFF8000u, 0, 0, 1);
const krm_real16 s2_quiet = words(0x7FFF8000u, 0, 0, 2);
const krm_real16 ms1_quiet = words(0xFFFF8000u, 0, 0, 1);

enum class op { add, sub, mul, div };

krm_real16 apply(op o, const krm_real16 &a, const krm_real16 &b) {
    krm_real16 r;
    switch (o) {
    case op::add: _Qadd(&r, &a, &b); break;
    case op::sub: _Qsub(&r, &a, &b); break;
    case op::mul: _Qmul(&r, &a, &b); break;
    case op::div: _Qdiv(&r, &a, &b); break;
    }
    return r;
}

struct binary_case {
    const char *what;
    op o;
    krm_real16 a, b;
    krm_real16 expected;
};

// A direction-independent case is checked in all four directions.
void check_all_directions(const binary_case *cases, size_t n) {
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (size_t i = 0; i < n; ++i) {
            const binary_case &c = cases[i];
            krm_real16 r = apply(c.o, c.a, c.b);
            EXPECT_TRUE(same_bits(r, c.expected))
                << c.what << " in direction " << d.name << ": gave " << hex(r) << ", expected " << hex(c.expected);
        }
    }
}

// Which NaN survives an addition: the operand of greater magnitude is 'big'
// (a on a tie); IEEE leaves the choice open, and this rule, which looks at
// the bit patterns, is the library's.
const binary_case nan_addition[] = {
    {"quiet NaN + 1 stays", op::add, q1, one, q1},
    {"1 + quiet NaN stays", op::add, one, q7, q7},
    {"signalling NaN + 1 comes out quiet", op::add, s1, one, s1_quiet},
    {"1 + signalling NaN comes out quiet", op::add, one, s1, s1_quiet},
    {"infinity + NaN gives the NaN quiet", op::add, inf, s2, s2_quiet},
    {"small quiet a: b unchanged", op::add, q1, q9, q9},
    {"small quiet b: b unchanged", op::add, q9, q1, q1},
    {"small quiet b keeps its sign", op::add, q7, mq0, mq0},
    {"both signalling: b made quiet (b small)", op::add, s2, s1, s1_quiet},
    {"both signalling: b made quiet (b big)", op::add, s1, s2, s2_quiet},
    {"equal magnitudes, both signalling: b made quiet", op::add, s1, ms1, ms1_quiet},
    {"small signalling, big quiet: small made quiet (small is b)", op::add, q7, s1, s1_quiet},
    {"small signalling, big quiet: small made quiet (small is a)", op::add, s1, q7, s1_quiet},
    // A subtraction chooses in the same way; the NaN keeps its own sign.
    {"1 - negative quiet NaN keeps the minus", op::sub, one, mq0, mq0},
    {"1 - negative signalling NaN: quiet, sign kept", op::sub, one, ms1, ms1_quiet},
    {"NaN - small quiet NaN: b unchanged", op::sub, q7, mq0, mq0},
    {"both signalling, subtraction: b made quiet", op::sub, s2, s1, s1_quiet},
};

TEST(QuadCases, WhichNaNSurvivesAddition) { check_all_directions(nan_addition, std::size(nan_addition)); }

// Multiplication and division: a signalling b wins; a quiet b gives way to a
// signalling a only; a alone comes out quiet.
const binary_case nan_product[] = {
    {"signalling b beats quiet a", op::mul, q7, s1, s1_quiet},
    {"signalling b beats signalling a", op::mul, s2, s1, s1_quiet},
    {"quiet b gives way to signalling a", op::mul, s2, q7, s2_quiet},
    {"quiet b beats quiet a", op::mul, q1, q7, q7},
    {"quiet b with a number", op::mul, five, q7, q7},
    {"signalling b with a number", op::mul, five, s2, s2_quiet},
    {"a NaN alone comes out quiet", op::mul, s1, five, s1_quiet},
    {"a quiet NaN alone keeps its sign", op::mul, mq0, five, mq0},
    {"NaN times infinity", op::mul, inf, q1, q1},
    {"NaN times zero", op::mul, s1, zero, s1_quiet},
    {"division: signalling b beats quiet a", op::div, q7, s1, s1_quiet},
    {"division: quiet b gives way to signalling a", op::div, s2, q7, s2_quiet},
    {"division: quiet b beats quiet a", op::div, q1, q7, q7},
    {"division: a alone made quiet", op::div, ms1, five, ms1_quiet},
    {"division: b alone", op::div, zero, q1, q1},
};

TEST(QuadCases, WhichNaNSurvivesProduct) { check_all_directions(nan_product, std::size(nan_product)); }

// Invalid operations give the default NaN, all ones but the sign (IEEE has
// no fixed pattern; this one is the library's, and not _ldbl_quiet_nan).
// Infinities and zeros otherwise follow IEEE 754.
const binary_case special_values[] = {
    {"inf + -inf", op::add, inf, minf, dnan},
    {"-inf + inf", op::add, minf, inf, dnan},
    {"inf - inf", op::sub, inf, inf, dnan},
    {"-inf - -inf", op::sub, minf, minf, dnan},
    {"inf + inf", op::add, inf, inf, inf},
    {"-inf - inf", op::sub, minf, inf, minf},
    {"inf + 5", op::add, inf, five, inf},
    {"5 - inf", op::sub, five, inf, minf},
    {"-5 + inf", op::add, mfive, inf, inf},
    {"inf - -inf", op::sub, inf, minf, inf},
    {"inf * 0", op::mul, inf, zero, dnan},
    {"-0 * inf", op::mul, mzero, inf, dnan},
    {"inf * -5", op::mul, inf, mfive, minf},
    {"-inf * -inf", op::mul, minf, minf, inf},
    {"-0 * 5", op::mul, mzero, five, mzero},
    {"0 * -5", op::mul, zero, mfive, mzero},
    {"-0 * -0", op::mul, mzero, mzero, zero},
    {"inf / inf", op::div, inf, minf, dnan},
    {"0 / 0", op::div, zero, zero, dnan},
    {"-0 / 0", op::div, mzero, zero, dnan},
    {"inf / 5", op::div, inf, five, inf},
    {"inf / -0", op::div, inf, mzero, minf},
    {"5 / 0", op::div, five, zero, inf},
    {"5 / -0", op::div, five, mzero, minf},
    {"-5 / 0", op::div, mfive, zero, minf},
    {"0 / 5", op::div, zero, five, zero},
    {"0 / -5", op::div, zero, mfive, mzero},
    {"5 / inf", op::div, five, inf, zero},
    {"-5 / inf", op::div, mfive, inf, mzero},
    {"0 / inf", op::div, zero, inf, zero},
    {"-0 + -0", op::add, mzero, mzero, mzero},
    {"-0 - 0", op::sub, mzero, zero, mzero},
    {"-0 + 5", op::add, mzero, five, five},
    {"4 / 2", op::div, four, two, two},
    {"2 * 2", op::mul, two, two, four},
};

TEST(QuadCases, SpecialValues) { check_all_directions(special_values, std::size(special_values)); }

// Results that depend on the direction: nearest, down, up, towards zero.
struct directed_case {
    const char *what;
    op o;
    krm_real16 a, b;
    krm_real16 expected[4];
};

const directed_case directed[] = {
    // An exact zero sum is +0, and -0 only when rounding down.
    {"1 - 1", op::sub, one, one, {zero, mzero, zero, zero}},
    {"1 + -1", op::add, one, mone, {zero, mzero, zero, zero}},
    {"0 + -0", op::add, zero, mzero, {zero, mzero, zero, zero}},
    {"-0 - -0", op::sub, mzero, mzero, {zero, mzero, zero, zero}},
    // Overflow: infinity when rounding to nearest or away from zero, the
    // greatest finite number otherwise.
    {"max + max", op::add, max, max, {inf, max, inf, max}},
    {"-max - max", op::sub, mmax, max, {minf, minf, mmax, mmax}},
    {"max * 2", op::mul, max, two, {inf, max, inf, max}},
    {"-max * 2", op::mul, mmax, two, {minf, minf, mmax, mmax}},
    {"max / 0.5", op::div, max, half, {inf, max, inf, max}},
    // The edge cases around 1 and epsilon.
    {"1 + epsilon is the next number", op::add, one, epsilon, {after_one, after_one, after_one, after_one}},
    {"1 + epsilon/2 is a tie", op::add, one, half_epsilon, {one, one, after_one, one}},
    {"1 + just over epsilon/2", op::add, one, over_half_epsilon, {after_one, one, after_one, one}},
    {"-1 - epsilon/2", op::sub, mone, half_epsilon,
     {mone, words(0xBFFF0000u, 0, 0, 1), mone, mone}},
    // Underflow into the subnormals, rounded once.
    {"min normal * 0.5", op::mul, min_normal, half,
     {words(0x00008000u, 0, 0, 0), words(0x00008000u, 0, 0, 0), words(0x00008000u, 0, 0, 0),
      words(0x00008000u, 0, 0, 0)}},
    {"min subnormal * 0.5", op::mul, min_sub, half, {zero, zero, min_sub, zero}},
    {"-min subnormal * 0.5", op::mul, mmin_sub, half, {mzero, mmin_sub, mzero, mzero}},
    {"min subnormal / 2", op::div, min_sub, two, {zero, zero, min_sub, zero}},
    {"3 min subnormal / 2 is a tie", op::div, words(0, 0, 0, 3), two,
     {words(0, 0, 0, 2), words(0, 0, 0, 1), words(0, 0, 0, 2), words(0, 0, 0, 1)}},
    {"min normal - min subnormal", op::sub, min_normal, min_sub,
     {words(0x0000FFFFu, ~0u, ~0u, ~0u), words(0x0000FFFFu, ~0u, ~0u, ~0u), words(0x0000FFFFu, ~0u, ~0u, ~0u),
      words(0x0000FFFFu, ~0u, ~0u, ~0u)}},
    {"1 / 3", op::div, one, words(0x40008000u, 0, 0, 0),
     {words(0x3FFD5555u, 0x55555555u, 0x55555555u, 0x55555555u),
      words(0x3FFD5555u, 0x55555555u, 0x55555555u, 0x55555555u),
      words(0x3FFD5555u, 0x55555555u, 0x55555555u, 0x55555556u),
      words(0x3FFD5555u, 0x55555555u, 0x55555555u, 0x55555555u)}},
};

TEST(QuadCases, DirectedResults) {
    for (const directed_case &c : directed) {
        for (const direction &d : directions) {
            rounding_scope mode(d.fe);
            krm_real16 r = apply(c.o, c.a, c.b);
            EXPECT_TRUE(same_bits(r, c.expected[d.number]))
                << c.what << " in direction " << d.name << ": gave " << hex(r) << ", expected "
                << hex(c.expected[d.number]);
        }
    }
}

// The square root: zeros as they are, NaNs made quiet (whatever their sign),
// plus infinity as it is, anything else negative the default NaN.
struct unary_case {
    const char *what;
    krm_real16 a;
    krm_real16 expected;
};

const unary_case sqrt_cases[] = {
    {"sqrt(-0) is -0", mzero, mzero},
    {"sqrt(+0) is +0", zero, zero},
    {"sqrt(-1) is the default NaN", mone, dnan},
    {"sqrt(-min subnormal)", mmin_sub, dnan},
    {"sqrt(-inf)", minf, dnan},
    {"sqrt(inf)", inf, inf},
    {"sqrt of a quiet NaN", q7, q7},
    {"sqrt of a signalling NaN", s1, s1_quiet},
    {"sqrt of a negative signalling NaN", ms1, ms1_quiet},
    {"sqrt(4)", four, two},
    {"sqrt(1)", one, one},
    {"sqrt(min subnormal) = 2^-8247", min_sub, words(0x1FC80000u, 0, 0, 0)},
    {"sqrt(2^-16382) = 2^-8191", min_normal, words(0x20000000u, 0, 0, 0)},
};

TEST(QuadCases, SquareRoot) {
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (const unary_case &c : sqrt_cases) {
            krm_real16 r;
            __Qsqrt(&r, &c.a);
            EXPECT_TRUE(same_bits(r, c.expected))
                << c.what << " in direction " << d.name << ": gave " << hex(r) << ", expected " << hex(c.expected);
        }
    }
}

TEST(QuadCases, Negation) {
    const unary_case cases[] = {
        {"-(1)", one, mone}, {"-(-0)", mzero, zero}, {"-(inf)", inf, minf},
        {"-(signalling NaN) flips the sign only", s1, ms1}, {"-(quiet NaN)", mq0, words(0x7FFF8000u, 0, 0, 0)},
    };
    for (const unary_case &c : cases) {
        krm_real16 r;
        _Qneg(&r, &c.a);
        EXPECT_TRUE(same_bits(r, c.expected)) << c.what << ": gave " << hex(r);
    }
}

// Comparisons: 1 or 0 from each of eq, ne, lt, le, gt, ge.
struct compare_case {
    const char *what;
    krm_real16 a, b;
    int eq, ne, lt, le, gt, ge;
};

const compare_case comparisons[] = {
    {"+0 and -0 are equal", zero, mzero, 1, 0, 0, 1, 0, 1},
    {"-0 and +0 are equal", mzero, zero, 1, 0, 0, 1, 0, 1},
    {"a NaN and itself", q1, q1, 0, 1, 0, 0, 0, 0},
    {"a signalling NaN and itself", s1, s1, 0, 1, 0, 0, 0, 0},
    {"NaN and 1", q1, one, 0, 1, 0, 0, 0, 0},
    {"1 and NaN", one, q7, 0, 1, 0, 0, 0, 0},
    {"1 < 2", one, two, 0, 1, 1, 1, 0, 0},
    {"-1 > -5", mone, mfive, 0, 1, 0, 0, 1, 1},
    {"-1 < 1", mone, one, 0, 1, 1, 1, 0, 0},
    {"-0 < min subnormal", mzero, min_sub, 0, 1, 1, 1, 0, 0},
    {"-min subnormal < +0", mmin_sub, zero, 0, 1, 1, 1, 0, 0},
    {"inf > max", inf, max, 0, 1, 0, 0, 1, 1},
    {"-inf < -max", minf, mmax, 0, 1, 1, 1, 0, 0},
    {"1 == 1", one, one, 1, 0, 0, 1, 0, 1},
    {"1 < next after 1", one, after_one, 0, 1, 1, 1, 0, 0},
    {"-next after 1 < -1", words(0xBFFF0000u, 0, 0, 1), mone, 0, 1, 1, 1, 0, 0},
    {"differing low words only", words(0x40000000u, 0, 1, 0), words(0x40000000u, 0, 0, 0xFFFFFFFFu), 0, 1, 0, 0, 1,
     1},
};

TEST(QuadCases, Comparisons) {
    for (const compare_case &c : comparisons) {
        EXPECT_EQ(_Qeq(&c.a, &c.b), c.eq) << c.what;
        EXPECT_EQ(_Qne(&c.a, &c.b), c.ne) << c.what;
        EXPECT_EQ(_Qlt(&c.a, &c.b), c.lt) << c.what;
        EXPECT_EQ(_Qle(&c.a, &c.b), c.le) << c.what;
        EXPECT_EQ(_Qgt(&c.a, &c.b), c.gt) << c.what;
        EXPECT_EQ(_Qge(&c.a, &c.b), c.ge) << c.what;
    }
}

// Comparisons over random pairs, NaNs and zeros among them, against the
// IEEE comparisons of __float128.
TEST(QuadCases, ComparisonsMatchFloat128) {
    operands gen(0x7001);
    for (int i = 0; i < scaled(200000); ++i) {
        krm_real16 a, b;
        gen.for_add(a, b);
        int pick = gen.below(16);
        if (pick == 0) a = gen.below(2) ? q1 : s2;
        if (pick == 1) b = gen.below(2) ? mq0 : s1;
        if (pick == 2) a = gen.below(2) ? zero : mzero;
        if (pick == 3) b = gen.below(2) ? zero : mzero;
        if (pick == 4) b = a;
        __float128 x = to_f128(a), y = to_f128(b);
        ASSERT_EQ(_Qeq(&a, &b), x == y) << hex(a) << " , " << hex(b);
        ASSERT_EQ(_Qne(&a, &b), x != y) << hex(a) << " , " << hex(b);
        ASSERT_EQ(_Qlt(&a, &b), x < y) << hex(a) << " , " << hex(b);
        ASSERT_EQ(_Qle(&a, &b), x <= y) << hex(a) << " , " << hex(b);
        ASSERT_EQ(_Qgt(&a, &b), x > y) << hex(a) << " , " << hex(b);
        ASSERT_EQ(_Qge(&a, &b), x >= y) << hex(a) << " , " << hex(b);
    }
}

// No primitive sets a flag, even where IEEE would raise invalid, overflow,
// underflow, division by zero or inexact, and none clears one either.
TEST(QuadCases, NoFlagIsRaisedOrCleared) {
    const binary_case cases[] = {
        {"invalid", op::mul, inf, zero, dnan},   {"invalid", op::add, s1, one, s1_quiet},
        {"overflow", op::mul, max, max, inf},    {"underflow", op::mul, min_sub, half, zero},
        {"divide by zero", op::div, one, zero, inf}, {"inexact", op::div, one, words(0x40008000u, 0, 0, 0), one},
    };
    for (const binary_case &c : cases) {
        feclearexcept(FE_ALL_EXCEPT);
        apply(c.o, c.a, c.b);
        EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), 0) << c.what;
        feraiseexcept(FE_INEXACT | FE_DIVBYZERO);
        apply(c.o, c.a, c.b);
        EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), FE_INEXACT | FE_DIVBYZERO) << c.what;
    }
    feclearexcept(FE_ALL_EXCEPT);
    krm_real16 r;
    __Qsqrt(&r, &mone);
    __Qsqrt(&r, &two);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), 0);
}

}  // namespace
