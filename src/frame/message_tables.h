// The built-in texts of every message and report line.
#pragma once

extern "C" {
extern const char *const __f90_runtime_error[222];
extern const char *const __f90_posix9_error[24];
extern const char *const __f90_misc_format[30];
extern const char *const __f90_loc_format[61];
extern const char *const __f90_ps_format[8];
}

// Rows of __f90_misc_format, by what they say.
namespace krm::misc_row {
constexpr int banner = 1;
constexpr int end_of_file = 2;
constexpr int end_of_record = 3;
constexpr int error_number = 4;
constexpr int error_with_text = 5;
constexpr int bytes_requested = 6;
constexpr int byte_discrepancy = 7;
constexpr int unit_number = 8;
constexpr int unit_star = 9;
constexpr int record_number = 10;
constexpr int status = 11;
constexpr int file = 12;
constexpr int unknown_error = 13;
constexpr int format_empty = 22;
constexpr int format_string = 23;
constexpr int format_mark = 24;
constexpr int format_no_paren = 25;
}  // namespace krm::misc_row
