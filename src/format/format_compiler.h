// The compiler of formats known only at run time: one pass over the text,
// with one character of lookahead, straight into the word program of a
// parsed_format.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "format/format_source.h"
#include "krm/format.h"
#include "krm/stmt_location.h"

namespace krm::fmt {

// A group whose ")" has not been read yet.
struct open_group {
    int32_t repeat_at;  // index of its code 2, or -1 for a group without a repeat count
    int32_t slot;       // its counter slot when repeated
};

// The state of one compilation.
struct compile_record {
    bool compat;     // the older dialect
    bool returning;  // failures return their number instead of a report
    const stmt_location *loc;
    format_source *src;

    char *text;  // every character read so far, the leading blanks excepted
    size_t text_len, text_cap;

    int32_t *ops;  // the block under construction, header words included
    size_t ops_len, ops_cap;

    int32_t level;    // repeated items open around the current place
    int32_t deepest;  // the counter slots needed
    int32_t reversion;

    int look;  // a character read but not yet acted on, or no_look

    // Groups open around the current place: nesting costs heap, not stack,
    // however deep a text nests them.
    open_group *groups;
    size_t groups_len, groups_cap;
};

constexpr int no_look = -2;

// Error numbers of this compiler.
constexpr int err_no_memory = 12;
constexpr int err_format = 1000;
constexpr int err_no_format = 1118;

// The whole compilation behind both entries.
int32_t compile_format(parsed_format **format, int32_t **counters, bool returning,
                       const stmt_location *loc, const void *source, int32_t length,
                       int32_t rank, bool compat);

// The end of a compilation that failed. In return mode they give the number
// back and the caller frees the record; otherwise they write the report,
// free the record and abort.
int bad_format(compile_record &cr);
int out_of_memory(compile_record &cr, size_t bytes);
[[noreturn]] void report_unassociated(const stmt_location *loc);

// Frees whatever the record holds.
void free_record(compile_record &cr);

}  // namespace krm::fmt
