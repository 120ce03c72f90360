// x87 80-bit values moved to and from the 128-bit layout by their bits. The
// exponent bias is the same in both, so only the fraction moves: the 63
// bits below the explicit integer bit stand at the top of the 112-bit
// fraction.

#include <string.h>

#include "krm/list_write.h"

namespace {

// The x87 layout in memory: 64-bit significand with its integer bit, then
// 16 bits of sign and exponent.
constexpr size_t kExtendedBytes = 10;

}  // namespace

extern "C" {

KRM_API void ldouble2quadruple(uint32_t *result, long double value) {
    unsigned char bytes[sizeof(long double)];
    memcpy(bytes, &value, sizeof bytes);
    uint64_t significand;
    uint16_t sign_exponent;
    memcpy(&significand, bytes, 8);
    memcpy(&sign_exponent, bytes + 8, 2);
    const uint64_t fraction = significand & ~(uint64_t{1} << 63);
    const uint64_t lo = fraction << 49;  // fraction bits 49..63 of the 112
    const uint64_t hi = fraction >> 15;  // bits 64..111
    result[0] = static_cast<uint32_t>(lo);
    result[1] = static_cast<uint32_t>(lo >> 32);
    result[2] = static_cast<uint32_t>(hi);
    result[3] = (static_cast<uint32_t>(sign_exponent) << 16) | static_cast<uint32_t>(hi >> 32 & 0xffff);
}

KRM_API long double quadruple2ldouble(uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3) {
    const uint64_t hi = (static_cast<uint64_t>(w3 & 0xffff) << 32) | w2;
    const uint64_t lo = (static_cast<uint64_t>(w1) << 32) | w0;
    const uint64_t significand = (uint64_t{1} << 63) | (hi << 15) | (lo >> 49);
    const uint16_t sign_exponent = static_cast<uint16_t>(w3 >> 16);
    unsigned char bytes[sizeof(long double)] = {};
    memcpy(bytes, &significand, 8);
    memcpy(bytes + 8, &sign_exponent, 2);
    static_assert(sizeof(long double) >= kExtendedBytes, "long double is the x87 format");
    long double value;
    memcpy(&value, bytes, sizeof value);
    return value;
}

KRM_API void unary_minus(uint32_t *result, uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3) {
    result[0] = w0;
    result[1] = w1;
    result[2] = w2;
    result[3] = w3 ^ 0x80000000u;
}

}  // extern "C"
