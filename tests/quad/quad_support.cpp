#include "quad/quad_support.h"

#include <stdio.h>

#include <algorithm>

namespace quadtest {

const direction directions[4] = {
    {0, FE_TONEAREST, "nearest"},
    {1, FE_DOWNWARD, "down"},
    {2, FE_UPWARD, "up"},
    {3, FE_TOWARDZERO, "to_zero"},
};

std::string hex(const krm_real16 &x) {
    char buf[40];
    snprintf(buf, sizeof buf, "%08x %08x %08x %08x", x.word[3], x.word[2], x.word[1], x.word[0]);
    return buf;
}

std::string hex(double d) {
    uint64_t b;
    memcpy(&b, &d, 8);
    char buf[24];
    snprintf(buf, sizeof buf, "%016llx", static_cast<unsigned long long>(b));
    return buf;
}

long cases_per_direction() { return scaled(25000); }

long scaled(long optimised) {
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__)
    return optimised / 8;
#else
    return optimised;
#endif
}

namespace {

// Sets bits from..to (inclusive, from <= to) of a 112-bit fraction.
void set_bits(uint64_t &hi, uint64_t &lo, int from, int to) {
    for (int part = 0; part < 2; ++part) {
        int base = part * 64;
        int f = from > base ? from - base : 0, t = to < base + 63 ? to - base : 63;
        if (f > t) continue;
        uint64_t mask = (t == 63 ? ~0ull : (1ull << (t + 1)) - 1) & ~((1ull << f) - 1);
        (part ? hi : lo) |= mask;
    }
}

}  // namespace

void operands::fraction(uint64_t &hi, uint64_t &lo) {
    switch (below(4)) {
    case 0:
    case 1:
        hi = bits() & 0x0000FFFFFFFFFFFFull;
        lo = bits();
        return;
    case 2: {
        // Runs of ones and zeros from the top down.
        hi = lo = 0;
        int pos = 111;
        bool one = below(2);
        while (pos >= 0) {
            int run = 1 + below(below(4) == 0 ? 112 : 24);
            int end = pos - run + 1 < 0 ? 0 : pos - run + 1;
            if (one) set_bits(hi, lo, end, pos);
            pos = end - 1;
            one = !one;
        }
        return;
    }
    default: {
        // A few bits only: products and quotients that are exact or halfway.
        hi = lo = 0;
        int n = below(5);
        for (int i = 0; i < n; ++i) {
            int pos = below(4) == 0 ? 112 - 1 - below(8) : below(112);
            if (pos >= 64)
                hi |= 1ull << (pos - 64);
            else
                lo |= 1ull << pos;
        }
        return;
    }
    }
}

krm_real16 operands::with_exponent(int e, bool may_be_negative) {
    uint64_t hi, lo;
    fraction(hi, lo);
    if (e >= 0x7FFF) {
        e = 0x7FFF;
        hi = lo = 0;
    }
    hi |= static_cast<uint64_t>(e) << 48;
    if (may_be_negative && below(2)) hi |= 0x8000000000000000ull;
    return halves(hi, lo);
}

krm_real16 operands::any() {
    int pick = below(40);
    int e;
    if (pick < 4)
        e = 0;  // subnormal or zero
    else if (pick < 6)
        e = 0x7FFF;  // infinity
    else if (pick < 10)
        e = 1 + below(120);
    else if (pick < 14)
        e = 0x7FFE - below(120);
    else if (pick < 26)
        e = 16383 - 60 + below(120);
    else
        e = 1 + below(0x7FFE);
    return with_exponent(e);
}

void operands::for_add(krm_real16 &a, krm_real16 &b) {
    a = any();
    int ea = (a.word[3] >> 16) & 0x7FFF;
    if (ea == 0x7FFF && below(2)) {
        b = any();
        return;
    }
    int pick = below(10), eb;
    if (pick < 5)
        eb = ea - 3 + below(7);
    else if (pick < 8)
        eb = ea - 120 + below(241);
    else if (pick < 9) {
        // Nearly the same magnitude, either sign: deep cancellation.
        b = a;
        if (ea == 0x7FFF) return;
        b.word[0] ^= static_cast<uint32_t>(bits()) & ((1u << below(32)) - 1);
        if (below(2)) b.word[1] ^= static_cast<uint32_t>(bits()) & ((1u << below(32)) - 1);
        if (below(2)) b.word[3] ^= 0x80000000u;
        return;
    } else {
        b = any();
        return;
    }
    eb = std::clamp(eb, 0, 0x7FFE);
    b = with_exponent(eb);
}

void operands::for_mul(krm_real16 &a, krm_real16 &b, bool divide) {
    int pick = below(10);
    if (pick == 0) {
        a = any();
        b = any();
        return;
    }
    int ea = below(8) == 0 ? below(3) : 1 + below(0x7FFE);
    a = with_exponent(ea);
    // The exponent the result should land near.
    int t;
    if (pick < 4)
        t = -130 + below(140);
    else if (pick < 6)
        t = 0x7FF8 + below(16);
    else
        t = -200 + below(0x7FFF + 400);
    int eb = divide ? ea - t + 16383 : t - ea + 16383;
    if (eb < 0 || eb > 0x7FFE) eb = below(8) == 0 ? below(2) : 1 + below(0x7FFE);
    b = with_exponent(eb);
}

krm_real16 operands::for_sqrt() {
    int pick = below(10);
    int e = pick == 0 ? 0 : pick == 1 ? 0x7FFE - below(4) : 1 + below(0x7FFE);
    krm_real16 x = with_exponent(e, false);
    if (((x.word[3] & 0xFFFFu) | x.word[2] | x.word[1] | x.word[0]) == 0 && e == 0) x.word[0] = 1;
    return x;
}

namespace {

// Unsigned integers of up to 640 bits, 32-bit digits, least significant
// first: enough for the squares of the square-root bounds.
struct big {
    uint32_t d[20] = {};
};

big make_big(uint64_t hi, uint64_t lo) {
    big r;
    r.d[0] = static_cast<uint32_t>(lo);
    r.d[1] = static_cast<uint32_t>(lo >> 32);
    r.d[2] = static_cast<uint32_t>(hi);
    r.d[3] = static_cast<uint32_t>(hi >> 32);
    return r;
}

int used(const big &a) {
    int n = 20;
    while (n > 0 && a.d[n - 1] == 0) --n;
    return n;
}

big multiply(const big &a, const big &b) {
    big r;
    int na = used(a), nb = used(b);
    for (int i = 0; i < na; ++i) {
        uint64_t carry = 0;
        for (int j = 0; j < nb; ++j) {
            uint64_t t = static_cast<uint64_t>(a.d[i]) * b.d[j] + r.d[i + j] + carry;
            r.d[i + j] = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        r.d[i + nb] += static_cast<uint32_t>(carry);
    }
    return r;
}

// a * 2^n; what would pass the top is not expected to exist.
big shifted_left(const big &a, int n) {
    big r;
    int w = n / 32, s = n % 32;
    for (int i = 19; i >= w; --i) {
        uint32_t v = a.d[i - w] << s;
        if (s && i - w - 1 >= 0) v |= a.d[i - w - 1] >> (32 - s);
        r.d[i] = v;
    }
    return r;
}

int compare(const big &a, const big &b) {
    for (int i = 19; i >= 0; --i)
        if (a.d[i] != b.d[i]) return a.d[i] < b.d[i] ? -1 : 1;
    return 0;
}

int bit_length(const big &a) {
    int n = used(a);
    return n == 0 ? 0 : 32 * (n - 1) + (32 - __builtin_clz(a.d[n - 1]));
}

// The sign of X * 2^x - Y * 2^y.
int compare_scaled(const big &X, int x, const big &Y, int y) {
    int lx = bit_length(X), ly = bit_length(Y);
    if (lx == 0 || ly == 0) return (lx != 0) - (ly != 0);
    if (lx + x != ly + y) return lx + x < ly + y ? -1 : 1;
    return x >= y ? compare(shifted_left(X, x - y), Y) : compare(X, shifted_left(Y, y - x));
}

big add_small(big k, int64_t offset) {
    int64_t carry = offset;
    for (int i = 0; i < 20 && carry != 0; ++i) {
        int64_t t = static_cast<int64_t>(k.d[i]) + carry;
        k.d[i] = static_cast<uint32_t>(t);
        carry = t >> 32;
    }
    return k;
}

// A finite value's magnitude as m * 2^e with m an integer.
void split(const krm_real16 &x, uint64_t &mh, uint64_t &ml, int &e) {
    uint64_t hi = (static_cast<uint64_t>(x.word[3]) << 32) | x.word[2];
    ml = (static_cast<uint64_t>(x.word[1]) << 32) | x.word[0];
    int field = static_cast<int>((hi >> 48) & 0x7FFF);
    mh = hi & 0x0000FFFFFFFFFFFFull;
    if (field) mh |= 0x0001000000000000ull;
    e = (field ? field : 1) - 16383 - 112;
}

// Whether the magnitude of r is the positive number Q rounded in the
// magnitude direction md (0 nearest even, 1 and 3 towards zero, 2 away from
// zero); versus(V, e) gives the sign of V * 2^e - Q.
template <class Versus>
bool rounds_to(const krm_real16 &r, int md, Versus versus) {
    uint32_t top = r.word[3] & 0x7FFFFFFFu;
    bool r_zero = (top | r.word[2] | r.word[1] | r.word[0]) == 0;
    if (top >= 0x7FFF0000u) {
        if (top != 0x7FFF0000u || (r.word[2] | r.word[1] | r.word[0])) return false;  // NaN
        // Infinity: Q at least halfway from the greatest number to 2^16384
        // (a tie goes to the even side, which is infinity), or beyond it.
        big max_sig = make_big(0x0001FFFFFFFFFFFFull, ~0ull);
        int e_max = 0x7FFE - 16383 - 112;
        if (md == 0) return versus(add_small(shifted_left(max_sig, 1), 1), e_max - 1) <= 0;
        if (md == 2) return versus(max_sig, e_max) < 0;
        return false;
    }
    uint64_t rh, rl;
    int er;
    split(r, rh, rl, er);
    big R = make_big(rh, rl);
    if (r_zero) {
        big one = make_big(0, 1);
        int e_min = 1 - 16383 - 112;
        if (md == 0) return versus(one, e_min - 1) >= 0;  // a tie goes to zero, the even side
        if (md == 2) return false;
        return versus(one, e_min) > 0;
    }
    bool binade_bottom = rh == 0x0001000000000000ull && rl == 0 && (top >> 16) > 1;
    bool even = (rl & 1) == 0;
    // Neighbours and midpoints on the grid of quarter units of r's place.
    big R4 = shifted_left(R, 2);
    int e4 = er - 2;
    big lower = add_small(R4, binade_bottom ? -2 : -4), upper = add_small(R4, 4);
    big lower_mid = add_small(R4, binade_bottom ? -1 : -2), upper_mid = add_small(R4, 2);
    bool lower_is_zero = bit_length(lower) == 0;
    switch (md) {
    case 0: {
        int lo = versus(lower_mid, e4), hi = versus(upper_mid, e4);
        return (lo < 0 || (lo == 0 && even)) && (hi > 0 || (hi == 0 && even));
    }
    case 2:
        return (lower_is_zero || versus(lower, e4) < 0) && versus(R4, e4) >= 0;
    default:
        // Towards zero everything from the greatest number up goes to it.
        if (top == 0x7FFEFFFFu && (r.word[2] & r.word[1] & r.word[0]) == 0xFFFFFFFFu) return versus(R4, e4) <= 0;
        return versus(R4, e4) <= 0 && versus(upper, e4) > 0;
    }
}

int magnitude_direction(int direction, bool negative) {
    if (negative && (direction == 1 || direction == 2)) return direction ^ 3;
    return direction;
}

}  // namespace

bool sqrt_is_correct(const krm_real16 &x, const krm_real16 &r, int direction) {
    if (r.word[3] >> 31) return false;
    uint64_t xh, xl;
    int ex;
    split(x, xh, xl, ex);
    big X = make_big(xh, xl);
    return rounds_to(r, direction, [&](const big &V, int e) {
        return compare_scaled(multiply(V, V), 2 * e, X, ex);
    });
}

bool quotient_is_correct(const krm_real16 &a, const krm_real16 &b, const krm_real16 &r, int direction) {
    bool negative = ((a.word[3] ^ b.word[3]) >> 31) != 0;
    if ((r.word[3] >> 31) != negative) return false;
    uint64_t ah, al, bh, bl;
    int ea, eb;
    split(a, ah, al, ea);
    split(b, bh, bl, eb);
    big A = make_big(ah, al), B = make_big(bh, bl);
    return rounds_to(r, magnitude_direction(direction, negative), [&](const big &V, int e) {
        return compare_scaled(multiply(V, B), e + eb, A, ea);
    });
}

}  // namespace quadtest
