// Sequential formatted output as a transfer kind of the format walk: the
// record lives in the unit's buffer, finished records leave it when it
// fills, and a record may grow past the buffer.
#pragma once

#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "format/parsed_format.h"
#include "krm/io_control.h"
#include "units/transfer.h"
#include "units/unit.h"
#include "units/units.h"

namespace krm {

struct sequential_write {
    io_control_formatted_write *ctl;
    unit *up;

    transfer view() const {
        return transfer{&ctl->flags, ctl->loc, &ctl->unit_no, &ctl->up, reinterpret_cast<void **>(&ctl->format)};
    }
    int fail(int number) { return fail_statement(view(), number); }

    const int32_t *ops() const { return fmt::words(ctl->format); }
    uint32_t &pc() { return ctl->format_pc; }
    int32_t *counters() { return ctl->format_counters; }
    uint32_t &flags() { return ctl->flags; }
    void set_radix(int32_t r) { ctl->radix = r; }
    void set_scale(int32_t s) { ctl->scale = s; }
    void set_sign_mode(int32_t m) { ctl->sign_mode = m; }
    int32_t radix() const { return ctl->radix; }
    int32_t sign_mode() const { return ctl->sign_mode; }
    bool f77compat() const { return (ctl->flags & IO_F77COMPAT) != 0; }

    char *&record_start() { return up->record_start; }
    char *&field_ptr() { return up->field_ptr; }

    // Passes bytes to the file in the statement's failure form.
    int write_out(const char *from, size_t n) {
        if (n == 0) return 0;
        if (ctl->flags & IO_RETURNING) {
            int err = __f90_write_r(up, from, n);
            // The failed write has released the unit; the format goes too.
            if (err) free_owned_format(view());
            return err;
        }
        __f90_write_a(up, from, n, ctl->unit_no, ctl->loc);
        return 0;
    }

    // Moves every record pointer by `delta` bytes.
    void rebase(ptrdiff_t delta) {
        char **ptrs[] = {&up->data_ptr, &up->data_end, &up->record_start, &up->field_ptr, &up->tab_limit,
                         &up->record_end};
        for (char **p : ptrs) *p += delta;
    }

    int make_room(int32_t width);

    __attribute__((always_inline)) int allocate_field(int32_t width, char **field) {
        if (width < 0) return fail(1072);
        if (up->field_ptr + width > up->buffer_end) {
            if (int err = make_room(width)) return err;
        }
        // Positions jumped over by T or X become blanks once something is
        // really written behind them.
        if (up->field_ptr > up->tab_limit) memset(up->tab_limit, ' ', static_cast<size_t>(up->field_ptr - up->tab_limit));
        char *f = up->field_ptr;
        up->field_ptr += width;
        if (up->field_ptr > up->tab_limit) up->tab_limit = up->record_end = up->data_end = up->field_ptr;
        *field = f;
        return 0;
    }

    int carriage_control(bool at_statement_end);

    int end_record(int32_t count) {
        up->record_pos = 0;
        if ((up->flags & (UNIT_SEQUENTIAL | UNIT_PRINT)) == (UNIT_SEQUENTIAL | UNIT_PRINT)) {
            if (int err = carriage_control(false)) return err;
        }
        for (int32_t i = 0; i < count; ++i) {
            if (up->data_end >= up->buffer_end) {
                const char *from = up->write_ptr;
                size_t n = static_cast<size_t>(up->data_end - up->write_ptr);
                up->write_ptr = up->data_ptr = up->data_end = up->buffer;
                if (int err = write_out(from, n)) return err;
            }
            *up->data_end++ = '\n';
            ++up->next_record;
        }
        up->data_ptr = up->record_start = up->field_ptr = up->tab_limit = up->record_end = up->data_end;
        return 0;
    }
};

}  // namespace krm
