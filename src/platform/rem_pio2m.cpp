// Large-argument reduction by pi/2 in whole-number arithmetic: the argument
// times a window of the bits of 2/pi, where the bits too high to matter
// modulo 8 are left out and enough low bits are taken to leave the
// remainder exact far beyond the 159 bits of three doubles, even when the
// argument lies very near a multiple of pi/2.

#include "platform/rem_pio2m.h"

#include <math.h>
#include <string.h>

namespace {

using krm::platform::half_pi_word_count;
using krm::platform::half_pi_words;
using krm::platform::two_over_pi_words;

// Numbers of up to 64 words of 32 bits, least significant word first.
constexpr int max_words = 64;
struct number {
    uint32_t w[max_words];
    int n;  // words in use
};

void trim(number &a) {
    while (a.n > 0 && a.w[a.n - 1] == 0) --a.n;
}

int bit_length(const number &a) {
    if (a.n == 0) return 0;
    return 32 * (a.n - 1) + (32 - __builtin_clz(a.w[a.n - 1]));
}

bool bit(const number &a, int i) {
    const int word = i / 32;
    return word < a.n && ((a.w[word] >> (i % 32)) & 1);
}

// a mod 2^bits.
void keep_low_bits(number &a, int bits) {
    const int words = (bits + 31) / 32;
    if (a.n > words) a.n = words;
    if (bits % 32 && a.n == words) a.w[words - 1] &= (1u << (bits % 32)) - 1;
    trim(a);
}

// 2^bits - a, for 0 < a < 2^bits.
void complement(number &a, int bits) {
    const int words = (bits + 31) / 32;
    for (int i = a.n; i < words; ++i) a.w[i] = 0;
    a.n = words;
    uint64_t borrow = 0;
    for (int i = 0; i < words; ++i) {
        const uint64_t d = 0 - static_cast<uint64_t>(a.w[i]) - borrow;
        a.w[i] = static_cast<uint32_t>(d);
        borrow = (d >> 32) & 1;
    }
    keep_low_bits(a, bits);
}

void multiply(const number &a, const number &b, number &out) {
    out.n = a.n + b.n;
    memset(out.w, 0, sizeof(uint32_t) * static_cast<size_t>(out.n));
    for (int i = 0; i < a.n; ++i) {
        uint64_t carry = 0;
        for (int j = 0; j < b.n; ++j) {
            const uint64_t t = static_cast<uint64_t>(a.w[i]) * b.w[j] + out.w[i + j] + carry;
            out.w[i + j] = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        out.w[i + b.n] = static_cast<uint32_t>(carry);
    }
    trim(out);
}

// Bit k of 2/pi, k = 1 for the first after the binary point; 0 past the table.
uint32_t two_over_pi_bit(const int32_t *table, int64_t k) {
    const int64_t word = (k - 1) / 24;
    if (word >= two_over_pi_words) return 0;
    return (static_cast<uint32_t>(table[word]) >> (23 - (k - 1) % 24)) & 1;
}

// Bits k0 .. k0 + length - 1 of 2/pi as a whole number, bit k0 the highest.
void two_over_pi_window(const int32_t *table, int64_t k0, int length, number &out) {
    out.n = (length + 31) / 32;
    memset(out.w, 0, sizeof(uint32_t) * static_cast<size_t>(out.n));
    for (int i = 0; i < length; ++i) {
        if (two_over_pi_bit(table, k0 + i)) {
            const int at = length - 1 - i;
            out.w[at / 32] |= 1u << (at % 32);
        }
    }
    trim(out);
}

// Takes the double nearest a * 2^-scale off a (a > 0), ties to even, and
// leaves what remains in a, which may change sign: *negative follows it.
double take_nearest_double(number &a, int scale, bool *negative) {
    const int length = bit_length(a);
    if (length == 0) return 0.0;
    const int drop = length > 53 ? length - 53 : 0;
    uint64_t top = 0;
    for (int i = length - 1; i >= drop; --i) top = (top << 1) | (bit(a, i) ? 1u : 0u);
    bool up = false;
    if (drop > 0 && bit(a, drop - 1)) {
        bool sticky = false;
        for (int i = 0; i < drop - 1 && !sticky; ++i) sticky = bit(a, i);
        up = sticky || (top & 1);
    }
    const double sign = *negative ? -1.0 : 1.0;
    keep_low_bits(a, drop);
    if (up) {
        ++top;
        // What remains is 2^drop - (the bits below), of the other sign.
        if (a.n > 0) complement(a, drop);
        *negative = !*negative;
    }
    return sign * ldexp(static_cast<double>(top), drop - scale);
}

}  // namespace

extern "C" int __rem_pio2m(const double *x, double *y, int e0, int nx, int prec, const int32_t *ipio2) {
    const int outputs = prec <= 0 ? 1 : prec >= 3 ? 3 : 2;
    for (int i = 0; i < outputs; ++i) y[i] = 0.0;
    if (nx < 1 || nx > 8) return 0;

    // The argument is m * 2^e with m whole.
    number m{};
    for (int i = 0; i < nx; ++i) {
        // m = m * 2^24 + piece
        const uint32_t piece = static_cast<uint32_t>(x[i]) & 0xFFFFFF;
        uint64_t carry = piece;
        for (int j = 0; j < m.n; ++j) {
            const uint64_t t = (static_cast<uint64_t>(m.w[j]) << 24) + carry;
            m.w[j] = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        if (carry) m.w[m.n++] = static_cast<uint32_t>(carry);
    }
    trim(m);
    if (m.n == 0) return 0;
    const int64_t e = static_cast<int64_t>(e0) - 24 * static_cast<int64_t>(nx - 1);
    const int m_bits = bit_length(m);

    // Bits of 2/pi of weight 2^-k with e - k >= 3 add multiples of 8 to the
    // quotient: the window starts below them. Its length sets `frac_bits`,
    // the bits after the binary point of the product, of which all but
    // m_bits are exact. More are taken until the remainder has 180 exact
    // bits after its leading one.
    const int64_t k0 = e - 2 > 1 ? e - 2 : 1;
    number window, product;
    int n = 0;
    bool negative = false;
    int frac_bits = 0;
    for (int extra = 240;; extra += 128) {
        int64_t length = m_bits + extra + (k0 - 1) - e + 1;  // frac_bits = k0 + length - 1 - e
        if (length < 64) length = 64;
        if (length > 32 * max_words - 32 * 5 - 64) length = 32 * max_words - 32 * 5 - 64;
        frac_bits = static_cast<int>(k0 + length - 1 - e);
        two_over_pi_window(ipio2, k0, static_cast<int>(length), window);
        multiply(m, window, product);

        // The quotient's last bits stand just above the binary point.
        n = 0;
        for (int i = 0; i < 3; ++i)
            if (frac_bits + i >= 0 && bit(product, frac_bits + i)) n |= 1 << i;
        if (frac_bits < 0) frac_bits = 0;  // no fraction at all: cannot happen for a real argument
        negative = frac_bits > 0 && bit(product, frac_bits - 1);
        keep_low_bits(product, frac_bits);
        if (negative) {
            // A fraction of a half or more: the nearest multiple is above.
            complement(product, frac_bits);
            n = (n + 1) & 7;
        }
        const int exact_bits = bit_length(product) - m_bits;
        if (exact_bits >= 180 || length >= 32 * max_words - 32 * 5 - 64 || extra > 2000) break;
    }

    // r = fraction * pi/2, exactly as the numbers stand.
    number half_pi{};
    memcpy(half_pi.w, half_pi_words, sizeof half_pi_words);
    half_pi.n = half_pi_word_count;
    number r;
    if (product.n + half_pi.n > max_words) {
        // Keep the leading words only: more than the doubles can hold.
        const int cut = product.n + half_pi.n - max_words;
        memmove(product.w, product.w + cut, sizeof(uint32_t) * static_cast<size_t>(product.n - cut));
        product.n -= cut;
        frac_bits -= 32 * cut;
    }
    multiply(product, half_pi, r);
    const int scale = frac_bits + 32 * half_pi_word_count - 1;
    for (int i = 0; i < outputs; ++i) y[i] = take_nearest_double(r, scale, &negative);
    return n;
}
