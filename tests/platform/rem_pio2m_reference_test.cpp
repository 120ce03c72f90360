// The reduction by pi/2 against a slow reference that does the same
// whole-number arithmetic one bit at a time (the library's first version):
// both must give the same quotient bits and the same three doubles, bit for
// bit, on random arguments over the whole exponent range, on arguments of
// every piece count, and on arguments next to a multiple of pi/2 whose
// remainder cancels up to 192 bits (tools/rem_pio2m_near_inputs.py), for
// every precision class.

#include <gtest/gtest.h>

#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <random>

#include "platform/rem_pio2m.h"
#include "quad/quad_support.h"

namespace {

namespace reference {

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


int rem_pio2m(const double *x, double *y, int e0, int nx, int prec, const int32_t *ipio2) {
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

}  // namespace reference

// Calls both on the same argument; false, with a message, when they differ.
::testing::AssertionResult same_reduction(const double *x, int e0, int nx, int prec) {
    double expected[4] = {7, 7, 7, 7}, got[4] = {7, 7, 7, 7};
    const int n_expected = reference::rem_pio2m(x, expected, e0, nx, prec, _TBL_ipio2l_inf);
    const int n_got = __rem_pio2m(x, got, e0, nx, prec, _TBL_ipio2l_inf);
    if (n_expected == n_got && memcmp(expected, got, sizeof got) == 0) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure();
    failure << "pieces";
    for (int i = 0; i < nx; ++i) failure << " " << x[i];
    failure << " e0 " << e0 << " prec " << prec << ": n " << n_got << " want " << n_expected;
    char text[64];
    for (int i = 0; i < 4; ++i) {
        snprintf(text, sizeof text, " y[%d] %a want %a", i, got[i], expected[i]);
        failure << text;
    }
    return failure;
}

// REAL(16) arguments as the trigonometric functions cut them: a 113-bit
// significand in five pieces, trailing zero pieces dropped.
TEST(ReductionReference, RandomQuadArgumentsOverTheWholeExponentRange) {
    std::mt19937_64 rng(20261122);
    const long count = quadtest::scaled(4000);
    for (long i = 0; i < count; ++i) {
        const uint64_t high = (rng() & ((uint64_t{1} << 48) - 1)) | (uint64_t{1} << 48);  // 49 bits
        const uint64_t low = rng();                                                     // 64 bits
        // The 113 bits shifted to 120: pieces of 24 from the top.
        const uint64_t top56 = high << 7 | low >> 57;
        const uint64_t bottom64 = low << 7;
        uint32_t pieces[5] = {static_cast<uint32_t>(top56 >> 32) & 0xFFFFFF, static_cast<uint32_t>(top56 >> 8) & 0xFFFFFF,
                              static_cast<uint32_t>(top56 << 16 | bottom64 >> 48) & 0xFFFFFF,
                              static_cast<uint32_t>(bottom64 >> 24) & 0xFFFFFF, static_cast<uint32_t>(bottom64) & 0xFFFFFF};
        int nx = 5;
        if (i % 7 == 0) pieces[4] = 0;
        if (i % 11 == 0) pieces[3] = pieces[4] = 0;
        while (pieces[nx - 1] == 0) --nx;
        const int e = i % 3 == 0 ? static_cast<int>(rng() % 200) - 1 : static_cast<int>(rng() % 16384);
        double x[5];
        for (int j = 0; j < nx; ++j) x[j] = pieces[j];
        ASSERT_TRUE(same_reduction(x, e - 23, nx, 3)) << "argument " << i;
        ASSERT_TRUE(same_reduction(x, e - 23, nx, static_cast<int>(i % 3))) << "argument " << i;
    }
}

// Any piece count from 1 to 8, pieces that are runs of ones or zeros, and
// exponents from below the first bit of the table to past its end.
TEST(ReductionReference, RandomPiecesAndExponents) {
    std::mt19937_64 rng(1122);
    const long count = quadtest::scaled(3000);
    for (long i = 0; i < count; ++i) {
        const int nx = 1 + static_cast<int>(rng() % 8);
        double x[8];
        for (int j = 0; j < nx; ++j) {
            const uint64_t r = rng();
            uint32_t piece = r & 0xFFFFFF;
            if (i % 4 == 1) piece = (r >> 32) & 1 ? 0xFFFFFF : 0;
            if (i % 4 == 2 && (r >> 40) % 3 == 0) piece = 0;
            x[j] = piece;
        }
        if (i % 2) x[0] = static_cast<double>(static_cast<uint32_t>(x[0]) | 0x800000);
        int e0;
        switch (i % 3) {
            case 0: e0 = static_cast<int>(rng() % 400) - 200; break;
            case 1: e0 = static_cast<int>(rng() % 22200); break;
            default: e0 = 16360 - static_cast<int>(rng() % 100); break;
        }
        ASSERT_TRUE(same_reduction(x, e0, nx, static_cast<int>(rng() % 4))) << "argument " << i;
    }
}

struct near_input {
    int count;
    int e0;
    uint32_t pieces[8];
};

const near_input kNearInputs[] = {
#include "platform/rem_pio2m_near_inputs.inc"
};

// Next to a multiple of pi/2 the fraction's leading bits all cancel and the
// window of 2/pi has to be taken longer.
TEST(ReductionReference, ArgumentsNextToMultiplesOfHalfPi) {
    for (const near_input &c : kNearInputs) {
        double x[8];
        for (int j = 0; j < c.count; ++j) x[j] = c.pieces[j];
        for (int prec = 0; prec < 4; ++prec) EXPECT_TRUE(same_reduction(x, c.e0, c.count, prec));
    }
}

}  // namespace
