// Conversions between REAL(16) and double and the integers.
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

namespace {

// An unsigned integer m (not 0) as a binary128 magnitude with the given sign:
// exact, since 64 bits fit the 113 of the significand.
inline void from_integer(krm_real16 *r, uint64_t sign, uint64_t m) {
    int top = 63 - leading_zeros(m);
    int shift = 112 - top;  // 49..112
    uint64_t hi, lo;
    if (shift >= 64) {
        hi = m << (shift - 64);
        lo = 0;
    } else {
        hi = m >> (64 - shift);
        lo = m << shift;
    }
    hi = (hi & fraction_high) | (static_cast<uint64_t>(exponent_bias + top) << 48);
    store(r, sign | hi, lo);
}

// The magnitude of a finite value below 2^64 truncated to an integer; 'big'
// tells whether it is 2^limit or more (or not finite).
inline uint64_t truncated(u128 x, int limit, bool &big) {
    int e = exponent_of(x.hi) - exponent_bias;
    big = e >= limit;
    if (e < 0 || big) return 0;
    uint64_t mh = (x.hi & fraction_high) | hidden_bit;
    int shift = 112 - e;  // 49..112
    if (shift >= 64) return mh >> (shift - 64);
    return (mh << (64 - shift)) | (x.lo >> shift);
}

}  // namespace

extern "C" void _Qdtoq(krm_real16 *result, const double *x) {
    uint64_t d;
    memcpy(&d, x, 8);
    uint64_t sign = d & sign_bit;
    int e = static_cast<int>((d >> 52) & 0x7FF);
    uint64_t f = d & 0x000FFFFFFFFFFFFFull;
    if (e == 0x7FF) {
        // An infinity stays one; a NaN is made quiet, its fraction on top.
        if (f) f |= 0x0008000000000000ull;
        store(result, sign | 0x7FFF000000000000ull | (f >> 4), f << 60);
        return;
    }
    if (e == 0) {
        if (f == 0) {
            store(result, sign, 0);
            return;
        }
        // A subnormal double is a normal binary128.
        int n = leading_zeros(f) - 11;
        f = (f << n) & 0x000FFFFFFFFFFFFFull;
        e = 1 - n;
    }
    uint64_t hi = sign | (static_cast<uint64_t>(e + 0x3C00) << 48) | (f >> 4);
    store(result, hi, f << 60);
}

extern "C" void _Qitoq(krm_real16 *result, int x) {
    if (x == 0) {
        store(result, 0, 0);
        return;
    }
    uint32_t m = x < 0 ? 0u - static_cast<uint32_t>(x) : static_cast<uint32_t>(x);
    from_integer(result, x < 0 ? sign_bit : 0, m);
}

extern "C" void _Qlltoq(krm_real16 *result, long long x) {
    if (x == 0) {
        store(result, 0, 0);
        return;
    }
    uint64_t m = x < 0 ? 0ull - static_cast<uint64_t>(x) : static_cast<uint64_t>(x);
    from_integer(result, x < 0 ? sign_bit : 0, m);
}

extern "C" void _Qulltoq(krm_real16 *result, unsigned long long x) {
    if (x == 0) {
        store(result, 0, 0);
        return;
    }
    from_integer(result, 0, x);
}

extern "C" double _Qqtod(const krm_real16 *a) {
    u128 x = load(a);
    uint64_t sign = x.hi & sign_bit;
    uint32_t top = static_cast<uint32_t>(x.hi >> 32) & 0x7FFFFFFFu;
    uint64_t bits;
    if (top >= 0x7FFF0000u) {
        uint64_t f = ((x.hi & fraction_high) << 4) | (x.lo >> 60);
        if ((x.hi & fraction_high) | x.lo)
            bits = sign | 0x7FF8000000000000ull | f;  // NaN: its top bits, quiet
        else
            bits = sign | 0x7FF0000000000000ull;
    } else if (top >= 0x43FF0000u) {
        int d = direction_for(sign);
        bits = sign | (d == 0 || d == 2 ? 0x7FF0000000000000ull : 0x7FEFFFFFFFFFFFFFull);
    } else if (top < 0x3BCC0000u) {
        // Below half the least subnormal: zero, or that subnormal when
        // rounding away from zero.
        bits = sign;
        if ((top | (x.hi & 0xFFFFFFFFu) | x.lo) && direction_for(sign) == 2) bits |= 1;
    } else if (top < 0x3C010000u) {
        // A subnormal double: truncated in every direction.
        int e = exponent_of(x.hi);
        uint64_t mh = (x.hi & fraction_high) | hidden_bit;
        int n = 15421 - e;  // 61..113
        uint64_t f = n >= 64 ? mh >> (n - 64) : (mh << (64 - n)) | (x.lo >> n);
        bits = sign | f;
    } else {
        uint64_t e = static_cast<uint64_t>(exponent_of(x.hi) - 0x3C00);
        uint64_t f = ((x.hi & fraction_high) << 4) | (x.lo >> 60);
        uint64_t rest = x.lo << 4;  // guard bit on top, sticky below
        bits = (e << 52) + f;
        if (rest) {
            int d = direction_for(sign);
            bool guard = rest >> 63, sticky = (rest << 1) != 0;
            if (d == 2 || (d == 0 && guard && (sticky || (f & 1)))) ++bits;
        }
        bits |= sign;
    }
    double r;
    memcpy(&r, &bits, 8);
    return r;
}

extern "C" int _Qqtoi(const krm_real16 *a) {
    u128 x = load(a);
    bool big;
    uint64_t m = truncated(x, 31, big);
    if (big) return static_cast<int>(0x80000000u);
    uint32_t v = static_cast<uint32_t>(m);
    if (x.hi & sign_bit) v = 0u - v;
    return static_cast<int>(v);
}

extern "C" long long _Qqtoll(const krm_real16 *a) {
    u128 x = load(a);
    bool big;
    uint64_t m = truncated(x, 63, big);
    if (big) return static_cast<long long>(0x8000000000000000ull);
    if (x.hi & sign_bit) m = 0ull - m;
    return static_cast<long long>(m);
}

extern "C" unsigned long long _Qqtoull(const krm_real16 *a) {
    u128 x = load(a);
    bool big;
    uint64_t m = truncated(x, 64, big);
    if (big) return 0x8000000000000000ull;
    if (x.hi & sign_bit) m = 0ull - m;
    return m;
}
