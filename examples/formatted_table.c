/* What a compiler emits for
 *
 *       program formatted_table
 *       character(len=40) :: head, rule, row, sums
 *       character(len=8) :: names(5) = ['alpha  ', 'beta   ', 'gamma  ', 'delta  ', 'epsilon']
 *       integer :: counts(5) = [12, 7, 1024, 365, 42]
 *       head = "(1X,A,T15,A,T25,A,T30,A)"
 *       rule = "(1X,33('-'))"
 *       row  = "(1X,A,T14,I6,2X,Z6.6,T32,L2)"
 *       sums = "(/,1X,'counts:',3(1X,I5,:,','))"
 *       print head, 'Name', 'Count', 'Hex', 'Even'
 *       print rule
 *       print row, (trim(names(i)), counts(i), counts(i), mod(counts(i), 2) == 0, i = 1, 5)
 *       print rule
 *       print sums, counts
 *       end
 *
 * Formats held in character variables are compiled at run time, just before
 * each statement, into blocks the statements own and free. The row format
 * runs out after one row, so it reverts to its start for the next; the last
 * format reverts to its repeat group, leaving "counts:" out of the second
 * record.
 */
#include <string.h>

#include <krm.h>

static const stmt_location head_at = {STMT_PRINT, 10, "formatted_table.f90"};
static const stmt_location rule_at = {STMT_PRINT, 11, "formatted_table.f90"};
static const stmt_location row_at = {STMT_PRINT, 12, "formatted_table.f90"};
static const stmt_location rule2_at = {STMT_PRINT, 13, "formatted_table.f90"};
static const stmt_location sums_at = {STMT_PRINT, 14, "formatted_table.f90"};

/* The start of a PRINT with a run-time format. */
static void start(io_control_formatted_write *w, const stmt_location *at, const char *format) {
    memset(w, 0, sizeof *w);
    w->flags = IO_DEFAULT_UNIT | IO_OWNED_FORMAT;
    w->loc = at;
    __f90_parse_format(&w->format, &w->format_counters, 0, at, format, (int32_t)strlen(format), 0);
    __f90_ssfw(w);
}

static void text(io_control_formatted_write *w, const char *s) { __f90_sfw_ch(w, s, (int32_t)strlen(s)); }

int main(int argc, char **argv) {
    static const char *const names[5] = {"alpha", "beta", "gamma", "delta", "epsilon"};
    static const int32_t counts[5] = {12, 7, 1024, 365, 42};
    io_control_formatted_write w;

    __f90_init(argc, argv);

    start(&w, &head_at, "(1X,A,T15,A,T25,A,T30,A)");
    text(&w, "Name");
    text(&w, "Count");
    text(&w, "Hex");
    text(&w, "Even");
    __f90_esfw(&w);

    start(&w, &rule_at, "(1X,33('-'))");
    __f90_esfw(&w);

    start(&w, &row_at, "(1X,A,T14,I6,2X,Z6.6,T32,L2)");
    for (int i = 0; i < 5; ++i) {
        text(&w, names[i]);
        __f90_sfw_i4(&w, counts[i]);
        __f90_sfw_i4(&w, counts[i]);
        __f90_sfw_l4(&w, counts[i] % 2 == 0);
    }
    __f90_esfw(&w);

    start(&w, &rule2_at, "(1X,33('-'))");
    __f90_esfw(&w);

    start(&w, &sums_at, "(/,1X,'counts:',3(1X,I5,:,','))");
    for (int i = 0; i < 5; ++i) __f90_sfw_i4(&w, counts[i]);
    __f90_esfw(&w);

    __f90_stop();
}
