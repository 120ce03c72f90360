#include "frame/report.h"

#include <stdio.h>
#include <string.h>

#include "frame/message_tables.h"
#include "frame/messages.h"

// Report lines come from the message tables (or a catalogue), so the format
// strings are not literals.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

namespace krm {

const char *error_text(int number) {
    if (number < 1000) return strerror(number);
    if (number < 2000) return __f90_rmsg(number);
    return __f90_pmsg(number);
}

namespace {

void print_row(int row) {
    const char *fmt = __f90_mfmt(row);
    if (fmt) fputs(fmt, stderr);
}

}  // namespace
}  // namespace krm

using namespace krm;

extern "C" {

void __f90_banner(void) {
    __f90_cleanup();
    print_row(misc_row::banner);
}

static void write_number_and_text(int number, const char *text) {
    if (text && *text)
        fprintf(stderr, __f90_mfmt(misc_row::error_with_text), number, text);
    else
        fprintf(stderr, __f90_mfmt(misc_row::error_number), number);
    fflush(stderr);
}

void __f90_write_message(int number) { write_number_and_text(number, error_text(number)); }

void __f90_write_system_message(int error) { write_number_and_text(error, strerror(error)); }

void __f90_write_loc(const stmt_location *loc) {
    if (!loc) return;
    const char *fmt = __f90_lfmt(loc->kind);
    if (!fmt) return;
    if (loc->kind >= 30 && loc->kind <= 36)
        fputs(fmt, stderr);
    else
        fprintf(stderr, fmt, static_cast<long>(loc->line), loc->file ? loc->file : "");
    fflush(stderr);
}

void __f90_write_unit_number(int64_t unit_number) {
    if (unit_number < 0)
        print_row(misc_row::unit_star);
    else
        fprintf(stderr, __f90_mfmt(misc_row::unit_number), static_cast<long long>(unit_number));
    fflush(stderr);
}

void __f90_write_filename(const char *name) {
    if (!name) return;
    fprintf(stderr, __f90_mfmt(misc_row::file), name);
    fflush(stderr);
}

void __f90_write_record_number(int64_t record) {
    fprintf(stderr, __f90_mfmt(misc_row::record_number), static_cast<long long>(record));
    fflush(stderr);
}

void __f90_write_status(const char *status) {
    fprintf(stderr, __f90_mfmt(misc_row::status), status ? status : "");
    fflush(stderr);
}

void __f90_write_bytes_requested(uint32_t bytes) {
    fprintf(stderr, __f90_mfmt(misc_row::bytes_requested), static_cast<unsigned long long>(bytes));
    fflush(stderr);
}

void __f90_write_byte_discrepancy(uint32_t expected, uint32_t got) {
    fprintf(stderr, __f90_mfmt(misc_row::byte_discrepancy),
            static_cast<unsigned long long>(expected), static_cast<unsigned long long>(got));
    fflush(stderr);
}

void __f90_write_eof(void) {
    print_row(misc_row::end_of_file);
    fflush(stderr);
}

void __f90_write_eor(void) {
    print_row(misc_row::end_of_record);
    fflush(stderr);
}

void __f90_write_bad_format(int kind, const char *text, const char *mark) {
    if (kind == 1) {
        print_row(misc_row::format_empty);
    } else if (kind == 2) {
        fprintf(stderr, __f90_mfmt(misc_row::format_string), text ? text : "");
        fprintf(stderr, __f90_mfmt(misc_row::format_mark), mark ? mark : "");
    } else {
        print_row(misc_row::format_no_paren);
    }
    fflush(stderr);
}

}  // extern "C"
