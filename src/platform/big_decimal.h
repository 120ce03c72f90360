// The exact decimal engine: binary floating-point values of any precision up
// to 128 bits to decimal digits and back, correctly rounded in the four
// directions. REAL(4), REAL(8), the x87 extended format and REAL(16) all
// convert through it; they differ only in their binary_format.
//
// Numbers in transit are big_floats of 16-bit digits, in one of two radices:
// 65536 (big binary) and 10000 (big decimal). Scaling by powers of ten and
// two uses read-only tables of powers of five (radix 65536) and of two
// (radix 10000). A product may keep only its leading digits; the dropped
// digits are recorded, the result is then a lower bound, and the conversion
// checks that the bound leaves the rounding in no doubt, or redoes the work
// without truncation.
#pragma once

#include <stdint.h>

#include "platform/decimal_record.h"

// ------------------------------------------------------------- big numbers

enum { big_float_stack_digits = 256 };

struct big_float {
    uint16_t digit_capacity;  // cells at `digits`
    uint16_t digit_count;     // cells in use, the top one non-zero
    int16_t scale_exponent;   // radix 65536: the value is digits * 2**scale;
                              // radix 10000: digits * 10**scale
    uint16_t truncated;       // products that dropped non-zero digits: the
                              // value is then less than the exact one
    uint16_t *digits;         // least significant first: `cells`, or a block from malloc
    uint16_t cells[big_float_stack_digits];
};

void big_float_init(big_float *b);
void __x86quad__free_big_float(big_float *b);

// value * base**n into result (another big_float), for base 10 on a
// radix-65536 number (n below
// 5120) and base 2 on a radix-10000 number (n below 16896). Each product
// keeps precision / 16 + 2 (radix 65536) or precision / 4 + 2 (radix 10000)
// digits; precision 0 keeps them all. Returns 0, or 1 when n is out of range.
int __x86quad__big_float_times_power(const big_float *value, int base, int n, int precision,
                                     big_float *result);

// Radix changes of integers (scale_exponent 0).
void __x86quad__big_binary_to_big_decimal(const big_float *binary, big_float *decimal);
void __x86quad__big_decimal_to_big_binary(const big_float *decimal, big_float *binary);

// The four digit characters of value (0 to 9999) at out.
void __x86quad__four_digits_quick(unsigned value, char *out);

// Ends the process: a big number could not get storage. errno becomes n.
[[noreturn]] void __x86quad__base_conversion_abort(int n);

// ------------------------------------------------------- binary formats

struct binary_format {
    int precision;     // significand bits, the leading one included
    int max_exponent;  // the bias, and the exponent of the largest finite values
    int min_exponent;  // exponent of the least normal value
    int max_decimal;   // every value of 10**(max_decimal + 1) or more overflows
    int min_decimal;   // every value below 10**min_decimal is under half the least subnormal
};

extern const binary_format single_format;
extern const binary_format double_format;
extern const binary_format extended_format;
extern const binary_format quadruple_format;

// The expanded binary form.
struct unpacked {
    int sign;
    int fpclass;               // as in decimal_record
    int exponent;              // unbiased exponent of the leading bit
    uint32_t significand[5];   // most significant first, the leading bit at the top of
                               // [0]; [4] holds the bits below, the last one sticky
};

// A rounded value, ready to be laid out in its format.
struct packed_binary {
    int sign;
    int biased_exponent;     // all ones for infinity and NaN
    uint32_t significand[4]; // the precision bits, most significant word first,
                             // right-aligned (the leading one included); the
                             // fraction of a NaN
};

// The state of one conversion. Kept per call, so that conversions in two
// threads at once cannot mix their directions or flags.
struct conversion_state {
    int _fp_current_direction;
    int _fp_current_exceptions;
    int _fp_current_precision;
};

void __x86quad__fp_set_exception(conversion_state *state, int n);

// Raises the flags of an exception word in the processor, one of them, by an
// arithmetic operation whose result is stored and never read.
void __x86quad__base_conversion_set_exception(int flags);

// Shifts the five significand words right by n bits, folding the bits that
// leave the last word into its lowest bit.
void __x86quad__fp_rightshift(uint32_t significand[5], int n);

// ------------------------------------------------------- conversions

// Binary to digits, as mode asks: df 1 floating (ndigits significant digits,
// 1 to 511), df 0 fixed (ndigits digits behind the point, at most 511
// digits in all). Sets every field of record; returns the exception word (0
// or inexact). fpclass, sign, exponent and significand of the value come in
// `value`, whose significand bits below its precision must be zero.
int binary_to_decimal_record(const unpacked *value, const decimal_mode *mode, decimal_record *record);

// Rounds the digits of record, given the next digit and whether anything
// non-zero follows it, in direction mode->rd.
void __x86quad__decimal_round(const decimal_mode *mode, decimal_record *record, int *flags, char next,
                              int more);

// Digits to binary in the format, rounded in direction rd. Returns 0 when the
// record asks for nothing to be stored (ndigits -1), else 1 with *result and
// *flags set.
int decimal_record_to_binary(const decimal_record *record, const binary_format *format, int rd,
                             packed_binary *result, int *flags);

// The shared tails of the digit-string conversions (econvert and kin).
// `value` as for binary_to_decimal_record; rd the direction.
char *convert_significant_digits(const unpacked *value, int rd, int ndigits, int *decimal_point,
                                 int *sign, char *buf);
char *convert_fixed_digits(const unpacked *value, int rd, int ndigits, int *decimal_point, int *sign,
                           char *buf);
// The directed forms: the value's `significant` digits rounded up (up set)
// or down, then cut or raised at ndigits places behind the point.
char *convert_directed(const unpacked *value, int up, int significant, int ndigits, int *decimal_point,
                       int *sign, char *buf);

// ------------------------------------------------------- format helpers

void unpack_single(uint32_t bits, unpacked *u);
void unpack_double(uint64_t bits, unpacked *u);
void unpack_extended(uint64_t significand, uint32_t sign_exponent, unpacked *u);
void unpack_quadruple(const uint32_t storage[4], unpacked *u);

uint32_t pack_single(const packed_binary *p);
uint64_t pack_double(const packed_binary *p);
void pack_extended(const packed_binary *p, uint64_t *significand, uint16_t *sign_exponent);
void pack_quadruple(const packed_binary *p, uint32_t storage[4]);
