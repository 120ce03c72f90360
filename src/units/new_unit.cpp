#include <errno.h>
#include <stdlib.h>

#include "krm/units.h"
#include "units/unit_failure.h"
#include "units/units.h"

extern "C" {

int __f90_new_unit_r(unit **cell) {
    *cell = static_cast<unit *>(calloc(1, sizeof(unit)));
    if (*cell) return 0;
    pthread_mutex_unlock(&__f90_io_master_lock);
    return ENOMEM;
}

void __f90_new_unit_a(unit **cell, const stmt_location *loc) {
    if (__f90_new_unit_r(cell) != 0) krm::report_no_memory(sizeof(unit), loc, nullptr);
}

KRM_API unit **__f90_new_unit_f(unit **cell, const stmt_location *loc) {
    __f90_new_unit_a(cell, loc);
    return cell;
}

}  // extern "C"
