// Access to every text the library prints. Each table has one access
// function; callers never index the tables themselves, so that an installed
// message catalogue can replace any row.
#pragma once

#include <stdint.h>

extern "C" {
const char *__f90_rmsg(int number);  // run-time error 1000..1221, or null
const char *__f90_pmsg(int number);  // POSIX interface error 2000..2023, or null
const char *__f90_lfmt(int kind);    // location line of a statement kind, or null
const char *__f90_mfmt(int row);     // other report lines, or null
const char *__f90_psfmt(int row);    // STOP and PAUSE texts, or null
}
