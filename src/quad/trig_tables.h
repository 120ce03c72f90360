// The breakpoint tables of the trigonometric kernels: row i is the number
// whose top word is 0x3FFC4000 + (i << 11), from 0.15625 to just past pi/4,
// 32 rows a binade. Each function's value is a high and a low part.
#pragma once

#include <stdint.h>
#include <string.h>

#include "quad/long_double.h"

namespace krm::ldmath {

constexpr int trig_table_rows = 75;

extern const long_double _TBL_sinl_hi[trig_table_rows];
extern const long_double _TBL_sinl_lo[trig_table_rows];
extern const long_double _TBL_cosl_hi[trig_table_rows];
extern const long_double _TBL_cosl_lo[trig_table_rows];
extern const long_double _TBL_tanl_hi[trig_table_rows];
extern const long_double _TBL_tanl_lo[trig_table_rows];

// The breakpoint nearest to |x| (top word ix, at least 0x3FFC4000): its top
// word, and its row.
inline unsigned trig_breakpoint_top(unsigned ix) { return (ix + 1024u) & 0x7FFFF800u; }
inline int trig_row(unsigned breakpoint_top) { return static_cast<int>((breakpoint_top - 0x3FFC4000u) >> 11); }

// z cut to a double, for the kernels' last few terms, whose sum is so small
// beside the result that double arithmetic is exact enough there. Only the
// top 53 bits are kept (no rounding); a value beyond the doubles' normal
// range, and only a tiny one can come here, gives 0.
inline double short_double(const long_double &z) {
    const int e = static_cast<int>((z.word[0] >> 16) & 0x7FFFu) - 16383;
    if (e < -1022) return 0.0;
    const uint64_t bits = (static_cast<uint64_t>(z.word[0] & 0x80000000u) << 32) |
                          (static_cast<uint64_t>(e + 1023) << 52) | (static_cast<uint64_t>(z.word[0] & 0xFFFFu) << 36) |
                          (static_cast<uint64_t>(z.word[1]) << 4) | (z.word[2] >> 28);
    double d;
    memcpy(&d, &bits, sizeof d);
    return d;
}

}  // namespace krm::ldmath
