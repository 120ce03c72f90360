/* The statements of the list-directed WRITE benchmarks, shared by the
 * program for each item type: the arguments, and the two shapes,
 *
 *       write (11, *) (a(i), i = 1, n)        ! shape "many"
 *
 *       do i = 1, n
 *          write (11, *) a(i)                 ! shape "each"
 *       end do
 *
 * followed by the END of the main program, a STOP. */
#ifndef LIST_WRITE_DRIVER_H
#define LIST_WRITE_DRIVER_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <krm.h>

/* Passes item i of the program's values to the statement. */
typedef int (*put_item)(io_control_list_write *w, long i);

/* n from the command line, after checking the shape: 0 for a usage error. */
static long list_write_count(int argc, char **argv) {
    if (argc < 2 || (strcmp(argv[1], "many") != 0 && strcmp(argv[1], "each") != 0)) {
        fprintf(stderr, "usage: %s many|each [n]\n", argv[0]);
        return 0;
    }
    long n = argc > 2 ? strtol(argv[2], NULL, 10) : 10000000L;
    return n < 1 ? 1 : n;
}

/* The statements of the shape argv[1] names, then the STOP. */
static void list_write_run(char **argv, long n, put_item put, const stmt_location *many_at,
                           const stmt_location *each_at) {
    if (argv[1][0] == 'm') {
        io_control_list_write w = {0, many_at, 11, 0};
        __f90_sslw(&w);
        for (long i = 0; i < n; ++i) put(&w, i);
        __f90_eslw(&w);
    } else {
        for (long i = 0; i < n; ++i) {
            /* compiled code builds a fresh control record per statement */
            io_control_list_write w = {0, each_at, 11, 0};
            __f90_sslw(&w);
            put(&w, i);
            __f90_eslw(&w);
        }
    }
    __f90_stop();
}

#endif
