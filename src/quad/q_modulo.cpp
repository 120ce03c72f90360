// The exact remainder, and MODULO.
#include "quad/ldmath.h"
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

long_double fmodl(const long_double &x, const long_double &p) {
    krm_real16 sx = x.storage(), sp = p.storage();
    u128 a = load(&sx), b = load(&sp);
    bool a_special = exponent_of(a.hi) == exponent_max, b_special = exponent_of(b.hi) == exponent_max;
    if (is_nan(a) || is_nan(b)) return x * p;
    if (a_special || is_zero(b)) {
        // An infinite dividend or a zero divisor: the NaN of 0/0 or inf/inf.
        long_double t = x * p;
        return t / t;
    }
    uint64_t sign = a.hi & sign_bit;
    a.hi &= ~sign_bit;
    b.hi &= ~sign_bit;
    if (b_special || a.hi < b.hi || (a.hi == b.hi && a.lo < b.lo)) return x;  // |x| < |p|

    // Shift and subtract, one bit of the quotient at a time, keeping the
    // remainder below p's significand. A subnormal p is normalised first
    // (its exponent going below 1), so that one subtraction per bit does.
    uint64_t rh, rl, ph, pl;
    int ea = unpack(a, rh, rl);
    int ep = unpack_normalised(b, ph, pl);
    auto reduce = [&] {
        if (rh > ph || (rh == ph && rl >= pl)) {
            rh -= ph + (rl < pl);
            rl -= pl;
        }
    };
    reduce();
    for (int n = ea - ep; n > 0; --n) {
        rh = (rh << 1) | (rl >> 63);
        rl <<= 1;
        reduce();
    }
    // The remainder, exact at p's exponent: normalise it, or make it
    // subnormal, which only drops zero bits since both operands are whole
    // multiples of the least subnormal.
    if ((rh | rl) == 0) {
        krm_real16 z;
        store(&z, sign, 0);
        return long_double::of_storage(z);
    }
    int e = ep;
    while (!(rh & hidden_bit) && e > 1) {
        rh = (rh << 1) | (rl >> 63);
        rl <<= 1;
        --e;
    }
    if (e < 1) {
        shift_right_sticky(rh, rl, 1 - e);
        e = 1;
    }
    uint64_t hi = (rh & fraction_high) | (rh & hidden_bit ? static_cast<uint64_t>(e) << 48 : 0);
    krm_real16 r;
    store(&r, sign | hi, rl);
    return long_double::of_storage(r);
}

long_double modulol(const long_double &a, const long_double &p) {
    long_double r = fmodl(a, p);
    const long_double zero(0u, 0u, 0u, 0u);
    bool opposite = (a < zero && p > zero) || (a > zero && p < zero);
    if (opposite && r != zero) r = r + p;
    return r;
}

extern "C" KRM_API void __f_modulo_Q(krm_real16 *result, const krm_real16 *a, const krm_real16 *p) {
    *result = modulol(long_double::of_storage(*a), long_double::of_storage(*p)).storage();
}

extern "C" KRM_API void __Qfmod(krm_real16 *result, const krm_real16 *x, const krm_real16 *p) {
    *result = fmodl(long_double::of_storage(*x), long_double::of_storage(*p)).storage();
}
