/* Unit services for callers outside the library: the one-time set-up, a
 * locked unit by number, and the synchronous flag that makes every statement
 * pass its bytes to the file at its end. */
#ifndef KRM_UNITS_H
#define KRM_UNITS_H

#include <stdint.h>

#include "krm/stmt_location.h"

KRM_BEGIN_DECLS

struct unit;

KRM_API void __f90_initio_f(void);
KRM_API struct unit **__f90_new_unit_f(struct unit **cell, const stmt_location *loc);
KRM_API struct unit **__f90_get_numbered_unit_f(struct unit **cell, int64_t unit_number,
                                                const stmt_location *loc);

KRM_API int __f90_get_synchronous_flag(void);
KRM_API int __f90_set_synchronous_flag(int value);

KRM_END_DECLS

#endif
