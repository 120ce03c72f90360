/* What compiled code builds for OPEN, CLOSE and INQUIRE. OPEN and CLOSE
 * gather their specifiers into one word of bits: compile-time values are set
 * directly, run-time character values go through the parser entries, which
 * clear their field and set it. INQUIRE passes one large record whose word
 * numbers on i386 are part of the interface with compiled code, as for the
 * transfer statements' io_control records. */
#ifndef KRM_FILE_STATEMENTS_H
#define KRM_FILE_STATEMENTS_H

#include <stddef.h>
#include <stdint.h>

#include "krm/api.h"
#include "krm/io_control.h"
#include "krm/stmt_location.h"

KRM_BEGIN_DECLS

/* ---------------------------------------------------------------- OPEN */

typedef uint32_t open_flags;

#define OPEN_RETURNING          0x1u        /* ERR= or IOSTAT=: errors return their number */
#define OPEN_FILE               0x2u        /* FILE= given */
#define OPEN_RECL               0x4u        /* RECL= given */
#define OPEN_ACCESS_MASK        0x98u
#define OPEN_ACCESS_SEQUENTIAL  0x8u
#define OPEN_ACCESS_DIRECT      0x10u
#define OPEN_ACCESS_STREAM      0x18u
#define OPEN_ACCESS_APPEND      0x80u       /* older dialect only */
#define OPEN_PAD_NO             0x20u
#define OPEN_BLANK_ZERO         0x40u
#define OPEN_ACTION_MASK        0x300u
#define OPEN_ACTION_READ        0x100u
#define OPEN_ACTION_WRITE       0x200u
#define OPEN_ACTION_READWRITE   0x300u
#define OPEN_STATUS_MASK        0x1c00u
#define OPEN_STATUS_OLD         0x400u
#define OPEN_STATUS_NEW         0x800u
#define OPEN_STATUS_UNKNOWN     0xc00u
#define OPEN_STATUS_REPLACE     0x1000u
#define OPEN_STATUS_SCRATCH     0x1400u
#define OPEN_FORM_MASK          0xe000u
#define OPEN_FORM_FORMATTED     0x2000u
#define OPEN_FORM_UNFORMATTED   0x4000u
#define OPEN_FORM_BINARY        0x6000u
#define OPEN_FORM_PRINT         0x8000u     /* older dialect only */
#define OPEN_POSITION_MASK      0x30000u    /* 0 is ASIS */
#define OPEN_POSITION_REWIND    0x10000u
#define OPEN_POSITION_APPEND    0x20000u
#define OPEN_DELIM_MASK         0xc0000u    /* 0 is NONE */
#define OPEN_DELIM_APOSTROPHE   0x40000u
#define OPEN_DELIM_QUOTE        0xc0000u
#define OPEN_ASYNCHRONOUS       0x100000u   /* ASYNCHRONOUS='YES' */
#define OPEN_DECIMAL_MASK       0x600000u
#define OPEN_DECIMAL_POINT      0x200000u
#define OPEN_DECIMAL_COMMA      0x400000u
#define OPEN_ROUND_MASK         0x3800000u
#define OPEN_ROUND_UP           0x800000u
#define OPEN_ROUND_DOWN         0x1000000u
#define OPEN_ROUND_ZERO         0x1800000u
#define OPEN_ROUND_NEAREST      0x2000000u
#define OPEN_ROUND_COMPATIBLE   0x2800000u
#define OPEN_ROUND_PROCESSOR_DEFINED 0x3000000u
#define OPEN_F77_READ_COMPAT    0x8000000u  /* either dialect bit selects the older rules */
#define OPEN_F77COMPAT          0x10000000u
#define OPEN_FILEOPT_MASK       0x60000000u
#define OPEN_FILEOPT_EOF        0x20000000u
#define OPEN_FILEOPT_NOPAD      0x40000000u
#define OPEN_FILEOPT_BUFFER     0x60000000u
#define OPEN_RECL_WORDS         0x80000000u /* RECL= counts 4-byte words on an unformatted connection */

/* --------------------------------------------------------------- CLOSE */

typedef uint32_t close_flags;

#define CLOSE_RETURNING         0x1u
#define CLOSE_STATUS_MASK       0x6u        /* 0: no STATUS= */
#define CLOSE_STATUS_KEEP       0x2u
#define CLOSE_STATUS_DELETE     0x4u
#define CLOSE_F77_READ_COMPAT   0x8000000u
#define CLOSE_F77COMPAT         0x10000000u

/* ------------------------------------------------------------- INQUIRE */

/* A character result: compiled code's variable and its length. */
typedef struct inquire_text {
    char *text;
    int32_t length;
} inquire_text;

/* The name of INQUIRE by file. */
typedef struct inquire_file {
    const char *name;
    int32_t length;
} inquire_file;

/* Numeric and logical results are stored in the record itself; character
 * results go to the variables it points to, and their flags bit says that
 * the specifier is present. Two pairs of words have no specifier the library
 * serves; they keep their places. */
typedef struct inquire_control {
    uint32_t flags;            /* word 0 */
    const stmt_location *loc;  /* word 1 */
    union {
        inquire_file file;     /* words 2-3, by file */
        int64_t unit_no;       /* words 2-3, by unit */
    };
    int64_t number;            /* words 4-5 */
    int64_t nextrec;           /* words 6-7 */
    int64_t recl;              /* words 8-9 */
    int32_t exist;             /* word 10 */
    int32_t opened;            /* word 11 */
    int32_t named;             /* word 12 */
    inquire_text access;       /* words 13-14 */
    inquire_text action;       /* words 15-16 */
    inquire_text blank;        /* words 17-18 */
    inquire_text delim;        /* words 19-20 */
    inquire_text direct;       /* words 21-22 */
    inquire_text form;         /* words 23-24 */
    inquire_text formatted;    /* words 25-26 */
    inquire_text name;         /* words 27-28 */
    inquire_text pad;          /* words 29-30 */
    inquire_text position;     /* words 31-32 */
    inquire_text read;         /* words 33-34 */
    inquire_text readwrite;    /* words 35-36 */
    inquire_text sequential;   /* words 37-38 */
    inquire_text unformatted;  /* words 39-40 */
    inquire_text write;        /* words 41-42 */
    inquire_text reserved_43;  /* words 43-44 */
    int64_t pos;               /* words 45-46 */
    int64_t size;              /* words 47-48 */
    inquire_text asynchronous; /* words 49-50 */
    inquire_text decimal;      /* words 51-52 */
    inquire_text reserved_53;  /* words 53-54 */
    inquire_text round;        /* words 55-56 */
    inquire_text stream;       /* words 57-58 */
    int32_t pending;           /* word 59 */
} inquire_control;

#define INQUIRE_RETURNING    0x1u
#define INQUIRE_ACCESS       0x10u
#define INQUIRE_ACTION       0x20u
#define INQUIRE_BLANK        0x40u
#define INQUIRE_DELIM        0x80u
#define INQUIRE_DIRECT       0x100u
#define INQUIRE_FORM         0x200u
#define INQUIRE_FORMATTED    0x400u
#define INQUIRE_NAME         0x800u
#define INQUIRE_PAD          0x1000u
#define INQUIRE_POSITION     0x2000u
#define INQUIRE_READ         0x4000u
#define INQUIRE_READWRITE    0x8000u
#define INQUIRE_SEQUENTIAL   0x10000u
#define INQUIRE_UNFORMATTED  0x20000u
#define INQUIRE_WRITE        0x40000u
#define INQUIRE_ASYNCHRONOUS 0x80000u
#define INQUIRE_DECIMAL      0x100000u
#define INQUIRE_PENDING      0x800000u
#define INQUIRE_POS          0x1000000u
#define INQUIRE_ROUND        0x2000000u
#define INQUIRE_SIZE         0x4000000u
#define INQUIRE_STREAM       0x8000000u
#define INQUIRE_F77COMPAT    0x10000000u

KRM_END_DECLS

#if defined(__i386__)
KRM_WORDS(inquire_text, 2);
KRM_WORDS(inquire_file, 2);
KRM_WORD_AT(inquire_control, flags, 0);
KRM_WORD_AT(inquire_control, loc, 1);
KRM_WORD_AT(inquire_control, file.name, 2);
KRM_WORD_AT(inquire_control, file.length, 3);
KRM_WORD_AT(inquire_control, unit_no, 2);
KRM_WORD_AT(inquire_control, number, 4);
KRM_WORD_AT(inquire_control, nextrec, 6);
KRM_WORD_AT(inquire_control, recl, 8);
KRM_WORD_AT(inquire_control, exist, 10);
KRM_WORD_AT(inquire_control, opened, 11);
KRM_WORD_AT(inquire_control, named, 12);
KRM_WORD_AT(inquire_control, access, 13);
KRM_WORD_AT(inquire_control, action, 15);
KRM_WORD_AT(inquire_control, blank, 17);
KRM_WORD_AT(inquire_control, delim, 19);
KRM_WORD_AT(inquire_control, direct, 21);
KRM_WORD_AT(inquire_control, form, 23);
KRM_WORD_AT(inquire_control, formatted, 25);
KRM_WORD_AT(inquire_control, name, 27);
KRM_WORD_AT(inquire_control, pad, 29);
KRM_WORD_AT(inquire_control, position, 31);
KRM_WORD_AT(inquire_control, read, 33);
KRM_WORD_AT(inquire_control, readwrite, 35);
KRM_WORD_AT(inquire_control, sequential, 37);
KRM_WORD_AT(inquire_control, unformatted, 39);
KRM_WORD_AT(inquire_control, write, 41);
KRM_WORD_AT(inquire_control, reserved_43, 43);
KRM_WORD_AT(inquire_control, pos, 45);
KRM_WORD_AT(inquire_control, size, 47);
KRM_WORD_AT(inquire_control, asynchronous, 49);
KRM_WORD_AT(inquire_control, decimal, 51);
KRM_WORD_AT(inquire_control, reserved_53, 53);
KRM_WORD_AT(inquire_control, round, 55);
KRM_WORD_AT(inquire_control, stream, 57);
KRM_WORD_AT(inquire_control, pending, 59);
KRM_WORDS(inquire_control, 60);
#endif

#endif
