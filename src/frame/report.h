// The lines of a report on standard error. Each writer prints one kind of
// line and does not care about order; the failing code calls them in the
// order its report needs, then aborts.
#pragma once

#include <stdint.h>

#include "krm/stmt_location.h"

struct unit;

extern "C" {
void __f90_banner(void);
void __f90_write_message(int number);
void __f90_write_system_message(int error);
void __f90_write_loc(const stmt_location *loc);
void __f90_write_unit_number(int64_t unit_number);
void __f90_write_filename(const char *name);
void __f90_write_record_number(int64_t record);
void __f90_write_status(const char *status);
void __f90_write_bytes_requested(uint32_t bytes);
void __f90_write_byte_discrepancy(uint32_t expected, uint32_t got);
void __f90_write_eof(void);
void __f90_write_eor(void);
void __f90_write_bad_format(int kind, const char *text, const char *mark);

// Copies the unit's file name, cut at 1024 bytes, into buf (1025 bytes) and
// returns buf; the default records give their stream's name, others without
// a name give null.
char *__f90_copy_filename(const struct unit *up, char *buf);

// Writes what unit buffers owe to their files and removes scratch files;
// skips units other threads hold. Returns the last fflush's result.
int __f90_cleanup(void);
// The same, leaving scratch files alone.
int __f90_flush_all(void);
}

namespace krm {

constexpr int filename_buffer_size = 1025;

// The text of an error number: strerror below 1000, the library's table
// below 2000, the POSIX interface's above. Null when the row has no text.
const char *error_text(int number);

}  // namespace krm
