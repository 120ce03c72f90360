#include "support/open_close.h"

#include "units/units.h"

namespace krm_test {

const stmt_location kOpenAt = {STMT_OPEN, 30, "t.f90"};
const stmt_location kCloseAt = {STMT_CLOSE, 40, "t.f90"};

int open_file(int64_t n, const std::string &name, uint32_t flags, int64_t recl, int64_t buffer_size) {
    return __f90_open(flags | OPEN_FILE, n, name.data(), static_cast<int32_t>(name.size()), recl, &kOpenAt,
                      buffer_size);
}

int open_unit(int64_t n, uint32_t flags, int64_t recl, int64_t buffer_size) {
    return __f90_open(flags, n, nullptr, 0, recl, &kOpenAt, buffer_size);
}

int close_unit(int64_t n, uint32_t flags) { return __f90_close(flags, n, &kCloseAt); }

bool in_tables(int64_t n) {
    bool found = false;
    pthread_mutex_lock(&__f90_io_master_lock);
    if (n >= 0 && n < SMALL_UNIT_SLOTS) {
        found = __f90_small_unit_pointer_table[n] != nullptr;
    } else if (n >= SMALL_UNIT_SLOTS && n <= INT32_MAX) {
        unit *head = __f90_unit_pointer_table[n & HASH_MASK];
        found = head && head->unit_number == n;
        for (collision_cell *c = __f90_unit_collision_table[n & HASH_MASK]; c; c = c->next)
            found = found || (c->u && c->u->unit_number == n);
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
    return found;
}

}  // namespace krm_test
