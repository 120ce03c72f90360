/* Compiled formats.
 *
 * Every formatted transfer walks a parsed_format: one contiguous block of
 * 32-bit words. Compiled code emits such a block as constant data for a
 * format known at compile time; a format known only at run time is compiled
 * by __f90_parse_format just before the statement's start call. The layout
 * is the same either way, so every word position below is fixed:
 *
 *   word 0    KRM_FORMAT_MAGIC: the bytes "#FMT" in storage order
 *   word 1    index of the first operation: always 4
 *   word 2    operation words (from word 4, the end operation included)
 *             plus the number of repeat counter slots
 *   word 3    bytes of saved format text, its closing NUL included
 *   word 4..  the operations: an opcode word, then its operand words
 *   then      the repeat counter slots, one word each
 *   then      the saved format text and a NUL, padded to whole words
 *
 * The counter slots are the statement's own running state: operations are
 * never written during a transfer, so that a block of compiled code can be
 * shared by threads, each statement execution bringing its own counters.
 * Slot numbers are nesting levels of repeated items: slot 0 belongs to a
 * repeated item that no other repeated item encloses.
 *
 * `pos` operands are the number of format text bytes saved up to and
 * including the letter of the descriptor, so that the letter is saved byte
 * pos - 1; no engine needs them to work. */
#ifndef KRM_FORMAT_H
#define KRM_FORMAT_H

#include <stdint.h>

#include "krm/api.h"
#include "krm/stmt_location.h"

KRM_BEGIN_DECLS

#define KRM_FORMAT_MAGIC 0x544D4623u /* "#FMT" read as a little-endian word */
#define KRM_FORMAT_FIRST_OP 4        /* word index of the first operation */

/* The four header words; the rest of the block follows them. */
typedef struct parsed_format {
    uint32_t magic;      /* word 0 */
    int32_t first_op;    /* word 1 */
    int32_t extent;      /* word 2 */
    int32_t text_bytes;  /* word 3 */
} parsed_format;

/* The block as an array of words, indexed as above. */
#define KRM_FORMAT_WORDS(block) ((const int32_t *)(const void *)(block))

/* Opcodes, with their operand words after the opcode word. `pos` as above. */
enum krm_format_op {
    KRM_FMT_END = 1,          /* end of the outermost group: index to go to on reversion */
    KRM_FMT_REPEAT = 2,       /* begin of a repeated item: counter slot, repeat count */
    KRM_FMT_REPEAT_END = 3,   /* end of a repeated item: counter slot, index of the body */
    KRM_FMT_COLON = 4,        /* ":" */
    KRM_FMT_DOLLAR = 5,       /* "$" */
    KRM_FMT_BN = 6,
    KRM_FMT_BZ = 7,
    KRM_FMT_P = 8,            /* kP: k (signed) */
    KRM_FMT_RADIX = 9,        /* R radix (older dialect): radix */
    KRM_FMT_S_RESERVED = 10,  /* never compiled; engines treat it as SS */
    KRM_FMT_SP = 11,
    KRM_FMT_SS = 12,          /* SS, and plain S */
    KRM_FMT_SU = 13,
    KRM_FMT_T = 14,           /* Tn: n */
    KRM_FMT_TL = 15,          /* TLn: n */
    KRM_FMT_TR = 16,          /* TRn: n */
    KRM_FMT_X = 17,           /* nX: n (signed; negative moves left) */
    KRM_FMT_SLASH = 18,       /* n/: n */
    KRM_FMT_STRING = 19,      /* quoted string: length, then the bytes four to a word, NUL padded */
    KRM_FMT_HOLLERITH = 20,   /* nH: as KRM_FMT_STRING */
    KRM_FMT_Q = 21,           /* Q: the constant 1 */
    KRM_FMT_A = 22,           /* pos */
    KRM_FMT_AW = 23,          /* w, pos */
    KRM_FMT_B = 24,           /* pos */
    KRM_FMT_BW = 25,          /* w, pos */
    KRM_FMT_BWM = 26,         /* w, m, pos */
    KRM_FMT_D = 27,           /* pos */
    KRM_FMT_DW = 28,          /* w, pos */
    KRM_FMT_DWD = 29,         /* w, d, pos */
    KRM_FMT_DWDE = 30,        /* w, d, e, pos */
    KRM_FMT_E = 31,           /* E, EN, ES, G: as D */
    KRM_FMT_EW = 32,
    KRM_FMT_EWD = 33,
    KRM_FMT_EWDE = 34,
    KRM_FMT_EN = 35,
    KRM_FMT_ENW = 36,
    KRM_FMT_ENWD = 37,
    KRM_FMT_ENWDE = 38,
    KRM_FMT_ES = 39,
    KRM_FMT_ESW = 40,
    KRM_FMT_ESWD = 41,
    KRM_FMT_ESWDE = 42,
    KRM_FMT_F = 43,           /* pos */
    KRM_FMT_FW = 44,          /* w, pos */
    KRM_FMT_FWD = 45,         /* w, d, pos */
    KRM_FMT_G = 46,
    KRM_FMT_GW = 47,
    KRM_FMT_GWD = 48,
    KRM_FMT_GWDE = 49,
    KRM_FMT_I = 50,           /* I, O, Z as B */
    KRM_FMT_IW = 51,
    KRM_FMT_IWM = 52,
    KRM_FMT_L = 53,           /* pos */
    KRM_FMT_LW = 54,          /* w, pos */
    KRM_FMT_O = 55,
    KRM_FMT_OW = 56,
    KRM_FMT_OWM = 57,
    KRM_FMT_Z = 58,
    KRM_FMT_ZW = 59,
    KRM_FMT_ZWM = 60,
    /* Interval forms: w, d, pos or w, d, e, pos. 61-62, 65-66, 69-70, 73-74,
     * 77-78 and 80-81 are kept for forms without d and never emitted; VD is
     * never compiled from text either. */
    KRM_FMT_VDWD = 63,
    KRM_FMT_VDWDE = 64,
    KRM_FMT_VEWD = 67,
    KRM_FMT_VEWDE = 68,
    KRM_FMT_VENWD = 71,
    KRM_FMT_VENWDE = 72,
    KRM_FMT_VESWD = 75,
    KRM_FMT_VESWDE = 76,
    KRM_FMT_VFWD = 79,
    KRM_FMT_VGWD = 82,
    KRM_FMT_VGWDE = 83,
    KRM_FMT_YWD = 84,
    KRM_FMT_YWDE = 85,
    KRM_FMT_DC = 86,
    KRM_FMT_DP = 87,
    KRM_FMT_RU = 88,
    KRM_FMT_RD = 89,
    KRM_FMT_RZ = 90,
    KRM_FMT_RN = 91,
    KRM_FMT_RC = 92,
    KRM_FMT_RP = 93,

    KRM_FMT_FIRST_DATA = 21,  /* data edit operations are 21 to 85 */
    KRM_FMT_LAST_DATA = 85,
    KRM_FMT_LAST = 93         /* any higher word is a corrupt block */
};

/* Compiles a format known only at run time.
 *
 *   format    receives the block (malloc'd; the statement frees it)
 *   counters  receives the address of its first repeat counter slot
 *   returning nonzero: return the error number; zero: report and abort
 *   loc       the statement, for the report
 *   source    rank 0: the characters. Rank above 0: a descriptor of a
 *             character array in machine words: the base address, then
 *             `rank` extents (element counts), then `rank` strides in bytes;
 *             the elements are read in array element order as one text
 *   length    characters of the text, or of one array element
 *   rank      rank of the array, 0 for a scalar
 *
 * Returns 0, or 1000 (format error), 12 (no memory) or 1118 (null source);
 * on failure nothing is stored. Only what stands up to the parenthesis that
 * closes the format is read. */
KRM_API int32_t __f90_parse_format(parsed_format **format, int32_t **counters, int32_t returning,
                                   const stmt_location *loc, const void *source, int32_t length,
                                   int32_t rank);

/* The same in the older dialect, which also takes: P alone (0P); a sign
 * without digits (1 or -1); R alone (radix 10) and nR for n from 2 to 36;
 * B alone as BN; T alone and T0 as T9; TL and TR alone, TL0 and TR0 with
 * operand 0; 0H; a width of 0 with D, E and G; Dw.d.e, Ew.d.e and Gw.d.e as
 * forms with an exponent width. */
KRM_API int32_t __f90_parse_format_f77compat(parsed_format **format, int32_t **counters,
                                             int32_t returning, const stmt_location *loc,
                                             const void *source, int32_t length, int32_t rank);

KRM_END_DECLS

#endif
