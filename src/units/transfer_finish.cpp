// The common end of a data transfer statement on an external unit, after the
// family has finished its record.

#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "krm/units.h"
#include "units/transfer.h"
#include "units/units.h"

namespace krm {
namespace {

// The cut a start call left owed because truncation is delayed: made now that
// the statement's bytes are in the file, and only when the file is longer.
int do_owed_cut(const transfer &t) {
    unit *up = *t.up;
    up->flags2 &= ~UNIT_TRUNCATE_OWED;
    int fd = up->stream ? fileno(up->stream) : up->fd;
    if (int err = __f90_flush_unit_r(up)) return fail_unheld(t, err);
    off64_t pos = lseek64(fd, 0, SEEK_CUR);
    if (pos < 0) return fail_statement(t, errno);
    if (up->flags & UNIT_STREAM) return 0;
    struct stat64 st;
    if (fstat64(fd, &st) != 0) return fail_statement(t, errno);
    if (st.st_size != pos && ftruncate64(fd, pos) != 0) return fail_statement(t, errno);
    return 0;
}

}  // namespace

int finish_external_transfer(const transfer &t) {
    free_owned_format(t);
    unit *up = *t.up;
    // A buffer grown for a long record is given back below, so what it holds
    // must reach the file first.
    bool pass_on = up->stream || (up->flags & (UNIT_FLUSH_EACH | UNIT_BUFFER_GROWN)) ||
                   __f90_get_synchronous_flag();
    if (pass_on && up->data_end > up->write_ptr) {
        const char *from = up->write_ptr;
        size_t n = static_cast<size_t>(up->data_end - up->write_ptr);
        up->write_ptr = up->data_ptr = up->data_end = up->buffer;
        if (t.returning()) {
            if (int err = __f90_write_r(up, from, n)) return err;
        } else {
            __f90_write_a(up, from, n, *t.unit_no, t.loc);
        }
    }
    if (up->flags & UNIT_BUFFER_GROWN) {
        free(up->buffer);
        up->buffer = up->buffer_end = up->write_ptr = up->data_ptr = up->data_end = nullptr;
        up->flags &= ~UNIT_BUFFER_GROWN;
    }
    if (__f90_io_delay_ftrunc && (up->flags2 & UNIT_TRUNCATE_OWED)) {
        if (int err = do_owed_cut(t)) return err;
    }
    __f90_release_unit(up);
    return 0;
}

}  // namespace krm
