/* What a compiler emits for
 *
 *       program table
 *       open (20, file='table.dat', status='replace')
 *       do i = 1, 3
 *          write (20, *) i, i*i, i*i*i
 *       end do
 *       close (20)
 *       open (20, file='table.dat', position='append')
 *       write (20, *) 4, 16, 64
 *       close (20)
 *       end
 */
#include <krm.h>
#include <krm/open_close.h>

static const stmt_location open_at = {STMT_OPEN, 2, "table.f90"};
static const stmt_location write_at = {STMT_WRITE, 4, "table.f90"};
static const stmt_location close_at = {STMT_CLOSE, 6, "table.f90"};
static const stmt_location reopen_at = {STMT_OPEN, 7, "table.f90"};
static const stmt_location append_at = {STMT_WRITE, 8, "table.f90"};
static const stmt_location close2_at = {STMT_CLOSE, 9, "table.f90"};

static void row(const stmt_location *at, int i) {
    io_control_list_write w = {0, at, 20, 0};
    __f90_sslw(&w);
    __f90_slw_i4(&w, i);
    __f90_slw_i4(&w, i * i);
    __f90_slw_i4(&w, i * i * i);
    __f90_eslw(&w);
}

int main(int argc, char **argv) {
    __f90_init(argc, argv);
    __f90_open(OPEN_FILE | OPEN_STATUS_REPLACE, 20, "table.dat", 9, 0, &open_at, 0);
    for (int i = 1; i <= 3; ++i) row(&write_at, i);
    __f90_close(0, 20, &close_at);

    /* POSITION= known only at run time: the parser sets its bits. */
    uint32_t flags = OPEN_FILE;
    __f90_open_position(&flags, "append", 6, &reopen_at);
    __f90_open(flags, 20, "table.dat", 9, 0, &reopen_at, 0);
    row(&append_at, 4);
    __f90_close(0, 20, &close2_at);
    __f90_stop();
}
