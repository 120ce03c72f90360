// Shortest digits of REAL(4) and REAL(8) values with fixed-width integers.
//
// The value v = f * 2**e lies in the open interval (v - h, v + h), h = 2**(e-1)
// on both sides. The digits printed are those of the multiple of the largest
// power 10**k that lies strictly inside the interval, the one nearest v, the
// upper one on a tie: that is what the exact method's digit loop ends with.
//
// Let j = floor(log10(2**e)), so the interval is between one and ten units of
// 10**j wide. It holds a multiple of 10**j, so k >= j. It is narrower than
// 10**(j+1), so it holds at most one multiple of 10**(j+1); if it holds one,
// that number is the answer, and its trailing zeros raise k further.
// Otherwise k = j and the choice is among the multiples of 10**j.
//
// All of that needs the integer parts of (v - h), v + h and v in units of
// 10**j, taken as m * 2**(e-1) / 10**j with m = 2f - 1, 2f + 1 and 2f, and
// computed here as m * P / 2**sh, where P * 2**-sh is 2**e / 10**j rounded up
// to 128 bits. The rounding makes the product too large by less than 2**-69,
// so its integer part is right unless its fraction is below 2**-64. There,
// divisibility tells whether the true quotient is a whole number (and then
// the integer part is right too); if it is not, the method gives up.

#include "listio/integer_text.h"
#include "listio/shortest_digits.h"

namespace krm::shortest {

namespace {

inline void mul64(uint64_t a, uint64_t b, uint64_t &lo, uint64_t &hi) {
#if defined(__SIZEOF_INT128__)
    unsigned __int128 p = static_cast<unsigned __int128>(a) * b;
    lo = static_cast<uint64_t>(p);
    hi = static_cast<uint64_t>(p >> 64);
#else
    const uint64_t a0 = static_cast<uint32_t>(a), a1 = a >> 32;
    const uint64_t b0 = static_cast<uint32_t>(b), b1 = b >> 32;
    const uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
    const uint64_t mid = (p00 >> 32) + static_cast<uint32_t>(p01) + static_cast<uint32_t>(p10);
    lo = (mid << 32) | static_cast<uint32_t>(p00);
    hi = p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32);
#endif
}

struct u192 {
    uint64_t w0, w1, w2;
};

inline u192 add(const u192 &a, uint64_t lo, uint64_t hi) {
    u192 r;
    r.w0 = a.w0 + lo;
    uint64_t c = r.w0 < lo;
    r.w1 = a.w1 + hi;
    uint64_t c1 = r.w1 < hi;
    r.w1 += c;
    c1 += r.w1 < c;
    r.w2 = a.w2 + c1;
    return r;
}

inline u192 sub(const u192 &a, uint64_t lo, uint64_t hi) {
    u192 r;
    r.w0 = a.w0 - lo;
    uint64_t b = a.w0 < lo;
    r.w1 = a.w1 - hi;
    uint64_t b1 = a.w1 < hi;
    b1 += r.w1 < b;
    r.w1 -= b;
    r.w2 = a.w2 - b1;
    return r;
}

constexpr uint64_t pow5_64[24] = {
    1ull,
    5ull,
    25ull,
    125ull,
    625ull,
    3125ull,
    15625ull,
    78125ull,
    390625ull,
    1953125ull,
    9765625ull,
    48828125ull,
    244140625ull,
    1220703125ull,
    6103515625ull,
    30517578125ull,
    152587890625ull,
    762939453125ull,
    3814697265625ull,
    19073486328125ull,
    95367431640625ull,
    476837158203125ull,
    2384185791015625ull,
    11920928955078125ull,
};

// Is m * 2**(e-1) / 10**j, that is m * 2**(e-j) * 5**-j over two, times two
// a whole number: m * 2**(e-j) / 5**j for j >= 0, m * 5**-j / 2**(j-e) below.
inline bool whole(uint64_t m, int e, int j) {
    if (j >= 0) return j < 24 && m % pow5_64[j] == 0;  // m < 2**55 < 5**24
    const int z = j - e;
    return z < 64 && (m & ((uint64_t{1} << z) - 1)) == 0;
}

// Integer part of x / 2**sh for sh in 124..127; false when it cannot be
// trusted (fraction below 2**-64 and the true quotient not whole).
inline bool integer_part(const u192 &x, int sh, uint64_t m, int e, int j, uint64_t &out) {
    out = (x.w2 << (128 - sh)) | (x.w1 >> (sh - 64));
    const uint64_t fraction_top = (x.w1 << (128 - sh)) | (x.w0 >> (sh - 64));
    return fraction_top != 0 || whole(m, e, j);
}

// The decimal digits of x below 10**8, with no leading zeros; returns how
// many were written.
inline int small_digits(uint32_t x, char *out) {
    int n = x < 10 ? 1 : x < 100 ? 2 : x < 1000 ? 3 : x < 10000 ? 4 : x < 100000 ? 5 : x < 1000000 ? 6
          : x < 10000000 ? 7 : 8;
    char *p = out + n;
    while (x >= 100) {
        uint32_t q = x / 100;
        const char *d = &digit_pairs[2 * (x - q * 100)];
        *--p = d[1];
        *--p = d[0];
        x = q;
    }
    if (x >= 10) {
        *--p = digit_pairs[2 * x + 1];
        *--p = digit_pairs[2 * x];
    } else {
        *--p = static_cast<char>('0' + x);
    }
    return n;
}

// Exactly eight digits of x below 10**8, leading zeros included.
inline void eight_digits(uint32_t x, char *out) {
    for (int i = 6; i >= 0; i -= 2) {
        uint32_t q = x / 100;
        const char *d = &digit_pairs[2 * (x - q * 100)];
        out[i] = d[0];
        out[i + 1] = d[1];
        x = q;
    }
}

// The digits of c (below 2**58) with one 64-bit division at most.
inline int write_digits(uint64_t c, char *out) {
    if (c < 100000000) return small_digits(static_cast<uint32_t>(c), out);
    const uint64_t high = c / 100000000;
    const uint32_t low = static_cast<uint32_t>(c - high * 100000000);
    int n;
    if (high < 100000000) {
        n = small_digits(static_cast<uint32_t>(high), out);
    } else {
        const uint32_t top = static_cast<uint32_t>(high / 100000000);
        n = small_digits(top, out);
        eight_digits(static_cast<uint32_t>(high - uint64_t{top} * 100000000), out + n);
        n += 8;
    }
    eight_digits(low, out + n);
    return n + 8;
}

}  // namespace

bool fast_digits(uint64_t f, int e, char *digits, int *ndigits, int *k_out) {
    if (f == 0 || (f >> 54) != 0) return false;
    const int j = floor_log10_pow2(e);
    if (j < pow5_min_index || j > pow5_max_index) return false;
    const pow5_entry &p = pow5_table[j - pow5_min_index];
    const int sh = j - e - p.exp;
    if (sh < 124 || sh > 127) return false;  // cannot happen with a sound table

    // f * P, then (2f) * P and (2f -+ 1) * P.
    uint64_t a0, a1, b0, b1;
    mul64(f, p.lo, a0, a1);
    mul64(f, p.hi, b0, b1);
    u192 q;
    q.w0 = a0;
    q.w1 = a1 + b0;
    q.w2 = b1 + (q.w1 < b0);
    u192 yv = {q.w0 << 1, (q.w1 << 1) | (q.w0 >> 63), (q.w2 << 1) | (q.w1 >> 63)};
    u192 yl = sub(yv, p.lo, p.hi);
    u192 yu = add(yv, p.lo, p.hi);

    // Integer parts of 2x for x = v, v - h, v + h in units of 10**j.
    uint64_t fv, fl, fu;
    const uint64_t mv = f << 1;
    if (!integer_part(yv, sh, mv, e, j, fv)) return false;
    if (!integer_part(yl, sh, mv - 1, e, j, fl)) return false;
    if (!integer_part(yu, sh, mv + 1, e, j, fu)) return false;
    // v + h itself is not inside: a whole v + h in units of 10**j is excluded.
    const bool upper_whole = (fu & 1) == 0 && whole(mv + 1, e, j);

    const uint64_t a = fl >> 1;                               // last multiple at or below v - h
    const uint64_t b = upper_whole ? (fu >> 1) - 1 : fu >> 1;  // last multiple below v + h

    uint64_t c;
    int k;
    if (b / 10 > a / 10) {
        c = b / 10;
        k = j + 1;
        while (c % 10 == 0) {
            c /= 10;
            ++k;
        }
    } else {
        c = (fv + 1) >> 1;  // nearest to v, halves up
        if (c <= a) c = a + 1;
        if (c > b) c = b;
        k = j;
    }

    *ndigits = write_digits(c, digits);
    *k_out = k;
    return true;
}

}  // namespace krm::shortest
