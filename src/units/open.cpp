// OPEN: the unit is found or made, and then either connected to a file, or,
// when it is connected already, re-opened: the same file only changes the
// specifiers that may change, another file is connected after the old one
// is closed.

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "frame/report.h"
#include "krm/open_close.h"
#include "units/hold.h"
#include "units/open_request.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace krm {

int fail_open(open_request &rq, int number, const char *status) {
    // The report names a file only once the unit is in hand: the file it is
    // connected to, else the one being opened. Copied, cut as every report
    // cuts it, before the release can destroy the record.
    char name[filename_buffer_size];
    const char *file = nullptr;
    if (rq.up) {
        if (!rq.returning()) {
            if (rq.up->flags & UNIT_CONNECTED) {
                file = __f90_copy_filename(rq.up, name);
            } else if (rq.name) {
                size_t n = strnlen(rq.name, filename_buffer_size - 1);
                memcpy(name, rq.name, n);
                name[n] = '\0';
                file = name;
            }
        }
        __f90_release_unit(rq.up);
        rq.up = nullptr;
    }
    if (rq.returning()) {
        free(rq.name);
        rq.name = nullptr;
        return number;
    }
    __f90_banner();
    __f90_write_message(number);
    __f90_write_loc(rq.loc);
    __f90_write_unit_number(rq.unit_number);
    __f90_write_filename(file);
    if (status) __f90_write_status(status);
    abort();
}

namespace {

// Finds or makes the unit's record and holds it. A default record serves
// only when no FILE= is given: with one, the slot gets a record of its own
// and the default record stays for the '*' statements.
int hold_unit(open_request &rq) {
    const int32_t n = static_cast<int32_t>(rq.unit_number);
    const pthread_t self = pthread_self();
    pthread_mutex_lock(&__f90_io_master_lock);
    unit *up = find_unit_locked(n);
    if (up && !(is_default_record(up) && (rq.flags & OPEN_FILE))) {
        pthread_mutex_lock(&up->mutex);
        pthread_mutex_unlock(&__f90_io_master_lock);
        take_hold_locked(up, self);
        bool recursive = up->lock_depth > 1;
        pthread_mutex_unlock(&up->mutex);
        if (up->stream) flockfile(up->stream);
        rq.up = up;
        return recursive ? fail_open(rq, 1146) : 0;
    }

    unit *fresh = new_unit_record(n, self);
    collision_cell *cell = nullptr;
    int slot = n & HASH_MASK;
    bool needs_cell = n >= SMALL_UNIT_SLOTS && __f90_unit_pointer_table[slot];
    if (fresh && needs_cell) {
        cell = static_cast<collision_cell *>(malloc(sizeof(collision_cell)));
        if (!cell) {
            free_unit_record(fresh);
            fresh = nullptr;
        }
    }
    if (!fresh) {
        pthread_mutex_unlock(&__f90_io_master_lock);
        return fail_open(rq, ENOMEM);
    }
    if (n < SMALL_UNIT_SLOTS) {
        __f90_small_unit_pointer_table[n] = fresh;
    } else {
        if (cell) {
            cell->u = __f90_unit_pointer_table[slot];
            cell->next = __f90_unit_collision_table[slot];
            __f90_unit_collision_table[slot] = cell;
        }
        __f90_unit_pointer_table[slot] = fresh;
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
    rq.up = fresh;
    return 0;
}

// What OPEN's specifiers say about the changeable modes: BLANK=, PAD=,
// DELIM=, ASYNCHRONOUS=, DECIMAL=, ROUND=.
uint32_t mode_flags(const open_request &rq) {
    uint32_t f = 0;
    switch (rq.flags & OPEN_DELIM_MASK) {
        case OPEN_DELIM_APOSTROPHE: f |= UNIT_DELIM; break;
        case OPEN_DELIM_QUOTE: f |= UNIT_DELIM | UNIT_DELIM_QUOTE; break;
        default: break;
    }
    f |= (rq.flags & OPEN_BLANK_ZERO) ? UNIT_BLANK_ZERO : UNIT_BLANK_NULL;
    if ((rq.flags & OPEN_PAD_NO) || (rq.flags & OPEN_FILEOPT_MASK) == OPEN_FILEOPT_NOPAD) f |= UNIT_NOPAD;
    if (rq.flags & OPEN_ASYNCHRONOUS) f |= UNIT_ASYNC;
    if ((rq.flags & OPEN_DECIMAL_MASK) == OPEN_DECIMAL_COMMA) f |= UNIT_DECIMAL_COMMA;
    uint32_t round = (rq.flags & OPEN_ROUND_MASK) >> 23;
    f |= (round << 27) & UNIT_ROUND;
    return f;
}

uint32_t form_flag(uint32_t form) {
    switch (form) {
        case OPEN_FORM_FORMATTED: return UNIT_FORMATTED;
        case OPEN_FORM_PRINT: return UNIT_PRINT;
        case OPEN_FORM_BINARY: return UNIT_BINARY;
        default: return 0;
    }
}

int way_of_opening(open_request &rq) {
    switch (rq.status()) {
        case 0:
        case OPEN_STATUS_UNKNOWN: return open_unknown(rq);
        case OPEN_STATUS_OLD: return open_old(rq);
        case OPEN_STATUS_NEW: return open_new(rq);
        case OPEN_STATUS_REPLACE: return open_replace(rq);
        case OPEN_STATUS_SCRATCH: return open_scratch(rq);
        default: return fail_open(rq, 1144);
    }
}

// Connects the held, unconnected unit to the file.
int connect(open_request &rq) {
    if (!rq.name && rq.status() != OPEN_STATUS_SCRATCH) {
        char text[32];
        int len = snprintf(text, sizeof text, "fort.%d", static_cast<int>(rq.unit_number));
        rq.name = static_cast<char *>(malloc(static_cast<size_t>(len) + 1));
        if (!rq.name) return fail_open(rq, ENOMEM);
        memcpy(rq.name, text, static_cast<size_t>(len) + 1);
    }
    if (rq.access() == OPEN_ACCESS_DIRECT && !(rq.flags & OPEN_RECL)) return fail_open(rq, 1139);
    if (rq.access() == OPEN_ACCESS_STREAM && (rq.flags & OPEN_RECL)) return fail_open(rq, 1180);
    if (int err = way_of_opening(rq)) return err;

    unit *up = rq.up;
    uint32_t flags = up->flags;
    const uint32_t form = rq.form();
    switch (rq.access()) {
        case OPEN_ACCESS_DIRECT:
            flags &= ~(UNIT_SEQUENTIAL | UNIT_STREAM);
            flags |= form_flag(form);
            break;
        case OPEN_ACCESS_STREAM:
            flags = (flags & ~UNIT_SEQUENTIAL) | UNIT_STREAM;
            flags |= form_flag(form);
            break;
        default:
            flags = (flags & ~UNIT_STREAM) | UNIT_SEQUENTIAL;
            flags |= form == 0 ? UNIT_FORMATTED : form_flag(form);
            break;
    }

    off64_t where = -1;
    int whence = SEEK_SET;
    if ((rq.flags & OPEN_POSITION_MASK) == OPEN_POSITION_REWIND) {
        where = 0;
    } else if ((rq.flags & OPEN_FILEOPT_MASK) == OPEN_FILEOPT_EOF ||
               (rq.flags & OPEN_POSITION_MASK) == OPEN_POSITION_APPEND || rq.access() == OPEN_ACCESS_APPEND) {
        where = 0;
        whence = SEEK_END;
    }
    // A pipe or a terminal has no position to set. Should a seek fail, the
    // file is given back, so that no half-made connection stays behind.
    if (where >= 0 && (flags & UNIT_REGULAR) && lseek64(up->fd, where, whence) < 0) {
        const int err = errno;
        __f90_close_unit_r(rq.unit_number, up, rq.flags & (OPEN_F77COMPAT | OPEN_F77_READ_COMPAT));
        return fail_open(rq, err);
    }

    flags |= mode_flags(rq);
    up->next_record = 1;
    up->record_pos = 0;
    if (rq.flags & OPEN_RECL) {
        int64_t recl = rq.recl;
        if ((rq.flags & OPEN_RECL_WORDS) && !(flags & (UNIT_FORMATTED | UNIT_PRINT))) recl *= 4;
        up->recl = recl;
        up->record_limit = recl;
    } else {
        bool formatted = form == 0 || form == OPEN_FORM_FORMATTED || form == OPEN_FORM_PRINT;
        up->recl = formatted ? RECL_FORMATTED_DEFAULT : RECL_UNFORMATTED_DEFAULT;
        up->record_limit = rq.dialect() ? 0 : up->recl;
    }
    up->flags = flags;
    __f90_release_unit(up);
    rq.up = nullptr;
    return 0;
}

// Is FILE= the file the unit has open? A link to it counts as another file.
int names_open_file(open_request &rq, bool *same) {
    if (!(rq.flags & OPEN_FILE)) {
        *same = true;
        return 0;
    }
    struct stat64 st;
    if (lstat64(rq.name, &st) != 0) {
        if (errno != ENOENT) return errno;
        *same = false;
        return 0;
    }
    *same = st.st_dev == rq.up->st_dev && st.st_ino == rq.up->st_ino;
    return 0;
}

// The older dialect lets FORM= change between FORMATTED and PRINT.
int change_form(open_request &rq) {
    unit *up = rq.up;
    const bool formatted = unit_is_formatted(up);
    switch (rq.form()) {
        case OPEN_FORM_FORMATTED:
            if (!formatted) return 1002;
            up->flags = (up->flags & ~UNIT_PRINT) | UNIT_FORMATTED;
            return 0;
        case OPEN_FORM_UNFORMATTED:
            if (!formatted) return 0;
            if (rq.returning() && (up->flags & UNIT_PRINT))
                up->flags = (up->flags & ~UNIT_PRINT) | UNIT_FORMATTED;
            return 1003;
        case OPEN_FORM_BINARY:
            if (rq.returning() && (up->flags & UNIT_PRINT))
                up->flags = (up->flags & ~UNIT_PRINT) | UNIT_FORMATTED;
            return 1021;
        case OPEN_FORM_PRINT:
            if (!formatted) return 1002;
            up->flags = (up->flags & ~UNIT_FORMATTED) | UNIT_PRINT;
            return 0;
        default:
            return 0;
    }
}

int reopen(open_request &rq) {
    bool same = false;
    if (int err = names_open_file(rq, &same)) return fail_open(rq, err);
    if (!same) {
        uint32_t cflags = rq.flags & (OPEN_RETURNING | OPEN_F77COMPAT | OPEN_F77_READ_COMPAT);
        if (rq.returning()) {
            if (int err = __f90_close_unit_r(rq.unit_number, rq.up, cflags)) return fail_open(rq, err);
        } else {
            __f90_close_unit_a(rq.unit_number, rq.up, cflags, rq.loc);
        }
        return connect(rq);
    }

    const uint32_t status = rq.status();
    const bool allowed =
        status == 0 || status == OPEN_STATUS_OLD || (status == OPEN_STATUS_UNKNOWN && !rq.returning());
    if (!allowed) {
        const char *text = status == OPEN_STATUS_NEW       ? "NEW"
                           : status == OPEN_STATUS_REPLACE ? "REPLACE"
                           : status == OPEN_STATUS_SCRATCH ? "SCRATCH"
                                                           : "UNKNOWN";
        return fail_open(rq, 1141, text);
    }
    unit *up = rq.up;
    up->flags &= ~(UNIT_BLANK_ZERO | UNIT_NOPAD | UNIT_DELIM | UNIT_DELIM_QUOTE | UNIT_DECIMAL_COMMA |
                   UNIT_ROUND | UNIT_BLANK_NULL);
    // ASYNCHRONOUS= is not among what a re-open may change.
    up->flags |= mode_flags(rq) & ~UNIT_ASYNC;
    if (rq.dialect()) {
        if (int err = change_form(rq)) return fail_open(rq, err);
    }
    __f90_release_unit(up);
    rq.up = nullptr;
    free(rq.name);
    rq.name = nullptr;
    return 0;
}

// FILE= as compiled code passes it: up to a NUL or the length; trailing
// blanks go only when the length was reached.
int copy_file_name(open_request &rq, const char *file, int32_t length) {
    if (!file) return fail_open(rq, 1117);
    size_t n = length > 0 ? static_cast<size_t>(length) : 0;
    const void *nul = memchr(file, '\0', n);
    if (nul) {
        n = static_cast<size_t>(static_cast<const char *>(nul) - file);
    } else {
        while (n > 0 && file[n - 1] == ' ') --n;
    }
    if (n == 0) return fail_open(rq, 1130);
    rq.name = static_cast<char *>(malloc(n + 1));
    if (!rq.name) return fail_open(rq, ENOMEM);
    memcpy(rq.name, file, n);
    rq.name[n] = '\0';
    return 0;
}

int open_statement(open_request &rq, const char *file, int32_t file_length) {
    ensure_initio(rq.returning(), rq.loc);
    if (!unit_number_fits(rq.unit_number)) return fail_open(rq, 1001);
    if (rq.flags & OPEN_FILE) {
        if (int err = copy_file_name(rq, file, file_length)) return err;
        if (rq.status() == OPEN_STATUS_SCRATCH && !rq.dialect()) return fail_open(rq, 1145);
    }
    if (rq.dialect() && rq.access() != OPEN_ACCESS_DIRECT) rq.flags &= ~OPEN_RECL;
    if ((rq.flags & OPEN_RECL) && rq.recl <= 0) return fail_open(rq, 1138);
    if ((rq.flags & OPEN_FILEOPT_MASK) == OPEN_FILEOPT_BUFFER && rq.buffer_size <= 0) return fail_open(rq, 1154);
    if (int err = hold_unit(rq)) return err;
    if (rq.access() == OPEN_ACCESS_STREAM && is_default_record(rq.up)) return fail_open(rq, 1152);
    if (rq.access() == OPEN_ACCESS_APPEND && rq.status() == OPEN_STATUS_NEW) return fail_open(rq, 1025);
    if (rq.up->flags & UNIT_CONNECTED) return reopen(rq);
    return connect(rq);
}

}  // namespace
}  // namespace krm

extern "C" KRM_API int __f90_open(uint32_t flags, int64_t unit_number, const char *file, int32_t file_length,
                                  int64_t recl, const stmt_location *loc, int64_t buffer_size) {
    krm::open_request rq;
    rq.flags = flags;
    rq.unit_number = unit_number;
    rq.recl = recl;
    rq.buffer_size = buffer_size;
    rq.loc = loc;
    return krm::open_statement(rq, file, file_length);
}
