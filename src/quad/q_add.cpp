// Addition and subtraction.
#include "quad/long_double.h"
#include "quad/quad_core.h"

namespace krm::quad {

namespace {

// Both significands with the leading bit moved to bit 126, the smaller one
// aligned to the greater's exponent with a sticky bit. Returns the exponent.
inline int align(u128 big, u128 small, uint64_t &bh, uint64_t &bl, uint64_t &sh, uint64_t &sl) {
    int eb = unpack(big, bh, bl);
    int es = unpack(small, sh, sl);
    bh = (bh << 14) | (bl >> 50);
    bl <<= 14;
    sh = (sh << 14) | (sl >> 50);
    sl <<= 14;
    if (eb != es) shift_right_sticky(sh, sl, eb - es);
    return eb;
}

// The bodies of mag_add and mag_sub, inlined into the addition itself.
__attribute__((always_inline)) inline void add_magnitudes(krm_real16 *result, u128 big, u128 small,
                                                          uint64_t sign) {
    uint64_t bh, bl, sh, sl;
    int e = align(big, small, bh, bl, sh, sl);
    uint64_t lo = bl + sl;
    uint64_t hi = bh + sh + (lo < bl);
    if (hi >> 63) {
        lo = (lo >> 1) | (hi << 63) | (lo & 1);
        hi >>= 1;
        ++e;
    }
    round_pack(result, sign, e, hi, lo);
}

__attribute__((always_inline)) inline void subtract_magnitudes(krm_real16 *result, u128 big, u128 small,
                                                               uint64_t sign) {
    uint64_t bh, bl, sh, sl;
    int e = align(big, small, bh, bl, sh, sl);
    uint64_t lo = bl - sl;
    uint64_t hi = bh - sh - (bl < sl);
    if ((hi | lo) == 0) {
        // An exact zero is +0, but -0 when rounding down.
        store(result, krm_rounding_direction() == 1 ? sign_bit : 0, 0);
        return;
    }
    if (!(hi >> 62)) {
        // Cancellation: bring the leading bit back to 126, but no further
        // than the least exponent; what the operands held below the kept
        // bits was exact whenever more than one bit cancels.
        int n = (hi ? leading_zeros(hi) : 64 + leading_zeros(lo)) - 1;
        if (n > e - 1) n = e - 1;
        if (n >= 64) {
            hi = lo << (n - 64);
            lo = 0;
        } else if (n > 0) {
            hi = (hi << n) | (lo >> (64 - n));
            lo <<= n;
        }
        e -= n;
    }
    round_pack(result, sign, e, hi, lo);
}

}  // namespace

void mag_add(krm_real16 *result, u128 big, u128 small, uint64_t sign) { add_magnitudes(result, big, small, sign); }

void mag_sub(krm_real16 *result, u128 big, u128 small, uint64_t sign) {
    subtract_magnitudes(result, big, small, sign);
}

namespace {

// a + b, where b_sign is the sign b takes part with (b's own, or its
// opposite for a subtraction). A NaN result keeps its own sign.
__attribute__((always_inline)) inline void add_signed(krm_real16 *r, u128 a, u128 b, uint64_t b_sign) {
    uint64_t ma = a.hi & ~sign_bit, mb = b.hi & ~sign_bit;
    bool a_big = ma > mb || (ma == mb && a.lo >= b.lo);
    u128 big = a_big ? a : b, small = a_big ? b : a;
    uint64_t big_sign = a_big ? a.hi & sign_bit : b_sign;
    uint64_t small_sign = a_big ? b_sign : a.hi & sign_bit;
    if (exponent_of(big.hi) != exponent_max) {
        big.hi = (big.hi & ~sign_bit);
        small.hi = (small.hi & ~sign_bit);
        if (big_sign != small_sign)
            subtract_magnitudes(r, big, small, big_sign);
        else
            add_magnitudes(r, big, small, big_sign);
        return;
    }
    if (!is_nan(big)) {
        // big is an infinity; small is an infinity too or finite.
        if (exponent_of(small.hi) == exponent_max && big_sign != small_sign)
            store(r, default_nan);
        else
            store(r, big_sign | (big.hi & ~sign_bit), big.lo);
        return;
    }
    if (!is_nan(small)) {
        store(r, quieted(big));
        return;
    }
    // Two NaNs: which survives depends on their bit patterns.
    if (!is_signalling(small))
        store(r, b);
    else if (is_signalling(big))
        store(r, quieted(b));
    else
        store(r, quieted(small));
}

}  // namespace

}  // namespace krm::quad

using namespace krm::quad;

extern "C" void _Qadd(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    u128 y = load(b);
    add_signed(result, load(a), y, y.hi & sign_bit);
}

extern "C" void _Qsub(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    u128 y = load(b);
    add_signed(result, load(a), y, (y.hi & sign_bit) ^ sign_bit);
}

extern "C" void _Qneg(krm_real16 *result, const krm_real16 *a) {
    u128 x = load(a);
    store(result, x.hi ^ sign_bit, x.lo);
}
