// Decimal text of integers, written backwards from the end of a small
// buffer, two digits at a time.
#pragma once

#include <stdint.h>

namespace krm {

// Longest text: "-9223372036854775808" and the 20 digits of UINT64_MAX.
constexpr int integer_text_size = 24;

extern const char digit_pairs[200];

// Writes the digits of v so that they end at `end`; returns their start.
inline char *unsigned_text(uint64_t v, char *end) {
    char *p = end;
    // 32-bit steps where the value allows: cheaper than 64-bit division on i386.
    while (v > UINT32_MAX) {
        uint64_t q = v / 100;
        const char *d = &digit_pairs[2 * (v - q * 100)];
        *--p = d[1];
        *--p = d[0];
        v = q;
    }
    uint32_t w = static_cast<uint32_t>(v);
    while (w >= 100) {
        uint32_t q = w / 100;
        const char *d = &digit_pairs[2 * (w - q * 100)];
        *--p = d[1];
        *--p = d[0];
        w = q;
    }
    if (w >= 10) {
        *--p = digit_pairs[2 * w + 1];
        *--p = digit_pairs[2 * w];
    } else {
        *--p = static_cast<char>('0' + w);
    }
    return p;
}

inline char *signed_text(int64_t v, char *end) {
    uint64_t magnitude = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    char *p = unsigned_text(magnitude, end);
    if (v < 0) *--p = '-';
    return p;
}

}  // namespace krm
