// List-directed output of intervals: [lower,upper] in two blocks as for
// complex values, the lower endpoint rounded down and the upper one up so
// that the printed interval holds the stored one; [EMPTY] when both
// endpoints are NaN.

#include <string.h>

#include "krm/list_write.h"
#include "listio/real_items.h"

using namespace krm;
using real_layout::decimal_symbol;
using real_layout::text_size;

namespace {

int write_empty(io_control_list_write *ctl) { return list_write::buffer_block(ctl, ctl->up, "[EMPTY]", 7); }

// By the bits: a comparison would raise the invalid flag on a signalling NaN.
bool is_nan(float v) {
    uint32_t b;
    memcpy(&b, &v, sizeof b);
    return (b & 0x7fffffff) > 0x7f800000;
}
bool is_nan(double v) {
    uint64_t b;
    memcpy(&b, &v, sizeof b);
    return (b << 1) > (uint64_t{0x7ff} << 53);
}

}  // namespace

extern "C" {

KRM_API int __f90_slw_ia8(io_control_list_write *ctl, const float *endpoints) {
    float lo, hi;
    memcpy(&lo, endpoints, sizeof lo);
    memcpy(&hi, endpoints + 1, sizeof hi);
    if (is_nan(lo) && is_nan(hi)) return write_empty(ctl);
    const char point = decimal_symbol(ctl);
    char a[text_size], b[text_size];
    int n1 = real_layout::interval4_text(a, lo, false, point);
    int n2 = real_layout::interval4_text(b, hi, true, point);
    return list_write::write_pair(ctl, '[', a, n1, b, n2, ']');
}

KRM_API int __f90_slw_ia16(io_control_list_write *ctl, const double *endpoints) {
    double lo, hi;  // 4-byte alignment is all i386 promises
    memcpy(&lo, endpoints, sizeof lo);
    memcpy(&hi, endpoints + 1, sizeof hi);
    if (is_nan(lo) && is_nan(hi)) return write_empty(ctl);
    const char point = decimal_symbol(ctl);
    char a[text_size], b[text_size];
    int n1 = real_layout::interval8_text(a, lo, false, point);
    int n2 = real_layout::interval8_text(b, hi, true, point);
    return list_write::write_pair(ctl, '[', a, n1, b, n2, ']');
}

}  // extern "C"
