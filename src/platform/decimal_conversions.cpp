// The platform's decimal conversions of REAL(4), REAL(8) and the x87
// extended format, on the decimal engine.
#include <string.h>

#include "platform/big_decimal.h"
#include "platform/decimal_record.h"
#include "platform/rounding_mode.h"

namespace {

void unpack_float(const float *value, unpacked *u) {
    uint32_t bits;
    memcpy(&bits, value, sizeof bits);
    unpack_single(bits, u);
}

void unpack_of_double(double value, unpacked *u) {
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    unpack_double(bits, u);
}

void unpack_long_double(const long double *value, unpacked *u) {
    uint64_t significand;
    uint16_t sign_exponent;
    memcpy(&significand, value, sizeof significand);
    memcpy(&sign_exponent, reinterpret_cast<const char *>(value) + 8, sizeof sign_exponent);
    unpack_extended(significand, sign_exponent, u);
}

// Hands back the exception word and raises its flags in the processor.
void finish(int *flags, int word) {
    if (flags) *flags = word;
    if (word) __x86quad__base_conversion_set_exception(word);
}

void to_decimal(const unpacked *u, const decimal_mode *mode, decimal_record *record, int *flags) {
    finish(flags, binary_to_decimal_record(u, mode, record));
}

}  // namespace

extern "C" {

void decimal_to_single(float *result, const decimal_mode *mode, const decimal_record *record, int *flags) {
    packed_binary p;
    int word = 0;
    if (!decimal_record_to_binary(record, &single_format, mode->rd, &p, &word)) return finish(flags, 0);
    uint32_t bits = pack_single(&p);
    memcpy(result, &bits, sizeof bits);
    finish(flags, word);
}

void decimal_to_double(double *result, const decimal_mode *mode, const decimal_record *record, int *flags) {
    packed_binary p;
    int word = 0;
    if (!decimal_record_to_binary(record, &double_format, mode->rd, &p, &word)) return finish(flags, 0);
    uint64_t bits = pack_double(&p);
    memcpy(result, &bits, sizeof bits);
    finish(flags, word);
}

void single_to_decimal(const float *value, const decimal_mode *mode, decimal_record *record, int *flags) {
    unpacked u;
    unpack_float(value, &u);
    to_decimal(&u, mode, record, flags);
}

void double_to_decimal(const double *value, const decimal_mode *mode, decimal_record *record, int *flags) {
    unpacked u;
    unpack_of_double(*value, &u);
    to_decimal(&u, mode, record, flags);
}

char *econvert(double value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_of_double(value, &u);
    return convert_significant_digits(&u, __xgetRD(), ndigit, decpt, sign, buf);
}

char *seconvert(const float *value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_float(value, &u);
    return convert_significant_digits(&u, __xgetRD(), ndigit, decpt, sign, buf);
}

char *fconvert(double value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_of_double(value, &u);
    return convert_fixed_digits(&u, __xgetRD(), ndigit, decpt, sign, buf);
}

char *sfconvert(const float *value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_float(value, &u);
    return convert_fixed_digits(&u, __xgetRD(), ndigit, decpt, sign, buf);
}

// The directed forms take no more significant digits than the kind can be
// trusted with: 7 for REAL(4), 16 for REAL(8).
char *sfconvert_up(const float *value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_float(value, &u);
    return convert_directed(&u, 1, 7, ndigit, decpt, sign, buf);
}

char *sfconvert_down(const float *value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_float(value, &u);
    return convert_directed(&u, 0, 7, ndigit, decpt, sign, buf);
}

char *fconvert_up(double value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_of_double(value, &u);
    return convert_directed(&u, 1, 16, ndigit, decpt, sign, buf);
}

char *fconvert_down(double value, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_of_double(value, &u);
    return convert_directed(&u, 0, 16, ndigit, decpt, sign, buf);
}

}  // extern "C"

void decimal_to_extended(long double *result, const decimal_mode *mode, const decimal_record *record,
                         int *flags) {
    packed_binary p;
    int word = 0;
    if (!decimal_record_to_binary(record, &extended_format, mode->rd, &p, &word)) return finish(flags, 0);
    uint64_t significand;
    uint16_t sign_exponent;
    pack_extended(&p, &significand, &sign_exponent);
    memset(result, 0, sizeof *result);
    memcpy(result, &significand, sizeof significand);
    memcpy(reinterpret_cast<char *>(result) + 8, &sign_exponent, sizeof sign_exponent);
    finish(flags, word);
}

void extended_to_decimal(const long double *value, const decimal_mode *mode, decimal_record *record, int *flags) {
    unpacked u;
    unpack_long_double(value, &u);
    to_decimal(&u, mode, record, flags);
}
