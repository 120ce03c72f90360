// The breakpoint tables of the trigonometric kernels: row i is the number
// whose top word is 0x3FFC4000 + (i << 11), from 0.15625 to just past pi/4,
// 32 rows a binade. Each function's value is a high and a low part.
#pragma once

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

}  // namespace krm::ldmath
