// Closing a held unit record: what the buffer owes goes to the file, the
// file is closed and, for a scratch file or STATUS='DELETE', removed, and the
// record is emptied for the release that follows.

#include <errno.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "frame/report.h"
#include "krm/file_statements.h"
#include "units/push_bytes.h"
#include "units/units.h"

namespace {

bool dialect(uint32_t cflags) { return (cflags & (CLOSE_F77COMPAT | CLOSE_F77_READ_COMPAT)) != 0; }

int close_file(unit *up) {
    if ((up->flags & UNIT_WRITING) && up->write_ptr && up->write_ptr < up->data_end) {
        size_t done = 0;
        int err = krm::push_bytes(up, up->write_ptr, static_cast<size_t>(up->data_end - up->write_ptr), &done);
        up->write_ptr += done;
        if (err) return err;
    }
    if (up->stream) {
        while (fflush(up->stream) != 0) {
            if (!((up->flags & UNIT_RETRY_EINTR) && errno == EINTR)) return errno;
            clearerr(up->stream);
        }
        if (fclose(up->stream) != 0) return errno;
        up->stream = nullptr;
    } else if (close(up->fd) != 0) {
        return errno;
    }
    return 0;
}

int remove_file(unit *up, uint32_t cflags) {
    if (up->file_name && unlink(up->file_name) != 0 && !dialect(cflags)) return errno;
    return 0;
}

// 0, or the error; on error the record is as it was, flags included.
int close_unit(unit *up, uint32_t cflags) {
    if (int err = close_file(up)) return err;
    int err = 0;
    switch (cflags & CLOSE_STATUS_MASK) {
        case 0:
            if (up->flags & UNIT_SCRATCH) err = remove_file(up, cflags);
            break;
        case CLOSE_STATUS_DELETE:
            err = remove_file(up, cflags);
            break;
        case CLOSE_STATUS_KEEP:
            if ((up->flags & UNIT_SCRATCH) && !dialect(cflags)) err = 1143;
            break;
        default:
            err = 1144;
            break;
    }
    free(up->file_name);
    free(up->buffer);
    // Everything from flags on goes; the locking state stays for the hold.
    memset(&up->flags, 0, sizeof(unit) - offsetof(unit, flags));
    return err;
}

}  // namespace

extern "C" {

int __f90_close_unit_r(int64_t, unit *up, uint32_t cflags) { return close_unit(up, cflags); }

void __f90_close_unit_a(int64_t unit_number, unit *up, uint32_t cflags, const stmt_location *loc) {
    char name[krm::filename_buffer_size];
    const char *file = __f90_copy_filename(up, name);
    int err = close_unit(up, cflags);
    if (err == 0) return;
    __f90_banner();
    __f90_write_message(err);
    __f90_write_loc(loc);
    __f90_write_unit_number(unit_number);
    __f90_write_filename(file);
    __f90_release_unit(up);
    abort();
}

}  // extern "C"
