// Taking a hold on a unit record for the calling thread. Holds are recursive:
// a function called from an I/O list may start another statement on the same
// unit in the same thread.
#pragma once

#include "units/unit.h"

namespace krm {

// With up->mutex locked: waits until no other thread holds the record, then
// takes one hold. Leaves the mutex locked.
inline void take_hold_locked(unit *up, pthread_t self) {
    if (up->lock_depth != 0 && !pthread_equal(up->owner, self)) {
        ++up->waiters;
        do {
            pthread_cond_wait(&up->cond, &up->mutex);
        } while (up->lock_depth != 0 && !pthread_equal(up->owner, self));
        --up->waiters;
    }
    up->owner = self;
    ++up->lock_depth;
}

}  // namespace krm
