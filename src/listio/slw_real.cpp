// List-directed output of REAL items: the shortest form, or under the older
// dialect a fixed-width field.

#include <string.h>

#include "krm/list_write.h"
#include "listio/real_items.h"

using namespace krm;
using real_layout::decimal_symbol;
using real_layout::text_size;

namespace {

int write_real16(io_control_list_write *ctl, const real_layout::real16 &value) {
    char text[text_size];
    int n = real_layout::real16_text(text, value, decimal_symbol(ctl));
    return list_write::buffer_block(ctl, ctl->up, text, static_cast<size_t>(n));
}

}  // namespace

extern "C" {

KRM_API int __f90_slw_r4_f77compat(io_control_list_write *ctl, float value) {
    char text[text_size];
    int w;
    int n = real_layout::f77_real4_text(text, value, decimal_symbol(ctl), &w);
    return list_write::write_f77_field(ctl, text, n, w);
}

KRM_API int __f90_slw_r8_f77compat(io_control_list_write *ctl, double value) {
    char text[text_size];
    int w;
    int n = real_layout::f77_real8_text(text, value, decimal_symbol(ctl), &w);
    return list_write::write_f77_field(ctl, text, n, w);
}

KRM_API int __f90_slw_r4(io_control_list_write *ctl, float value) {
    if (list_write::f77(ctl)) return __f90_slw_r4_f77compat(ctl, value);
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    char text[text_size];
    int n = real_layout::real4_text(text, bits, decimal_symbol(ctl));
    return list_write::buffer_block(ctl, ctl->up, text, static_cast<size_t>(n));
}

KRM_API int __f90_slw_r8(io_control_list_write *ctl, double value) {
    if (list_write::f77(ctl)) return __f90_slw_r8_f77compat(ctl, value);
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    char text[text_size];
    int n = real_layout::real8_text(text, bits, decimal_symbol(ctl));
    return list_write::buffer_block(ctl, ctl->up, text, static_cast<size_t>(n));
}

KRM_API int __f90_slw_r16_f77compat(io_control_list_write *ctl, uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3) {
    const real_layout::real16 v{{w0, w1, w2, w3}};
    char text[text_size];
    int w;
    int n = real_layout::f77_real16_text(text, v, decimal_symbol(ctl), &w);
    return list_write::write_f77_field(ctl, text, n, w);
}

KRM_API int __f90_slw_r16(io_control_list_write *ctl, uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3) {
    if (list_write::f77(ctl)) return __f90_slw_r16_f77compat(ctl, w0, w1, w2, w3);
    return write_real16(ctl, real_layout::real16{{w0, w1, w2, w3}});
}

KRM_API int __f90_slw_r16_ref(io_control_list_write *ctl, const uint32_t *value) {
    real_layout::real16 v;
    memcpy(&v, value, sizeof v);
    if (list_write::f77(ctl)) return __f90_slw_r16_f77compat(ctl, v.word[0], v.word[1], v.word[2], v.word[3]);
    return write_real16(ctl, v);
}

}  // extern "C"
