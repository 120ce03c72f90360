/* Bits of the flags word of an io_control. The low bits common to all
 * transfer statements come first; the others mean different things in
 * different statement families and are named per family (mostly bits 4 to 7
 * and 9 to 13; some families also use bits 1, 8, 14 or 26). */
#ifndef KRM_IO_FLAGS_H
#define KRM_IO_FLAGS_H

/* Common to every transfer statement. */
#define IO_RETURNING        0x1u        /* errors return their number; clear: report and abort */
#define IO_RETURNING_EOF    0x2u        /* end of file returns -1 */
#define IO_RETURNING_EOR    0x4u        /* end of record returns -2 */
#define IO_DEFAULT_UNIT     0x8u        /* the unit is '*' */
#define IO_OWNED_FORMAT     0x100u      /* the statement frees its format block on every exit */
#define IO_NO_PARSED_FORMAT 0x1000u     /* per-descriptor entries instead of a format block */
#define IO_ASYNCHRONOUS     0x100000u   /* ASYNCHRONOUS='YES' */
#define IO_DECIMAL_POINT    0x200000u   /* DECIMAL='POINT' in force */
#define IO_DECIMAL_COMMA    0x400000u   /* DECIMAL='COMMA' in force */
#define IO_ROUND_MASK       0x3800000u  /* rounding code 1 to 6, 0 when the statement gives none */
#define IO_ROUND_SHIFT      23
#define IO_F77_READ_COMPAT  0x8000000u  /* older dialect on input: '*' is unit 5 */
#define IO_F77COMPAT        0x10000000u /* older dialect on output: '*' is unit 6 */

/* List-directed write (and namelist write, which shares its record). */
#define IO_NO_SEPARATOR           0x10u  /* next item gets no separator blank (set by the library) */
#define IO_AFTER_BARE_CHARACTER   0x20u  /* last item was undelimited character (set by the library) */
#define IO_NO_LEADING_BLANK       0x40u  /* the record gets no leading blank */
#define IO_NO_CHARACTER_SEPARATOR 0x200u /* undelimited character items never get a separator */

/* Formatted write: sequential, direct and internal. */
#define IO_G_EDITING                 0x2u       /* G editing of one field is under way (set by the library) */
#define IO_NO_ADVANCE_WRITE          0x10u      /* ADVANCE='NO'; sequential only */
#define IO_NO_DATA_SINCE_REVERSION   0x2000u    /* no data edit descriptor since the format last reverted */
#define IO_ROUND_COMPATIBLE_DEFAULT  0x4000000u /* no rounding mode given means RC, not RP */

/* Formatted read: sequential, direct and internal. */
#define IO_EOR_PRESENT         0x10u   /* the statement has EOR= */
#define IO_SIZE_PRESENT        0x20u   /* the statement has SIZE= */
#define IO_NO_ADVANCE_READ     0x40u   /* ADVANCE='NO'; sequential only */
#define IO_BLANK_ZERO          0x80u   /* blanks in numeric fields count as zeros */
#define IO_OVERFLOW_ERROR      0x200u  /* floating overflow on input is an error */
#define IO_DEFAULT_BLANK_ZERO  0x800u  /* blanks as zeros unless the unit says BLANK='NULL' */
#define IO_NO_DATA_EDIT        0x2000u /* no data edit descriptor since the format last reverted */

/* List-directed read, external and internal; IO_BLANK_ENDED also namelist read. */
#define IO_SLASH_SEEN   0x40u  /* a '/' ended the input: later items are left alone */
#define IO_BLANK_ENDED  0x80u  /* the last value ended at a blank or record end */
#define IO_OWNED_VALUE  0x100u /* value_ptr points at memory of the statement's own */
#define IO_TOKEN_CUT    0x800u /* older dialect: a number ended inside its token */

/* Namelist read. */
#define IO_NEXT_OBJECT     0x10u  /* an object name lies ahead: the current one has no more values */
#define IO_CASE_SENSITIVE  0x20u  /* names are not folded to upper case */
#define IO_GROUP_ENDED     0x40u  /* the end of the group was read */
#define IO_FILL_TO_END     0x800u /* the object is one array element: values run on through the array */

/* Unformatted transfer, sequential and direct. */
#define IO_SHORT_RECORD_ERROR   0x10u   /* read: running off the file inside a record is an error, not end of file */
#define IO_ITEM_CLASS_MASK      0x700u  /* compiled code's class of the item */
#define IO_ITEM_CLASS_SHIFT     8
#define IO_ITEM_LOG2_SIZE_MASK  0x7000u /* log2 of the element size of a byte run on a swapped unit */
#define IO_ITEM_LOG2_SIZE_SHIFT 12

#endif
