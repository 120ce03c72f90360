#include <errno.h>
#include <stdlib.h>

#include "frame/report.h"
#include "units/push_bytes.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace {

// Passes write_ptr..data_end to the file; returns 0 or errno. Leaves the
// other buffer pointers alone.
int flush_owed(unit *up) {
    if (!(up->flags & UNIT_CONNECTED)) return 0;
    if ((up->flags & UNIT_WRITING) && up->write_ptr && up->write_ptr < up->data_end) {
        if (up->stream && (up->flags & UNIT_RETRY_EINTR)) clearerr(up->stream);
        size_t done = 0;
        int err = krm::push_bytes(up, up->write_ptr, static_cast<size_t>(up->data_end - up->write_ptr), &done);
        up->write_ptr += done;
        if (err != 0) return err;
    }
    if (up->stream && (up->flags & UNIT_WRITING)) {
        while (fflush(up->stream) != 0) {
            int err = errno;
            if (!((up->flags & UNIT_RETRY_EINTR) && err == EINTR)) return err ? err : EIO;
            clearerr(up->stream);
        }
    }
    return 0;
}

}  // namespace

extern "C" {

int __f90_flush_unit_r(unit *up) {
    int err = flush_owed(up);
    if (err != 0) __f90_release_unit(up);
    return err;
}

// The report comes before the release so that it can name the file in place.
void __f90_flush_unit_a(unit *up, int64_t unit_number, const stmt_location *loc) {
    int err = flush_owed(up);
    if (err == 0) return;
    char name[krm::filename_buffer_size];
    __f90_banner();
    __f90_write_message(err);
    __f90_write_loc(loc);
    __f90_write_unit_number(unit_number);
    __f90_write_filename(__f90_copy_filename(up, name));
    __f90_release_unit(up);
    abort();
}

}  // extern "C"
