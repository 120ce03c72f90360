// List-directed output of COMPLEX items: (re,im) in two blocks, so that a
// value folds only before it starts; ';' between the parts under
// DECIMAL='COMMA'. The older dialect writes two fixed-width fields.

#include <string.h>

#include "krm/list_write.h"
#include "listio/real_items.h"

using namespace krm;
using real_layout::decimal_symbol;
using real_layout::text_size;

namespace {

// (re,im) from the parts' bits, each in its shortest form.
template <class Bits, class Text>
int write_complex(io_control_list_write *ctl, const void *parts, Text text) {
    const char point = decimal_symbol(ctl);
    Bits v[2];
    memcpy(v, parts, sizeof v);
    char re[text_size], im[text_size];
    const int n1 = text(re, v[0], point);
    const int n2 = text(im, v[1], point);
    return list_write::write_pair(ctl, '(', re, n1, im, n2, ')');
}

}  // namespace

extern "C" {

// The parts are copied out byte by byte: on i386 a COMPLEX(8) needs only
// 4-byte alignment.
KRM_API int __f90_slw_c4_f77compat(io_control_list_write *ctl, const float *parts) {
    float v[2];
    memcpy(v, parts, sizeof v);
    int width = __f90_width_f77compat(&v[0]) + __f90_width_f77compat(&v[1]) + 5;
    return list_write::write_f77_complex(ctl, width, [&](int i) { return __f90_slw_r4_f77compat(ctl, v[i]); });
}

KRM_API int __f90_slw_c8_f77compat(io_control_list_write *ctl, const double *parts) {
    double v[2];
    memcpy(v, parts, sizeof v);
    int width = __f90_dwidth_f77compat(v[0]) + __f90_dwidth_f77compat(v[1]) + 5;
    return list_write::write_f77_complex(ctl, width, [&](int i) { return __f90_slw_r8_f77compat(ctl, v[i]); });
}

KRM_API int __f90_slw_c16_f77compat(io_control_list_write *ctl, const uint32_t *parts) {
    uint32_t v[2][4];
    memcpy(v, parts, sizeof v);
    int width = __f90_qwidth_f77compat(v[0][0], v[0][1], v[0][2], v[0][3]) +
                __f90_qwidth_f77compat(v[1][0], v[1][1], v[1][2], v[1][3]) + 5;
    return list_write::write_f77_complex(
        ctl, width, [&](int i) { return __f90_slw_r16_f77compat(ctl, v[i][0], v[i][1], v[i][2], v[i][3]); });
}

KRM_API int __f90_slw_c4(io_control_list_write *ctl, const float *parts) {
    if (list_write::f77(ctl)) return __f90_slw_c4_f77compat(ctl, parts);
    return write_complex<uint32_t>(ctl, parts, real_layout::real4_text);
}

KRM_API int __f90_slw_c8(io_control_list_write *ctl, const double *parts) {
    if (list_write::f77(ctl)) return __f90_slw_c8_f77compat(ctl, parts);
    return write_complex<uint64_t>(ctl, parts, real_layout::real8_text);
}

KRM_API int __f90_slw_c16(io_control_list_write *ctl, const uint32_t *parts) {
    if (list_write::f77(ctl)) return __f90_slw_c16_f77compat(ctl, parts);
    return write_complex<real_layout::real16>(ctl, parts, real_layout::real16_text);
}

}  // extern "C"
