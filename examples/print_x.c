/* What a compiler emits for
 *
 *       program demo
 *       print *, 'x =', 42
 *       write (11, *) 'written to', 11, .true.
 *       end
 *
 * The END of a main program is a STOP, which writes out what unit 11 still
 * holds in its buffer.
 *
 * PRINT goes to standard output; unit 11, which no OPEN named, is connected
 * to the file fort.11 in the current directory by its first statement. */
#include <krm.h>

static const stmt_location print_at = {STMT_PRINT, 2, "demo.f90"};
static const stmt_location write_at = {STMT_WRITE, 3, "demo.f90"};

int main(void) {
    io_control_list_write p = {IO_DEFAULT_UNIT, &print_at, 0, 0};
    __f90_sslw(&p);
    __f90_slw_ch(&p, "x =", 3);
    __f90_slw_i4(&p, 42);
    __f90_eslw(&p);

    io_control_list_write w = {0, &write_at, 11, 0};
    __f90_sslw(&w);
    __f90_slw_ch(&w, "written to", 10);
    __f90_slw_i4(&w, 11);
    __f90_slw_l4(&w, 1);
    __f90_eslw(&w);
    __f90_stop();
}
