// Decimal conversion of REAL(16) values: the binary128 format on the decimal
// engine that REAL(4) and REAL(8) share.
#include "quad/quad_decimal.h"

#include "platform/big_decimal.h"
#include "platform/rounding_mode.h"

extern "C" {

KRM_API void x86_decimal_to_quadruple(krm_real16 *result, const decimal_mode *mode, const decimal_record *record,
                                      int *flags) {
    packed_binary p;
    int word = 0;
    if (decimal_record_to_binary(record, &quadruple_format, mode->rd, &p, &word)) pack_quadruple(&p, result->word);
    if (flags) *flags = word;
    if (word) __x86quad__base_conversion_set_exception(word);
}

KRM_API void x86_quadruple_to_decimal(const krm_real16 *x, const decimal_mode *mode, decimal_record *record,
                                      int *flags) {
    unpacked u;
    unpack_quadruple(x->word, &u);
    int word = binary_to_decimal_record(&u, mode, record);
    if (flags) *flags = word;
    if (word) __x86quad__base_conversion_set_exception(word);
}

KRM_API char *x86_qeconvert(const krm_real16 *x, int ndigits, int *decimal_point, int *sign, char *buf) {
    unpacked u;
    unpack_quadruple(x->word, &u);
    return convert_significant_digits(&u, __xgetRD(), ndigits, decimal_point, sign, buf);
}

KRM_API char *x86_qfconvert(const krm_real16 *x, int ndigits, int *decimal_point, int *sign, char *buf) {
    unpacked u;
    unpack_quadruple(x->word, &u);
    return convert_fixed_digits(&u, __xgetRD(), ndigits, decimal_point, sign, buf);
}

char *qfconvert_up(const krm_real16 *x, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_quadruple(x->word, &u);
    return convert_directed(&u, 1, 34, ndigit, decpt, sign, buf);
}

char *qfconvert_down(const krm_real16 *x, int ndigit, int *decpt, int *sign, char *buf) {
    unpacked u;
    unpack_quadruple(x->word, &u);
    return convert_directed(&u, 0, 34, ndigit, decpt, sign, buf);
}

}  // extern "C"
