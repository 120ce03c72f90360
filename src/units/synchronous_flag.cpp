// When set, every statement end passes the unit's bytes to the file, not
// only on the default units.

#include <pthread.h>

#include "krm/units.h"

namespace {
int synchronous_flag;
pthread_mutex_t synchronous_flag_lock = PTHREAD_MUTEX_INITIALIZER;
}  // namespace

extern "C" {

KRM_API int __f90_get_synchronous_flag(void) {
    pthread_mutex_lock(&synchronous_flag_lock);
    int v = synchronous_flag;
    pthread_mutex_unlock(&synchronous_flag_lock);
    return v;
}

KRM_API int __f90_set_synchronous_flag(int value) {
    pthread_mutex_lock(&synchronous_flag_lock);
    int old = synchronous_flag;
    synchronous_flag = value;
    pthread_mutex_unlock(&synchronous_flag_lock);
    return old;
}

}  // extern "C"
