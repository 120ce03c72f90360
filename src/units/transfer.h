// The start and end that every data transfer statement on an external unit
// shares, and the one way a statement fails. Each family of statements keeps
// its own io_control layout and hands these functions a view of the words
// they need.
#pragma once

#include <stdint.h>

#include "krm/io_flags.h"
#include "krm/stmt_location.h"
#include "units/unit.h"

namespace krm {

struct transfer {
    uint32_t *flags;
    const stmt_location *loc;
    int64_t *unit_no;
    unit **up;
    void **format = nullptr;  // families with a format block: its word

    bool returning() const { return (*flags & IO_RETURNING) != 0; }
};

enum class io_direction { input, output };
enum class io_form { formatted, unformatted };
// How big the unit buffer is made when the unit has none.
enum class buffer_sizing {
    list_output,       // block size, doubled on a regular file
    formatted_output,  // the file's block size asked afresh, at least 256
    input,             // block size
};

struct transfer_kind {
    io_direction direction;
    io_form form;
    buffer_sizing sizing;
};

// The lines a failed statement's report has beyond banner, message and
// location.
struct failure_lines {
    bool unit_line = true;
    bool file_line = true;
    bool bytes_line = false;
    uint32_t bytes = 0;
};

// A failed statement whose unit is held: frees an owned format; with
// IO_RETURNING releases the unit and returns `number`, otherwise copies the
// file name, releases, reports and aborts.
int fail_statement(const transfer &t, int number, const failure_lines &lines = failure_lines());

// The same for a statement whose unit is not held (never found, or already
// released by the operation that failed).
int fail_unheld(const transfer &t, int number, const failure_lines &lines = failure_lines());

// Finds, holds, connects and checks the unit, turns it to the statement's
// direction and gives it a buffer. Returns 0 or the statement's error.
int start_external_transfer(const transfer &t, const transfer_kind &kind);

// Frees an owned format, passes the bytes on where the unit wants them at
// every statement end, does a delayed cut and releases the unit.
int finish_external_transfer(const transfer &t);

// Frees the statement's format block if it owns one.
void free_owned_format(const transfer &t);

}  // namespace krm
