// Reference results for decimal conversion, by the plainest exact integer
// arithmetic: whole numbers, whole expansions, long division. Nothing here
// truncates or estimates, so it can judge a conversion that does.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace krm_test {

// An unsigned integer of any size.
class big_uint {
public:
    big_uint() = default;
    big_uint(uint64_t v);  // NOLINT: a number is a big number

    static big_uint from_decimal(const std::string &digits);
    static big_uint power(uint32_t base, unsigned n);  // remembered

    bool is_zero() const { return w_.empty(); }
    long bit_length() const;
    bool bit(long i) const;
    uint64_t low64() const;

    big_uint operator*(const big_uint &b) const;
    big_uint operator+(const big_uint &b) const;
    big_uint operator-(const big_uint &b) const;  // *this >= b
    big_uint operator<<(long n) const;
    big_uint operator>>(long n) const;
    int compare(const big_uint &b) const;
    bool operator==(const big_uint &b) const { return compare(b) == 0; }
    bool operator<(const big_uint &b) const { return compare(b) < 0; }

    // Quotient and remainder, by shifting and subtracting: meant for small
    // quotients.
    static void divide(const big_uint &a, const big_uint &b, big_uint &q, big_uint &r);

    std::string to_decimal() const;

private:
    void trim();
    std::vector<uint32_t> w_;  // least significant first
};

// A binary format, as the conversions see it.
struct format_info {
    int precision;     // significand bits, the leading one included
    int max_exponent;  // the bias, exponent of the greatest finite values
    int min_exponent;  // exponent of the least normal value
    bool explicit_leading_bit;
};
extern const format_info single_info, double_info, extended_info, quad_info;

// A finite value M * 2**e, exactly.
struct binary_number {
    bool negative = false;
    big_uint m;
    long e = 0;
};

// A rounded binary result: biased exponent and significand (the leading bit
// included, p bits), with the exception word of the conversion.
struct binary_result {
    bool negative = false;
    long biased = 0;
    big_uint significand;
    int flags = 0;
};

// The exact decimal expansion of M * 2**e: digits (no leading zero) times 10
// to `exponent`. M must not be zero.
struct exact_expansion {
    std::string digits;
    long exponent = 0;
};
exact_expansion expand(const binary_number &x);

// The digits a decimal conversion must give, as the decimal_record holds them.
struct decimal_result {
    std::string ds;
    int exponent = 0;
    int flags = 0;  // 0 or 32
};
// floating: `ndigits` significant digits (1 to 511); otherwise `ndigits`
// digits behind the point (none for a negative count), at most 511 digits
// in all. rd: 0 nearest even, 1
// down, 2 up, 3 toward zero.
decimal_result round_to_decimal(const exact_expansion &x, bool negative, int rd, bool floating, int ndigits);

// The correctly rounded binary value of (digits + tail) * 10**exponent, tail
// being a positive amount below one unit when `more` is set.
binary_result round_to_binary(const std::string &digits, long exponent, bool more, bool negative, int rd,
                              const format_info &f);

// The value of bits of a format, and back.
binary_number value_of(const binary_result &r, const format_info &f);

}  // namespace krm_test
