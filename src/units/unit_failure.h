// Reports of the unit operations' abort forms.
#pragma once

#include <stdint.h>

#include "krm/stmt_location.h"

struct unit;

namespace krm {

// Which lines a report has after the message and the location.
struct report_lines {
    bool unit_line = true;          // " Unit:  n", or " Unit:  *" for a negative number
    int64_t unit_number = -1;
    const char *file = nullptr;     // " File:  name" when not null
    bool bytes_line = false;        // " Bytes requested:  n"
    uint32_t bytes = 0;
};

// Banner, message, location, then the lines asked for; then abort().
[[noreturn]] void report_and_abort(int number, const stmt_location *loc, const report_lines &lines);

// The report of a failure on a held unit: copies the file name, releases the
// unit, then reports error `number` with unit and file lines and aborts.
[[noreturn]] void release_report_and_abort(int number, unit *up, int64_t unit_number,
                                           const stmt_location *loc);

// Error 12: no memory for `bytes`.
[[noreturn]] void report_no_memory(uint32_t bytes, const stmt_location *loc, const int64_t *unit_number);

}  // namespace krm
