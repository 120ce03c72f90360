/* List-directed output: PRINT *, ... and WRITE (u, *) ...
 * One start call, one call per list item, one end call, all with the same
 * io_control. Every call returns 0 or, when IO_RETURNING is set, an error
 * number; after a non-zero return the statement is over (the unit has been
 * released) and compiled code makes no further call, not even the end call. */
#ifndef KRM_LIST_WRITE_H
#define KRM_LIST_WRITE_H

#include <stdint.h>

#include "krm/io_control.h"

KRM_BEGIN_DECLS

KRM_API int __f90_sslw(io_control_list_write *ctl);

KRM_API int __f90_slw_ch(io_control_list_write *ctl, const char *text, int32_t length);
KRM_API int __f90_slw_i4(io_control_list_write *ctl, int32_t value);
KRM_API int __f90_slw_i8(io_control_list_write *ctl, int64_t value);
KRM_API int __f90_slw_u4(io_control_list_write *ctl, uint32_t value);
KRM_API int __f90_slw_u8(io_control_list_write *ctl, uint64_t value);
KRM_API int __f90_slw_l1(io_control_list_write *ctl, int32_t value);
KRM_API int __f90_slw_l4(io_control_list_write *ctl, int32_t value);
KRM_API int __f90_slw_l8(io_control_list_write *ctl, int64_t value);

/* Reals in their shortest form; under IO_F77COMPAT the _f77compat forms.
 * REAL(16) values come as four 32-bit words, least significant first: by
 * value or by address. Complex items and intervals come by address: real
 * part then imaginary part, lower endpoint then upper. Only 4-byte alignment
 * is assumed of anything passed by address. */
KRM_API int __f90_slw_r4(io_control_list_write *ctl, float value);
KRM_API int __f90_slw_r8(io_control_list_write *ctl, double value);
KRM_API int __f90_slw_r16(io_control_list_write *ctl, uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3);
KRM_API int __f90_slw_r16_ref(io_control_list_write *ctl, const uint32_t *value);
KRM_API int __f90_slw_c4(io_control_list_write *ctl, const float *parts);
KRM_API int __f90_slw_c8(io_control_list_write *ctl, const double *parts);
KRM_API int __f90_slw_c16(io_control_list_write *ctl, const uint32_t *parts);
KRM_API int __f90_slw_ia8(io_control_list_write *ctl, const float *endpoints);
KRM_API int __f90_slw_ia16(io_control_list_write *ctl, const double *endpoints);

/* The older dialect's fixed-width forms. */
KRM_API int __f90_slw_r4_f77compat(io_control_list_write *ctl, float value);
KRM_API int __f90_slw_r8_f77compat(io_control_list_write *ctl, double value);
KRM_API int __f90_slw_r16_f77compat(io_control_list_write *ctl, uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3);
KRM_API int __f90_slw_c4_f77compat(io_control_list_write *ctl, const float *parts);
KRM_API int __f90_slw_c8_f77compat(io_control_list_write *ctl, const double *parts);
KRM_API int __f90_slw_c16_f77compat(io_control_list_write *ctl, const uint32_t *parts);

/* Rough decimal exponents from the bits of a value, and the field widths of
 * the older dialect that follow from them. */
KRM_API int __f90_silog(const float *value);
KRM_API int __f90_ilog(double value);
KRM_API int __f90_qilog(const uint32_t *value);
KRM_API int __f90_width_f77compat(const float *value);
KRM_API int __f90_dwidth_f77compat(double value);
KRM_API int __f90_qwidth_f77compat(uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3);

KRM_API int __f90_eslw(io_control_list_write *ctl);

/* The shortest digits of the positive finite value f * 2**exponent, where f,
 * given as (bits + 15) / 16 limbs of 16 bits, least significant first, has
 * exactly `bits` bits (24, 53 or 113): the fewest digits strictly inside half
 * a unit in the last place on either side (an equal gap on both sides unless
 * unequal_gap is non-zero, when the lower one is half as wide). The value of
 * the digits, read as an integer, times ten to *k lies there. digits gets
 * *ndigits characters and no terminator; 40 bytes always suffice. Arguments
 * outside that description give *ndigits 0. */
KRM_API void __f_cvt_real(const uint16_t *fraction, int bits, int exponent, int unequal_gap, char *digits,
                          int *ndigits, int *k);

/* x87 80-bit values and the 128-bit layout (four 32-bit words, least
 * significant first), bit for bit: the 63 fraction bits stand at the top of
 * the 112-bit fraction, the sign and exponent are copied, lower bits are zero
 * or dropped. unary_minus flips the sign bit. */
KRM_API void ldouble2quadruple(uint32_t *result, long double value);
KRM_API long double quadruple2ldouble(uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3);
KRM_API void unary_minus(uint32_t *result, uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3);

KRM_END_DECLS

#endif
