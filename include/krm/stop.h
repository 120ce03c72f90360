/* STOP statements. Each writes out what the units still hold, then ends the
 * process; the end of a main program is a plain STOP. */
#ifndef KRM_STOP_H
#define KRM_STOP_H

#include <stdint.h>

#include "krm/api.h"

KRM_BEGIN_DECLS

KRM_API void __f90_stop(void) __attribute__((noreturn));
KRM_API void __f90_stop_char(const char *text, int32_t length) __attribute__((noreturn));
KRM_API void __f90_stop_int(const int32_t *code) __attribute__((noreturn));
KRM_API void __f90_stop_nostatus(const int32_t *code) __attribute__((noreturn));

KRM_END_DECLS

#endif
