// Finding, locking, connecting and writing units. Every operation that can
// fail comes in an abort form (_a: reports and aborts, never returns an
// error) and a return form (_r: returns 0 or the error number, with the unit
// released on failure); a statement picks one by its IO_RETURNING bit.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "krm/stmt_location.h"
#include "units/unit.h"
#include "units/unit_tables.h"

extern "C" {
// One-time set-up of the default records and the tables.
void __f90_initio_a(const stmt_location *loc);
int __f90_initio_r(void);

// A zeroed record; the caller holds __f90_io_master_lock, which is released
// on failure.
void __f90_new_unit_a(unit **cell, const stmt_location *loc);
int __f90_new_unit_r(unit **cell);

// The record of a unit number, made if need be, held by the calling thread.
void __f90_get_numbered_unit_a(unit **cell, int64_t unit_number, const stmt_location *loc);
int __f90_get_numbered_unit_r(unit **cell, int64_t unit_number);

// The static records of '*', held by the calling thread.
unit *__f90_get_default_input_unit(void);
unit *__f90_get_default_output_unit(void);

// Ends one hold; an unconnected record nobody wants any more is destroyed.
void __f90_release_unit(unit *up);

// Passes bytes to the unit's file.
void __f90_write_a(unit *up, const char *bytes, size_t length, int64_t unit_number,
                   const stmt_location *loc);
int __f90_write_r(unit *up, const char *bytes, size_t length);

// Passes what the buffer owes to the file.
void __f90_flush_unit_a(unit *up, int64_t unit_number, const stmt_location *loc);
int __f90_flush_unit_r(unit *up);

// Closes a held record: writes what it owes, closes the file, removes it as
// the status says, empties the record. The hold stays: the caller releases.
// The abort form reports and releases on failure.
void __f90_close_unit_a(int64_t unit_number, unit *up, uint32_t cflags, const stmt_location *loc);
int __f90_close_unit_r(int64_t unit_number, unit *up, uint32_t cflags);
void __f90_close_a(int64_t unit_number, uint32_t cflags, const stmt_location *loc);
int __f90_close_r(int64_t unit_number, uint32_t cflags);

// Connects a unit no OPEN named to the file fort.N.
void __f90_open_for_input_a(int64_t unit_number, unit *up, const stmt_location *loc);
int __f90_open_for_input_r(int64_t unit_number, unit *up);
void __f90_open_for_output_a(int64_t unit_number, unit *up, const stmt_location *loc);
int __f90_open_for_output_r(int64_t unit_number, unit *up);
}

namespace krm {

// Under the master lock: the record of unit n in the tables, or null.
unit *find_unit_locked(int32_t n);

// A zeroed record for unit n, its mutex and cond made, held once by `self`.
// Null when there is no memory.
unit *new_unit_record(int32_t n, pthread_t self);
void free_unit_record(unit *up);

inline bool unit_number_fits(int64_t n) { return n >= 0 && n <= INT32_MAX; }

// Runs the one-time set-up in the form the statement asked for.
inline int ensure_initio(bool returning, const stmt_location *loc) {
    if (__atomic_load_n(&__f90_initio_done, __ATOMIC_ACQUIRE)) return 0;
    if (returning) return __f90_initio_r();
    __f90_initio_a(loc);
    return 0;
}

}  // namespace krm
