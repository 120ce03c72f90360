// Reduction of a large argument by pi/2, for the trigonometric functions:
// the remainder to far more bits than the argument has, and the last bits
// of the quotient, however large the argument.
#pragma once

#include <stdint.h>

extern "C" {

// 2/pi after the binary point, 24 bits a word, most significant first.
extern const int32_t _TBL_ipio2l_inf[916];

// The argument is x[0] * 2^e0 + x[1] * 2^(e0 - 24) + ... over nx pieces,
// each a whole number below 2^24. Writes r = argument - n * pi/2, with |r|
// at most pi/4, to y as 1 (prec 0), 2 (prec 1 and 2) or 3 (prec 3) doubles:
// y[0] is the double nearest r and each next one the double nearest what
// the ones before leave. Returns n mod 8. `ipio2` is the table of 2/pi,
// as _TBL_ipio2l_inf.
int __rem_pio2m(const double *x, double *y, int e0, int nx, int prec, const int32_t *ipio2);

}  // extern "C"

namespace krm::platform {

constexpr int two_over_pi_words = 916;
constexpr int half_pi_word_count = 12;

// pi/2 times 2^383, 32 bits a word, least significant first.
extern const uint32_t half_pi_words[half_pi_word_count];

}  // namespace krm::platform
