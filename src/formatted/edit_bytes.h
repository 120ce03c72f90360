// I, B, O and Z of values of any size given as bytes: the bits of a real
// under an integer descriptor, a character value, an integer wider than 64
// bits. The _n forms take the machine's order (least significant byte
// first), the _ch forms a character value (most significant byte first).
#pragma once

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "formatted/edit_integer.h"

namespace krm::edit {

// Bytes most significant first, in a copy the routines may change. Small
// values stay on the stack.
struct byte_value {
    uint8_t local[64];
    uint8_t *b = local;
    int32_t n = 0;
    bool ok = true;

    byte_value(const void *p, int32_t len, bool reverse) {
        n = len > 0 ? len : 0;
        if (n > static_cast<int32_t>(sizeof local)) {
            // Even length, so the 16-bit long division has whole pieces.
            b = static_cast<uint8_t *>(malloc(static_cast<size_t>(n) + 1));
            ok = b != nullptr;
            if (!ok) return;
        }
        const uint8_t *src = static_cast<const uint8_t *>(p);
        for (int32_t i = 0; i < n; ++i) b[i] = reverse ? src[n - 1 - i] : src[i];
    }
    ~byte_value() {
        if (b != local) free(b);
    }
    byte_value(const byte_value &) = delete;
    byte_value &operator=(const byte_value &) = delete;
};

// Digits of B, O or Z from bytes most significant first, without leading
// zero bytes; none when the value is 0. Digits are made least significant
// first, then turned round.
struct wide_digits {
    char local[200];
    char *d = local;
    int32_t n = 0;
    bool ok = true;
    explicit wide_digits(int32_t capacity) {
        if (capacity > static_cast<int32_t>(sizeof local)) {
            d = static_cast<char *>(malloc(static_cast<size_t>(capacity)));
            ok = d != nullptr;
        }
    }
    ~wide_digits() {
        if (d != local) free(d);
    }
    wide_digits(const wide_digits &) = delete;
    void reverse() {
        for (int32_t i = 0, j = n - 1; i < j; ++i, --j) {
            const char t = d[i];
            d[i] = d[j];
            d[j] = t;
        }
    }
    wide_digits &operator=(const wide_digits &) = delete;
};

// B, O, Z: 1, 3 or 4 bits per digit.
template <class Sink>
int wrt_bits_of_bytes(Sink &s, int32_t w, int32_t m, const void *p, int32_t len, bool machine_order, int bits) {
    byte_value v(p, len, machine_order);
    if (!v.ok) return s.fail(12);
    int32_t first = 0;
    while (first < v.n && v.b[first] == 0) ++first;
    if (first == v.n) return wrt_integer_zero(s, w, m, SIGN_UNSIGNED);
    const int32_t nbytes = v.n - first;
    wide_digits out(nbytes * 8 + 1);
    if (!out.ok) return s.fail(12);
    // Walk the bits from the low end, `bits` at a time.
    uint32_t acc = 0;
    int have = 0;
    for (int32_t i = v.n - 1; i >= first; --i) {
        acc |= static_cast<uint32_t>(v.b[i]) << have;
        have += 8;
        while (have >= bits) {
            out.d[out.n++] = digit_table[acc & ((1u << bits) - 1)];
            acc >>= bits;
            have -= bits;
        }
    }
    if (have > 0) out.d[out.n++] = digit_table[acc];
    while (out.n > 1 && out.d[out.n - 1] == '0') --out.n;  // no leading zeros
    out.reverse();
    return wrt_nonzero_unsigned(s, w, m, out.d, out.n);
}

template <class Sink> int wrt_bwm_n(Sink &s, int32_t w, int32_t m, const void *p, int32_t size) { return wrt_bits_of_bytes(s, w, m, p, size, true, 1); }
template <class Sink> int wrt_owm_n(Sink &s, int32_t w, int32_t m, const void *p, int32_t size) { return wrt_bits_of_bytes(s, w, m, p, size, true, 3); }
template <class Sink> int wrt_zwm_n(Sink &s, int32_t w, int32_t m, const void *p, int32_t size) { return wrt_bits_of_bytes(s, w, m, p, size, true, 4); }
template <class Sink> int wrt_bwm_ch(Sink &s, int32_t w, int32_t m, const char *p, int32_t len) { return wrt_bits_of_bytes(s, w, m, p, len, false, 1); }
template <class Sink> int wrt_owm_ch(Sink &s, int32_t w, int32_t m, const char *p, int32_t len) { return wrt_bits_of_bytes(s, w, m, p, len, false, 3); }
template <class Sink> int wrt_zwm_ch(Sink &s, int32_t w, int32_t m, const char *p, int32_t len) { return wrt_bits_of_bytes(s, w, m, p, len, false, 4); }

// The decimal (or radix) digits of a two's complement integer of any size,
// and its sign. out.n stays 0 for the value 0. Returns 0 or 12.
template <class Sink>
int iwm_bytes_digits(Sink &s, const void *p, int32_t len, bool machine_order, wide_digits &out, int &g,
                     char &c) {
    byte_value v(p, len, machine_order);
    if (!v.ok) return 12;
    const int32_t mode = s.sign_mode();
    int32_t first = 0;
    bool negative = false;
    if (mode == SIGN_UNSIGNED) {
        while (first < v.n && v.b[first] == 0) ++first;
    } else {
        while (first + 1 < v.n && v.b[first] == 0 && !(v.b[first + 1] & 0x80)) ++first;
        while (first + 1 < v.n && v.b[first] == 0xFF && (v.b[first + 1] & 0x80)) ++first;
        negative = first < v.n && (v.b[first] & 0x80);
        if (first + 1 == v.n && v.b[first] == 0) first = v.n;
    }
    g = 0;
    c = ' ';
    if (first == v.n) return 0;

    // Work on an even number of bytes, high byte first, magnitude only.
    const int32_t nbytes = v.n - first;
    const int32_t even = nbytes + (nbytes & 1);
    uint8_t local[66];
    uint8_t *num = even <= static_cast<int32_t>(sizeof local) ? local : static_cast<uint8_t *>(malloc(static_cast<size_t>(even)));
    if (!num) return 12;
    num[0] = negative ? 0xFF : 0;
    memcpy(num + (even - nbytes), v.b + first, static_cast<size_t>(nbytes));
    if (negative) {
        // Two's complement negation, low byte first.
        unsigned carry = 1;
        for (int32_t i = even - 1; i >= 0; --i) {
            unsigned x = static_cast<uint8_t>(~num[i]) + carry;
            num[i] = static_cast<uint8_t>(x);
            carry = x >> 8;
        }
    }
    const uint32_t radix = static_cast<uint32_t>(s.radix());
    // Long division by the radix, 16 bits at a time, skipping pieces that became 0.
    int32_t top = 0;
    for (;;) {
        while (top < even && num[top] == 0 && num[top + 1] == 0) top += 2;
        if (top >= even) break;
        uint32_t rem = 0;
        for (int32_t i = top; i < even; i += 2) {
            uint32_t cur = (rem << 16) | (static_cast<uint32_t>(num[i]) << 8) | num[i + 1];
            uint32_t q = cur / radix;
            rem = cur - q * radix;
            num[i] = static_cast<uint8_t>(q >> 8);
            num[i + 1] = static_cast<uint8_t>(q);
        }
        out.d[out.n++] = digit_table[rem];
    }
    if (num != local) free(num);
    out.reverse();
    if (mode != SIGN_UNSIGNED) {
        if (negative) {
            g = 1;
            c = '-';
        } else if (mode == SIGN_PLUS) {
            g = 1;
            c = '+';
        }
    }
    return 0;
}

// I of a two's complement integer of any size. A w below 0 takes the
// width-less form: the digits and two more, 3 for the value 0.
template <class Sink>
int wrt_iwm_bytes(Sink &s, int32_t w, int32_t m, const void *p, int32_t len, bool machine_order) {
    wide_digits out((len > 0 ? len : 0) * 8 + 2);
    if (!out.ok) return s.fail(12);
    int g;
    char c;
    if (int err = iwm_bytes_digits(s, p, len, machine_order, out, g, c)) return s.fail(err);
    if (out.n == 0) return wrt_integer_zero(s, w, m, s.sign_mode());
    return wrt_nonzero_integer(s, w, m, g, c, out.d, out.n);
}

// I without a width on a character value.
template <class Sink>
int wrt_i_default_ch(Sink &s, const char *p, int32_t len) {
    wide_digits out((len > 0 ? len : 0) * 8 + 2);
    if (!out.ok) return s.fail(12);
    int g;
    char c;
    if (int err = iwm_bytes_digits(s, p, len, false, out, g, c)) return s.fail(err);
    if (out.n == 0) return wrt_integer_zero(s, 3, 1, s.sign_mode());
    return wrt_nonzero_integer(s, out.n + 2, 1, g, c, out.d, out.n);
}

template <class Sink> int wrt_iwm_n(Sink &s, int32_t w, int32_t m, const void *p, int32_t size) { return wrt_iwm_bytes(s, w, m, p, size, true); }
template <class Sink> int wrt_iwm_ch(Sink &s, int32_t w, int32_t m, const char *p, int32_t len) { return wrt_iwm_bytes(s, w, m, p, len, false); }

}  // namespace krm::edit
