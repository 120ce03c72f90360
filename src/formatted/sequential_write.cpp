#include "formatted/sequential_write.h"

#include <errno.h>
#include <unistd.h>

namespace krm {

int sequential_write::make_room(int32_t width) {
    // Finished records in the buffer go to the file first, and the current
    // record moves down to the buffer's start.
    if (up->write_ptr < up->record_start) {
        const char *from = up->write_ptr;
        size_t n = static_cast<size_t>(up->record_start - up->write_ptr);
        up->write_ptr = up->buffer;
        if (int err = write_out(from, n)) return err;
        ptrdiff_t delta = up->buffer - up->record_start;
        size_t keep = static_cast<size_t>(up->data_end - up->record_start);
        memmove(up->buffer, up->record_start, keep);
        rebase(delta);
        if (up->field_ptr + width <= up->buffer_end) return 0;
    }
    size_t size = static_cast<size_t>(up->buffer_end - up->buffer);
    size_t block = up->block_size ? up->block_size : 1024;
    size_t new_size = size + block * (static_cast<size_t>(width) / block + 1);
    // The field may start beyond the record (T, X): room up to its end.
    size_t needed = static_cast<size_t>(up->field_ptr - up->buffer) + static_cast<size_t>(width);
    if (new_size < needed) new_size = needed + block;
    ptrdiff_t offsets[7];
    char **ptrs[] = {&up->write_ptr, &up->data_ptr, &up->data_end, &up->record_start,
                     &up->field_ptr, &up->tab_limit, &up->record_end};
    for (int i = 0; i < 7; ++i) offsets[i] = *ptrs[i] - up->buffer;
    char *b = static_cast<char *>(realloc(up->buffer, new_size));
    if (!b) {
        failure_lines lines;
        lines.bytes_line = true;
        lines.bytes = static_cast<uint32_t>(new_size);
        return fail_statement(view(), ENOMEM, lines);
    }
    for (int i = 0; i < 7; ++i) *ptrs[i] = b + offsets[i];
    up->buffer = b;
    up->buffer_end = b + new_size;
    up->flags |= UNIT_BUFFER_GROWN;
    return 0;
}

// The first byte of a record on a FORM='PRINT' unit says how the record
// moves the paper, and is not itself written.
int sequential_write::carriage_control(bool at_statement_end) {
    char *start = up->record_start;
    // An empty record has no first byte of its own: nothing to interpret.
    if (up->data_end <= start) return 0;
    switch (*start) {
        case '0':
            *start = '\n';  // an empty line before the record
            return 0;
        case '1':
            *start = '\f';
            return 0;
        case '+':
            // Overprint: the newline that ended the previous record becomes a
            // carriage return. When that newline has already left the
            // buffer, the file steps back over it instead.
            if (start > up->buffer) {
                start[-1] = '\r';
            } else {
                int fd = up->stream ? fileno(up->stream) : up->fd;
                if (up->stream) fflush(up->stream);
                off64_t pos = lseek64(fd, 0, SEEK_CUR);
                if (pos > 0 && lseek64(fd, -1, SEEK_CUR) < 0) return fail(errno);
            }
            break;
        default:
            break;
    }
    memmove(start, start + 1, static_cast<size_t>(up->data_end - start - 1));
    --up->data_end;
    --up->tab_limit;
    if (at_statement_end || up->record_end > up->data_end) up->record_end = up->data_end;
    if (up->field_ptr > up->data_end) up->field_ptr = up->data_end;
    return 0;
}

}  // namespace krm
