// The common start of a data transfer statement on an external unit.

#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "units/transfer.h"
#include "units/units.h"

namespace krm {
namespace {

int descriptor_of(const unit *up) { return up->stream ? fileno(up->stream) : up->fd; }

// Finds and holds the statement's unit, connecting it to fort.N if no OPEN
// did. Stores it in the io_control.
int find_unit(const transfer &t, const transfer_kind &kind) {
    const bool output = kind.direction == io_direction::output;
    const uint32_t dialect = output ? IO_F77COMPAT : IO_F77_READ_COMPAT;
    // In the older dialect '*' is an ordinary numbered unit that OPEN can change.
    if ((*t.flags & IO_DEFAULT_UNIT) && (*t.flags & dialect)) {
        *t.flags &= ~IO_DEFAULT_UNIT;
        *t.unit_no = output ? 6 : 5;
    }

    if (*t.flags & IO_DEFAULT_UNIT) {
        *t.unit_no = -1;
        unit *up = output ? __f90_get_default_output_unit() : __f90_get_default_input_unit();
        *t.up = up;
        if (up->flags & UNIT_CONNECTED) return 0;
        failure_lines lines;
        lines.file_line = false;
        lines.unit_line = !output;
        return fail_statement(t, output ? 1052 : 1051, lines);
    }

    unit *up = nullptr;
    if (t.returning()) {
        int err = __f90_get_numbered_unit_r(&up, *t.unit_no);
        if (err) {
            failure_lines lines;
            lines.file_line = false;
            return fail_unheld(t, err, lines);
        }
    } else {
        __f90_get_numbered_unit_a(&up, *t.unit_no, t.loc);
    }
    *t.up = up;
    if (up->flags & UNIT_CONNECTED) return 0;

    if (*t.flags & IO_ASYNCHRONOUS) return fail_statement(t, 1213);
    if (t.returning()) {
        int err = output ? __f90_open_for_output_r(*t.unit_no, up) : __f90_open_for_input_r(*t.unit_no, up);
        if (err) return fail_unheld(t, err);
    } else if (output) {
        __f90_open_for_output_a(*t.unit_no, up, t.loc);
    } else {
        __f90_open_for_input_a(*t.unit_no, up, t.loc);
    }
    up->flags |= UNIT_SEQUENTIAL;
    if (kind.form == io_form::formatted) {
        up->flags |= UNIT_FORMATTED;
        up->recl = RECL_FORMATTED_DEFAULT;
    } else {
        up->flags &= ~(UNIT_FORMATTED | UNIT_PRINT);
        up->recl = RECL_UNFORMATTED_DEFAULT;
    }
    if (output) up->record_limit = (*t.flags & (IO_F77COMPAT | IO_F77_READ_COMPAT)) ? 0 : up->recl;
    return 0;
}

// The connection must allow what the statement does.
int check_connection(const transfer &t, const transfer_kind &kind) {
    const unit *up = *t.up;
    if (kind.direction == io_direction::output) {
        if (!(up->flags & UNIT_CAN_WRITE)) return 1028;
    } else if (!(up->flags & UNIT_CAN_READ)) {
        return 1029;
    }
    if (!(up->flags & (UNIT_SEQUENTIAL | UNIT_STREAM))) return 1005;
    if (kind.form == io_form::formatted) {
        if (!unit_is_formatted(up)) return 1002;
    } else if (unit_is_formatted(up)) {
        return 1003;
    }
    if ((*t.flags & IO_ASYNCHRONOUS) && !(up->flags & UNIT_ASYNC)) return 1214;
    return 0;
}

// When a sequential program starts writing where it was reading, the rest
// of the file ceases to exist.
int cut_file_here(const transfer &t) {
    unit *up = *t.up;
    if (__f90_io_delay_ftrunc) {
        up->flags2 |= UNIT_TRUNCATE_OWED;
        return 0;
    }
    if (up->stream && fflush(up->stream) != 0) return errno;
    int fd = descriptor_of(up);
    off64_t pos = lseek64(fd, 0, SEEK_CUR);
    if (pos < 0) return errno;
    if (!(up->flags & UNIT_STREAM) && ftruncate64(fd, pos) != 0) return errno;
    return 0;
}

int turn_to_output(const transfer &t) {
    unit *up = *t.up;
    if (up->flags & UNIT_READING) {
        // The buffer may hold read-ahead: put the file position back where
        // the program stands.
        off64_t back = up->data_ptr < up->data_end ? up->data_ptr - up->data_end : 0;
        if (lseek64(descriptor_of(up), back, SEEK_CUR) < 0) return errno;
        up->write_ptr = up->data_ptr = up->data_end = up->buffer;
        up->flags &= ~UNIT_READING;
    }
    if (!(up->flags & UNIT_WRITING)) {
        if (up->flags & UNIT_REGULAR) {
            if (int err = cut_file_here(t)) return err;
        }
        up->flags |= UNIT_WRITING;
    }
    return 0;
}

// 0, or the number of a failure that already released the unit (negated).
int turn_to_input(const transfer &t) {
    unit *up = *t.up;
    if (up->flags & UNIT_WRITING) {
        if (t.returning()) {
            if (int err = __f90_flush_unit_r(up)) return -err;
        } else {
            __f90_flush_unit_a(up, *t.unit_no, t.loc);
        }
        up->flags &= ~UNIT_WRITING;
    }
    up->flags |= UNIT_READING;
    return 0;
}

uint32_t buffer_size_for(unit *up, buffer_sizing sizing) {
    switch (sizing) {
        case buffer_sizing::list_output: {
            uint32_t size = up->block_size ? up->block_size : 1024;
            return (up->flags & UNIT_REGULAR) ? 2 * size : size;
        }
        case buffer_sizing::formatted_output: {
            struct stat64 st;
            uint32_t size = 256;
            if (fstat64(descriptor_of(up), &st) == 0 && st.st_blksize > 256)
                size = static_cast<uint32_t>(st.st_blksize);
            up->block_size = size;
            return size;
        }
        case buffer_sizing::input:
        default:
            return up->block_size ? up->block_size : 1024;
    }
}

int make_buffer(const transfer &t, buffer_sizing sizing) {
    unit *up = *t.up;
    if (up->flags & UNIT_BUFFER_GROWN) {
        free(up->buffer);
        up->buffer = nullptr;
        up->flags &= ~UNIT_BUFFER_GROWN;
    }
    if (up->buffer) return 0;
    uint32_t size = buffer_size_for(up, sizing);
    char *b = static_cast<char *>(malloc(size));
    if (!b) {
        failure_lines lines;
        lines.bytes_line = true;
        lines.bytes = size;
        return fail_statement(t, ENOMEM, lines);
    }
    up->buffer = up->write_ptr = up->data_ptr = up->data_end = b;
    up->buffer_end = b + size;
    return 0;
}

}  // namespace

int start_external_transfer(const transfer &t, const transfer_kind &kind) {
    ensure_initio(t.returning(), t.loc);
    if (int err = find_unit(t, kind)) return err;
    if (int err = check_connection(t, kind)) return fail_statement(t, err);

    unit *up = *t.up;
    if (!(*t.flags & (IO_DECIMAL_POINT | IO_DECIMAL_COMMA)))
        *t.flags |= (up->flags & UNIT_DECIMAL_COMMA) ? IO_DECIMAL_COMMA : IO_DECIMAL_POINT;

    if (kind.direction == io_direction::output) {
        if (int err = turn_to_output(t)) return fail_statement(t, err);
    } else if (int err = turn_to_input(t)) {
        return fail_unheld(t, -err);
    }
    return make_buffer(t, kind.sizing);
}

}  // namespace krm
