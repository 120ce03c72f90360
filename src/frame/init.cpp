// What compiled main calls first: the command line is kept, the message
// catalogue opened, the default units set up, the start time taken.

#include <stdlib.h>

#include "frame/catalogue.h"
#include "frame/program_state.h"
#include "frame/signals.h"
#include "krm/program.h"
#include "platform/clock.h"
#include "units/units.h"

// An end-of-program retrospective of IEEE flags, when the program brings one.
extern "C" void ieee_retrospective_(void) __attribute__((weak));

extern "C" {

int __xargc;
char **__xargv;
int64_t __f90_start_time;

namespace {
const stmt_location f90_init_location = {STMT_LIB_F90_INIT, 0, nullptr};

void start_up() {
    __f90_opencat();
    __f90_initio_a(&f90_init_location);
    __f90_start_time = gethrtime();
}
}  // namespace

KRM_API void __f90_init(int argc, char **argv) {
    __xargc = argc;
    __xargv = argv;
    start_up();
}

KRM_API void __f90_init_f77compat(int argc, char **argv) {
    __f90_init(argc, argv);
    atexit(__f90_exit_f77compat);
    krm::install_fatal_signal_handler();
}

KRM_API void __f_init(void) { start_up(); }
KRM_API void f_init(void) { __f_init(); }
KRM_API void f90_init(void) {}
KRM_API void f_exit(void) {}

KRM_API void __f90_exit_f77compat(void) {
    if (ieee_retrospective_) ieee_retrospective_();
}

KRM_API int *__f90_io_delay_ftruncate(void) {
    __f90_io_delay_ftrunc = 1;
    return &__f90_io_delay_ftrunc;
}

}  // extern "C"
