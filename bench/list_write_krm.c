/* List-directed WRITE of default INTEGERs to unit 11, as a compiler emits it
 * for
 *
 *       write (11, *) (a(i), i = 1, n)        ! shape "many"
 *
 * or
 *
 *       do i = 1, n
 *          write (11, *) a(i)                 ! shape "each"
 *       end do
 *
 * followed by the END of the main program, a STOP, which passes what unit 11
 * still holds to fort.11. Unit 11 is connected implicitly by its first
 * statement, so run this in a scratch directory.
 *
 * Usage: list_write_krm many|each [n]
 *
 * The values come from the same generator as list_write_gfortran.f90, so
 * that both programs write the same sequence. */
#include "list_write_driver.h"

static const stmt_location write_many_at = {STMT_WRITE, 31, "list_write_gfortran.f90"};
static const stmt_location write_each_at = {STMT_WRITE, 34, "list_write_gfortran.f90"};

/* A 31-bit LCG, shifted right by 0 to 28 bits in turn so that the texts run
 * from 1 to 11 characters. Nothing overflows a 64-bit signed integer, so the
 * Fortran peer computes exactly the same. */
static void fill(int32_t *a, long n) {
    int64_t x = 1;
    for (long i = 1; i <= n; ++i) {
        x = (x * 1103515245 + 12345) % 2147483648;
        a[i - 1] = (int32_t)((x - 1073741824) / ((int64_t)1 << (4 * (i % 8))));
    }
}

static int32_t *values;

static int put(io_control_list_write *w, long i) { return __f90_slw_i4(w, values[i]); }

int main(int argc, char **argv) {
    long n = list_write_count(argc, argv);
    if (n == 0) return 2;
    values = malloc((size_t)n * sizeof *values);
    if (!values) {
        perror("malloc");
        return 1;
    }
    fill(values, n);
    list_write_run(argv, n, put, &write_many_at, &write_each_at);
}
