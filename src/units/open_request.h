// One OPEN statement on its way through the library.
#pragma once

#include <stdint.h>

#include "krm/file_statements.h"
#include "units/unit.h"

namespace krm {

struct open_request {
    uint32_t flags;          // the open_flags word
    int64_t unit_number;
    char *name = nullptr;    // heap copy of FILE= or fort.N; owned until stored in the unit
    int64_t recl;
    int64_t buffer_size;     // FILEOPT='BUFFER=N'
    const stmt_location *loc;
    unit *up = nullptr;      // held from the lookup to the release

    bool returning() const { return (flags & OPEN_RETURNING) != 0; }
    bool dialect() const { return (flags & (OPEN_F77COMPAT | OPEN_F77_READ_COMPAT)) != 0; }
    uint32_t action() const { return flags & OPEN_ACTION_MASK; }
    uint32_t status() const { return flags & OPEN_STATUS_MASK; }
    uint32_t access() const { return flags & OPEN_ACCESS_MASK; }
    uint32_t form() const { return flags & OPEN_FORM_MASK; }
};

// The end of a failed OPEN: the unit (if held) is released and the name
// freed; the number is returned, or the report written and abort called.
// `status` adds the status line of error 1141.
int fail_open(open_request &rq, int number, const char *status = nullptr);

// The block size that FILEOPT='BUFFER=N' asks for. N may be any 63-bit
// value; a buffer is sized in 32 bits, twice the block for list output, so
// the block stops at INT32_MAX. N of 0 or less gives 1.
inline uint32_t requested_block_size(int64_t n) {
    if (n < 1) return 1;
    return n > INT32_MAX ? static_cast<uint32_t>(INT32_MAX) : static_cast<uint32_t>(n);
}

// The ways of opening, by STATUS=. Each connects rq.up to rq.name (storing
// the name in the unit) or fails through fail_open.
int open_old(open_request &rq);
int open_new(open_request &rq);
int open_replace(open_request &rq);
int open_unknown(open_request &rq);
int open_scratch(open_request &rq);

// What every way does once it has a descriptor: checks it is no directory,
// and fills in the unit.
int connect_descriptor(open_request &rq, int fd, bool can_read, bool can_write);

}  // namespace krm
