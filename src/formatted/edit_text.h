// Output editing of logicals (L) and characters (A).
#pragma once

#include <stdint.h>
#include <string.h>

#include "formatted/edit_integer.h"

namespace krm::edit {

template <class Sink>
int write_logical_field(Sink &s, int32_t w, bool value) {
    if (w < 0) return s.fail(1072);
    if (w == 0) {
        if (!s.f77compat()) return s.fail(1073);
        w = 1;
    }
    char *f = nullptr;
    if (int err = s.allocate_field(w, &f)) return err;
    memset(f, ' ', static_cast<size_t>(w - 1));
    f[w - 1] = value ? 'T' : 'F';
    return 0;
}

template <class Sink> int wrt_logical_l4(Sink &s, int32_t w, int32_t v) { return write_logical_field(s, w, v != 0); }
template <class Sink> int wrt_logical_l8(Sink &s, int32_t w, int64_t v) { return write_logical_field(s, w, v != 0); }

// L of a value of any size: true when any byte is nonzero.
template <class Sink>
int wrt_lwm_ch(Sink &s, int32_t w, const void *p, int32_t size) {
    const uint8_t *b = static_cast<const uint8_t *>(p);
    bool value = false;
    for (int32_t i = 0; i < size; ++i) value |= b[i] != 0;
    return write_logical_field(s, w, value);
}

template <class Sink>
int wrt_a(Sink &s, const void *p, int32_t len) {
    if (len < 1) return 0;
    char *f = nullptr;
    if (int err = s.allocate_field(len, &f)) return err;
    memcpy(f, p, static_cast<size_t>(len));
    return 0;
}

// Aw: a short value is right-justified, a long one cut to its leftmost w.
template <class Sink>
int wrt_aw(Sink &s, int32_t w, const void *p, int32_t len) {
    if (w < 0) return s.fail(1072);
    if (w == 0) return 0;
    char *f = nullptr;
    if (int err = s.allocate_field(w, &f)) return err;
    if (len < 0) len = 0;
    if (len < w) {
        memset(f, ' ', static_cast<size_t>(w - len));
        if (len) memcpy(f + (w - len), p, static_cast<size_t>(len));
    } else {
        memcpy(f, p, static_cast<size_t>(w));
    }
    return 0;
}

}  // namespace krm::edit
