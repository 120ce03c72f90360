/* Bits of the flags word of an io_control. The low bits common to all
 * transfer statements come first; bits 4 to 7 and 9 to 13 mean different
 * things in different statement families and are named per family. */
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

/* List-directed write. */
#define IO_NO_SEPARATOR           0x10u  /* next item gets no separator blank (set by the library) */
#define IO_AFTER_BARE_CHARACTER   0x20u  /* last item was undelimited character (set by the library) */
#define IO_NO_LEADING_BLANK       0x40u  /* the record gets no leading blank */
#define IO_NO_CHARACTER_SEPARATOR 0x200u /* undelimited character items never get a separator */

#endif
