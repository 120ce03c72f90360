// The four operations and the square root over random operands in every
// rounding direction, against GCC's __float128 (libgcc's software routines,
// correctly rounded in the direction fesetround sets) and, for the square
// root, against exact integer arithmetic (and MPFR where it is linked in;
// libquadmath's sqrtq is not correctly rounded, so it is no oracle).
// Every call must also leave the floating-point flags as they were.
#include <gtest/gtest.h>

#include <stdio.h>

#include <sstream>

#if defined(KRM_TEST_MPFR)
#define MPFR_WANT_FLOAT128
#include <mpfr.h>
#endif

#include "quad/quad_support.h"

using namespace quadtest;

namespace {

enum class op { add, sub, mul, div };

const char *op_name(op o) {
    switch (o) {
    case op::add: return "_Qadd";
    case op::sub: return "_Qsub";
    case op::mul: return "_Qmul";
    default: return "_Qdiv";
    }
}

struct failures {
    long count = 0;
    std::ostringstream first;
    void note(const std::string &what) {
        if (count++ < 8) first << what << "\n";
    }
};

class QuadOracle : public ::testing::TestWithParam<direction> {};

void run_binary(op o, const direction &d, uint64_t seed) {
    operands gen(seed);
    failures bad, flags;
    long oracle_wrong = 0;
    rounding_scope mode(d.fe);
    long n = cases_per_direction();
    for (long i = 0; i < n; ++i) {
        krm_real16 a, b, r;
        if (o == op::add || o == op::sub)
            gen.for_add(a, b);
        else
            gen.for_mul(a, b, o == op::div);
        feclearexcept(FE_ALL_EXCEPT);
        switch (o) {
        case op::add: _Qadd(&r, &a, &b); break;
        case op::sub: _Qsub(&r, &a, &b); break;
        case op::mul: _Qmul(&r, &a, &b); break;
        case op::div: _Qdiv(&r, &a, &b); break;
        }
        if (fetestexcept(FE_ALL_EXCEPT)) flags.note(hex(a) + " , " + hex(b));
        __float128 x = to_f128(a), y = to_f128(b), e;
        switch (o) {
        case op::add: e = x + y; break;
        case op::sub: e = x - y; break;
        case op::mul: e = x * y; break;
        default: e = x / y; break;
        }
        // An invalid operation gives the library's own default NaN, not
        // libgcc's: the pattern differs on purpose.
        krm_real16 expected = e != e ? default_nan() : from_f128(e);
        if (!same_bits(r, expected)) {
            // libgcc's i386 division loses the sticky bit now and then in
            // the directed modes; exact arithmetic decides between the two.
            bool finite = x == x && y == y && x != 0 && y != 0 && !__builtin_isinf_sign(x) && !__builtin_isinf_sign(y);
            if (o == op::div && finite && quotient_is_correct(a, b, r, d.number) &&
                !quotient_is_correct(a, b, expected, d.number))
                ++oracle_wrong;
            else
                bad.note(hex(a) + " , " + hex(b) + " gave " + hex(r) + " expected " + hex(expected));
        }
    }
    if (oracle_wrong) printf("[ note     ] %ld quotients where __float128 was not correctly rounded\n", oracle_wrong);
    EXPECT_EQ(bad.count, 0) << op_name(o) << " in direction " << d.name << ", first failures:\n"
                            << bad.first.str();
    EXPECT_EQ(flags.count, 0) << op_name(o) << " raised flags for:\n" << flags.first.str();
}

TEST_P(QuadOracle, AddMatchesFloat128) { run_binary(op::add, GetParam(), 0x1001 + GetParam().number); }
TEST_P(QuadOracle, SubMatchesFloat128) { run_binary(op::sub, GetParam(), 0x2001 + GetParam().number); }
TEST_P(QuadOracle, MulMatchesFloat128) { run_binary(op::mul, GetParam(), 0x3001 + GetParam().number); }
TEST_P(QuadOracle, DivMatchesFloat128) { run_binary(op::div, GetParam(), 0x4001 + GetParam().number); }

TEST_P(QuadOracle, SqrtIsCorrectlyRounded) {
    const direction &d = GetParam();
    operands gen(0x5001 + d.number);
    failures bad, flags;
    rounding_scope mode(d.fe);
#if defined(KRM_TEST_MPFR)
    const mpfr_rnd_t mpfr_mode[4] = {MPFR_RNDN, MPFR_RNDD, MPFR_RNDU, MPFR_RNDZ};
    mpfr_t mx, mr;
    mpfr_init2(mx, 113);
    mpfr_init2(mr, 113);
#endif
    long n = cases_per_direction();
    for (long i = 0; i < n; ++i) {
        krm_real16 x = gen.for_sqrt(), r;
        feclearexcept(FE_ALL_EXCEPT);
        __Qsqrt(&r, &x);
        if (fetestexcept(FE_ALL_EXCEPT)) flags.note(hex(x));
        if (!sqrt_is_correct(x, r, d.number)) bad.note("exact check: " + hex(x) + " gave " + hex(r));
#if defined(KRM_TEST_MPFR)
        // A second opinion on every fourth case: MPFR is slow.
        if (i % 4) continue;
        mpfr_set_float128(mx, to_f128(x), MPFR_RNDN);  // exact at 113 bits
        mpfr_sqrt(mr, mx, mpfr_mode[d.number]);
        krm_real16 expected = from_f128(mpfr_get_float128(mr, MPFR_RNDN));
        if (!same_bits(r, expected)) bad.note("MPFR: " + hex(x) + " gave " + hex(r) + " expected " + hex(expected));
#endif
    }
#if defined(KRM_TEST_MPFR)
    mpfr_clear(mx);
    mpfr_clear(mr);
#endif
    EXPECT_EQ(bad.count, 0) << "__Qsqrt in direction " << d.name << ", first failures:\n" << bad.first.str();
    EXPECT_EQ(flags.count, 0) << "__Qsqrt raised flags for:\n" << flags.first.str();
}

// The exact square-root check itself must reject what is wrong: the
// neighbours of a correct root fail it.
TEST_P(QuadOracle, SqrtCheckRejectsNeighbours) {
    const direction &d = GetParam();
    operands gen(0x6001 + d.number);
    rounding_scope mode(d.fe);
    for (int i = 0; i < 2000; ++i) {
        krm_real16 x = gen.for_sqrt(), r;
        __Qsqrt(&r, &x);
        ASSERT_TRUE(sqrt_is_correct(x, r, d.number)) << hex(x);
        uint64_t lo = (static_cast<uint64_t>(r.word[1]) << 32) | r.word[0];
        uint64_t hi = (static_cast<uint64_t>(r.word[3]) << 32) | r.word[2];
        krm_real16 next = halves(hi + (lo == ~0ull), lo + 1);
        krm_real16 prev = halves(hi - (lo == 0), lo - 1);
        EXPECT_FALSE(sqrt_is_correct(x, next, d.number)) << hex(x);
        EXPECT_FALSE(sqrt_is_correct(x, prev, d.number)) << hex(x);
    }
}

// The same for the quotient check.
TEST_P(QuadOracle, QuotientCheckRejectsNeighbours) {
    const direction &d = GetParam();
    operands gen(0x6101 + d.number);
    rounding_scope mode(d.fe);
    for (int i = 0; i < 2000; ++i) {
        krm_real16 a, b, r;
        gen.for_mul(a, b, true);
        __float128 x = to_f128(a), y = to_f128(b);
        if (x != x || y != y || x == 0 || y == 0 || __builtin_isinf_sign(x) || __builtin_isinf_sign(y)) continue;
        _Qdiv(&r, &a, &b);
        ASSERT_TRUE(quotient_is_correct(a, b, r, d.number)) << hex(a) << " / " << hex(b) << " gave " << hex(r);
        uint64_t lo = (static_cast<uint64_t>(r.word[1]) << 32) | r.word[0];
        uint64_t hi = (static_cast<uint64_t>(r.word[3]) << 32) | r.word[2];
        if ((hi & 0x7FFFFFFFFFFFFFFFull) < 0x7FFF000000000000ull) {
            EXPECT_FALSE(quotient_is_correct(a, b, halves(hi + (lo == ~0ull), lo + 1), d.number)) << hex(a) << hex(b);
        }
        if (((hi & 0x7FFFFFFFFFFFFFFFull) | lo) != 0) {
            EXPECT_FALSE(quotient_is_correct(a, b, halves(hi - (lo == 0), lo - 1), d.number)) << hex(a) << hex(b);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Directions, QuadOracle, ::testing::ValuesIn(directions),
                         [](const ::testing::TestParamInfo<direction> &info) { return std::string(info.param.name); });

}  // namespace
