/* List-directed WRITE of REAL(8) values to unit 11, as a compiler emits it
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
 * followed by the END of the main program, a STOP. Run it in a scratch
 * directory: unit 11 is connected implicitly to fort.11.
 *
 * Usage: list_write_real_krm many|each [n]
 *
 * The values come from the same generator as list_write_real_gfortran.f90. */
#include "list_write_driver.h"

static const stmt_location write_many_at = {STMT_WRITE, 33, "list_write_real_gfortran.f90"};
static const stmt_location write_each_at = {STMT_WRITE, 36, "list_write_real_gfortran.f90"};

/* The 31-bit LCG of the integer benchmark, scaled to (0, 1) and then by a
 * power of ten from 1e-6 to 1e6 in turn, so that both the plain and the E
 * form occur. One division by 2**31 (exact) and one multiplication: the
 * Fortran peer rounds the same way. */
static void fill(double *a, long n) {
    static const double p10[13] = {1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
    int64_t x = 1;
    for (long i = 1; i <= n; ++i) {
        x = (x * 1103515245 + 12345) % 2147483648;
        a[i - 1] = (double)x / 2147483648.0 * p10[i % 13];
    }
}

static double *values;

static int put(io_control_list_write *w, long i) { return __f90_slw_r8(w, values[i]); }

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
