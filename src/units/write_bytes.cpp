// Byte output to a unit's file: through the standard stream of a default
// record, through write(2) on its descriptor otherwise.

#include <errno.h>
#include <unistd.h>

#include "units/push_bytes.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace krm {

int push_bytes(unit *up, const char *bytes, size_t length, size_t *done) {
    bool retry = (up->flags & UNIT_RETRY_EINTR) != 0;
    while (length > 0) {
        if (up->stream) {
            size_t n = fwrite(bytes, 1, length, up->stream);
            if (n == 0 && ferror(up->stream)) {
                int err = errno;
                if (retry && err == EINTR) {
                    clearerr(up->stream);
                    continue;
                }
                return err ? err : EIO;
            }
            bytes += n;
            length -= n;
            *done += n;
        } else {
            ssize_t n = write(up->fd, bytes, length);
            if (n < 0) {
                if (retry && errno == EINTR) continue;
                return errno;
            }
            bytes += n;
            length -= static_cast<size_t>(n);
            *done += static_cast<size_t>(n);
        }
    }
    return 0;
}

}  // namespace krm

extern "C" {

int __f90_write_r(unit *up, const char *bytes, size_t length) {
    if (length == 0) return 0;
    size_t done = 0;
    int err = krm::push_bytes(up, bytes, length, &done);
    if (err != 0) __f90_release_unit(up);
    return err;
}

void __f90_write_a(unit *up, const char *bytes, size_t length, int64_t unit_number,
                   const stmt_location *loc) {
    if (length == 0) return;
    size_t done = 0;
    int err = krm::push_bytes(up, bytes, length, &done);
    if (err != 0) krm::release_report_and_abort(err, up, unit_number, loc);
}

}  // extern "C"
