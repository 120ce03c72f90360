// What the real, complex and interval items share on the way to the record.
#pragma once

#include <string.h>

#include "listio/list_write.h"
#include "listio/real_layout.h"

namespace krm::list_write {

// Two parts in two blocks: the opening mark, the first part and the
// separator, then the second part with the closing mark. The second block
// has no separator blank and no fold test, so the pair is never split.
inline int write_pair(io_control_list_write *ctl, char open, const char *first, int n1, const char *second, int n2,
                      char close) {
    char block[real_layout::text_size + 2];
    block[0] = open;
    memcpy(block + 1, first, static_cast<size_t>(n1));
    block[1 + n1] = real_layout::part_separator(ctl);
    if (int err = buffer_block(ctl, ctl->up, block, static_cast<size_t>(n1) + 2)) return err;
    ctl->flags |= IO_NO_SEPARATOR;
    memcpy(block, second, static_cast<size_t>(n2));
    block[n2] = close;
    return buffer_block(ctl, ctl->up, block, static_cast<size_t>(n2) + 1);
}

// A field of the older dialect: the fold test counts `fold_width`, which may
// be less than the text, so a line can run past its limit by the difference.
inline int write_f77_field(io_control_list_write *ctl, const char *text, int n, int fold_width) {
    unit *up = ctl->up;
    if (up->list_line_limit < up->record_pos + fold_width) {
        if (int err = end_record(ctl, up)) return err;
    }
    if (int err = buffer_string_inline(ctl, up, text, static_cast<size_t>(n))) return err;
    ctl->flags &= ~(IO_NO_SEPARATOR | IO_AFTER_BARE_CHARACTER);
    return 0;
}

// The older dialect's complex value: the fold test on the estimated width
// of both parts, then "  (", the parts (each with its own fold test), ")".
template <typename Part>
int write_f77_complex(io_control_list_write *ctl, int width, Part part) {
    unit *up = ctl->up;
    if (up->list_line_limit < up->record_pos + width) {
        if (int err = end_record(ctl, up)) return err;
    }
    if (int err = make_room(ctl, up, static_cast<size_t>(width))) return err;
    if (int err = buffer_string_inline(ctl, up, "  (", 3)) return err;
    if (int err = part(0)) return err;
    if (int err = put_byte(ctl, up, real_layout::part_separator(ctl))) return err;
    if (int err = part(1)) return err;
    return put_byte(ctl, up, ')');
}

}  // namespace krm::list_write
