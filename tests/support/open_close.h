// OPEN and CLOSE statements built as compiled code builds them: a flags word,
// the parsers for run-time specifier values, then the statement's one call.
#pragma once

#include <stdint.h>

#include <string>

#include "krm/open_close.h"

namespace krm_test {

extern const stmt_location kOpenAt;   // OPEN at line 30 of "t.f90"
extern const stmt_location kCloseAt;  // CLOSE at line 40 of "t.f90"

// OPEN (n, FILE=name, ...): OPEN_FILE is added to flags.
int open_file(int64_t n, const std::string &name, uint32_t flags = OPEN_RETURNING, int64_t recl = 0,
              int64_t buffer_size = 0);

// OPEN (n, ...) without FILE=.
int open_unit(int64_t n, uint32_t flags = OPEN_RETURNING, int64_t recl = 0, int64_t buffer_size = 0);

// CLOSE (n, ...).
int close_unit(int64_t n, uint32_t flags = CLOSE_RETURNING);

// Is there a record for unit n in the unit tables?
bool in_tables(int64_t n);

}  // namespace krm_test
