// Start and end of a sequential formatted WRITE or PRINT, and ADVANCE=.

#include "format/parsed_format.h"
#include "formatted/format_walk.h"
#include "formatted/sequential_write.h"
#include "krm/formatted_write.h"
#include "units/keyword.h"

using namespace krm;

namespace {

constexpr transfer_kind formatted_output{io_direction::output, io_form::formatted, buffer_sizing::formatted_output};

// The rounding mode of a statement that gives none: the unit's, where RP
// and none both mean RP unless compiled code asks for RC as the default.
uint32_t round_code(uint32_t stmt_flags, const unit *up) {
    uint32_t unit_code = (up->flags & UNIT_ROUND) >> 27;
    if (unit_code >= 1 && unit_code <= 5) return unit_code;
    if (unit_code == 0 && (stmt_flags & IO_ROUND_COMPATIBLE_DEFAULT)) return 5;
    return 6;
}

bool format_block_ok(const parsed_format *f) {
    return f && (reinterpret_cast<uintptr_t>(f) & 3) == 0 && f->magic == KRM_FORMAT_MAGIC;
}

}  // namespace

extern "C" {

KRM_API int __f90_ssfw(io_control_formatted_write *ctl) {
    sequential_write x{ctl, nullptr};
    if (int err = start_external_transfer(x.view(), formatted_output)) return err;
    unit *up = x.up = ctl->up;
    if (!(ctl->flags & IO_ROUND_MASK)) ctl->flags |= round_code(ctl->flags, up) << IO_ROUND_SHIFT;
    if (!(ctl->flags & IO_NO_PARSED_FORMAT)) {
        if (!format_block_ok(ctl->format)) return x.fail(1067);
        ctl->format_pc = static_cast<uint32_t>(ctl->format->first_op);
    }
    ctl->radix = 10;
    ctl->scale = 0;
    ctl->sign_mode = 2;
    up->record_start = up->field_ptr = up->tab_limit = up->record_end = up->data_end;
    return 0;
}

KRM_API int __f90_sfw_advance(io_control_formatted_write *ctl, const char *text, int32_t length) {
    sequential_write x{ctl, ctl->up};
    if (!text) return x.fail(1061);
    if (spells_keyword(text, length, "NO")) {
        ctl->flags |= IO_NO_ADVANCE_WRITE;
        return 0;
    }
    if (spells_keyword(text, length, "YES")) {
        ctl->flags &= ~IO_NO_ADVANCE_WRITE;
        return 0;
    }
    return x.fail(1062);
}

KRM_API int __f90_esfw(io_control_formatted_write *ctl) {
    sequential_write x{ctl, ctl->up};
    unit *up = x.up;
    if (up->flags & UNIT_NESTED) {
        // The record under construction is dropped.
        up->data_end = up->tab_limit = up->record_end = up->field_ptr = up->record_start;
        return x.fail(1024);
    }
    if (!(ctl->flags & IO_NO_PARSED_FORMAT)) {
        bool keep_open = false;
        if (int err = fmtw::walk_to_end(x, &keep_open)) return err;
        if (keep_open || (ctl->flags & IO_NO_ADVANCE_WRITE)) {
            // The record stays open for the next statement.
            up->record_pos += up->record_end - up->record_start;
            up->data_ptr = up->data_end = up->record_end;
        } else if (int err = x.end_record(1)) {
            return err;
        }
        if (up->field_ptr < up->record_start) up->field_ptr = up->record_start;
    }
    return finish_external_transfer(x.view());
}

}  // extern "C"
