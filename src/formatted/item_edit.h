// What each kind of list item does with each data edit descriptor on
// output, written once for every formatted output transfer kind X (see
// format_walk.h); the editing itself is in edit_*.h.
#pragma once

#include <stdint.h>

#include "format/parsed_format.h"
#include "formatted/edit_bytes.h"
#include "formatted/edit_integer.h"
#include "formatted/edit_text.h"

namespace krm::items {

// Widths of B and of I, O, Z written without w, by the item's size.
struct default_width {
    int32_t b;
    int32_t ioz;
};
inline default_width width_for_size(int32_t size) {
    switch (size) {
        case 1: return {9, 7};
        case 2: return {17, 7};
        case 4: return {33, 12};
        case 8: return {65, 23};
        default: return {129, 44};
    }
}

constexpr int32_t default_logical_width = 2;

// The descriptor's letter family.
enum class family { a, b, o, z, i, g, l, real, none };

// What an operation code says of its descriptor: the family, and whether w
// and m follow it. Looked up once per item from a table built at compile time.
struct op_shape {
    family f;
    bool has_width, has_m;
};

constexpr op_shape shape_of_code(int32_t code) {
    switch (code) {
        case KRM_FMT_A: return {family::a, false, false};
        case KRM_FMT_AW: return {family::a, true, false};
        case KRM_FMT_B: return {family::b, false, false};
        case KRM_FMT_BW: return {family::b, true, false};
        case KRM_FMT_BWM: return {family::b, true, true};
        case KRM_FMT_O: return {family::o, false, false};
        case KRM_FMT_OW: return {family::o, true, false};
        case KRM_FMT_OWM: return {family::o, true, true};
        case KRM_FMT_Z: return {family::z, false, false};
        case KRM_FMT_ZW: return {family::z, true, false};
        case KRM_FMT_ZWM: return {family::z, true, true};
        case KRM_FMT_I: return {family::i, false, false};
        case KRM_FMT_IW: return {family::i, true, false};
        case KRM_FMT_IWM: return {family::i, true, true};
        case KRM_FMT_G: return {family::g, false, false};
        case KRM_FMT_GW: case KRM_FMT_GWD: case KRM_FMT_GWDE: return {family::g, true, false};
        case KRM_FMT_L: return {family::l, false, false};
        case KRM_FMT_LW: return {family::l, true, false};
        case KRM_FMT_D: case KRM_FMT_DW: case KRM_FMT_DWD:
        case KRM_FMT_E: case KRM_FMT_EW: case KRM_FMT_EWD: case KRM_FMT_EWDE:
        case KRM_FMT_EN: case KRM_FMT_ENW: case KRM_FMT_ENWD: case KRM_FMT_ENWDE:
        case KRM_FMT_ES: case KRM_FMT_ESW: case KRM_FMT_ESWD: case KRM_FMT_ESWDE:
        case KRM_FMT_F: case KRM_FMT_FW: case KRM_FMT_FWD:
            return {family::real, true, false};
        default: return {family::none, true, false};  // Q, Dw.dEe, the interval forms
    }
}

struct op_shape_table {
    op_shape row[KRM_FMT_LAST + 1];
};

constexpr op_shape_table make_op_shape_table() {
    op_shape_table t{};
    for (int32_t c = 0; c <= KRM_FMT_LAST; ++c) t.row[c] = shape_of_code(c);
    return t;
}

inline constexpr op_shape_table op_shapes = make_op_shape_table();

inline const op_shape &shape_of(int32_t code) {
    // The walk only stops on data operations, which lie inside the table.
    return op_shapes.row[static_cast<uint32_t>(code) <= KRM_FMT_LAST ? code : 0];
}

inline family family_of(int32_t code) { return shape_of(code).f; }

// w of the operation, or no_width when it has none. A negative w is a
// width all the same, which editing refuses.
constexpr int32_t no_width = INT32_MIN;
inline int32_t width_of(const int32_t *op) { return shape_of(op[0]).has_width ? op[1] : no_width; }

// m of the operation: 1 when it has none.
inline int32_t digits_of(const int32_t *op) { return shape_of(op[0]).has_m ? op[2] : 1; }

inline int bits_per_digit(family f) { return f == family::b ? 1 : f == family::o ? 3 : 4; }

// Integer, logical and real values reach editing under real descriptors
// through real editing, which is not part of this build yet.
template <class X>
int edit_bits_as_real(X &x) {
    return x.fail(1215);
}

// Moves past the operation once its field is written.
template <class X>
int done(X &x, int err) {
    if (err == 0) x.pc() += static_cast<uint32_t>(fmt::fixed_op_words(x.ops()[x.pc()]));
    return err;
}

// Integers of every size; `value` sign-extended, `bits` its zero-extended
// pattern, `addr` the item in memory.
template <class X>
int edit_integer(X &x, int64_t value, uint64_t bits, bool is_unsigned, int32_t size, const void *addr) {
    const int32_t *op = x.ops() + x.pc();
    const family f = family_of(op[0]);
    const default_width dw = width_for_size(size);
    int32_t w = width_of(op);
    switch (f) {
        case family::a:
            return done(x, w == no_width ? edit::wrt_a(x, addr, size) : edit::wrt_aw(x, w, addr, size));
        case family::b: case family::o: case family::z:
            if (w == no_width) w = f == family::b ? dw.b : dw.ioz;
            return done(x, edit::wrt_bits(x, w, digits_of(op), bits, bits_per_digit(f)));
        case family::i: case family::g: {
            const int32_t m = f == family::i ? digits_of(op) : 1;
            // Without a width the sign mode is not heeded for unsigned items.
            const bool bare = w == no_width;
            if (bare) w = dw.ioz;
            if (is_unsigned) return done(x, edit::wrt_iwm_unsigned(x, w, m, bits, !bare));
            // Under SU a short integer is zero-extended, not sign-extended.
            if (x.sign_mode() == edit::SIGN_UNSIGNED) value = static_cast<int64_t>(bits);
            return done(x, size == 8 ? edit::wrt_iwm_i8(x, w, m, value)
                                     : edit::wrt_iwm_i4(x, w, m, static_cast<int32_t>(value)));
        }
        case family::real:
            return edit_bits_as_real(x);
        default:
            return x.fail(1215);
    }
}

template <class X>
int edit_logical(X &x, int64_t value, uint64_t bits, int32_t size, const void *addr) {
    const int32_t *op = x.ops() + x.pc();
    const family f = family_of(op[0]);
    int32_t w = width_of(op);
    switch (f) {
        case family::l:
        case family::g:
            if (w == no_width) w = default_logical_width;
            return done(x, size == 8 ? edit::wrt_logical_l8(x, w, value)
                                     : edit::wrt_logical_l4(x, w, static_cast<int32_t>(value != 0)));
        case family::a: case family::b: case family::o: case family::z: case family::i:
            return edit_integer(x, value, bits, false, size, addr);
        default:
            return x.fail(1215);
    }
}

template <class X>
int edit_character(X &x, const char *p, int32_t len) {
    const int32_t *op = x.ops() + x.pc();
    const family f = family_of(op[0]);
    int32_t w = width_of(op);
    const int32_t n = len > 0 ? len : 0;
    switch (f) {
        case family::a:
        case family::g:
            return done(x, w == no_width ? edit::wrt_a(x, p, len) : edit::wrt_aw(x, w, p, len));
        case family::b:
            if (w == no_width) w = n ? 8 * n + 1 : 2;
            return done(x, edit::wrt_bwm_ch(x, w, digits_of(op), p, len));
        case family::o:
            if (w == no_width) w = (n && n % 3 == 0) ? 8 * n / 3 + 1 : 8 * n / 3 + 2;
            return done(x, edit::wrt_owm_ch(x, w, digits_of(op), p, len));
        case family::z:
            if (w == no_width) w = n ? 2 * n + 1 : 2;
            return done(x, edit::wrt_zwm_ch(x, w, digits_of(op), p, len));
        case family::i:
            if (w == no_width) return done(x, edit::wrt_i_default_ch(x, p, len));
            return done(x, edit::wrt_iwm_ch(x, w, digits_of(op), p, len));
        case family::l:
            if (!x.f77compat()) return x.fail(1215);
            return done(x, edit::wrt_lwm_ch(x, w == no_width ? default_logical_width : w, p, len));
        default:
            return x.fail(1215);
    }
}

// The older dialect's item: raw bytes and a size, accepted by every
// descriptor that has a row.
template <class X>
int edit_f77compat(X &x, const void *bytes, int32_t size) {
    const int32_t *op = x.ops() + x.pc();
    const family f = family_of(op[0]);
    int32_t w = width_of(op);
    const default_width dw = width_for_size(size);
    const uint8_t *b = static_cast<const uint8_t *>(bytes);
    int64_t s64 = 0;
    uint64_t u64 = 0;
    if (size == 1) { s64 = static_cast<int8_t>(b[0]); u64 = b[0]; }
    if (size == 2) { int16_t v; memcpy(&v, b, 2); s64 = v; u64 = static_cast<uint16_t>(v); }
    if (size == 4) { int32_t v; memcpy(&v, b, 4); s64 = v; u64 = static_cast<uint32_t>(v); }
    if (size == 8) { memcpy(&s64, b, 8); u64 = static_cast<uint64_t>(s64); }
    // Items of other sizes (character values of any length) go to the
    // routines that take bytes.
    const bool short_word = size == 1 || size == 2 || size == 4;
    switch (f) {
        case family::a:
            return done(x, w == no_width ? edit::wrt_a(x, bytes, size) : edit::wrt_aw(x, w, bytes, size));
        case family::i:
            if (w == no_width) w = dw.ioz;
            if (short_word) {
                int32_t v = x.sign_mode() == edit::SIGN_UNSIGNED ? static_cast<int32_t>(u64) : static_cast<int32_t>(s64);
                return done(x, edit::wrt_iwm_i4(x, w, digits_of(op), v));
            }
            if (size == 8) return done(x, edit::wrt_iwm_i8(x, w, digits_of(op), s64));
            return done(x, edit::wrt_iwm_n(x, w, digits_of(op), bytes, size));
        case family::o:
        case family::z:
            if (w == no_width) w = dw.ioz;
            if (short_word || size == 8) return done(x, edit::wrt_bits(x, w, digits_of(op), u64, bits_per_digit(f)));
            if (size < 8)
                return done(x, f == family::o ? edit::wrt_owm_n(x, w, digits_of(op), bytes, size)
                                              : edit::wrt_zwm_n(x, w, digits_of(op), bytes, size));
            return done(x, f == family::o ? edit::wrt_owm_ch(x, w, digits_of(op), static_cast<const char *>(bytes), size)
                                          : edit::wrt_zwm_ch(x, w, digits_of(op), static_cast<const char *>(bytes), size));
        case family::l:
            if (w == no_width) w = default_logical_width;
            if (short_word) return done(x, edit::wrt_logical_l4(x, w, static_cast<int32_t>(u64 != 0)));
            if (size == 8) return done(x, edit::wrt_logical_l8(x, w, s64));
            return done(x, edit::wrt_lwm_ch(x, w, bytes, size));
        case family::real:
        case family::g:
            return edit_bits_as_real(x);
        default:
            return x.fail(1000);
    }
}

}  // namespace krm::items
