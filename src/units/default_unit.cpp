#include "units/hold.h"
#include "units/units.h"

namespace {

unit *hold_default(unit *up) {
    pthread_mutex_lock(&up->mutex);
    krm::take_hold_locked(up, pthread_self());
    if (up->stream) flockfile(up->stream);
    pthread_mutex_unlock(&up->mutex);
    return up;
}

}  // namespace

extern "C" {

unit *__f90_get_default_input_unit(void) { return hold_default(&__f90_default_input_unit); }
unit *__f90_get_default_output_unit(void) { return hold_default(&__f90_default_output_unit); }

}  // extern "C"
