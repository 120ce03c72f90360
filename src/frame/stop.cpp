// STOP: units are written out, the stop code is shown, the process ends.

#include <stdio.h>
#include <stdlib.h>

#include "frame/messages.h"
#include "frame/report.h"
#include "krm/stop.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

extern "C" {

KRM_API void __f90_stop(void) {
    __f90_cleanup();
    exit(0);
}

KRM_API void __f90_stop_char(const char *text, int32_t length) {
    __f90_cleanup();
    fprintf(stderr, __f90_psfmt(1), static_cast<int>(length), text);
    exit(0);
}

KRM_API void __f90_stop_int(const int32_t *code) {
    __f90_cleanup();
    fprintf(stderr, __f90_psfmt(2), static_cast<int>(*code));
    exit(*code);
}

KRM_API void __f90_stop_nostatus(const int32_t *code) {
    __f90_cleanup();
    fprintf(stderr, __f90_psfmt(2), static_cast<int>(*code));
    exit(0);
}

}  // extern "C"
