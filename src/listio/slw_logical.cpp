// List-directed output of logicals: T or F, any non-zero value being true.

#include "krm/list_write.h"
#include "listio/list_write.h"

using namespace krm;

namespace {

int write_logical(io_control_list_write *ctl, bool value) {
    const char letter = value ? 'T' : 'F';
    return list_write::buffer_block(ctl, ctl->up, &letter, 1);
}

}  // namespace

extern "C" {

// The older dialect's one-byte LOGICAL is a number, written as an integer.
KRM_API int __f90_slw_l1(io_control_list_write *ctl, int32_t value) {
    if (ctl->flags & IO_F77COMPAT) return __f90_slw_i4(ctl, value);
    return write_logical(ctl, value != 0);
}
KRM_API int __f90_slw_l4(io_control_list_write *ctl, int32_t value) { return write_logical(ctl, value != 0); }
KRM_API int __f90_slw_l8(io_control_list_write *ctl, int64_t value) { return write_logical(ctl, value != 0); }

}  // extern "C"
