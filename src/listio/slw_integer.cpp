// List-directed output of integers: as few digits as the value needs, a minus
// sign when negative, nothing else.

#include "krm/list_write.h"
#include "listio/integer_text.h"
#include "listio/list_write.h"

using namespace krm;

namespace {

template <typename T>
int write_integer(io_control_list_write *ctl, T value) {
    char buf[integer_text_size];
    char *end = buf + sizeof buf;
    char *p;
    if constexpr (static_cast<T>(-1) < 0)
        p = signed_text(static_cast<int64_t>(value), end);
    else
        p = unsigned_text(static_cast<uint64_t>(value), end);
    return list_write::buffer_block(ctl, ctl->up, p, static_cast<size_t>(end - p));
}

}  // namespace

extern "C" {

KRM_API int __f90_slw_i4(io_control_list_write *ctl, int32_t value) { return write_integer(ctl, value); }
KRM_API int __f90_slw_i8(io_control_list_write *ctl, int64_t value) { return write_integer(ctl, value); }
KRM_API int __f90_slw_u4(io_control_list_write *ctl, uint32_t value) { return write_integer(ctl, value); }
KRM_API int __f90_slw_u8(io_control_list_write *ctl, uint64_t value) { return write_integer(ctl, value); }

}  // extern "C"
