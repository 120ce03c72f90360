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
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <krm.h>

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

int main(int argc, char **argv) {
    if (argc < 2 || (strcmp(argv[1], "many") != 0 && strcmp(argv[1], "each") != 0)) {
        fprintf(stderr, "usage: %s many|each [n]\n", argv[0]);
        return 2;
    }
    long n = argc > 2 ? strtol(argv[2], NULL, 10) : 10000000L;
    if (n < 1) n = 1;
    int32_t *a = malloc((size_t)n * sizeof *a);
    if (!a) {
        perror("malloc");
        return 1;
    }
    fill(a, n);

    if (argv[1][0] == 'm') {
        io_control_list_write w = {0, &write_many_at, 11, 0};
        __f90_sslw(&w);
        for (long i = 0; i < n; ++i) __f90_slw_i4(&w, a[i]);
        __f90_eslw(&w);
    } else {
        for (long i = 0; i < n; ++i) {
            /* compiled code builds a fresh control record per statement */
            io_control_list_write w = {0, &write_each_at, 11, 0};
            __f90_sslw(&w);
            __f90_slw_i4(&w, a[i]);
            __f90_eslw(&w);
        }
    }
    free(a);
    __f90_stop();
}
