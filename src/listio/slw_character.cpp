// List-directed output of character values. Without delimiters the text is
// written bare, and a string longer than the record is continued on new
// records that each begin with a blank. With DELIM= the text is enclosed in
// apostrophes or quotation marks, a delimiter inside it is doubled, and the
// doubled pair is never split between records.

#include <string.h>

#include "krm/list_write.h"
#include "listio/list_write.h"

using namespace krm;
using list_write::end_record;
using list_write::put_byte;

namespace {

// Copies text into records of length recl, ending full records as it goes.
// Continuations begin with a blank when `blank_on_fold`.
int copy_folding(io_control_list_write *ctl, unit *up, const char *text, size_t n, bool blank_on_fold) {
    for (;;) {
        int32_t room = static_cast<int32_t>(up->recl) - static_cast<int32_t>(up->record_pos);
        if (room < 0) room = 0;
        if (n <= static_cast<size_t>(room)) return list_write::buffer_string_inline(ctl, up, text, n);
        if (int err = list_write::buffer_string_inline(ctl, up, text, static_cast<size_t>(room))) return err;
        text += room;
        n -= static_cast<size_t>(room);
        if (int err = end_record(ctl, up)) return err;
        if (blank_on_fold) {
            if (int err = put_byte(ctl, up, ' ')) return err;
        }
    }
}

int write_delimited(io_control_list_write *ctl, unit *up, const char *text, size_t n) {
    const char delim = (up->flags & UNIT_DELIM_QUOTE) ? '"' : '\'';
    if (int err = put_byte(ctl, up, delim)) return err;
    size_t i = 0;
    while (n > 0) {
        const void *hit = memchr(text + i, delim, n - i);
        size_t j = hit ? static_cast<size_t>(static_cast<const char *>(hit) - text) : n;
        if (int err = copy_folding(ctl, up, text + i, j - i, false)) return err;
        if (j == n) break;
        if (up->record_pos + 1 >= up->recl) {
            if (int err = end_record(ctl, up)) return err;
        }
        if (int err = put_byte(ctl, up, delim)) return err;
        if (int err = put_byte(ctl, up, delim)) return err;
        i = j + 1;
    }
    if (up->record_pos >= up->recl) {
        if (int err = end_record(ctl, up)) return err;
    }
    return put_byte(ctl, up, delim);
}

}  // namespace

extern "C" KRM_API int __f90_slw_ch(io_control_list_write *ctl, const char *text, int32_t length) {
    unit *up = ctl->up;
    const bool delimited = (up->flags & UNIT_DELIM) != 0;
    const uint32_t quiet = IO_NO_SEPARATOR | IO_AFTER_BARE_CHARACTER | IO_NO_CHARACTER_SEPARATOR;
    // An empty bare string where no separator is due leaves no trace at all.
    if (!delimited && length <= 0 && (ctl->flags & quiet)) return 0;
    const size_t n = length > 0 ? static_cast<size_t>(length) : 0;
    if (up->recl < 2) return list_write::fail(ctl, 1010);

    if (ctl->flags & IO_F77COMPAT) {
        ctl->flags = (ctl->flags & ~(IO_NO_SEPARATOR | IO_AFTER_BARE_CHARACTER)) | IO_AFTER_BARE_CHARACTER;
        if (up->list_line_limit < static_cast<int64_t>(n) + up->record_pos) {
            if (int err = end_record(ctl, up)) return err;
        }
        return list_write::buffer_string(ctl, up, text, n);
    }

    const bool separator_due =
        !(ctl->flags & IO_NO_SEPARATOR) &&
        !(!delimited && (ctl->flags & (IO_AFTER_BARE_CHARACTER | IO_NO_CHARACTER_SEPARATOR)));
    ctl->flags &= ~(IO_NO_SEPARATOR | IO_AFTER_BARE_CHARACTER);
    if (!delimited) ctl->flags |= IO_AFTER_BARE_CHARACTER;

    const bool leading_blank = !(ctl->flags & IO_NO_LEADING_BLANK);
    if (separator_due ? up->record_pos + 1 >= up->recl : up->record_pos >= up->recl) {
        if (int err = end_record(ctl, up)) return err;
        if (leading_blank) {
            if (int err = put_byte(ctl, up, ' ')) return err;
        }
    } else if (separator_due) {
        if (int err = put_byte(ctl, up, ' ')) return err;
    }

    if (!delimited) return copy_folding(ctl, up, text, n, true);
    return write_delimited(ctl, up, text, n);
}
