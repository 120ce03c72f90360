/* Decimal conversion of REAL(16) values, and the unpacked decimal number that
 * every real passes through on its way between text and binary.
 *
 * The conversions are exact: digits to binary and binary to digits are
 * correctly rounded in each of the four directions, for digit strings of up
 * to 511 digits. The REAL(16) value is in storage order (krm/quad.h). */
#ifndef KRM_QUAD_DECIMAL_H
#define KRM_QUAD_DECIMAL_H

#include "krm/api.h"
#include "krm/quad.h"

/* Classes of a value, in `fpclass`. */
enum {
    DECIMAL_ZERO = 0,
    DECIMAL_SUBNORMAL = 1,
    DECIMAL_NORMAL = 2,
    DECIMAL_INFINITY = 3,
    DECIMAL_QUIET_NAN = 4,
    DECIMAL_SIGNALING_NAN = 5
};

/* Rounding directions, in `rd`. */
enum {
    DECIMAL_ROUND_NEAREST = 0, /* ties to even */
    DECIMAL_ROUND_DOWN = 1,    /* towards minus infinity */
    DECIMAL_ROUND_UP = 2,      /* towards plus infinity */
    DECIMAL_ROUND_TO_ZERO = 3
};

/* Bits of the exception word the conversions hand back. */
enum {
    DECIMAL_INVALID = 1,
    DECIMAL_OVERFLOW = 8,
    DECIMAL_UNDERFLOW = 16,
    DECIMAL_INEXACT = 32
};

enum { DECIMAL_STRING_SIZE = 512 }; /* at most 511 digits and a NUL */

/* The value is the integer `ds` times ten to the power `exponent`. */
typedef struct decimal_record {
    int fpclass;
    int sign;     /* 0 positive, 1 negative */
    int exponent;
    char ds[DECIMAL_STRING_SIZE]; /* digit characters, NUL-terminated */
    int more;     /* non-zero: digits after the 511th were dropped and were not all zeros */
    int ndigits;  /* digits in ds; 0: the value is zero, with its sign; -1: store nothing */
} decimal_record;

/* What a conversion is asked for. */
typedef struct decimal_mode {
    int rd;      /* rounding direction, DECIMAL_ROUND_* */
    int df;      /* 1: ndigits significant digits; 0: ndigits digits behind the point */
    int ndigits;
} decimal_mode;

KRM_BEGIN_DECLS

/* Digits to binary, rounded in mode->rd; *flags gets the exception word. */
KRM_API void x86_decimal_to_quadruple(krm_real16 *result, const decimal_mode *mode,
                                      const decimal_record *record, int *flags);
/* Binary to digits as mode asks; *flags gets the exception word (0 or inexact). */
KRM_API void x86_quadruple_to_decimal(const krm_real16 *x, const decimal_mode *mode, decimal_record *record,
                                      int *flags);
/* The ndigits most significant digits in buf, NUL-terminated, rounded in the
 * processor's direction; the value is 0.buf times ten to *decimal_point. */
KRM_API char *x86_qeconvert(const krm_real16 *x, int ndigits, int *decimal_point, int *sign, char *buf);
/* The digits up to ndigits places behind the point, rounded likewise. For an
 * infinity or a NaN the result is a constant text and buf is not written. */
KRM_API char *x86_qfconvert(const krm_real16 *x, int ndigits, int *decimal_point, int *sign, char *buf);

KRM_END_DECLS

#endif
