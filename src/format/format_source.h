// The text of a format known only at run time: a character variable, or a
// character array whose elements are read one after another as one text.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace krm::fmt {

// One allocation: these four words, then four arrays of `rank` words each
// (extents, byte strides, running counters, saved base addresses).
struct format_source {
    const unsigned char *ptr;  // the current element
    intptr_t index;            // next byte inside it
    intptr_t length;           // bytes of the text, or of one element
    intptr_t rank;             // 0 for a variable; ended_mark once the text has run out

    intptr_t *extents() { return reinterpret_cast<intptr_t *>(this + 1); }
    intptr_t *strides() { return extents() + rank; }
    intptr_t *counters() { return extents() + 2 * rank; }
    uintptr_t *bases() { return reinterpret_cast<uintptr_t *>(extents() + 3 * rank); }
};

// Set in `rank` when the text ended before the format did.
constexpr intptr_t ended_mark = -1;

// Bytes of the state for a source of `rank`, or 0 when that does not fit in
// the address space.
size_t source_bytes(int32_t rank);

// The address of the first character: the text itself for rank 0, the first
// word of the array's descriptor otherwise. Null for a null source.
const void *source_base(const void *source, int32_t rank);

// Fills the state in `s` (of source_bytes(rank) bytes) for reading from the
// first character. `source` and its base are not null.
void open_source(format_source *s, const void *source, int32_t length, int32_t rank);

// The next character (0 to 255), or -1 at the end of the text; after that,
// -1 again. Array elements follow one another in array element order.
int get_c(format_source *s);

}  // namespace krm::fmt
