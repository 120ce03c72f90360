// Output editing of integers under I, B, O and Z. Every routine is a
// template over the field sink, the part of a formatted transfer that makes
// room for a field: sequential, direct-access and internal files differ
// only there.
//
// A sink provides
//   int allocate_field(int32_t width, char **field)  0, or the statement's error
//   int fail(int number)                               the statement's failure
//   int32_t sign_mode() const                          1 SP, 2 SS, 3 SU
//   int32_t radix() const                              for I
//   bool f77compat() const
#pragma once

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

// The few routines on the path of every integer field are inlined into
// their callers: a call each would cost as much as their work.
#define KRM_HOT_INLINE inline __attribute__((always_inline))

namespace krm::edit {

constexpr int32_t SIGN_PLUS = 1;      // SP
constexpr int32_t SIGN_DEFAULT = 2;   // SS, S
constexpr int32_t SIGN_UNSIGNED = 3;  // SU: every integer as an unsigned one

constexpr char digit_table[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// Digits most significant first, built from the end of the array toward
// its start: 64 binary digits and a sign are the most a 64-bit value needs.
struct digit_string {
    char d[72];
    char *first = d + sizeof d;
    const char *begin() const { return first; }
    int32_t size() const { return static_cast<int32_t>(d + sizeof d - first); }
};

// "00" to "99": decimal digits two at a time halve the divisions.
constexpr char two_digits[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

template <class Sink>
int fill_by_asterisk(Sink &s, int32_t w) {
    char *f = nullptr;
    if (int err = s.allocate_field(w, &f)) return err;
    memset(f, '*', static_cast<size_t>(w > 0 ? w : 0));
    return 0;
}

template <class Sink>
int wrt_integer_zero(Sink &s, int32_t w, int32_t m, int32_t sign_mode) {
    if (w < 0) return s.fail(1072);
    const bool plus = sign_mode == SIGN_PLUS;
    char *f = nullptr;
    if (w == 0) {
        if (s.f77compat()) return 0;
        if (m <= 0) {
            if (int err = s.allocate_field(1, &f)) return err;
            *f = ' ';
            return 0;
        }
        if (int err = s.allocate_field(m + (plus ? 1 : 0), &f)) return err;
        if (plus) *f++ = '+';
        memset(f, '0', static_cast<size_t>(m));
        return 0;
    }
    if (m > 0 && (plus ? m >= w : m > w)) return fill_by_asterisk(s, w);
    if (int err = s.allocate_field(w, &f)) return err;
    int32_t m0 = m > 0 ? m : 0;
    int32_t blanks = w - m0 - (plus && m0 > 0 ? 1 : 0);
    memset(f, ' ', static_cast<size_t>(blanks));
    f += blanks;
    if (m0 > 0) {
        if (plus) *f++ = '+';
        memset(f, '0', static_cast<size_t>(m0));
    }
    return 0;
}

// Runs of blanks or zeros in a field are short: stores of eight bytes
// beat a call to memset.
KRM_HOT_INLINE void fill_run(char *f, char c, int32_t n) {
    if (n >= 8) {
        const uint64_t v = 0x0101010101010101ull * static_cast<uint8_t>(c);
        char *const end = f + n;
        for (; end - f > 8; f += 8) memcpy(f, &v, 8);
        memcpy(end - 8, &v, 8);
        return;
    }
    if (n & 4) { const uint32_t v = 0x01010101u * static_cast<uint8_t>(c); memcpy(f, &v, 4); f += 4; }
    if (n & 2) { f[0] = c; f[1] = c; f += 2; }
    if (n & 1) *f = c;
}

// The number of decimal digits of v.
KRM_HOT_INLINE int32_t decimal_length(uint64_t v) {
    int32_t n = 1;
    while (v >= 10000) {
        v /= 10000;
        n += 4;
    }
    return n + (v >= 10) + (v >= 100) + (v >= 1000);
}

// Writes the decimal digits of v so that they end just before `end`.
KRM_HOT_INLINE void put_decimal(char *end, uint64_t v) {
    // 32-bit steps where the value allows: much cheaper on i386.
    while (v > UINT32_MAX) {
        const uint64_t q = v / 100;
        end -= 2;
        memcpy(end, two_digits + 2 * (v - q * 100), 2);
        v = q;
    }
    uint32_t u = static_cast<uint32_t>(v);
    while (u >= 100) {
        const uint32_t q = u / 100;
        end -= 2;
        memcpy(end, two_digits + 2 * (u - q * 100), 2);
        u = q;
    }
    if (u >= 10) {
        memcpy(end - 2, two_digits + 2 * u, 2);
    } else {
        end[-1] = static_cast<char>('0' + u);
    }
}

// The digits of a field: a string made beforehand, most significant first...
struct ready_digits {
    const char *p;
    int32_t n;
    void put(char *end) const { memcpy(end - n, p, static_cast<size_t>(n)); }
};
// ...or the decimal digits of a value, made straight into the field.
struct decimal_digits {
    uint64_t v;
    int32_t n;
    explicit decimal_digits(uint64_t value) : v(value), n(decimal_length(value)) {}
    void put(char *end) const { put_decimal(end, v); }
};

// A nonzero value: optional sign character, at least m digits.
template <class Sink, class Digits>
KRM_HOT_INLINE int wrt_nonzero_digits(Sink &s, int32_t w, int32_t m, int g, char c, const Digits &d) {
    const int32_t n = d.n;
    const int32_t k = m > n ? m : n;
    char *f = nullptr;
    if (w == 0) {
        if (s.f77compat()) return 0;
        if (int err = s.allocate_field(k + g, &f)) return err;
    } else {
        if (w < 0) return s.fail(1072);
        if (k + g > w) return fill_by_asterisk(s, w);
        if (int err = s.allocate_field(w, &f)) return err;
        fill_run(f, ' ', w - k - g);
        f += w - k - g;
    }
    if (g) *f++ = c;
    if (k > n) fill_run(f, '0', k - n);
    d.put(f + k);
    return 0;
}

template <class Sink>
int wrt_nonzero_integer(Sink &s, int32_t w, int32_t m, int g, char c, const char *digits, int32_t n) {
    return wrt_nonzero_digits(s, w, m, g, c, ready_digits{digits, n});
}

template <class Sink>
int wrt_nonzero_unsigned(Sink &s, int32_t w, int32_t m, const char *digits, int32_t n) {
    return wrt_nonzero_integer(s, w, m, 0, ' ', digits, n);
}

// Digits of an unsigned value in any radix from 2 to 36.
inline void digits_of(uint64_t v, uint32_t radix, digit_string &ds) {
    char *const end = ds.d + sizeof ds.d;
    if (radix == 10) {
        ds.first = end - decimal_length(v);
        put_decimal(end, v);
        return;
    }
    char *p = end;
    do {
        *--p = digit_table[v % radix];
        v /= radix;
    } while (v);
    ds.first = p;
}

// Digits of the value's bits, `bits` per digit (1 B, 3 O, 4 Z).
inline void digits_of_bits(uint64_t v, int bits, digit_string &ds) {
    char *p = ds.d + sizeof ds.d;
    const uint64_t mask = (1u << bits) - 1;
    do {
        *--p = digit_table[v & mask];
        v >>= bits;
    } while (v);
    ds.first = p;
}

// Iw.m of a signed value of 32 or 64 bits.
template <class Sink>
KRM_HOT_INLINE int wrt_iwm_signed(Sink &s, int32_t w, int32_t m, int64_t value, int width_bits) {
    const int32_t mode = s.sign_mode();
    if (value == 0) return wrt_integer_zero(s, w, m, mode);
    uint64_t magnitude;
    int g = 0;
    char c = ' ';
    if (mode == SIGN_UNSIGNED) {
        magnitude = width_bits == 32 ? static_cast<uint32_t>(value) : static_cast<uint64_t>(value);
    } else {
        // Negation on the unsigned pattern: the most negative value needs no case.
        magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        if (value < 0) {
            g = 1;
            c = '-';
        } else if (mode == SIGN_PLUS) {
            g = 1;
            c = '+';
        }
    }
    if (s.radix() == 10) return wrt_nonzero_digits(s, w, m, g, c, decimal_digits(magnitude));
    digit_string ds;
    digits_of(magnitude, static_cast<uint32_t>(s.radix()), ds);
    return wrt_nonzero_integer(s, w, m, g, c, ds.begin(), ds.size());
}

template <class Sink>
int wrt_iwm_i4(Sink &s, int32_t w, int32_t m, int32_t v) {
    return wrt_iwm_signed(s, w, m, v, 32);
}
template <class Sink>
int wrt_iwm_i8(Sink &s, int32_t w, int32_t m, int64_t v) {
    return wrt_iwm_signed(s, w, m, v, 64);
}

// Unsigned items: under SP the "+" is the most significant digit, so that
// zeros for m stand in front of it.
template <class Sink>
int wrt_iwm_unsigned(Sink &s, int32_t w, int32_t m, uint64_t v, bool honour_plus) {
    if (v == 0) return wrt_integer_zero(s, w, m, s.sign_mode());
    digit_string ds;
    digits_of(v, static_cast<uint32_t>(s.radix()), ds);
    if (honour_plus && s.sign_mode() == SIGN_PLUS) *--ds.first = '+';
    return wrt_nonzero_unsigned(s, w, m, ds.begin(), ds.size());
}
template <class Sink>
int wrt_iwm_u4(Sink &s, int32_t w, int32_t m, uint32_t v) {
    return wrt_iwm_unsigned(s, w, m, v, true);
}
template <class Sink>
int wrt_iwm_u8(Sink &s, int32_t w, int32_t m, uint64_t v) {
    return wrt_iwm_unsigned(s, w, m, v, true);
}

// B, O, Z of an integer's bits.
template <class Sink>
int wrt_bits(Sink &s, int32_t w, int32_t m, uint64_t v, int bits) {
    if (v == 0) return wrt_integer_zero(s, w, m, SIGN_UNSIGNED);
    digit_string ds;
    digits_of_bits(v, bits, ds);
    return wrt_nonzero_unsigned(s, w, m, ds.begin(), ds.size());
}
template <class Sink> int wrt_bwm_i4(Sink &s, int32_t w, int32_t m, int32_t v) { return wrt_bits(s, w, m, static_cast<uint32_t>(v), 1); }
template <class Sink> int wrt_bwm_i8(Sink &s, int32_t w, int32_t m, int64_t v) { return wrt_bits(s, w, m, static_cast<uint64_t>(v), 1); }
template <class Sink> int wrt_bwm_u4(Sink &s, int32_t w, int32_t m, uint32_t v) { return wrt_bits(s, w, m, v, 1); }
template <class Sink> int wrt_bwm_u8(Sink &s, int32_t w, int32_t m, uint64_t v) { return wrt_bits(s, w, m, v, 1); }
template <class Sink> int wrt_owm_i4(Sink &s, int32_t w, int32_t m, int32_t v) { return wrt_bits(s, w, m, static_cast<uint32_t>(v), 3); }
template <class Sink> int wrt_owm_i8(Sink &s, int32_t w, int32_t m, int64_t v) { return wrt_bits(s, w, m, static_cast<uint64_t>(v), 3); }
template <class Sink> int wrt_owm_u4(Sink &s, int32_t w, int32_t m, uint32_t v) { return wrt_bits(s, w, m, v, 3); }
template <class Sink> int wrt_owm_u8(Sink &s, int32_t w, int32_t m, uint64_t v) { return wrt_bits(s, w, m, v, 3); }
template <class Sink> int wrt_zwm_i4(Sink &s, int32_t w, int32_t m, int32_t v) { return wrt_bits(s, w, m, static_cast<uint32_t>(v), 4); }
template <class Sink> int wrt_zwm_i8(Sink &s, int32_t w, int32_t m, int64_t v) { return wrt_bits(s, w, m, static_cast<uint64_t>(v), 4); }
template <class Sink> int wrt_zwm_u4(Sink &s, int32_t w, int32_t m, uint32_t v) { return wrt_bits(s, w, m, v, 4); }
template <class Sink> int wrt_zwm_u8(Sink &s, int32_t w, int32_t m, uint64_t v) { return wrt_bits(s, w, m, v, 4); }

}  // namespace krm::edit
