/* Formatted WRITE to unit 11, as a compiler emits it for
 *
 *       write (11, '(10I12)') (a(i), i = 1, n)                      ! shape "ints"
 *       write (11, '(A)') (pool(k(i))(1:plen(k(i))), i = 1, n)      ! shape "chars"
 *
 * followed by the END of the main program, a STOP, which passes what unit 11
 * still holds to fort.11. A format known at compile time reaches the library
 * as a constant block laid out by the compiler; its repeat counters live on
 * the stack of the statement. Unit 11 is connected implicitly by its first
 * statement, so run this in a scratch directory.
 *
 * Usage: formatted_write_krm ints|chars [n]
 *
 * The values come from the same generator as formatted_write_gfortran.f90,
 * so that both programs write the same file. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <krm.h>

static const stmt_location write_ints_at = {STMT_WRITE, 44, "formatted_write_gfortran.f90"};
static const stmt_location write_chars_at = {STMT_WRITE, 46, "formatted_write_gfortran.f90"};

/* (10I12): 10 repeats of I12, reverting to the start. */
static const int32_t ints_format[] = {
    (int32_t)KRM_FORMAT_MAGIC, 4, 12, 8,
    KRM_FMT_REPEAT, 0, 10,        /* 10( */
    KRM_FMT_IW, 12, 4,            /* I12 */
    KRM_FMT_REPEAT_END, 0, 7,     /* ) */
    KRM_FMT_END, 4,
    0,                            /* the counter slot, unused: the statement has its own */
    0x49303128, 0x00293231,       /* "(10I12)" */
};

/* (A) */
static const int32_t chars_format[] = {
    (int32_t)KRM_FORMAT_MAGIC, 4, 4, 4,
    KRM_FMT_A, 2,
    KRM_FMT_END, 4,
    0x00294128,                   /* "(A)" */
};

enum { POOL = 1000, MAXLEN = 16 };
static char pool[POOL][MAXLEN];
static int32_t plen[POOL];

/* A 31-bit LCG. For "ints" its values are shifted right by 0 to 28 bits in
 * turn so that the fields hold 1 to 11 characters; for "chars" it picks one
 * of POOL strings of 1 to 16 letters. Nothing overflows a 64-bit signed
 * integer, so the Fortran peer computes exactly the same. */
static void fill(int32_t *a, long n, int ints) {
    int64_t x = 1;
    for (long i = 1; i <= n; ++i) {
        x = (x * 1103515245 + 12345) % 2147483648;
        a[i - 1] = ints ? (int32_t)((x - 1073741824) / ((int64_t)1 << (4 * (i % 8)))) : (int32_t)(x % POOL);
    }
    for (int j = 0; j < POOL; ++j) {
        plen[j] = 1 + j % MAXLEN;
        for (int p = 0; p < MAXLEN; ++p) pool[j][p] = (char)('a' + (j + p) % 26);
    }
}

/* The compiler's block must be what the library's format compiler makes of
 * the same text. */
static int same_as_compiled(const int32_t *block, size_t words, const char *text) {
    parsed_format *f = NULL;
    int32_t *counters = NULL;
    if (__f90_parse_format(&f, &counters, 1, &write_ints_at, text, (int32_t)strlen(text), 0) != 0) return 0;
    int same = memcmp(f, block, words * sizeof *block) == 0;
    free(f);
    return same;
}

int main(int argc, char **argv) {
    if (argc < 2 || (strcmp(argv[1], "ints") != 0 && strcmp(argv[1], "chars") != 0)) {
        fprintf(stderr, "usage: %s ints|chars [n]\n", argv[0]);
        return 2;
    }
    const int ints = argv[1][0] == 'i';
    long n = argc > 2 ? strtol(argv[2], NULL, 10) : 10000000L;
    if (n < 1) n = 1;
    if (!same_as_compiled(ints_format, sizeof ints_format / sizeof *ints_format, "(10I12)") ||
        !same_as_compiled(chars_format, sizeof chars_format / sizeof *chars_format, "(A)")) {
        fprintf(stderr, "%s: a format block differs from the compiled one\n", argv[0]);
        return 1;
    }
    int32_t *a = malloc((size_t)n * sizeof *a);
    if (!a) {
        perror("malloc");
        return 1;
    }
    fill(a, n, ints);

    int32_t counters[1];
    io_control_formatted_write w;
    memset(&w, 0, sizeof w);
    w.unit_no = 11;
    w.format_counters = counters;
    if (ints) {
        w.loc = &write_ints_at;
        w.format = (parsed_format *)(void *)ints_format;
        __f90_ssfw(&w);
        for (long i = 0; i < n; ++i) __f90_sfw_i4(&w, a[i]);
    } else {
        w.loc = &write_chars_at;
        w.format = (parsed_format *)(void *)chars_format;
        __f90_ssfw(&w);
        for (long i = 0; i < n; ++i) __f90_sfw_ch(&w, pool[a[i]], plen[a[i]]);
    }
    __f90_esfw(&w);
    free(a);
    __f90_stop();
}
