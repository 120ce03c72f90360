// The texts of reals in list-directed output: the shortest form of the
// standard dialect, the interval endpoints, and the fixed-width fields of the
// older dialect. Each function fills a small local buffer and returns the
// length; the item entries hand the text to the record.
#pragma once

#include <stdint.h>

#include "krm/io_control.h"

namespace krm::real_layout {

// A REAL(16) value as its four words, least significant first.
struct real16 {
    uint32_t word[4];
};

// Room for any one real's text in either dialect.
constexpr int text_size = 64;

// '.' or, under DECIMAL='COMMA', ','.
inline char decimal_symbol(const io_control_list_write *ctl) {
    return (ctl->flags & (IO_DECIMAL_POINT | IO_DECIMAL_COMMA)) == IO_DECIMAL_COMMA ? ',' : '.';
}
// What stands between the two parts of a complex value or an interval.
inline char part_separator(const io_control_list_write *ctl) {
    return decimal_symbol(ctl) == ',' ? ';' : ',';
}

// The digits d (n of them, the value d * 10**k) in the standard form: plain
// when the decimal symbol falls within nine places of the first digit, the E
// form otherwise or when asked.
int digits_text(char *out, bool negative, const char *digits, int n, int k, char point, bool e_form);

// Standard forms by class: zero, infinity, NaN, subnormal, normal.
int real4_text(char *out, uint32_t bits, char point);
int real8_text(char *out, uint64_t bits, char point);
int real16_text(char *out, const real16 &value, char point);

// An interval endpoint: 8 (REAL(4)) or 17 (REAL(8)) digits rounded down
// (towards minus infinity) or up, trailing zeros dropped, then the standard
// form.
int interval4_text(char *out, float value, bool up, char point);
int interval8_text(char *out, double value, bool up, char point);

// The older dialect's fields; *fold_width gets the width the fold test uses.
// REAL(16) has none yet: it needs the 128-bit decimal conversion.
int f77_real4_text(char *out, float value, char point, int *fold_width);
int f77_real8_text(char *out, double value, char point, int *fold_width);
int f77_real16_text(char *out, const real16 &value, char point, int *fold_width);

}  // namespace krm::real_layout
