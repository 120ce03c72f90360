#include "listio/list_write.h"

namespace krm::list_write {

int buffer_string(io_control_list_write *ctl, unit *up, const char *text, size_t n) {
    size_t room = static_cast<size_t>(up->buffer_end - up->data_end);
    if (n <= room) return buffer_string_inline(ctl, up, text, n);
    if (up->data_end > up->write_ptr) {
        memcpy(up->data_end, text, room);
        up->data_end += room;
        up->record_pos += static_cast<int64_t>(room);
        text += room;
        n -= room;
    }
    if (int err = flush_buffer(ctl, up)) return err;
    // Pieces no larger than the buffer, so that the remainder always fits.
    size_t block = up->block_size ? up->block_size : 1024;
    size_t capacity = static_cast<size_t>(up->buffer_end - up->buffer);
    if (block > capacity) block = capacity;
    while (n >= block) {
        if (ctl->flags & IO_RETURNING) {
            if (int err = __f90_write_r(up, text, block)) return err;
        } else {
            __f90_write_a(up, text, block, ctl->unit_no, ctl->loc);
        }
        up->record_pos += static_cast<int64_t>(block);
        text += block;
        n -= block;
    }
    return buffer_string_inline(ctl, up, text, n);
}

}  // namespace krm::list_write
