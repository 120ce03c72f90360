// CLOSE: finds the unit without making one, waits while another thread is
// in a statement on it, and closes it. A default unit's file stays open: the
// unit number is only taken out of the table, and the '*' statements go on.

#include <stdlib.h>

#include "frame/report.h"
#include "krm/open_close.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace {

bool dialect(uint32_t cflags) { return (cflags & (CLOSE_F77COMPAT | CLOSE_F77_READ_COMPAT)) != 0; }

int fail(int number, int64_t unit_number, uint32_t cflags, const stmt_location *loc) {
    if (cflags & CLOSE_RETURNING) return number;
    krm::report_lines lines;
    lines.unit_number = unit_number;
    krm::report_and_abort(number, loc, lines);
}

// Closing a unit this thread is in the middle of a transfer on.
int fail_recursive(unit *up, int64_t unit_number, uint32_t cflags, const stmt_location *loc) {
    if (cflags & CLOSE_RETURNING) {
        __f90_release_unit(up);
        return 1147;
    }
    char name[krm::filename_buffer_size];
    __f90_banner();
    __f90_write_message(1147);
    __f90_write_loc(loc);
    __f90_write_unit_number(unit_number);
    __f90_write_filename(__f90_copy_filename(up, name));
    __f90_release_unit(up);
    abort();
}

int close_statement(int64_t unit_number, uint32_t cflags, const stmt_location *loc) {
    if (!krm::unit_number_fits(unit_number) || (unit_number == 0 && dialect(cflags)))
        return fail(1001, unit_number, cflags, loc);
    const bool returning = (cflags & CLOSE_RETURNING) != 0;
    const int32_t n = static_cast<int32_t>(unit_number);
    const pthread_t self = pthread_self();

    pthread_mutex_lock(&__f90_io_master_lock);
    for (;;) {
        unit *up = krm::find_unit_locked(n);
        if (!up) {
            pthread_mutex_unlock(&__f90_io_master_lock);
            return 0;
        }
        pthread_mutex_lock(&up->mutex);
        if (up->lock_depth != 0 && !pthread_equal(up->owner, self)) {
            // Wait for the other thread's statement; the record may be gone
            // afterwards, so the table is read again.
            pthread_mutex_unlock(&__f90_io_master_lock);
            ++up->waiters;
            while (up->lock_depth != 0 && !pthread_equal(up->owner, self)) pthread_cond_wait(&up->cond, &up->mutex);
            --up->waiters;
            if (up->waiters != 0) pthread_cond_signal(&up->cond);
            pthread_mutex_unlock(&up->mutex);
            pthread_mutex_lock(&__f90_io_master_lock);
            continue;
        }
        const bool recursive = up->lock_depth != 0;
        const bool default_record = is_default_record(up);
        if (default_record && !recursive) __f90_small_unit_pointer_table[n] = nullptr;
        pthread_mutex_unlock(&__f90_io_master_lock);
        up->owner = self;
        ++up->lock_depth;
        pthread_mutex_unlock(&up->mutex);
        if (up->stream) flockfile(up->stream);

        if (recursive) return fail_recursive(up, unit_number, cflags, loc);
        if (default_record) {
            if (returning) {
                if (int err = __f90_flush_unit_r(up)) return err;
            } else {
                __f90_flush_unit_a(up, unit_number, loc);
            }
            __f90_release_unit(up);
            return 0;
        }
        int err = 0;
        if (up->flags & UNIT_CONNECTED) {
            if (returning)
                err = __f90_close_unit_r(unit_number, up, cflags);
            else
                __f90_close_unit_a(unit_number, up, cflags, loc);
        }
        __f90_release_unit(up);
        return err;
    }
}

}  // namespace

extern "C" {

int __f90_close_r(int64_t unit_number, uint32_t cflags) {
    return close_statement(unit_number, cflags | CLOSE_RETURNING, nullptr);
}

void __f90_close_a(int64_t unit_number, uint32_t cflags, const stmt_location *loc) {
    close_statement(unit_number, cflags & ~CLOSE_RETURNING, loc);
}

KRM_API int __f90_close(uint32_t cflags, int64_t unit_number, const stmt_location *loc) {
    krm::ensure_initio(cflags & CLOSE_RETURNING, loc);
    return close_statement(unit_number, cflags, loc);
}

}  // extern "C"
