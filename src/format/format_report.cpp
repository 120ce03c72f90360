// How a compilation fails: the number back to the statement, or the report
// that shows where in the text the reader stopped.
#include <stdint.h>
#include <stdlib.h>

#include "format/format_compiler.h"
#include "frame/report.h"

namespace krm::fmt {

namespace {

// The text line shows at most this many of the characters already read,
// and then what the source holds behind them, up to shown_total in all.
constexpr size_t shown_read = 16;
constexpr size_t shown_total = 31;

// Bytes that would upset a terminal or end the line early.
char printable(int c) { return c == 0 || c == 0x90 ? '?' : static_cast<char>(c); }

void write_tail(compile_record &cr) {
    if (cr.src->length < 1) {
        __f90_write_bad_format(1, "", "");
        return;
    }
    if (cr.src->rank == ended_mark) {
        __f90_write_bad_format(3, "", "");
        return;
    }
    char shown[shown_total + 1];
    char mark[shown_read + 1];
    size_t n = cr.text_len < shown_read ? cr.text_len : shown_read;
    size_t len = 0;
    for (size_t i = cr.text_len - n; i < cr.text_len; ++i)
        shown[len++] = printable(static_cast<unsigned char>(cr.text[i]));
    while (len < shown_total) {
        int c = get_c(cr.src);
        if (c < 0) break;
        shown[len++] = printable(c);
    }
    shown[len] = '\0';
    // The caret stands under the last character read: the offending one.
    size_t blanks = n > 0 ? n - 1 : 0;
    for (size_t i = 0; i < blanks; ++i) mark[i] = ' ';
    mark[blanks] = '\0';
    __f90_write_bad_format(2, shown, mark);
}

}  // namespace

int bad_format(compile_record &cr) {
    if (cr.returning) return err_format;
    __f90_banner();
    __f90_write_message(err_format);
    __f90_write_loc(cr.loc);
    write_tail(cr);
    free_record(cr);
    abort();
}

int out_of_memory(compile_record &cr, size_t bytes) {
    if (cr.returning) return err_no_memory;
    __f90_banner();
    __f90_write_message(err_no_memory);
    __f90_write_loc(cr.loc);
    __f90_write_bytes_requested(bytes > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(bytes));
    free_record(cr);
    abort();
}

void report_unassociated(const stmt_location *loc) {
    __f90_banner();
    __f90_write_message(err_no_format);
    __f90_write_loc(loc);
    abort();
}

}  // namespace krm::fmt
