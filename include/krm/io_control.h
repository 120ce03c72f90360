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

struct unit;          /* the library's record of a unit; opaque to compiled code */
struct parsed_format; /* a compiled format: a block of 32-bit words starting "#FMT" */

/* Highest rank of a character array used as an internal file. */
#define KRM_MAX_RANK 7

/* PRINT * and WRITE (u, *) on an external unit; also NAMELIST write, whose
 * frame calls the list-directed item entries with this same record. */
typedef struct io_control_list_write {
    uint32_t flags;            /* word 0 */
    const stmt_location *loc;  /* word 1 */
    int64_t unit_no;           /* words 2-3; -1 after the start call for '*' */
    struct unit *up;           /* word 4; written by the start call */
} io_control_list_write;

typedef io_control_list_write io_control_namelist_write;

/* READ (u, *) on an external unit. The last three fields describe the value
 * being handed out, so that a repeat count costs nothing for later items. */
typedef struct io_control_list_read {
    int64_t unit_no;           /* words 0-1 */
    uint32_t flags;            /* word 2 */
    const stmt_location *loc;  /* word 3 */
    struct unit *up;           /* word 4 */
    uint32_t repeat_count;     /* word 5; items still to take the current value; 0: scan a new one */
    char *value_ptr;           /* word 6; the value's text; null for a null value */
    uint32_t value_len;        /* word 7 */
} io_control_list_read;

/* READ (u, NML=group). The whole statement is one call; its running state is
 * the library's own, so compiled code supplies only these words. */
typedef struct io_control_namelist_read {
    int64_t unit_no;           /* words 0-1 */
    uint32_t flags;            /* word 2 */
    const stmt_location *loc;  /* word 3 */
} io_control_namelist_read;

/* Sequential formatted WRITE and PRINT. */
typedef struct io_control_formatted_write {
    int64_t unit_no;                     /* words 0-1 */
    uint32_t flags;                      /* word 2 */
    const stmt_location *loc;            /* word 3 */
    uint32_t format_pc;                  /* word 4; word index of the next operation in format */
    struct parsed_format *format;        /* word 5 */
    int32_t *format_counters;            /* word 6; repeat counter slots, private to this execution */
    struct unit *up;                     /* word 7 */
    int32_t radix;                       /* word 8; radix of I output, 10 at start */
    int32_t scale;                       /* word 9; scale factor, 0 at start */
    int32_t sign_mode;                   /* word 10; 1 SP, 2 SS (start), 3 SU */
} io_control_formatted_write;

/* Sequential formatted READ. */
typedef struct io_control_formatted_read {
    int64_t unit_no;                     /* words 0-1 */
    int64_t size_count;                  /* words 2-3; characters transferred, for SIZE= */
    uint32_t flags;                      /* word 4 */
    const stmt_location *loc;            /* word 5 */
    uint32_t format_pc;                  /* word 6 */
    struct parsed_format *format;        /* word 7 */
    int32_t *format_counters;            /* word 8 */
    struct unit *up;                     /* word 9 */
    int32_t radix;                       /* word 10; 10 at start, set by R */
    int32_t scale;                       /* word 11; 0 at start, set by P */
} io_control_formatted_read;

/* Formatted READ and WRITE with REC=: one record in the buffer at a time. */
typedef struct io_control_direct_formatted {
    int64_t unit_no;                     /* words 0-1 */
    int64_t rec_no;                      /* words 2-3 */
    uint32_t flags;                      /* word 4 */
    const stmt_location *loc;            /* word 5 */
    uint32_t format_pc;                  /* word 6 */
    struct parsed_format *format;        /* word 7 */
    int32_t *format_counters;            /* word 8 */
    struct unit *up;                     /* word 9 */
    int32_t radix;                       /* word 10 */
    int32_t scale;                       /* word 11 */
    int32_t sign_mode;                   /* word 12; unused by a read */
} io_control_direct_formatted;

/* Formatted READ and WRITE on a character variable or array. There is no
 * unit: the record pointers point into the program's own storage. `file` is
 * the variable itself for rank 0, otherwise a descriptor of the array (base
 * address, then `rank` extents, then `rank` strides in bytes). The start call
 * fills everything from format_pc on; rec_no keeps its place however small
 * the rank. */
typedef struct io_control_internal_formatted {
    uint32_t flags;                      /* word 0; bit 4 on entry: REC= given */
    const stmt_location *loc;            /* word 1 */
    int32_t record_length;               /* word 2; bytes of the variable or of one element */
    int32_t rank;                        /* word 3 */
    void *file;                          /* word 4 */
    uint32_t format_pc;                  /* word 5 */
    struct parsed_format *format;        /* word 6 */
    int32_t *format_counters;            /* word 7 */
    int32_t radix;                       /* word 8 */
    int32_t scale;                       /* word 9 */
    int32_t sign_mode;                   /* word 10 */
    char *record_start;                  /* word 11 */
    char *field_ptr;                     /* word 12 */
    char *tab_limit;                     /* word 13 */
    char *record_end;                    /* word 14 */
    int32_t counters[KRM_MAX_RANK];      /* words 15-21; running index of each dimension */
    char *bases[KRM_MAX_RANK];           /* words 22-28; current element in each dimension */
    int64_t rec_no;                      /* words 29-30 */
} io_control_internal_formatted;

/* One word of the odometer of an internal list-directed statement: the
 * first `rank` words are subscript counters, the next `rank` words running
 * base pointers. The record a statement passes may end right behind the
 * 2 * rank words its rank uses, so no word past them may be touched. */
typedef union io_odometer_word {
    int32_t counter;
    char *base;
} io_odometer_word;

/* List-directed WRITE on a character variable or array; `internal` is as
 * `file` of io_control_internal_formatted. */
typedef struct io_control_internal_list_write {
    uint32_t flags;                              /* word 0 */
    const stmt_location *loc;                    /* word 1 */
    int32_t record_length;                       /* word 2 */
    int32_t rank;                                /* word 3 */
    void *internal;                              /* word 4 */
    char *record;                                /* word 5; the current record's base */
    char *field_ptr;                             /* word 6 */
    char *record_end;                            /* word 7 */
    io_odometer_word odometer[2 * KRM_MAX_RANK]; /* from word 8 */
} io_control_internal_list_write;

/* List-directed READ on a character variable or array: the value state of
 * io_control_list_read stands between the record pointers and the odometer. */
typedef struct io_control_internal_list_read {
    uint32_t flags;                              /* word 0 */
    const stmt_location *loc;                    /* word 1 */
    int32_t record_length;                       /* word 2 */
    int32_t rank;                                /* word 3 */
    void *internal;                              /* word 4 */
    char *record;                                /* word 5 */
    char *field_ptr;                             /* word 6 */
    char *record_end;                            /* word 7 */
    uint32_t repeat_count;                       /* word 8 */
    char *value_ptr;                             /* word 9 */
    uint32_t value_len;                          /* word 10 */
    io_odometer_word odometer[2 * KRM_MAX_RANK]; /* from word 11 */
} io_control_internal_list_read;

/* Sequential unformatted WRITE (and stream access without markers). */
typedef struct io_control_unformatted_write {
    int64_t unit_no;           /* words 0-1 */
    uint32_t flags;            /* word 2 */
    const stmt_location *loc;  /* word 3 */
    struct unit *up;           /* word 4 */
    uint32_t record_length;    /* word 5; data bytes of the record so far */
} io_control_unformatted_write;

/* Sequential unformatted READ. */
typedef struct io_control_unformatted_read {
    int64_t unit_no;           /* words 0-1 */
    int64_t record_remaining;  /* words 2-3; data bytes of the record not yet taken */
    uint32_t flags;            /* word 4 */
    const stmt_location *loc;  /* word 5 */
    struct unit *up;           /* word 6 */
} io_control_unformatted_read;

/* Unformatted READ and WRITE with REC=. */
typedef struct io_control_direct_unformatted {
    int64_t unit_no;           /* words 0-1 */
    int64_t rec_no;            /* words 2-3 */
    uint32_t flags;            /* word 4 */
    const stmt_location *loc;  /* word 5 */
    struct unit *up;           /* word 6 */
} io_control_direct_unformatted;

/* BACKSPACE, ENDFILE, REWIND and FLUSH. */
typedef struct io_control_position {
    int64_t unit_no;           /* words 0-1 */
    uint32_t flags;            /* word 2 */
    const stmt_location *loc;  /* word 3 */
} io_control_position;

KRM_END_DECLS

#if defined(__i386__)
#define KRM_WORD_AT(type, field, word) \
    _Static_assert(offsetof(type, field) == 4 * (word), #type "." #field " must be word " #word)
#define KRM_WORDS(type, words) \
    _Static_assert(sizeof(type) == 4 * (words), #type " must be " #words " words")
#ifdef __cplusplus
#undef KRM_WORD_AT
#undef KRM_WORDS
#define KRM_WORD_AT(type, field, word) \
    static_assert(offsetof(type, field) == 4 * (word), #type "." #field " must be word " #word)
#define KRM_WORDS(type, words) \
    static_assert(sizeof(type) == 4 * (words), #type " must be " #words " words")
#endif
KRM_WORD_AT(stmt_location, kind, 0);
KRM_WORD_AT(stmt_location, line, 1);
KRM_WORD_AT(stmt_location, file, 2);

KRM_WORD_AT(io_control_list_write, flags, 0);
KRM_WORD_AT(io_control_list_write, loc, 1);
KRM_WORD_AT(io_control_list_write, unit_no, 2);
KRM_WORD_AT(io_control_list_write, up, 4);
KRM_WORDS(io_control_list_write, 5);

KRM_WORD_AT(io_control_list_read, unit_no, 0);
KRM_WORD_AT(io_control_list_read, flags, 2);
KRM_WORD_AT(io_control_list_read, loc, 3);
KRM_WORD_AT(io_control_list_read, up, 4);
KRM_WORD_AT(io_control_list_read, repeat_count, 5);
KRM_WORD_AT(io_control_list_read, value_ptr, 6);
KRM_WORD_AT(io_control_list_read, value_len, 7);
KRM_WORDS(io_control_list_read, 8);

KRM_WORD_AT(io_control_namelist_read, unit_no, 0);
KRM_WORD_AT(io_control_namelist_read, flags, 2);
KRM_WORD_AT(io_control_namelist_read, loc, 3);
KRM_WORDS(io_control_namelist_read, 4);

KRM_WORD_AT(io_control_formatted_write, unit_no, 0);
KRM_WORD_AT(io_control_formatted_write, flags, 2);
KRM_WORD_AT(io_control_formatted_write, loc, 3);
KRM_WORD_AT(io_control_formatted_write, format_pc, 4);
KRM_WORD_AT(io_control_formatted_write, format, 5);
KRM_WORD_AT(io_control_formatted_write, format_counters, 6);
KRM_WORD_AT(io_control_formatted_write, up, 7);
KRM_WORD_AT(io_control_formatted_write, radix, 8);
KRM_WORD_AT(io_control_formatted_write, scale, 9);
KRM_WORD_AT(io_control_formatted_write, sign_mode, 10);
KRM_WORDS(io_control_formatted_write, 11);

KRM_WORD_AT(io_control_formatted_read, unit_no, 0);
KRM_WORD_AT(io_control_formatted_read, size_count, 2);
KRM_WORD_AT(io_control_formatted_read, flags, 4);
KRM_WORD_AT(io_control_formatted_read, loc, 5);
KRM_WORD_AT(io_control_formatted_read, format_pc, 6);
KRM_WORD_AT(io_control_formatted_read, format, 7);
KRM_WORD_AT(io_control_formatted_read, format_counters, 8);
KRM_WORD_AT(io_control_formatted_read, up, 9);
KRM_WORD_AT(io_control_formatted_read, radix, 10);
KRM_WORD_AT(io_control_formatted_read, scale, 11);
KRM_WORDS(io_control_formatted_read, 12);

KRM_WORD_AT(io_control_direct_formatted, unit_no, 0);
KRM_WORD_AT(io_control_direct_formatted, rec_no, 2);
KRM_WORD_AT(io_control_direct_formatted, flags, 4);
KRM_WORD_AT(io_control_direct_formatted, loc, 5);
KRM_WORD_AT(io_control_direct_formatted, format_pc, 6);
KRM_WORD_AT(io_control_direct_formatted, format, 7);
KRM_WORD_AT(io_control_direct_formatted, format_counters, 8);
KRM_WORD_AT(io_control_direct_formatted, up, 9);
KRM_WORD_AT(io_control_direct_formatted, radix, 10);
KRM_WORD_AT(io_control_direct_formatted, scale, 11);
KRM_WORD_AT(io_control_direct_formatted, sign_mode, 12);
KRM_WORDS(io_control_direct_formatted, 13);

KRM_WORD_AT(io_control_internal_formatted, flags, 0);
KRM_WORD_AT(io_control_internal_formatted, loc, 1);
KRM_WORD_AT(io_control_internal_formatted, record_length, 2);
KRM_WORD_AT(io_control_internal_formatted, rank, 3);
KRM_WORD_AT(io_control_internal_formatted, file, 4);
KRM_WORD_AT(io_control_internal_formatted, format_pc, 5);
KRM_WORD_AT(io_control_internal_formatted, format, 6);
KRM_WORD_AT(io_control_internal_formatted, format_counters, 7);
KRM_WORD_AT(io_control_internal_formatted, radix, 8);
KRM_WORD_AT(io_control_internal_formatted, scale, 9);
KRM_WORD_AT(io_control_internal_formatted, sign_mode, 10);
KRM_WORD_AT(io_control_internal_formatted, record_start, 11);
KRM_WORD_AT(io_control_internal_formatted, field_ptr, 12);
KRM_WORD_AT(io_control_internal_formatted, tab_limit, 13);
KRM_WORD_AT(io_control_internal_formatted, record_end, 14);
KRM_WORD_AT(io_control_internal_formatted, counters, 15);
KRM_WORD_AT(io_control_internal_formatted, bases, 22);
KRM_WORD_AT(io_control_internal_formatted, rec_no, 29);
KRM_WORDS(io_control_internal_formatted, 31);

KRM_WORDS(io_odometer_word, 1);

KRM_WORD_AT(io_control_internal_list_write, flags, 0);
KRM_WORD_AT(io_control_internal_list_write, loc, 1);
KRM_WORD_AT(io_control_internal_list_write, record_length, 2);
KRM_WORD_AT(io_control_internal_list_write, rank, 3);
KRM_WORD_AT(io_control_internal_list_write, internal, 4);
KRM_WORD_AT(io_control_internal_list_write, record, 5);
KRM_WORD_AT(io_control_internal_list_write, field_ptr, 6);
KRM_WORD_AT(io_control_internal_list_write, record_end, 7);
KRM_WORD_AT(io_control_internal_list_write, odometer, 8);

KRM_WORD_AT(io_control_internal_list_read, flags, 0);
KRM_WORD_AT(io_control_internal_list_read, loc, 1);
KRM_WORD_AT(io_control_internal_list_read, record_length, 2);
KRM_WORD_AT(io_control_internal_list_read, rank, 3);
KRM_WORD_AT(io_control_internal_list_read, internal, 4);
KRM_WORD_AT(io_control_internal_list_read, record, 5);
KRM_WORD_AT(io_control_internal_list_read, field_ptr, 6);
KRM_WORD_AT(io_control_internal_list_read, record_end, 7);
KRM_WORD_AT(io_control_internal_list_read, repeat_count, 8);
KRM_WORD_AT(io_control_internal_list_read, value_ptr, 9);
KRM_WORD_AT(io_control_internal_list_read, value_len, 10);
KRM_WORD_AT(io_control_internal_list_read, odometer, 11);

KRM_WORD_AT(io_control_unformatted_write, unit_no, 0);
KRM_WORD_AT(io_control_unformatted_write, flags, 2);
KRM_WORD_AT(io_control_unformatted_write, loc, 3);
KRM_WORD_AT(io_control_unformatted_write, up, 4);
KRM_WORD_AT(io_control_unformatted_write, record_length, 5);
KRM_WORDS(io_control_unformatted_write, 6);

KRM_WORD_AT(io_control_unformatted_read, unit_no, 0);
KRM_WORD_AT(io_control_unformatted_read, record_remaining, 2);
KRM_WORD_AT(io_control_unformatted_read, flags, 4);
KRM_WORD_AT(io_control_unformatted_read, loc, 5);
KRM_WORD_AT(io_control_unformatted_read, up, 6);
KRM_WORDS(io_control_unformatted_read, 7);

KRM_WORD_AT(io_control_direct_unformatted, unit_no, 0);
KRM_WORD_AT(io_control_direct_unformatted, rec_no, 2);
KRM_WORD_AT(io_control_direct_unformatted, flags, 4);
KRM_WORD_AT(io_control_direct_unformatted, loc, 5);
KRM_WORD_AT(io_control_direct_unformatted, up, 6);
KRM_WORDS(io_control_direct_unformatted, 7);

KRM_WORD_AT(io_control_position, unit_no, 0);
KRM_WORD_AT(io_control_position, flags, 2);
KRM_WORD_AT(io_control_position, loc, 3);
KRM_WORDS(io_control_position, 4);
#endif

#endif
