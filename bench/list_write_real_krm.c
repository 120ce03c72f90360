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
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <krm.h>

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

int main(int argc, char **argv) {
    if (argc < 2 || (strcmp(argv[1], "many") != 0 && strcmp(argv[1], "each") != 0)) {
        fprintf(stderr, "usage: %s many|each [n]\n", argv[0]);
        return 2;
    }
    long n = argc > 2 ? strtol(argv[2], NULL, 10) : 10000000L;
    if (n < 1) n = 1;
    double *a = malloc((size_t)n * sizeof *a);
    if (!a) {
        perror("malloc");
        return 1;
    }
    fill(a, n);

    if (argv[1][0] == 'm') {
        io_control_list_write w = {0, &write_many_at, 11, 0};
        __f90_sslw(&w);
        for (long i = 0; i < n; ++i) __f90_slw_r8(&w, a[i]);
        __f90_eslw(&w);
    } else {
        for (long i = 0; i < n; ++i) {
            io_control_list_write w = {0, &write_each_at, 11, 0};
            __f90_sslw(&w);
            __f90_slw_r8(&w, a[i]);
            __f90_eslw(&w);
        }
    }
    free(a);
    __f90_stop();
}
