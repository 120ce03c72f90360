// What runs on the way out (STOP, PAUSE, a report, a fatal signal): unit
// buffers go to their files and scratch files go away. It never waits for a
// unit another thread holds: such a unit is skipped.

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "frame/report.h"
#include "units/units.h"

namespace {

enum class scratch_files { remove, keep };

// Writes the unit's owed bytes with write(2), stopping at the first failure.
void write_owed(unit *up) {
    while (up->write_ptr < up->data_end) {
        ssize_t n = write(up->fd, up->write_ptr, static_cast<size_t>(up->data_end - up->write_ptr));
        if (n <= 0) return;
        up->write_ptr += n;
    }
}

void visit(unit *up, pthread_t self, scratch_files scratch) {
    if (!up || !(up->flags & UNIT_CONNECTED)) return;
    pthread_mutex_lock(&up->mutex);
    if (up->lock_depth != 0 && !pthread_equal(up->owner, self)) {
        pthread_mutex_unlock(&up->mutex);
        return;
    }
    up->owner = self;
    ++up->lock_depth;
    pthread_mutex_unlock(&up->mutex);

    if (scratch == scratch_files::remove && (up->flags & UNIT_SCRATCH) && up->file_name) {
        unlink(up->file_name);
        free(up->file_name);
        up->file_name = nullptr;
    } else if ((up->flags & UNIT_WRITING) && !up->stream && up->buffer) {
        write_owed(up);
    }

    pthread_mutex_lock(&up->mutex);
    if (--up->lock_depth == 0 && up->waiters != 0) pthread_cond_signal(&up->cond);
    pthread_mutex_unlock(&up->mutex);
}

int walk_units(scratch_files scratch) {
    pthread_t self = pthread_self();
    pthread_mutex_lock(&__f90_io_master_lock);
    if (!__f90_initio_done) {
        pthread_mutex_unlock(&__f90_io_master_lock);
        fflush(stdout);
        return fflush(nullptr);
    }
    visit(&__f90_default_output_unit, self, scratch);
    for (unit *up : __f90_small_unit_pointer_table) visit(up, self, scratch);
    for (int slot = 0; slot < HASHED_UNIT_SLOTS; ++slot) {
        visit(__f90_unit_pointer_table[slot], self, scratch);
        for (collision_cell *c = __f90_unit_collision_table[slot]; c; c = c->next)
            visit(c->u, self, scratch);
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
    fflush(stdout);
    return fflush(nullptr);
}

}  // namespace

extern "C" {

int __f90_cleanup(void) { return walk_units(scratch_files::remove); }
int __f90_flush_all(void) { return walk_units(scratch_files::keep); }

}  // extern "C"
