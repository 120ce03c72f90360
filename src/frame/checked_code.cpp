// Reports of a program compiled with run-time checks: a subscript or
// substring out of range, arrays that do not conform, a source too small for
// RESHAPE, a null pointer or a missing optional argument. Each names the
// line and column, and aborts.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frame/message_tables.h"
#include "frame/messages.h"
#include "frame/report.h"
#include "krm/program.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {

constexpr int loc_line_column = 37;

void write_location(int32_t line, int32_t column, const char *file) {
    fprintf(stderr, __f90_lfmt(loc_line_column), static_cast<long>(line), static_cast<long>(column),
            file ? file : "");
}

// "Subscript out of range." and "Substring out of range." have no line end
// of their own: the location follows on the same line.
void write_message_inline(int number) {
    const char *row = __f90_mfmt(krm::misc_row::error_with_text);
    char format[128];
    size_t n = strlen(row);
    if (n >= sizeof format) n = sizeof format - 1;
    memcpy(format, row, n);
    if (n > 0 && format[n - 1] == '\n') --n;
    format[n] = '\0';
    const char *text = __f90_rmsg(number);
    fprintf(stderr, format, number, text ? text : "");
}

const char *fmt(int row) { return __f90_mfmt(row); }

}  // namespace

extern "C" {

KRM_API char *ll2str(int64_t value, char *buffer) {
    if (value == INT64_MIN) {
        memcpy(buffer, "-9223372036854775808", 21);
        return buffer;
    }
    char digits[21];
    int n = 0;
    uint64_t v = value < 0 ? static_cast<uint64_t>(-value) : static_cast<uint64_t>(value);
    do {
        lldiv_t d = lldiv(static_cast<long long>(v), 10);
        digits[n++] = static_cast<char>('0' + d.rem);
        v = static_cast<uint64_t>(d.quot);
    } while (v != 0);
    char *p = buffer;
    if (value < 0) *p++ = '-';
    while (n > 0) *p++ = digits[--n];
    *p = '\0';
    return buffer;
}

KRM_API void __f95_missing_optional_err(const char *name, int32_t line, int32_t column, const char *file) {
    __f90_banner();
    fprintf(stderr, fmt(29), name);
    write_location(line, column, file);
    abort();
}

KRM_API void __f95_null_pointer_err(const char *name, int32_t kind, int32_t line, int32_t column,
                                    const char *file) {
    __f90_banner();
    fprintf(stderr, fmt(kind == 1 ? 28 : 27), name);
    write_location(line, column, file);
    abort();
}

KRM_API void __f90_shape_err(int32_t dim, int32_t found, int32_t expected, int32_t line, int32_t column,
                             const char *file) {
    __f90_banner();
    fprintf(stderr, fmt(20), static_cast<long>(dim), static_cast<long>(found), static_cast<long>(expected));
    write_location(line, column, file);
    abort();
}

KRM_API void __f90_shape_err_long(int32_t dim, int64_t found, int64_t expected, int32_t line,
                                  int32_t column, const char *file) {
    __f90_banner();
    fprintf(stderr, fmt(20), static_cast<long>(dim), static_cast<long>(found), static_cast<long>(expected));
    write_location(line, column, file);
    abort();
}

KRM_API void __f90_shape_arguments_err(int32_t dim, int32_t found, int32_t expected, int32_t line,
                                       int32_t column, const char *file, const char *function) {
    __f90_banner();
    fprintf(stderr, fmt(21), function, static_cast<long>(dim), static_cast<long>(found),
            static_cast<long>(expected));
    write_location(line, column, file);
    abort();
}

KRM_API void __f90_reshape_err(int32_t has, int32_t needs, int32_t line, int32_t column, const char *file) {
    __f90_banner();
    fprintf(stderr, fmt(26), static_cast<long>(has), static_cast<long>(needs));
    write_location(line, column, file);
    abort();
}

KRM_API void __f90_reshape_err_long(int64_t has, int64_t needs, int32_t line, int32_t column,
                                    const char *file) {
    __f90_banner();
    fprintf(stderr, fmt(26), static_cast<long>(has), static_cast<long>(needs));
    write_location(line, column, file);
    abort();
}

KRM_API void __f90_cb_error(int32_t subscript, int32_t value, const char *array, int32_t line,
                            int32_t column, const char *file) {
    __f90_banner();
    write_message_inline(1037);
    write_location(line, column, file);
    fprintf(stderr, fmt(14), static_cast<long>(subscript), static_cast<long>(value), array);
    abort();
}

KRM_API void __f90_cb_err_str(int32_t which_end, int32_t value, const char *name, int32_t line,
                              int32_t column, const char *file) {
    __f90_banner();
    write_message_inline(1038);
    write_location(line, column, file);
    fprintf(stderr, fmt(which_end == 2 ? 15 : 16), static_cast<long>(value), name);
    abort();
}

KRM_API void __f90_cb_error_long(int32_t subscript, int64_t value, const char *array, int32_t line,
                                 int32_t column, const char *file) {
    char text[21];
    __f90_banner();
    write_message_inline(1037);
    write_location(line, column, file);
    fprintf(stderr, fmt(17), static_cast<long>(subscript), ll2str(value, text), array);
    abort();
}

KRM_API void __f90_cb_err_str_long(int32_t which_end, int64_t value, const char *name, int32_t line,
                                   int32_t column, const char *file) {
    char text[21];
    __f90_banner();
    write_message_inline(1038);
    write_location(line, column, file);
    fprintf(stderr, fmt(which_end == 2 ? 18 : 19), ll2str(value, text), name);
    abort();
}

KRM_API int __f90_run_time(const char *a, const char *b, int32_t value) {
    fprintf(stderr, "%s: ", a);
    fprintf(stderr, "%s ", b);
    fprintf(stderr, "0x%x = %d", static_cast<unsigned>(value), static_cast<int>(value));
    return fprintf(stderr, "\n");
}

}  // extern "C"
