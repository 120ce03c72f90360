// Finding the record of a unit number, making it on first use, and holding it.

#include <errno.h>
#include <stdlib.h>

#include "krm/units.h"
#include "units/hold.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace krm {

unit *find_unit_locked(int32_t n) {
    if (n < SMALL_UNIT_SLOTS) return __f90_small_unit_pointer_table[n];
    int slot = n & HASH_MASK;
    unit *head = __f90_unit_pointer_table[slot];
    if (head && head->unit_number == n) return head;
    for (collision_cell *c = __f90_unit_collision_table[slot]; c; c = c->next)
        if (c->u && c->u->unit_number == n) return c->u;
    return nullptr;
}

unit *new_unit_record(int32_t n, pthread_t self) {
    unit *up = static_cast<unit *>(calloc(1, sizeof(unit)));
    if (!up) return nullptr;
    pthread_mutex_init(&up->mutex, nullptr);
    pthread_cond_init(&up->cond, nullptr);
    up->owner = self;
    up->lock_depth = 1;
    up->unit_number = n;
    return up;
}

void free_unit_record(unit *up) {
    pthread_mutex_destroy(&up->mutex);
    pthread_cond_destroy(&up->cond);
    free(up);
}

}  // namespace krm

namespace {

using krm::find_unit_locked;

// Under the master lock: makes, holds and enters a new record, and releases
// the master lock. Returns 0 or ENOMEM (master lock released either way).
int make_locked(unit **cell, int32_t n, pthread_t self) {
    unit *up = krm::new_unit_record(n, self);
    if (!up) {
        pthread_mutex_unlock(&__f90_io_master_lock);
        return ENOMEM;
    }
    if (n < SMALL_UNIT_SLOTS) {
        __f90_small_unit_pointer_table[n] = up;
    } else {
        int slot = n & HASH_MASK;
        collision_cell *c = static_cast<collision_cell *>(malloc(sizeof(collision_cell)));
        if (!c) {
            pthread_mutex_unlock(&__f90_io_master_lock);
            krm::free_unit_record(up);
            return ENOMEM;
        }
        // The displaced head goes on the chain even when it is null; the
        // walks over the tables skip such cells.
        c->u = __f90_unit_pointer_table[slot];
        c->next = __f90_unit_collision_table[slot];
        __f90_unit_pointer_table[slot] = up;
        __f90_unit_collision_table[slot] = c;
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
    *cell = up;
    return 0;
}

int get_numbered(unit **cell, int64_t number) {
    if (!krm::unit_number_fits(number)) return 1001;
    int32_t n = static_cast<int32_t>(number);
    pthread_t self = pthread_self();
    pthread_mutex_lock(&__f90_io_master_lock);
    unit *up = find_unit_locked(n);
    if (!up) return make_locked(cell, n, self);
    pthread_mutex_lock(&up->mutex);
    pthread_mutex_unlock(&__f90_io_master_lock);
    krm::take_hold_locked(up, self);
    pthread_mutex_unlock(&up->mutex);
    if (up->stream) flockfile(up->stream);
    *cell = up;
    return 0;
}

}  // namespace

extern "C" {

int __f90_get_numbered_unit_r(unit **cell, int64_t unit_number) {
    return get_numbered(cell, unit_number);
}

void __f90_get_numbered_unit_a(unit **cell, int64_t unit_number, const stmt_location *loc) {
    int err = get_numbered(cell, unit_number);
    if (err == 0) return;
    if (err == ENOMEM) krm::report_no_memory(sizeof(unit), loc, nullptr);
    krm::report_lines lines;
    lines.unit_number = unit_number;
    krm::report_and_abort(err, loc, lines);
}

KRM_API unit **__f90_get_numbered_unit_f(unit **cell, int64_t unit_number, const stmt_location *loc) {
    __f90_get_numbered_unit_a(cell, unit_number, loc);
    return cell;
}

}  // extern "C"
