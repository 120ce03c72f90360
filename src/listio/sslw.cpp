// Start and end of a list-directed WRITE or PRINT on an external unit.

#include "krm/list_write.h"
#include "listio/list_write.h"

using namespace krm;

namespace {

constexpr transfer_kind list_output{io_direction::output, io_form::formatted, buffer_sizing::list_output};

int64_t line_limit_of(const unit *up) {
    if (up->stream && up->stream == stdout) return __f90_stdout_reclen - 1;
    if (up->stream && up->stream == stderr) return __f90_stderr_reclen - 1;
    return 80;
}

}  // namespace

extern "C" {

KRM_API int __f90_sslw(io_control_list_write *ctl) {
    if (int err = start_external_transfer(list_write::view(ctl), list_output)) return err;
    unit *up = ctl->up;
    // A record left open by a non-advancing statement is continued as it is.
    if (up->record_pos == 0 && !(ctl->flags & IO_NO_LEADING_BLANK)) {
        if (int err = list_write::make_room(ctl, up, 1)) return err;
        if (!(up->flags & UNIT_PRINT)) *up->data_end++ = ' ';
        up->record_pos = 1;
    }
    up->list_line_limit = line_limit_of(up);
    ctl->flags |= IO_NO_SEPARATOR;
    return 0;
}

KRM_API int __f90_eslw(io_control_list_write *ctl) {
    unit *up = ctl->up;
    if (up->record_pos > 0) {
        if (int err = list_write::make_room(ctl, up, 1)) return err;
        *up->data_end++ = '\n';
        up->record_pos = 0;
        up->data_ptr = up->data_end;
    }
    return finish_external_transfer(list_write::view(ctl));
}

}  // extern "C"
