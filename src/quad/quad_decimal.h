// Directed fixed-point digits of REAL(16) values, for RU, RD and RZ output.
// The exported conversions are in krm/quad_decimal.h.
#pragma once

#include "krm/quad_decimal.h"

extern "C" {
// The digits of the value rounded up (towards plus infinity) or down at
// ndigit places behind the point, from its 34 significant digits, with zeros
// behind them. buf must hold max(*decpt, 0) + ndigit + 2 bytes (4935 +
// ndigit serve any value). An infinity gives "Inf", a NaN "NaN", zero
// max(ndigit + 1, 1) zeros, all with *decpt 0.
char *qfconvert_up(const krm_real16 *x, int ndigit, int *decpt, int *sign, char *buf);
char *qfconvert_down(const krm_real16 *x, int ndigit, int *decpt, int *sign, char *buf);
}
