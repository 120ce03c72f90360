// The parsers of OPEN's and CLOSE's run-time character specifiers. Each
// clears its field of the flags word and sets it from the value; a null
// value and a word that is not accepted are errors of their own.

#include <stddef.h>

#include "krm/file_statements.h"
#include "units/keyword.h"
#include "units/unit_failure.h"
#include "units/units.h"

namespace {

struct specifier {
    const char *const *words;  // null-terminated
    const uint32_t *values;    // one per word
    uint32_t mask;
    int unassociated;          // error for a null value
    int not_accepted;          // error for any other word
};

int fail(const uint32_t *flags, int number, const stmt_location *loc) {
    if (*flags & OPEN_RETURNING) return number;
    krm::report_lines lines;
    lines.unit_line = false;
    krm::report_and_abort(number, loc, lines);
}

int parse(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc, const specifier &s) {
    krm::ensure_initio(*flags & OPEN_RETURNING, loc);
    *flags &= ~s.mask;
    if (!text) return fail(flags, s.unassociated, loc);
    int k = krm::match_keyword(text, len, s.words);
    if (k < 0) return fail(flags, s.not_accepted, loc);
    *flags |= s.values[k];
    return 0;
}

#define KRM_SPECIFIER(name, mask, unassociated, not_accepted, ...)                            \
    const char *const name##_words[] = {__VA_ARGS__, nullptr};                                \
    const specifier name = {name##_words, name##_values, mask, unassociated, not_accepted}

const uint32_t access_values[] = {OPEN_ACCESS_SEQUENTIAL, OPEN_ACCESS_DIRECT, OPEN_ACCESS_STREAM};
KRM_SPECIFIER(access, OPEN_ACCESS_MASK, 1111, 1131, "SEQUENTIAL", "DIRECT", "STREAM");
const uint32_t access_f77_values[] = {OPEN_ACCESS_SEQUENTIAL, OPEN_ACCESS_DIRECT, OPEN_ACCESS_STREAM,
                                      OPEN_ACCESS_APPEND};
KRM_SPECIFIER(access_f77, OPEN_ACCESS_MASK, 1111, 1131, "SEQUENTIAL", "DIRECT", "STREAM", "APPEND");
const uint32_t action_values[] = {OPEN_ACTION_READ, OPEN_ACTION_WRITE, OPEN_ACTION_READWRITE};
KRM_SPECIFIER(action, OPEN_ACTION_MASK, 1112, 1132, "READ", "WRITE", "READWRITE");
const uint32_t blank_values[] = {0, OPEN_BLANK_ZERO};
KRM_SPECIFIER(blank, OPEN_BLANK_ZERO, 1114, 1133, "NULL", "ZERO");
const uint32_t delim_values[] = {OPEN_DELIM_APOSTROPHE, OPEN_DELIM_QUOTE, 0};
KRM_SPECIFIER(delim, OPEN_DELIM_MASK, 1115, 1134, "APOSTROPHE", "QUOTE", "NONE");
const uint32_t form_values[] = {OPEN_FORM_FORMATTED, OPEN_FORM_UNFORMATTED, OPEN_FORM_BINARY};
KRM_SPECIFIER(form, OPEN_FORM_MASK, 1119, 1135, "FORMATTED", "UNFORMATTED", "BINARY");
const uint32_t form_f77_values[] = {OPEN_FORM_PRINT, OPEN_FORM_FORMATTED, OPEN_FORM_UNFORMATTED,
                                    OPEN_FORM_BINARY};
KRM_SPECIFIER(form_f77, OPEN_FORM_MASK, 1119, 1135, "PRINT", "FORMATTED", "UNFORMATTED", "BINARY");
const uint32_t pad_values[] = {0, OPEN_PAD_NO};
KRM_SPECIFIER(pad, OPEN_PAD_NO, 1122, 1136, "YES", "NO");
const uint32_t position_values[] = {0, OPEN_POSITION_REWIND, OPEN_POSITION_APPEND};
KRM_SPECIFIER(position, OPEN_POSITION_MASK, 1123, 1137, "ASIS", "REWIND", "APPEND");
const uint32_t status_values[] = {OPEN_STATUS_OLD, OPEN_STATUS_NEW, OPEN_STATUS_UNKNOWN, OPEN_STATUS_REPLACE,
                                  OPEN_STATUS_SCRATCH};
KRM_SPECIFIER(status, OPEN_STATUS_MASK, 1127, 1140, "OLD", "NEW", "UNKNOWN", "REPLACE", "SCRATCH");
const uint32_t asynchronous_values[] = {OPEN_ASYNCHRONOUS, 0};
KRM_SPECIFIER(asynchronous, OPEN_ASYNCHRONOUS, 1172, 1177, "YES", "NO");
const uint32_t decimal_values[] = {OPEN_DECIMAL_POINT, OPEN_DECIMAL_COMMA};
KRM_SPECIFIER(decimal, OPEN_DECIMAL_MASK, 1173, 1179, "POINT", "COMMA");
const uint32_t round_mode_values[] = {OPEN_ROUND_UP,      OPEN_ROUND_DOWN,       OPEN_ROUND_ZERO,
                                 OPEN_ROUND_NEAREST, OPEN_ROUND_COMPATIBLE, OPEN_ROUND_PROCESSOR_DEFINED};
KRM_SPECIFIER(round_mode, OPEN_ROUND_MASK, 1175, 1178, "UP", "DOWN", "ZERO", "NEAREST", "COMPATIBLE",
              "PROCESSOR_DEFINED");
const uint32_t close_status_values[] = {CLOSE_STATUS_KEEP, CLOSE_STATUS_DELETE};
KRM_SPECIFIER(close_status, CLOSE_STATUS_MASK, 1127, 1142, "KEEP", "DELETE");

#undef KRM_SPECIFIER


const char *skip_blanks(const char *p, const char *end) {
    while (p < end && *p == ' ') ++p;
    return p;
}

// BUFFER = [sign] digits, blanks allowed between the parts and inside the
// digits. Returns 0, 1155 for a value beyond 63 bits, 1189 for bad syntax.
int parse_buffer_size(const char *p, const char *end, int64_t *value) {
    p = skip_blanks(p, end);
    if (p == end || *p != '=') return 1189;
    p = skip_blanks(p + 1, end);
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-')) {
        negative = *p == '-';
        p = skip_blanks(p + 1, end);
    }
    uint64_t v = 0;
    int digits = 0;
    for (; p < end; ++p) {
        if (*p == ' ') continue;
        if (*p < '0' || *p > '9') return 1189;
        // Tested before the step, so that the sum cannot wrap.
        const uint64_t digit = static_cast<uint64_t>(*p - '0');
        if (v > (static_cast<uint64_t>(INT64_MAX) - digit) / 10) return 1155;
        v = v * 10 + digit;
        ++digits;
    }
    if (digits == 0) return 1189;
    *value = negative ? -static_cast<int64_t>(v) : static_cast<int64_t>(v);
    return 0;
}

int parse_fileopt(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc, int64_t *size) {
    krm::ensure_initio(*flags & OPEN_RETURNING, loc);
    *flags &= ~OPEN_FILEOPT_MASK;
    if (!text) return fail(flags, 1188, loc);
    if (krm::spells_keyword(text, len, "EOF")) {
        *flags |= OPEN_FILEOPT_EOF;
        return 0;
    }
    if (krm::spells_keyword(text, len, "NOPAD")) {
        *flags |= OPEN_FILEOPT_NOPAD;
        return 0;
    }
    const char *end = text + (len > 0 ? len : 0);
    if (end - text < 6 || !krm::spells_keyword(text, 6, "BUFFER")) return fail(flags, 1189, loc);
    int64_t value = 0;
    if (int err = parse_buffer_size(text + 6, end, &value)) return fail(flags, err, loc);
    if (size) {
        *size = value;
        *flags |= OPEN_FILEOPT_BUFFER;
    }
    return 0;
}

}  // namespace

extern "C" {

#define KRM_PARSER(entry, spec)                                                                      \
    KRM_API int entry(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc) { \
        return parse(flags, text, len, loc, spec);                                                   \
    }

KRM_PARSER(__f90_open_access, access)
KRM_PARSER(__f90_open_access_f77compat, access_f77)
KRM_PARSER(__f90_open_action, action)
KRM_PARSER(__f90_open_blank, blank)
KRM_PARSER(__f90_open_delim, delim)
KRM_PARSER(__f90_open_form, form)
KRM_PARSER(__f90_open_form_f77compat, form_f77)
KRM_PARSER(__f90_open_pad, pad)
KRM_PARSER(__f90_open_position, position)
KRM_PARSER(__f90_open_status, status)
KRM_PARSER(__f90_parse_asynchronous, asynchronous)
KRM_PARSER(__f90_parse_decimal, decimal)
KRM_PARSER(__f90_parse_round, round_mode)
KRM_PARSER(__f90_close_status, close_status)

#undef KRM_PARSER

KRM_API int __f90_open_asynchronous(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc) {
    return __f90_parse_asynchronous(flags, text, len, loc);
}
KRM_API int __f90_open_decimal(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc) {
    return __f90_parse_decimal(flags, text, len, loc);
}
KRM_API int __f90_open_round(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc) {
    return __f90_parse_round(flags, text, len, loc);
}

KRM_API int __f90_parse_fileopt(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc,
                                int64_t *buffer_size) {
    return parse_fileopt(flags, text, len, loc, buffer_size);
}
KRM_API int __f90_open_fileopt(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc) {
    return parse_fileopt(flags, text, len, loc, nullptr);
}
KRM_API int __f95_open_fileopt(uint32_t *flags, const char *text, int32_t len, const stmt_location *loc,
                               int64_t *buffer_size) {
    return parse_fileopt(flags, text, len, loc, buffer_size);
}

}  // extern "C"
