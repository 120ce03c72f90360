/* Record services for code outside the library: reading one formatted
 * record into a unit's buffer, and an allocation that reports failure the
 * way the library does. */
#ifndef KRM_SERVICES_H
#define KRM_SERVICES_H

#include <stddef.h>
#include <stdint.h>

#include "krm/stmt_location.h"

KRM_BEGIN_DECLS

struct unit;

/* mode: bit 0 return errors, bit 1 return end of file.
 * Returns 0, -1 at end of file, or an error number. */
KRM_API int __f90_read_sf_record(struct unit *up, int32_t mode, int64_t unit_number,
                                 const stmt_location *loc);

/* *cell = malloc(bytes). Returns 0, or 12 when bit 0 of mode is set;
 * otherwise a failure is reported and the process aborts. */
KRM_API int __f90_io_malloc(void **cell, int32_t mode, size_t bytes, const stmt_location *loc);

KRM_END_DECLS

#endif
