#include "format/format_source.h"

#include <stdint.h>

namespace krm::fmt {

size_t source_bytes(int32_t rank) {
    size_t dims = rank > 0 ? static_cast<size_t>(rank) : 0;
    if (dims > (SIZE_MAX - sizeof(format_source)) / (4 * sizeof(intptr_t))) return 0;
    return sizeof(format_source) + 4 * sizeof(intptr_t) * dims;
}

const void *source_base(const void *source, int32_t rank) {
    if (!source || rank <= 0) return source;
    return reinterpret_cast<const void *const *>(source)[0];
}

void open_source(format_source *s, const void *source, int32_t length, int32_t rank) {
    s->index = 0;
    s->length = length;
    s->rank = rank > 0 ? rank : 0;
    s->ptr = static_cast<const unsigned char *>(source_base(source, rank));
    if (s->rank == 0) return;
    // The descriptor: base address, then the extents, then the strides, all
    // machine words.
    const intptr_t *desc = static_cast<const intptr_t *>(source);
    bool empty = false;
    for (intptr_t k = 0; k < s->rank; ++k) {
        s->extents()[k] = desc[1 + k];
        s->strides()[k] = desc[1 + s->rank + k];
        s->counters()[k] = 0;
        s->bases()[k] = reinterpret_cast<uintptr_t>(s->ptr);
        if (desc[1 + k] < 1) empty = true;
    }
    // An array without elements holds no text at all.
    if (empty) s->rank = ended_mark;
}

int get_c(format_source *s) {
    if (s->rank == ended_mark) return -1;
    if (s->index < s->length) return s->ptr[s->index++];
    // An element without characters would deliver a byte it does not have.
    if (s->rank == 0 || s->length < 1) {
        s->rank = ended_mark;
        return -1;
    }
    // Odometer step: the lowest dimension that does not run over takes one
    // stride from its saved base; it and all lower dimensions start there.
    intptr_t *extents = s->extents();
    intptr_t *strides = s->strides();
    intptr_t *counters = s->counters();
    uintptr_t *bases = s->bases();
    for (intptr_t k = 0; k < s->rank; ++k) {
        if (++counters[k] < extents[k]) {
            uintptr_t next = bases[k] + static_cast<uintptr_t>(strides[k]);
            for (intptr_t j = 0; j <= k; ++j) bases[j] = next;
            s->ptr = reinterpret_cast<const unsigned char *>(next);
            s->index = 1;
            return s->ptr[0];
        }
        counters[k] = 0;
    }
    s->rank = ended_mark;
    return -1;
}

}  // namespace krm::fmt
