// Reading one newline-ended record of a sequential formatted file into the
// unit buffer, for callers outside the library.

#include <assert.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "frame/report.h"
#include "krm/services.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace {

constexpr int32_t mode_returning = 0x1;
constexpr int32_t mode_returning_eof = 0x2;

void found_record(unit *up, char *start, char *newline) {
    up->record_start = up->field_ptr = up->tab_limit = start;
    up->record_end = newline;
    up->data_ptr = newline + 1;
}

// Doubles the buffer, or failing that grows it by one block. Returns false
// when neither is possible. realloc may move the block either way, so every
// pointer into it is kept as an offset across the call.
bool grow(unit *up) {
    char **ptrs[] = {&up->write_ptr, &up->data_ptr, &up->data_end, &up->record_start,
                     &up->field_ptr, &up->tab_limit, &up->record_end};
    ptrdiff_t offsets[sizeof ptrs / sizeof ptrs[0]];
    for (size_t i = 0; i < sizeof ptrs / sizeof ptrs[0]; ++i)
        offsets[i] = *ptrs[i] ? *ptrs[i] - up->buffer : -1;
    size_t size = static_cast<size_t>(up->buffer_end - up->buffer);
    size_t new_size = 2 * size;
    char *b = static_cast<char *>(realloc(up->buffer, new_size));
    if (!b) {
        new_size = size + up->block_size;
        b = static_cast<char *>(realloc(up->buffer, new_size));
        if (!b) return false;
    }
    for (size_t i = 0; i < sizeof ptrs / sizeof ptrs[0]; ++i)
        if (offsets[i] >= 0) *ptrs[i] = b + offsets[i];
    up->buffer = b;
    up->buffer_end = b + new_size;
    return true;
}

int fail(unit *up, int32_t mode, int number, int64_t unit_number, const stmt_location *loc, uint32_t bytes) {
    if (mode & mode_returning) {
        __f90_release_unit(up);
        return number;
    }
    char name[krm::filename_buffer_size];
    const char *file = __f90_copy_filename(up, name);
    __f90_release_unit(up);
    krm::report_lines lines;
    lines.unit_number = unit_number;
    lines.file = file;
    lines.bytes_line = number == ENOMEM;
    lines.bytes = bytes;
    krm::report_and_abort(number, loc, lines);
}

int end_of_file(unit *up, int32_t mode, int64_t unit_number, const stmt_location *loc) {
    up->flags |= UNIT_AFTER_EOF;
    if (mode & mode_returning_eof) {
        __f90_release_unit(up);
        return -1;
    }
    char name[krm::filename_buffer_size];
    const char *file = __f90_copy_filename(up, name);
    __f90_release_unit(up);
    __f90_banner();
    __f90_write_eof();
    __f90_write_loc(loc);
    __f90_write_unit_number(unit_number);
    __f90_write_filename(file);
    abort();
}

}  // namespace

extern "C" KRM_API int __f90_read_sf_record(unit *up, int32_t mode, int64_t unit_number,
                                            const stmt_location *loc) {
    char *start = up->data_ptr;
    if (char *nl = static_cast<char *>(memchr(start, '\n', static_cast<size_t>(up->data_end - start)))) {
        found_record(up, start, nl);
        return 0;
    }
    if (up->data_end == up->buffer_end) {
        // Drop whole consumed blocks, so the buffer stays block-aligned with the file.
        assert(up->block_size != 0 && "blocksize != 0");
        size_t used = static_cast<size_t>(up->data_ptr - up->buffer);
        size_t shift = used - used % up->block_size;
        if (shift != 0) {
            memmove(up->data_ptr - shift, up->data_ptr, static_cast<size_t>(up->data_end - up->data_ptr));
            up->data_ptr -= shift;
            up->data_end -= shift;
        }
    }
    start = up->data_ptr;
    for (;;) {
        if (up->data_end == up->buffer_end) {
            size_t size = static_cast<size_t>(up->buffer_end - up->buffer);
            size_t start_off = static_cast<size_t>(start - up->buffer);
            if (!grow(up))
                return fail(up, mode, ENOMEM, unit_number, loc, static_cast<uint32_t>(size + up->block_size));
            start = up->buffer + start_off;
        }
        char *fresh = up->data_end;
        ssize_t got;
        if (up->stream) {
            int c = getc(up->stream);
            if (c == EOF) {
                got = ferror(up->stream) ? -1 : 0;
            } else {
                *up->data_end = static_cast<char>(c);
                got = 1;
            }
        } else {
            got = read(up->fd, up->data_end, static_cast<size_t>(up->buffer_end - up->data_end));
        }
        if (got < 0) {
            if ((up->flags & UNIT_RETRY_EINTR) && errno == EINTR) {
                if (up->stream) clearerr(up->stream);
                continue;
            }
            return fail(up, mode, errno, unit_number, loc, 0);
        }
        if (got == 0) return end_of_file(up, mode, unit_number, loc);
        up->data_end += got;
        if (char *nl = static_cast<char *>(memchr(fresh, '\n', static_cast<size_t>(got)))) {
            found_record(up, start, nl);
            return 0;
        }
    }
}
