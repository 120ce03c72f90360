/* OPEN and CLOSE. Compiled code starts from a flags word holding what it
 * knew at compile time, passes its address to a parser for each specifier
 * whose value is only known at run time, and then makes the one call of the
 * statement. Every entry returns 0 or, when the word's returning bit is set,
 * an error number; without it a failure is reported and the process aborts. */
#ifndef KRM_OPEN_CLOSE_H
#define KRM_OPEN_CLOSE_H

#include <stdint.h>

#include "krm/file_statements.h"

KRM_BEGIN_DECLS

/* Specifier parsers: (flags word, characters, length, location). */
KRM_API int __f90_open_access(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_access_f77compat(uint32_t *flags, const char *text, int32_t length,
                                        const stmt_location *loc);
KRM_API int __f90_open_action(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_blank(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_delim(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_form(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_form_f77compat(uint32_t *flags, const char *text, int32_t length,
                                      const stmt_location *loc);
KRM_API int __f90_open_pad(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_position(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_status(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_asynchronous(uint32_t *flags, const char *text, int32_t length,
                                    const stmt_location *loc);
KRM_API int __f90_open_decimal(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_round(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_open_fileopt(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f95_open_fileopt(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc,
                               int64_t *buffer_size);

/* The same bits on the flags word of a transfer statement or of OPEN. */
KRM_API int __f90_parse_asynchronous(uint32_t *flags, const char *text, int32_t length,
                                     const stmt_location *loc);
KRM_API int __f90_parse_decimal(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_parse_round(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_parse_fileopt(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc,
                                int64_t *buffer_size);

/* OPEN (unit, FILE=file(1:file_length), RECL=recl, ...). */
KRM_API int __f90_open(uint32_t flags, int64_t unit_number, const char *file, int32_t file_length,
                       int64_t recl, const stmt_location *loc, int64_t buffer_size);

/* CLOSE (unit, STATUS=...). */
KRM_API int __f90_close_status(uint32_t *flags, const char *text, int32_t length, const stmt_location *loc);
KRM_API int __f90_close(uint32_t flags, int64_t unit_number, const stmt_location *loc);

KRM_END_DECLS

#endif
