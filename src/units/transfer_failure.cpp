#include <stdlib.h>

#include "frame/report.h"
#include "units/transfer.h"
#include "units/units.h"

namespace krm {

void free_owned_format(const transfer &t) {
    if (t.format && (*t.flags & IO_OWNED_FORMAT) && *t.format) {
        free(*t.format);
        *t.format = nullptr;
    }
}

namespace {

[[noreturn]] void report(const transfer &t, int number, const failure_lines &lines, const char *file) {
    __f90_banner();
    __f90_write_message(number);
    __f90_write_loc(t.loc);
    if (lines.unit_line) __f90_write_unit_number(*t.unit_no);
    if (lines.file_line) __f90_write_filename(file);
    if (lines.bytes_line) __f90_write_bytes_requested(lines.bytes);
    abort();
}

}  // namespace

int fail_statement(const transfer &t, int number, const failure_lines &lines) {
    free_owned_format(t);
    unit *up = *t.up;
    if (t.returning()) {
        __f90_release_unit(up);
        return number;
    }
    char name[filename_buffer_size];
    const char *file = lines.file_line ? __f90_copy_filename(up, name) : nullptr;
    __f90_release_unit(up);
    report(t, number, lines, file);
}

int fail_unheld(const transfer &t, int number, const failure_lines &lines) {
    free_owned_format(t);
    if (t.returning()) return number;
    failure_lines no_file = lines;
    no_file.file_line = false;
    report(t, number, no_file, nullptr);
}

}  // namespace krm
