/* What a compiler emits, with subscript checking on, for
 *
 *       program check
 *       integer :: a(10), i
 *       i = 11
 *       print *, 'before the check'
 *       a(i) = 0
 *       end
 *
 * The check fails on line 5: the report follows what PRINT wrote. */
#include <krm.h>

static const stmt_location print_at = {STMT_PRINT, 4, "check.f90"};

int main(int argc, char **argv) {
    int a[10];
    int i = 11;
    __f90_init(argc, argv);
    io_control_list_write p = {IO_DEFAULT_UNIT, &print_at, 0, 0};
    __f90_sslw(&p);
    __f90_slw_ch(&p, "before the check", 16);
    __f90_eslw(&p);
    if (i < 1 || i > 10) __f90_cb_error(1, i, "a", 5, 7, "check.f90");
    a[i - 1] = 0;
    __f90_stop();
}
