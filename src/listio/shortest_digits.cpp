// The exact shortest-digit method: free-format printing with multi-precision
// integers. R/S is the value still to print and M/S half the distance to the
// neighbouring stored values, all on one scale; digits are taken off R until
// the digits so far, or the next number up at the same place, lie strictly
// inside the interval. Only integer arithmetic on 16-bit limbs is used, so the
// digits depend on no rounding mode. Everything is on the stack.

#include "listio/shortest_digits.h"

#include <string.h>

#include "krm/api.h"
#include "krm/list_write.h"

namespace krm::shortest {

const kind_limits real4_limits = {24, -149 - 23, 254 - 150};
const kind_limits real8_limits = {53, -1074 - 52, 2046 - 1075};
const kind_limits real16_limits = {113, -16494 - 112, 32766 - 16495};

namespace {

// The greatest REAL(16) value scaled, and the least subnormal's scale with
// its multiples, need 1039 limbs.
constexpr int kLimbs = 1040;

// A number: limbs low..top hold it, limbs below `low` are zeros and are not
// stored. Zero has top -1.
struct big {
    int top;
    int low;
    uint16_t d[kLimbs];
};

void set_zero(big &a) {
    a.top = -1;
    a.low = 0;
}

void trim(big &a) {
    while (a.top >= a.low && a.d[a.top] == 0) --a.top;
    if (a.top < a.low) {
        set_zero(a);
        return;
    }
    while (a.d[a.low] == 0) ++a.low;
}

// a = 2**p.
void set_power_of_two(big &a, int p) {
    a.top = a.low = p / 16;
    a.d[a.top] = static_cast<uint16_t>(1u << (p % 16));
}

// a = f * 2**shift, f given by n limbs.
void set_shifted(big &a, const uint16_t *f, int n, int shift) {
    const int at = shift / 16;
    const int bit = shift % 16;
    uint32_t carry = 0;
    for (int i = 0; i < n; ++i) {
        uint32_t x = (static_cast<uint32_t>(f[i]) << bit) | carry;
        a.d[at + i] = static_cast<uint16_t>(x);
        carry = x >> 16;
    }
    a.d[at + n] = static_cast<uint16_t>(carry);
    a.low = at;
    a.top = at + n;
    trim(a);
}

// a *= m, m at most 10000. Unrolled by four: this is most of the work.
void mul_small(big &a, uint32_t m) {
    if (a.top < 0) return;
    uint32_t carry = 0;
    int i = a.low;
    for (; i + 3 <= a.top; i += 4) {
        uint32_t x0 = a.d[i] * m + carry;
        a.d[i] = static_cast<uint16_t>(x0);
        uint32_t x1 = a.d[i + 1] * m + (x0 >> 16);
        a.d[i + 1] = static_cast<uint16_t>(x1);
        uint32_t x2 = a.d[i + 2] * m + (x1 >> 16);
        a.d[i + 2] = static_cast<uint16_t>(x2);
        uint32_t x3 = a.d[i + 3] * m + (x2 >> 16);
        a.d[i + 3] = static_cast<uint16_t>(x3);
        carry = x3 >> 16;
    }
    for (; i <= a.top; ++i) {
        uint32_t x = a.d[i] * m + carry;
        a.d[i] = static_cast<uint16_t>(x);
        carry = x >> 16;
    }
    while (carry) {
        a.d[++a.top] = static_cast<uint16_t>(carry);
        carry >>= 16;
    }
    while (a.d[a.low] == 0) ++a.low;
}

// r = a * m, m at most 10000.
void mul_small_to(big &r, const big &a, uint32_t m) {
    r.low = a.low;
    r.top = a.top;
    memcpy(&r.d[a.low], &a.d[a.low], sizeof(uint16_t) * static_cast<size_t>(a.top - a.low + 1));
    mul_small(r, m);
}

// a *= 10**n, by 10000 as long as four or more factors remain, then by 10.
void mul_pow10(big &a, int n) {
    for (; n >= 4; n -= 4) mul_small(a, 10000);
    for (; n > 0; --n) mul_small(a, 10);
}

// Limb i of a, zeros outside the stored range.
inline uint32_t limb(const big &a, int i) { return (i >= a.low && i <= a.top) ? a.d[i] : 0u; }

// r = a + b.
void add(big &r, const big &a, const big &b) {
    if (a.top < 0) {
        mul_small_to(r, b, 1);
        return;
    }
    if (b.top < 0) {
        mul_small_to(r, a, 1);
        return;
    }
    const int low = a.low < b.low ? a.low : b.low;
    const int top = a.top > b.top ? a.top : b.top;
    uint32_t carry = 0;
    for (int i = low; i <= top; ++i) {
        uint32_t x = limb(a, i) + limb(b, i) + carry;
        r.d[i] = static_cast<uint16_t>(x);
        carry = x >> 16;
    }
    r.low = low;
    r.top = top;
    if (carry) r.d[++r.top] = static_cast<uint16_t>(carry);
    trim(r);
}

// a -= b, with a not below b.
void sub_in_place(big &a, const big &b) {
    if (b.top < 0) return;
    if (b.low < a.low) {
        for (int i = b.low; i < a.low; ++i) a.d[i] = 0;
        a.low = b.low;
    }
    uint32_t borrow = 0;
    int i = b.low;
    for (; i <= b.top; ++i) {
        uint32_t x = static_cast<uint32_t>(a.d[i]) - b.d[i] - borrow;
        a.d[i] = static_cast<uint16_t>(x);
        borrow = (x >> 16) & 1;
    }
    for (; borrow && i <= a.top; ++i) {
        uint32_t x = static_cast<uint32_t>(a.d[i]) - borrow;
        a.d[i] = static_cast<uint16_t>(x);
        borrow = (x >> 16) & 1;
    }
    trim(a);
}

// r = ceiling of a / 10, by division limb by limb from the top with a carried
// remainder; a's unstored zero limbs are divided too.
void ceil_div10(big &r, const big &a) {
    uint32_t rem = 0;
    for (int i = a.top; i >= 0; --i) {
        uint32_t x = (rem << 16) | limb(a, i);
        r.d[i] = static_cast<uint16_t>(x / 10);
        rem = x % 10;
    }
    r.low = 0;
    r.top = a.top;
    if (rem) {
        int i = 0;
        while (++r.d[i] == 0) ++i;  // r is below a, so the carry ends inside
    }
    trim(r);
}

inline int cmp(const big &a, const big &b) { return v_cmp(a.d, a.top, a.low, b.d, b.top, b.low); }

inline int limbs(const big &a) { return a.top + 1; }

// The numbers of one conversion.
struct work {
    big r, s, m, t;
    big mult[8];  // 2S to 9S
};

const big &multiple(const work &w, int d) { return d == 1 ? w.s : w.mult[d - 2]; }

// The largest d with d * S not above R, by halving the range of multiples.
int next_digit(const work &w) {
    if (cmp(w.r, w.s) < 0) return 0;
    int lo = 1, hi = 9;  // multiple(lo) <= R, and R < multiple(hi + 1) or hi is 9
    while (lo < hi) {
        int mid = (lo + hi + 1) / 2;
        if (cmp(w.r, multiple(w, mid)) >= 0)
            lo = mid;
        else
            hi = mid - 1;
    }
    return lo;
}

bool valid(const uint16_t *fraction, int bits, int exponent) {
    const kind_limits *lim = bits == 24 ? &real4_limits : bits == 53 ? &real8_limits : bits == 113 ? &real16_limits
                                                                                                     : nullptr;
    if (!lim || !fraction || exponent < lim->min_exponent || exponent > lim->max_exponent) return false;
    // exactly `bits` bits: the leading one set, nothing above it
    const int n = (bits + 15) / 16;
    const int top_bit = (bits - 1) % 16;
    if (!(fraction[n - 1] >> top_bit & 1)) return false;
    return (fraction[n - 1] >> top_bit) == 1;
}

}  // namespace

int v_cmp(const uint16_t *a, int a_top, int a_low, const uint16_t *b, int b_top, int b_low) {
    while (a_top >= a_low && a[a_top] == 0) --a_top;
    while (b_top >= b_low && b[b_top] == 0) --b_top;
    const bool a_zero = a_top < a_low, b_zero = b_top < b_low;
    if (a_zero || b_zero) return a_zero && b_zero ? 0 : a_zero ? -1 : 1;
    if (a_top != b_top) return a_top > b_top ? 1 : -1;
    const int common_low = a_low > b_low ? a_low : b_low;
    for (int i = a_top; i >= common_low; --i)
        if (a[i] != b[i]) return a[i] > b[i] ? 1 : -1;
    // Below the common part only one of them has stored limbs.
    for (int i = common_low - 1; i >= a_low; --i)
        if (a[i]) return 1;
    for (int i = common_low - 1; i >= b_low; --i)
        if (b[i]) return -1;
    return 0;
}

void exact_digits(const uint16_t *fraction, int bits, int exponent, int unequal_gap, char *digits, int *ndigits,
                  int *k_out) {
    *ndigits = 0;
    *k_out = 0;
    if (!valid(fraction, bits, exponent)) return;

    work w;
    const int shift = exponent < 1 ? 2 : exponent + 2;
    set_shifted(w.r, fraction, (bits + 15) / 16, shift);
    set_power_of_two(w.m, shift - 1);
    set_power_of_two(w.s, exponent >= 0 ? 2 : 2 - exponent);

    int k = 0;
    if (limbs(w.r) <= limbs(w.s)) {
        // Scaling up: R to just above S/10.
        ceil_div10(w.t, w.s);
        while (limbs(w.r) <= limbs(w.t) - 2) {
            k -= 4;
            mul_small(w.r, 10000);
        }
        while (limbs(w.r) < limbs(w.t)) {
            k -= 1;
            mul_small(w.r, 10);
        }
        while (cmp(w.r, w.t) <= 0) {
            k -= 1;
            mul_small(w.r, 10);
        }
        mul_pow10(w.m, -k);
    }
    // Scaling down: S above R + M. After scaling up this moves S only when R
    // came out at S or above, or so close below it that R + M reaches S.
    add(w.t, w.r, w.m);
    while (limbs(w.t) >= limbs(w.s) + 2) {
        k += 4;
        mul_small(w.s, 10000);
    }
    while (limbs(w.t) > limbs(w.s)) {
        k += 1;
        mul_small(w.s, 10);
    }
    while (cmp(w.t, w.s) >= 0) {
        k += 1;
        mul_small(w.s, 10);
    }

    for (int d = 2; d <= 9; ++d) mul_small_to(w.mult[d - 2], w.s, static_cast<uint32_t>(d));

    int n = 0;
    for (;;) {
        k -= 1;
        mul_small(w.r, 10);
        int d = next_digit(w);
        if (d) sub_in_place(w.r, multiple(w, d));
        mul_small(w.m, 10);
        bool low;
        if (unequal_gap) {
            mul_small_to(w.t, w.r, 2);  // R < M/2
            low = cmp(w.t, w.m) < 0;
        } else {
            low = cmp(w.r, w.m) < 0;
        }
        // R > S - M, as R + M > S: M may pass S before the end.
        add(w.t, w.r, w.m);
        bool high = cmp(w.t, w.s) > 0;
        if (low && high) {
            mul_small_to(w.t, w.r, 2);  // R against S/2; a tie goes up
            if (cmp(w.t, w.s) >= 0) ++d;
        } else if (high) {
            ++d;
        }
        // R + M can equal S at the first digit only when the value plus half
        // its gap is a power of ten; the digit is then 0 and is not kept.
        if (!(n == 0 && d == 0)) digits[n++] = static_cast<char>('0' + d);
        if (low || high || n == max_digits) break;
    }
    *ndigits = n;
    *k_out = k;
}

void digits_of(uint64_t f, int bits, int exponent, char *digits, int *ndigits, int *k) {
    if (fast_digits(f, exponent, digits, ndigits, k)) return;
    uint16_t limbs16[4];
    for (int i = 0; i < 4; ++i) limbs16[i] = static_cast<uint16_t>(f >> (16 * i));
    exact_digits(limbs16, bits, exponent, 0, digits, ndigits, k);
}

}  // namespace krm::shortest

using namespace krm::shortest;

extern "C" KRM_API void __f_cvt_real(const uint16_t *fraction, int bits, int exponent, int unequal_gap,
                                     char *digits, int *ndigits, int *k) {
    if ((bits == 24 || bits == 53) && !unequal_gap && fraction) {
        uint64_t f = 0;
        const int n = (bits + 15) / 16;
        for (int i = 0; i < n; ++i) f |= static_cast<uint64_t>(fraction[i]) << (16 * i);
        const kind_limits &lim = bits == 24 ? real4_limits : real8_limits;
        if ((f >> (bits - 1)) == 1 && exponent >= lim.min_exponent && exponent <= lim.max_exponent &&
            fast_digits(f, exponent, digits, ndigits, k))
            return;
    }
    exact_digits(fraction, bits, exponent, unequal_gap, digits, ndigits, k);
}
