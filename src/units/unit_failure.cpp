#include "units/unit_failure.h"

#include <errno.h>
#include <stdlib.h>

#include "frame/report.h"
#include "krm/errors.h"
#include "units/units.h"

namespace krm {

void report_and_abort(int number, const stmt_location *loc, const report_lines &lines) {
    __f90_banner();
    __f90_write_message(number);
    __f90_write_loc(loc);
    if (lines.unit_line) __f90_write_unit_number(lines.unit_number);
    __f90_write_filename(lines.file);
    if (lines.bytes_line) __f90_write_bytes_requested(lines.bytes);
    abort();
}

void release_report_and_abort(int number, unit *up, int64_t unit_number, const stmt_location *loc) {
    char name[filename_buffer_size];
    report_lines lines;
    lines.unit_number = unit_number;
    lines.file = __f90_copy_filename(up, name);
    __f90_release_unit(up);
    report_and_abort(number, loc, lines);
}

void report_no_memory(uint32_t bytes, const stmt_location *loc, const int64_t *unit_number) {
    report_lines lines;
    lines.unit_line = unit_number != nullptr;
    if (unit_number) lines.unit_number = *unit_number;
    lines.bytes_line = true;
    lines.bytes = bytes;
    report_and_abort(ENOMEM, loc, lines);
}

}  // namespace krm

extern "C" KRM_API void __f90_system_error_a(int32_t number, unit *up, int64_t unit_number,
                                             const stmt_location *loc) {
    krm::release_report_and_abort(number, up, unit_number, loc);
}
