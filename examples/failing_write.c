/* What a compiler emits for a WRITE that fails without IOSTAT=:
 *
 *       program fails
 *       write (-3, *) 'never written'
 *       end
 *
 * Unit -3 does not exist: the library writes its report on standard error
 * and aborts. The same statement with IOSTAT= gets the number back. */
#include <stdio.h>

#include <krm.h>

static const stmt_location write_at = {STMT_WRITE, 2, "fails.f90"};

int main(void) {
    io_control_list_write with_iostat = {IO_RETURNING, &write_at, -3, 0};
    int iostat = __f90_sslw(&with_iostat);
    char msg[40];
    __f90_assign_iomsg(iostat, msg, (int)sizeof msg);
    printf("with IOSTAT=: iostat = %d, iomsg = '%.*s'\n", iostat, (int)sizeof msg, msg);
    fflush(stdout);

    io_control_list_write w = {0, &write_at, -3, 0};
    __f90_sslw(&w); /* does not return */
    __f90_slw_ch(&w, "never written", 13);
    __f90_eslw(&w);
    __f90_stop();
}
