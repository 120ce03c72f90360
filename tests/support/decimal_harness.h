// Decimal conversions of the four binary formats under one interface, checked
// against the exact references of exact_decimal.h.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <array>
#include <random>
#include <string>

#include "platform/decimal_record.h"
#include "support/exact_decimal.h"

namespace krm_test {

enum class fp_kind { single, double_, extended, quad };

const char *kind_name(fp_kind k);
const format_info &kind_format(fp_kind k);

// A value's bits: single {bits}, double {low, high}, extended {significand
// low, significand high, sign and exponent}, quad in storage order.
using bits128 = std::array<uint32_t, 4>;

// The library's conversions of the kind; the exception word is returned.
int library_to_binary(fp_kind k, const decimal_record &rec, int rd, bits128 &out);
int library_to_decimal(fp_kind k, const bits128 &bits, const decimal_mode &mode, decimal_record &rec);

// The bits of a reference result, and the exact value of finite bits.
bits128 reference_bits(fp_kind k, const binary_result &r);
binary_number decode(fp_kind k, const bits128 &bits);
bool is_finite_nonzero(fp_kind k, const bits128 &bits);
std::string bits_text(fp_kind k, const bits128 &bits);

decimal_record make_record(const std::string &digits, long exponent, bool negative, bool more);

// Random finite non-zero values: over the whole range, or with an exponent
// of magnitude below 200.
bits128 random_value(fp_kind k, std::mt19937_64 &rng, bool moderate = false);
// A random digit string of n digits, the first not zero.
std::string random_digits(std::mt19937_64 &rng, int n);

// The exact decimal expansion of the point halfway between the value and its
// successor in magnitude.
exact_expansion halfway_above(fp_kind k, const bits128 &bits);

// Converts and compares with the reference; "" when they agree, else what differs.
std::string check_to_binary(fp_kind k, const std::string &digits, long exponent, bool negative, bool more, int rd);
std::string check_to_decimal(fp_kind k, const bits128 &bits, int rd, bool floating, int ndigits);

// Random cases a test runs: a quarter of them under AddressSanitizer, whose
// build runs many times slower (decimal_sweep covers the breadth).
constexpr int case_count(int n) {
#if defined(__SANITIZE_ADDRESS__)
    return n / 4;
#else
    return n;
#endif
}

// The conversions of one kind, both ways (tests/platform/decimal_conversion_test.cpp);
// each directory instantiates it for its kinds.
class DecimalKind : public ::testing::TestWithParam<fp_kind> {};
std::string kind_test_name(const ::testing::TestParamInfo<fp_kind> &p);

}  // namespace krm_test
