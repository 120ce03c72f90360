// x to the power y, and to whole-number powers: exp(y log x) with log x as
// a head and tail, the product with y exact as a pair, and one rounding at
// the end of the exponential.
#include <stdint.h>

#include "quad/exact_product.h"
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
// |y log x| beyond these certainly overflows or underflows; nearer ones are
// settled by the exponential's own scaling.
const long_double overflow_bound(0x400C6440u, 0u, 0u, 0u);    // 11400
const long_double underflow_bound(0xC00C6760u, 0u, 0u, 0u);   // -11500

bool is_one(const long_double &x) { return x.word[0] == 0x3FFF0000u && (x.word[1] | x.word[2] | x.word[3]) == 0; }

// For a finite non-zero y: 0 if not a whole number, 1 if odd, 2 if even.
int whole_kind(const long_double &y) {
    int e = static_cast<int>((y.word[0] >> 16) & 0x7FFFu) - 16383;
    if (e < 0) return 0;
    if (e > 112) return 2;
    int n = 112 - e;  // fraction bits below the units
    uint64_t hi = (static_cast<uint64_t>(y.word[0] & 0xFFFFu) << 32) | y.word[1];
    uint64_t lo = (static_cast<uint64_t>(y.word[2]) << 32) | y.word[3];
    unsigned odd;
    if (n >= 64) {
        if (lo != 0) return 0;
        int m = n - 64;
        if (m > 0 && (hi & ((1ull << m) - 1)) != 0) return 0;
        odd = m == 48 ? 1u : static_cast<unsigned>(hi >> m) & 1u;
    } else {
        if (n > 0 && (lo & ((1ull << n) - 1)) != 0) return 0;
        odd = static_cast<unsigned>(lo >> n) & 1u;
    }
    return odd ? 1 : 2;
}

}  // namespace

namespace krm::ldmath {

long_double powl(long_double x, long_double y) {
    if (iszerol(y) || is_one(x)) return one;  // even for a NaN in the other
    if (isnanl(x) || isnanl(y)) return x + y;
    long_double ax = fabsl(x);
    bool xneg = sign_of(x), yneg = sign_of(y);
    if (isinfl(y)) {
        unsigned ia = magnitude_top(ax);
        if (ia == 0x3FFF0000u && (ax.word[1] | ax.word[2] | ax.word[3]) == 0) return one;  // x = -1
        bool below_one = ia < 0x3FFF0000u;
        return below_one == yneg ? fabsl(y) : zero;
    }
    int kind = whole_kind(y);
    if (iszerol(x) || isinfl(x)) {
        // 0^y and inf^y: a zero or an infinity, with x's sign for odd y.
        bool big = iszerol(x) == yneg;
        long_double r = big ? long_double(0x7FFF0000u, 0u, 0u, 0u) : zero;
        if (kind == 1 && xneg) r = -r;
        return r;
    }
    bool negate = false;
    if (xneg) {
        if (kind == 0) return (x - x) / (x - x);  // a negative number to a fractional power
        negate = kind == 1;
    }
    long_double l_lo;
    long_double l = __log_hl(ax, &l_lo, true);
    long_double p = y * l;
    long_double sign = negate ? -one : one;
    if (magnitude_top(p) >= 0x400C6440u) {  // |y log x| >= 11400
        if (p > overflow_bound) return __scalbnl(sign, 20000);
        if (p < underflow_bound) return __scalbnl(sign, -40000);
    }
    long_double p_lo;
    p = __explog_mul(y, l, &p_lo);
    p_lo = p_lo + y * l_lo;
    int m;
    long_double s_hi, s_lo;
    __exp_pieces(p, p_lo, &m, &s_hi, &s_lo);
    if (negate) {
        s_hi = -s_hi;
        s_lo = -s_lo;
    }
    return __exp_finish(s_hi, s_lo, m);
}

namespace {

// Small exponents whose result one operation rounds correctly; the rest by
// powl with the exponent converted exactly (every 64-bit integer is a
// long_double), since repeated squaring gathers an error with every step.
long_double whole_power(const long_double &x, long long n, const long_double &y) {
    if (n == 0) return one;
    if (n == 1) return x;
    if (n == 2) return x * x;
    if (n == -1) return one / x;
    if ((n == 3 || n == 4) && magnitude_top(x) - 0x305F0000u < 0x1F400000u) {
        // x^3 and x^4 from exact products, rounded once at the end, for x
        // within 2^+-4000, where every tail stays a normal number.
        long_double l2, l;
        const long_double p2 = exact_product(x, x, &l2);
        if (n == 3) {
            const long_double p3 = exact_product(p2, x, &l);
            return p3 + (l + l2 * x);
        }
        const long_double p4 = exact_product(p2, p2, &l);
        return p4 + (l + (p2 + p2) * l2);
    }
    return powl(x, y);
}

}  // namespace

long_double powil(long_double x, long long n) { return whole_power(x, n, long_double(n)); }

}  // namespace krm::ldmath

extern "C" KRM_API void __Qpow(krm_real16 *result, const krm_real16 *x, const krm_real16 *y) {
    using namespace krm::ldmath;
    store(result, powl(load(x), load(y)));
}

extern "C" KRM_API void __Qpowi(krm_real16 *result, const krm_real16 *x, const int32_t *n) {
    using namespace krm::ldmath;
    store(result, powil(load(x), *n));
}

extern "C" KRM_API void __Qpowl(krm_real16 *result, const krm_real16 *x, const int64_t *n) {
    using namespace krm::ldmath;
    store(result, powil(load(x), static_cast<long long>(*n)));
}

extern "C" KRM_API void __Qpowu8(krm_real16 *result, const krm_real16 *x, const uint64_t *n) {
    using namespace krm::ldmath;
    unsigned long long u = *n;
    if (u <= 2) {
        store(result, powil(load(x), static_cast<long long>(u)));
    } else {
        store(result, powl(load(x), long_double(u)));
    }
}
