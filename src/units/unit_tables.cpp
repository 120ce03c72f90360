#include "units/unit_tables.h"

extern "C" {
pthread_mutex_t __f90_io_master_lock = PTHREAD_MUTEX_INITIALIZER;
unit *__f90_small_unit_pointer_table[SMALL_UNIT_SLOTS];
unit *__f90_unit_pointer_table[HASHED_UNIT_SLOTS];
collision_cell *__f90_unit_collision_table[HASHED_UNIT_SLOTS];

unit __f90_default_error_unit;
unit __f90_default_input_unit;
unit __f90_default_output_unit;

int __f90_initio_done;
int64_t __f90_stderr_reclen = 81;
int64_t __f90_stdout_reclen = 81;
int __f90_io_delay_ftrunc;
}
