/* Statement control records. Compiled code builds one on its stack per I/O
 * statement, fills the words it knows and passes its address to the start
 * call, every item call and the end call. Each family of statements has its
 * own order of fields; on i386 every field sits at a fixed 32-bit word, which
 * is part of the interface with compiled code. On x86-64 the order is the
 * same with natural sizes and alignment. */
#ifndef KRM_IO_CONTROL_H
#define KRM_IO_CONTROL_H

#include <stddef.h>
#include <stdint.h>

#include "krm/api.h"
#include "krm/io_flags.h"
#include "krm/stmt_location.h"

KRM_BEGIN_DECLS

struct unit; /* the library's record of a unit; opaque to compiled code */

/* PRINT * and WRITE (u, *) on an external unit; also NAMELIST write. */
typedef struct io_control_list_write {
    uint32_t flags;            /* word 0 */
    const stmt_location *loc;  /* word 1 */
    int64_t unit_no;           /* words 2-3; -1 after the start call for '*' */
    struct unit *up;           /* word 4; written by the start call */
} io_control_list_write;

KRM_END_DECLS

#if defined(__i386__)
#define KRM_WORD_AT(type, field, word) \
    _Static_assert(offsetof(type, field) == 4 * (word), #type "." #field " must be word " #word)
#ifdef __cplusplus
#undef KRM_WORD_AT
#define KRM_WORD_AT(type, field, word) \
    static_assert(offsetof(type, field) == 4 * (word), #type "." #field " must be word " #word)
#endif
KRM_WORD_AT(stmt_location, kind, 0);
KRM_WORD_AT(stmt_location, line, 1);
KRM_WORD_AT(stmt_location, file, 2);
KRM_WORD_AT(io_control_list_write, flags, 0);
KRM_WORD_AT(io_control_list_write, loc, 1);
KRM_WORD_AT(io_control_list_write, unit_no, 2);
KRM_WORD_AT(io_control_list_write, up, 4);
#endif

#endif
