// Large-argument reduction by pi/2 in whole-number arithmetic: the argument
// times a window of the bits of 2/pi, where the bits too high to matter
// modulo 8 are left out and enough low bits are taken to leave the
// remainder exact far beyond the 159 bits of three doubles, even when the
// argument lies very near a multiple of pi/2.
//
// Every step works a word at a time. The numbers are kept in 32-bit words
// on every target, so that the choices that depend on their sizes (how far
// the window reaches, where a long fraction is cut) are the same on both;
// where the compiler has a 128-bit type the products are formed from 64-bit
// limbs, which gives the same whole numbers in a quarter of the multiplies.

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

uint32_t word_or_zero(const number &a, int i) { return i < a.n ? a.w[i] : 0; }

// The 64 bits of a from bit `at` up (those past the top are zeros).
uint64_t bits_from(const number &a, int at) {
    const int word = at / 32;
    const int shift = at % 32;
    const uint64_t low = static_cast<uint64_t>(word_or_zero(a, word + 1)) << 32 | word_or_zero(a, word);
    if (shift == 0) return low;
    return low >> shift | static_cast<uint64_t>(word_or_zero(a, word + 2)) << (64 - shift);
}

// Whether any of the bits of a below bit `at` is set.
bool any_bit_below(const number &a, int at) {
    const int word = at / 32;
    const int shift = at % 32;
    for (int i = 0; i < word && i < a.n; ++i)
        if (a.w[i]) return true;
    return shift != 0 && word < a.n && (a.w[word] & ((1u << shift) - 1)) != 0;
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
    uint32_t borrow = 0;
    for (int i = 0; i < words; ++i) {
        const uint32_t d = 0u - a.w[i] - borrow;
        borrow = (a.w[i] | borrow) != 0;
        a.w[i] = d;
    }
    keep_low_bits(a, bits);
}

#if defined(__SIZEOF_INT128__)

// a times b, in 64-bit limbs: two words make a limb on a little-endian
// machine, as every target of this library is.
void multiply(const number &a, const number &b, number &out) {
    constexpr int max_limbs = max_words / 2;
    uint64_t x[max_limbs], y[max_limbs], z[max_limbs + 1];
    const int xn = (a.n + 1) / 2;
    const int yn = (b.n + 1) / 2;
    if (xn > 0) x[xn - 1] = 0;
    if (yn > 0) y[yn - 1] = 0;
    memcpy(x, a.w, sizeof(uint32_t) * static_cast<size_t>(a.n));
    memcpy(y, b.w, sizeof(uint32_t) * static_cast<size_t>(b.n));
    for (int i = 0; i < xn + yn; ++i) z[i] = 0;
    for (int i = 0; i < xn; ++i) {
        uint64_t carry = 0;
        for (int j = 0; j < yn; ++j) {
            const unsigned __int128 t = static_cast<unsigned __int128>(x[i]) * y[j] + z[i + j] + carry;
            z[i + j] = static_cast<uint64_t>(t);
            carry = static_cast<uint64_t>(t >> 64);
        }
        z[i + yn] = carry;
    }
    // The product has a.n + b.n words at most; the limbs may hold one more.
    out.n = a.n + b.n;
    memcpy(out.w, z, sizeof(uint32_t) * static_cast<size_t>(out.n));
    trim(out);
}

#else

void multiply(const number &a, const number &b, number &out) {
    out.n = a.n + b.n;
    for (int i = 0; i < out.n; ++i) out.w[i] = 0;
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

#endif

// Bits k0 .. k0 + length - 1 of 2/pi as a whole number, bit k0 the highest
// (k0 = 1 for the first after the binary point; bits past the table are 0).
// Read from the low end, table word by table word, into 32-bit words.
void two_over_pi_window(const int32_t *table, int64_t k0, int length, number &out) {
    out.n = (length + 31) / 32;
    if (k0 > 24 * static_cast<int64_t>(two_over_pi_words)) {
        out.n = 0;  // wholly past the table
        return;
    }
    const int last = static_cast<int>(k0) + length - 1;  // the lowest bit
    int word = (last - 1) / 24;
    auto table_word = [&](int i) -> uint64_t {
        return i < two_over_pi_words ? static_cast<uint32_t>(table[i]) & 0xFFFFFF : 0;
    };
    const int below = 24 * (word + 1) - last;  // bits of that word past the window
    uint64_t bits = table_word(word) >> below;
    int held = 24 - below;
    for (int j = 0; j < out.n; ++j) {
        while (held < 32 && word > 0) {
            bits |= table_word(--word) << held;
            held += 24;
        }
        out.w[j] = static_cast<uint32_t>(bits);
        bits >>= 32;
        held -= 32;
    }
    if (length % 32) out.w[out.n - 1] &= (1u << (length % 32)) - 1;
    trim(out);
}

// An exact value, sign * top * 2^exponent, with top odd or zero.
struct exact_value {
    uint64_t top;
    int exponent;
    bool negative;
};

bool operator==(const exact_value &a, const exact_value &b) {
    return a.top == b.top && a.exponent == b.exponent && a.negative == b.negative;
}

// Takes the double nearest a * 2^-scale off a (a > 0), ties to even, and
// leaves what remains in a, which may change sign: *negative follows it;
// for the last double, `keep_rest` false, a is left as it is.
// Gives the exact value of that double, before any rounding to the range
// of doubles.
exact_value take_nearest_double(number &a, int scale, bool *negative, bool keep_rest = true) {
    const int length = bit_length(a);
    if (length == 0) return exact_value{0, 0, false};
    const int drop = length > 53 ? length - 53 : 0;
    uint64_t top = bits_from(a, drop);
    if (length - drop < 64) top &= (uint64_t{1} << (length - drop)) - 1;
    const bool up = drop > 0 && bit(a, drop - 1) && (any_bit_below(a, drop - 1) || (top & 1));
    const bool was_negative = *negative;
    if (up) ++top;
    const int zeros = __builtin_ctzll(top);
    const exact_value taken{top >> zeros, drop - scale + zeros, was_negative};
    if (!keep_rest) return taken;
    keep_low_bits(a, drop);
    if (up) {
        // What remains is 2^drop - (the bits below), of the other sign.
        if (a.n > 0) complement(a, drop);
        *negative = !*negative;
    }
    return taken;
}

// The double of an exact value; ldexp rounds it only if it is tiny.
double to_double(const exact_value &v) {
    if (v.top == 0) return 0.0;
    return (v.negative ? -1.0 : 1.0) * ldexp(static_cast<double>(v.top), v.exponent);
}

// The sum of the partial products of a and b whose places add up to `skip`
// words or more (rounded down to whole limbs), shifted down by the words
// left out, whose number it returns: the whole product lies between that
// number times 2^(32 returned) and that plus 2^(32 returned + 96).
// 2 <= skip < a.n + b.n.
#if defined(__SIZEOF_INT128__)

int multiply_high(const number &a, const number &b, int skip, number &out) {
    constexpr int max_limbs = max_words / 2;
    uint64_t x[max_limbs], y[max_limbs], z[max_limbs + 1];
    const int xn = (a.n + 1) / 2;
    const int yn = (b.n + 1) / 2;
    if (xn > 0) x[xn - 1] = 0;
    if (yn > 0) y[yn - 1] = 0;
    memcpy(x, a.w, sizeof(uint32_t) * static_cast<size_t>(a.n));
    memcpy(y, b.w, sizeof(uint32_t) * static_cast<size_t>(b.n));
    // The limb products left out sum to less than limbs * 2^(64 limbs + 64).
    const int limbs = skip / 2;
    for (int i = 0; i < xn + yn - limbs; ++i) z[i] = 0;
    for (int i = 0; i < xn; ++i) {
        const int j0 = limbs - i > 0 ? limbs - i : 0;
        if (j0 >= yn) continue;
        uint64_t carry = 0;
        for (int j = j0; j < yn; ++j) {
            const unsigned __int128 t = static_cast<unsigned __int128>(x[i]) * y[j] + z[i + j - limbs] + carry;
            z[i + j - limbs] = static_cast<uint64_t>(t);
            carry = static_cast<uint64_t>(t >> 64);
        }
        z[i + yn - limbs] = carry;
    }
    out.n = a.n + b.n - 2 * limbs;
    memcpy(out.w, z, sizeof(uint32_t) * static_cast<size_t>(out.n));
    trim(out);
    return 2 * limbs;
}

#else

int multiply_high(const number &a, const number &b, int skip, number &out) {
    // The word products left out sum to less than skip * 2^(32 skip + 32).
    out.n = a.n + b.n - skip;
    for (int i = 0; i < out.n; ++i) out.w[i] = 0;
    for (int i = 0; i < a.n; ++i) {
        const int j0 = skip - i > 0 ? skip - i : 0;
        if (j0 >= b.n) continue;
        uint64_t carry = 0;
        for (int j = j0; j < b.n; ++j) {
            const uint64_t t = static_cast<uint64_t>(a.w[i]) * b.w[j] + out.w[i + j - skip] + carry;
            out.w[i + j - skip] = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        out.w[i + b.n - skip] = static_cast<uint32_t>(carry);
    }
    trim(out);
    return skip;
}

#endif

// a + 2^(32 at), for a below 2^(32 max_words - 32).
void add_word_one(number &a, int at) {
    for (int i = a.n; i <= at; ++i) a.w[i] = 0;
    if (a.n <= at) a.n = at + 1;
    for (int i = at;; ++i) {
        if (i == a.n) a.w[a.n++] = 0;
        if (++a.w[i] != 0) break;
    }
}

}  // namespace

extern "C" int __rem_pio2m(const double *x, double *y, int e0, int nx, int prec, const int32_t *ipio2) {
    const int outputs = prec <= 0 ? 1 : prec >= 3 ? 3 : 2;
    for (int i = 0; i < outputs; ++i) y[i] = 0.0;
    if (nx < 1 || nx > 8) return 0;

    // The argument is m * 2^e with m whole: the pieces side by side.
    number m;
    m.n = (24 * nx + 31) / 32;
    for (int i = 0; i < m.n; ++i) m.w[i] = 0;
    for (int i = 0; i < nx; ++i) {
        const uint32_t piece = static_cast<uint32_t>(x[i]) & 0xFFFFFF;
        const int at = 24 * (nx - 1 - i);
        m.w[at / 32] |= piece << (at % 32);
        if (at % 32 > 8) m.w[at / 32 + 1] |= piece >> (32 - at % 32);
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
    number half_pi;
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
    const int scale = frac_bits + 32 * half_pi_word_count - 1;

    if (product.n == 0) return n;  // r is 0, as are the doubles written above

    // The doubles need the leading 160 bits or so of r, and its low bits only
    // when they decide a rounding. Rounding to nearest is monotonic, so the
    // doubles taken off r one after another, compared first by the first,
    // are monotonic in r: when both ends of a short interval give the same
    // exact values, so does everything in it. So the low partial products are left out,
    // as many words as keep the interval 191 bits or more below the leading
    // bit of r (it lies at bit_length(product) + 382 or 383), the doubles
    // are taken off both ends, and the whole product is formed only when
    // they differ: when a rounding of the last double is that close to a
    // tie, or for arguments so small that r has few bits.
    const int skip = (bit_length(product) + 32 * half_pi_word_count - 1 - 160 - 32 - 96) / 32;
    if (skip >= 2 && skip < product.n + half_pi.n) {
        number low, high;
        const int skipped = multiply_high(product, half_pi, skip, low);
        high.n = low.n;
        memcpy(high.w, low.w, sizeof(uint32_t) * static_cast<size_t>(low.n));
        add_word_one(high, 3);
        bool low_negative = negative, high_negative = negative;
        exact_value taken[3];
        bool same = true;
        for (int i = 0; i < outputs && same; ++i) {
            const bool last = i == outputs - 1;
            taken[i] = take_nearest_double(low, scale - 32 * skipped, &low_negative, !last);
            same = take_nearest_double(high, scale - 32 * skipped, &high_negative, !last) == taken[i];
        }
        if (same) {
            for (int i = 0; i < outputs; ++i) y[i] = to_double(taken[i]);
            return n;
        }
    }
    multiply(product, half_pi, r);
    for (int i = 0; i < outputs; ++i) y[i] = to_double(take_nearest_double(r, scale, &negative, i < outputs - 1));
    return n;
}
