// The platform's decimal conversions of REAL(4) and REAL(8), which glibc
// lacks. All of them run on the one exact engine of big_decimal.h, the same
// that serves REAL(16), and all are private to the library.
//
// The record types are public because the REAL(16) entries take them.
#pragma once

#include "krm/quad_decimal.h"

extern "C" {

// Digits to binary, rounded in mode->rd. *flags gets the exception word:
// overflow 8, underflow 16, inexact 32. A record with ndigits -1 stores
// nothing.
void decimal_to_single(float *result, const decimal_mode *mode, const decimal_record *record, int *flags);
void decimal_to_double(double *result, const decimal_mode *mode, const decimal_record *record, int *flags);

// Binary to digits: mode->df 1 asks for mode->ndigits significant digits,
// df 0 for the digits up to mode->ndigits places behind the point, rounded in
// mode->rd. *flags gets 0 or inexact.
void single_to_decimal(const float *value, const decimal_mode *mode, decimal_record *record, int *flags);
void double_to_decimal(const double *value, const decimal_mode *mode, decimal_record *record, int *flags);

// Digit strings, rounded in the processor's direction (__xgetRD). The value
// is 0.buf times ten to *decpt; *sign is 1 for a negative value.
// econvert, seconvert: ndigit significant digits, buf of ndigit + 1 bytes
// at least; zero gives ndigit zeros and *decpt 1; an infinity "Infinity"
// (ndigit 8 or more) or "Inf", a NaN "NaN", with *decpt 0.
char *econvert(double value, int ndigit, int *decpt, int *sign, char *buf);
char *seconvert(const float *value, int ndigit, int *decpt, int *sign, char *buf);
// fconvert, sfconvert: the digits down to ndigit places behind the point (at
// most 511 significant digits; buf of 512 bytes serves any value); zero gives
// max(ndigit, 1) zeros and *decpt 0; an infinity or a NaN gives the constant
// text and leaves buf alone.
char *fconvert(double value, int ndigit, int *decpt, int *sign, char *buf);
char *sfconvert(const float *value, int ndigit, int *decpt, int *sign, char *buf);

// Directed companions of fconvert for RU, RD and RZ output: the digits of the
// value rounded up (towards plus infinity) or down, at ndigit places behind
// the point, from its 7 (REAL(4)) or 16 (REAL(8)) significant digits, with
// zeros behind them. buf must hold max(*decpt, 0) + ndigit + 2 bytes: 311 +
// ndigit serve any REAL(8). An infinity gives "Inf", a NaN "NaN", zero
// max(ndigit + 1, 1) zeros, all with *decpt 0.
char *sfconvert_up(const float *value, int ndigit, int *decpt, int *sign, char *buf);
char *sfconvert_down(const float *value, int ndigit, int *decpt, int *sign, char *buf);
char *fconvert_up(double value, int ndigit, int *decpt, int *sign, char *buf);
char *fconvert_down(double value, int ndigit, int *decpt, int *sign, char *buf);

}  // extern "C"

// The 80-bit extended format of the x87, for conversions of its values.
void decimal_to_extended(long double *result, const decimal_mode *mode, const decimal_record *record,
                         int *flags);
void extended_to_decimal(const long double *value, const decimal_mode *mode, decimal_record *record,
                         int *flags);
