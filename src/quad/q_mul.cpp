// Multiplication.
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

extern "C" void _Qmul(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    u128 x = load(a), y = load(b);
    uint64_t sign = (x.hi ^ y.hi) & sign_bit;
    if (exponent_of(x.hi) == exponent_max || exponent_of(y.hi) == exponent_max) {
        if (is_nan(x) || is_nan(y))
            store(result, nan_of_product(x, y));
        else if (is_zero(x) || is_zero(y))
            store(result, default_nan);
        else
            store(result, sign | 0x7FFF000000000000ull, 0);
        return;
    }
    if (is_zero(x) || is_zero(y)) {
        store(result, sign, 0);
        return;
    }

    // Both significands with the leading bit at bit 127; the top half of
    // their 256-bit product then has its leading bit at 126 or 127, and the
    // bottom half only matters as sticky.
    uint64_t ah, al, bh, bl;
    int e = unpack_normalised(x, ah, al) + unpack_normalised(y, bh, bl) - exponent_bias;
    ah = (ah << 15) | (al >> 49);
    al <<= 15;
    bh = (bh << 15) | (bl >> 49);
    bl <<= 15;

    uint64_t p0h, p0l, p1h, p1l, p2h, p2l, p3h, p3l;
    mul_64(al, bl, p0h, p0l);
    mul_64(al, bh, p1h, p1l);
    mul_64(ah, bl, p2h, p2l);
    mul_64(ah, bh, p3h, p3l);

    // Column 1 (bits 64..127) and its carries into column 2.
    uint64_t c1 = p0h + p1l;
    uint64_t carry = c1 < p0h;
    uint64_t c1b = c1 + p2l;
    carry += c1b < c1;
    // Column 2 and 3: the top half.
    uint64_t lo = p1h + p2h;
    uint64_t hi = p3h + (lo < p1h);
    lo += p3l;
    hi += lo < p3l;
    lo += carry;
    hi += lo < carry;
    lo |= (c1b | p0l) != 0;

    if (hi >> 63) {
        lo = (lo >> 1) | (hi << 63) | (lo & 1);
        hi >>= 1;
        ++e;
    }
    round_pack(result, sign, e, hi, lo);
}

// DPROD with a REAL(16) result: both doubles widened, then multiplied; the
// product of two doubles always fits, so it is exact.
extern "C" KRM_API void __Qprod(krm_real16 *result, const double *x, const double *y) {
    long_double r = long_double(*x) * long_double(*y);
    *result = r.storage();
}
