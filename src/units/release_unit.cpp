// Ending a hold, and removing a record that nobody wants any more: an
// unconnected record with no holder and no waiter.

#include <stdlib.h>

#include "units/units.h"

namespace {

// Locks `up` (the master lock held) and tells whether it may be destroyed;
// on false both locks are released.
bool lock_if_unwanted(unit *up) {
    pthread_mutex_lock(&up->mutex);
    if ((up->flags & UNIT_CONNECTED) || up->lock_depth != 0 || up->waiters != 0) {
        pthread_mutex_unlock(&up->mutex);
        pthread_mutex_unlock(&__f90_io_master_lock);
        return false;
    }
    return true;
}

// Both locks held, the record already out of the tables.
void destroy(unit *up) {
    pthread_mutex_unlock(&__f90_io_master_lock);
    pthread_mutex_unlock(&up->mutex);
    pthread_mutex_destroy(&up->mutex);
    pthread_cond_destroy(&up->cond);
    free(up->file_name);
    free(up->buffer);
    free(up);
}

void remove_small(int32_t n) {
    pthread_mutex_lock(&__f90_io_master_lock);
    unit *up = __f90_small_unit_pointer_table[n];
    if (!up) {
        pthread_mutex_unlock(&__f90_io_master_lock);
        return;
    }
    if (!lock_if_unwanted(up)) return;
    __f90_small_unit_pointer_table[n] = nullptr;
    destroy(up);
}

// Moves the first cell's record to the head of the slot and frees the cell.
void promote_first_cell(int slot) {
    collision_cell *c = __f90_unit_collision_table[slot];
    __f90_unit_pointer_table[slot] = c->u;
    __f90_unit_collision_table[slot] = c->next;
    free(c);
}

void remove_hashed(int32_t n) {
    int slot = n & HASH_MASK;
    pthread_mutex_lock(&__f90_io_master_lock);
    while (!__f90_unit_pointer_table[slot]) {
        if (!__f90_unit_collision_table[slot]) {
            pthread_mutex_unlock(&__f90_io_master_lock);
            return;
        }
        promote_first_cell(slot);
    }
    unit *head = __f90_unit_pointer_table[slot];
    if (head->unit_number == n) {
        if (!lock_if_unwanted(head)) return;
        if (__f90_unit_collision_table[slot])
            promote_first_cell(slot);
        else
            __f90_unit_pointer_table[slot] = nullptr;
        destroy(head);
        return;
    }
    collision_cell **link = &__f90_unit_collision_table[slot];
    while (*link && !((*link)->u && (*link)->u->unit_number == n)) link = &(*link)->next;
    collision_cell *c = *link;
    if (!c) {
        pthread_mutex_unlock(&__f90_io_master_lock);
        return;
    }
    unit *up = c->u;
    if (!lock_if_unwanted(up)) return;
    *link = c->next;
    free(c);
    destroy(up);
}

}  // namespace

extern "C" void __f90_release_unit(unit *up) {
    if (up->flags & UNIT_CONNECTED) {
        if (up->stream) funlockfile(up->stream);
        pthread_mutex_lock(&up->mutex);
        if (--up->lock_depth < 1) {
            up->flags &= ~UNIT_NESTED;
            if (up->waiters != 0) pthread_cond_signal(&up->cond);
        } else {
            up->flags |= UNIT_NESTED;
        }
        pthread_mutex_unlock(&up->mutex);
        return;
    }

    pthread_mutex_lock(&up->mutex);
    if (--up->lock_depth > 0) {
        up->flags |= UNIT_NESTED;
        pthread_mutex_unlock(&up->mutex);
        return;
    }
    up->flags &= ~UNIT_NESTED;
    if (up->waiters != 0) {
        pthread_cond_signal(&up->cond);
        pthread_mutex_unlock(&up->mutex);
        return;
    }
    if (is_default_record(up)) {
        pthread_mutex_unlock(&up->mutex);
        return;
    }
    int32_t n = up->unit_number;
    pthread_mutex_unlock(&up->mutex);
    if (n < SMALL_UNIT_SLOTS)
        remove_small(n);
    else
        remove_hashed(n);
}
