#include <stdlib.h>

#include "frame/report.h"
#include "krm/errors.h"

extern "C" KRM_API void __f95_error_message_and_abort(int32_t number, const stmt_location *loc) {
    __f90_banner();
    __f90_write_message(number);
    __f90_write_loc(loc);
    abort();
}
