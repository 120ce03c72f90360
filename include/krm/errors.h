/* Error numbers and reports that compiled code asks for directly.
 *
 * Error numbers: -2 end of record, -1 end of file, 1 to 999 the system's
 * errno, 1000 to 1999 the library's own, 2000 and up the POSIX interface's. */
#ifndef KRM_ERRORS_H
#define KRM_ERRORS_H

#include <stdint.h>

#include "krm/stmt_location.h"

KRM_BEGIN_DECLS

struct unit;

/* IOMSG=: the text of an IOSTAT value, blank-padded to length. */
KRM_API void __f90_assign_iomsg(int32_t number, char *buffer, int32_t length);

/* The whole report for a failure that has no unit, then abort(). */
KRM_API void __f95_error_message_and_abort(int32_t number, const stmt_location *loc)
    __attribute__((noreturn));

/* The report of a system error on a unit, then abort(). */
KRM_API void __f90_system_error_a(int32_t number, struct unit *up, int64_t unit_number,
                                  const stmt_location *loc) __attribute__((noreturn));

KRM_END_DECLS

#endif
