// The pieces every list-directed output item is made of: blocks of text with
// a separator and a fold test, bare strings, record ends and buffer flushes.
// Namelist output and the real and complex items use them too.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "krm/io_control.h"
#include "units/transfer.h"
#include "units/unit.h"
#include "units/units.h"

namespace krm::list_write {

inline transfer view(io_control_list_write *ctl) {
    return transfer{&ctl->flags, ctl->loc, &ctl->unit_no, &ctl->up};
}

inline bool f77(const io_control_list_write *ctl) { return (ctl->flags & IO_F77COMPAT) != 0; }

inline int fail(io_control_list_write *ctl, int number) {
    return fail_statement(view(ctl), number);
}

// Passes the buffer's owed bytes to the file and empties the buffer, also
// when the write failed.
inline int flush_buffer(io_control_list_write *ctl, unit *up) {
    const char *from = up->write_ptr;
    size_t n = static_cast<size_t>(up->data_end - up->write_ptr);
    up->write_ptr = up->data_ptr = up->data_end = up->buffer;
    if (n == 0) return 0;
    if (ctl->flags & IO_RETURNING) return __f90_write_r(up, from, n);
    __f90_write_a(up, from, n, ctl->unit_no, ctl->loc);
    return 0;
}

// Room for `n` more bytes in the buffer, flushing if need be.
inline int make_room(io_control_list_write *ctl, unit *up, size_t n) {
    if (static_cast<size_t>(up->buffer_end - up->data_end) >= n) return 0;
    return flush_buffer(ctl, up);
}

// One byte of the current record.
inline int put_byte(io_control_list_write *ctl, unit *up, char c) {
    if (int err = make_room(ctl, up, 1)) return err;
    *up->data_end++ = c;
    ++up->record_pos;
    return 0;
}

// Ends the record in the statement's dialect. The older dialect never makes
// an empty line: a record holding at most its leading blank is kept open.
inline int end_record(io_control_list_write *ctl, unit *up) {
    if (!f77(ctl)) {
        if (int err = make_room(ctl, up, 1)) return err;
        *up->data_end++ = '\n';
        up->record_pos = 0;
        return 0;
    }
    if (int err = make_room(ctl, up, 2)) return err;
    if (up->record_pos > 1) {
        up->data_end[0] = '\n';
        up->data_end[1] = ' ';
        up->data_end += 2;
        up->record_pos = 1;
    }
    return 0;
}

// Copies text into the record with no length test and no blanks. Text that
// does not fit fills the buffer, and whole blocks then go straight to the file.
int buffer_string(io_control_list_write *ctl, unit *up, const char *text, size_t n);

inline int buffer_string_inline(io_control_list_write *ctl, unit *up, const char *text, size_t n) {
    if (static_cast<size_t>(up->buffer_end - up->data_end) >= n) {
        if (n == 0) return 0;
        memcpy(up->data_end, text, n);
        up->data_end += n;
        up->record_pos += static_cast<int64_t>(n);
        return 0;
    }
    return buffer_string(ctl, up, text, n);
}

// A non-character item's text: separator blanks, fold, then the text.
inline int buffer_block(io_control_list_write *ctl, unit *up, const char *text, size_t n) {
    if (up->recl < static_cast<int64_t>(n) + 1) return fail(ctl, 1010);
    int64_t s;
    int32_t limit;
    if (!f77(ctl)) {
        if (ctl->flags & IO_NO_SEPARATOR) {
            ctl->flags &= ~(IO_NO_SEPARATOR | IO_AFTER_BARE_CHARACTER);
            return buffer_string_inline(ctl, up, text, n);
        }
        s = 1;
        limit = static_cast<int32_t>(up->recl);
    } else {
        s = 2;
        limit = static_cast<int32_t>(up->list_line_limit);
    }
    ctl->flags &= ~(IO_NO_SEPARATOR | IO_AFTER_BARE_CHARACTER);
    if (static_cast<int64_t>(limit) < up->record_pos + s + static_cast<int64_t>(n)) {
        if (int err = end_record(ctl, up)) return err;
    }
    if (int err = make_room(ctl, up, static_cast<size_t>(s))) return err;
    *up->data_end++ = ' ';
    if (s == 2) *up->data_end++ = ' ';
    up->record_pos += s;
    return buffer_string_inline(ctl, up, text, n);
}

}  // namespace krm::list_write
