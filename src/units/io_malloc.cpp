#include <errno.h>
#include <stdlib.h>

#include "krm/services.h"
#include "units/unit_failure.h"

extern "C" KRM_API int __f90_io_malloc(void **cell, int32_t mode, size_t bytes, const stmt_location *loc) {
    *cell = malloc(bytes);
    if (*cell || bytes == 0) return 0;
    if (mode & 1) return ENOMEM;
    krm::report_no_memory(static_cast<uint32_t>(bytes), loc, nullptr);
}
