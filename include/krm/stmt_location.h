/* Where a statement stands in the Fortran source. Compiled code emits one of
 * these as constant data per statement and passes its address to every call;
 * the library only reads it, to write the location line of a report. */
#ifndef KRM_STMT_LOCATION_H
#define KRM_STMT_LOCATION_H

#include <stdint.h>

#include "krm/api.h"

KRM_BEGIN_DECLS

typedef struct stmt_location {
    int32_t kind;     /* statement kind: selects the location text, e.g. 19 PRINT, 25 WRITE */
    int32_t line;     /* source line */
    const char *file; /* source file name, NUL-terminated */
} stmt_location;

/* Statement kinds, as compiled code stores them in stmt_location.kind. */
enum stmt_kind {
    STMT_ALLOCATE = 1,
    STMT_ASSIGNMENT = 2,
    STMT_BACKSPACE = 3,
    STMT_CALL = 4,
    STMT_CLOSE = 5,
    STMT_DEALLOCATE = 6,
    STMT_DECODE = 7,
    STMT_DO = 8,
    STMT_ENCODE = 9,
    STMT_ENDFILE = 10,
    STMT_FORALL = 11,
    STMT_GOTO = 12,
    STMT_IF = 13,
    STMT_INQUIRE = 14,
    STMT_OPEN = 15,
    STMT_NULLIFY = 16,
    STMT_PAUSE = 17,
    STMT_POINTER_ASSIGNMENT = 18,
    STMT_PRINT = 19,
    STMT_READ = 20,
    STMT_REWIND = 21,
    STMT_SELECT_CASE = 22,
    STMT_STOP = 23,
    STMT_WHERE = 24,
    STMT_WRITE = 25,
    STMT_ACCEPT = 26,
    STMT_TYPE = 27,
    STMT_WAIT = 28,
    STMT_AUTOMATIC = 29,
    STMT_LIB_F90_INIT = 30,
    STMT_LIB_MAPUNIT = 31,
    STMT_LIB_NEWUNIT = 32,
    STMT_LIB_OMP_SET_LOCK = 33,
    STMT_LIB_OMP_UNSET_LOCK = 34,
    STMT_LIB_OMP_TEST_LOCK = 35,
    STMT_LIB_TTYNAM = 36,
    STMT_LINE_COLUMN = 37,
    STMT_LINE = 38,
    STMT_LIB_ISATTY = 39,
    STMT_FLUSH = 60
};

KRM_END_DECLS

#endif
