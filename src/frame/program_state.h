// What the start-up keeps for the rest of the program.
#pragma once

#include <stdint.h>

extern "C" {
extern int __xargc;            // argument count given to the start-up
extern char **__xargv;         // argument vector given to the start-up
extern int64_t __f90_start_time;  // gethrtime() at start-up, nanoseconds
}
