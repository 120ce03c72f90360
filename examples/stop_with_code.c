/* What a compiler emits for
 *
 *       program finish
 *       write (12, *) 'results:', 1, 2, 3
 *       stop 3
 *       end
 *
 * STOP writes out what unit 12 holds, shows the code, and passes it to the
 * shell as the exit status. */
#include <krm.h>

static const stmt_location write_at = {STMT_WRITE, 2, "finish.f90"};

int main(int argc, char **argv) {
    __f90_init(argc, argv);
    io_control_list_write w = {0, &write_at, 12, 0};
    __f90_sslw(&w);
    __f90_slw_ch(&w, "results:", 8);
    __f90_slw_i4(&w, 1);
    __f90_slw_i4(&w, 2);
    __f90_slw_i4(&w, 3);
    __f90_eslw(&w);
    int32_t code = 3;
    __f90_stop_int(&code);
}
