// Where unit records live, and the process-wide state of the I/O system.
#pragma once

#include <pthread.h>
#include <stdint.h>

#include "units/unit.h"

// An older record of a hashed slot. A cell may hold a null unit: the slot's
// head was empty when a newer record displaced it.
struct collision_cell {
    collision_cell *next;
    unit *u;
};

constexpr int SMALL_UNIT_SLOTS = 128;
constexpr int HASHED_UNIT_SLOTS = 1024;
constexpr int64_t HASH_MASK = 0x3ff;

extern "C" {
extern pthread_mutex_t __f90_io_master_lock;
extern unit *__f90_small_unit_pointer_table[SMALL_UNIT_SLOTS];
extern unit *__f90_unit_pointer_table[HASHED_UNIT_SLOTS];
extern collision_cell *__f90_unit_collision_table[HASHED_UNIT_SLOTS];

extern unit __f90_default_error_unit;
extern unit __f90_default_input_unit;
extern unit __f90_default_output_unit;

extern int __f90_initio_done;
extern int64_t __f90_stderr_reclen;
extern int64_t __f90_stdout_reclen;
extern int __f90_io_delay_ftrunc;
}

inline bool is_default_record(const unit *up) {
    return up == &__f90_default_error_unit || up == &__f90_default_input_unit ||
           up == &__f90_default_output_unit;
}
