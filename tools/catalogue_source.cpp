// Prints the library's built-in texts as a message catalogue source for
// gencat: set 1 the error messages, 2 the location lines, 3 the other report
// lines, 4 the STOP and PAUSE texts. A translation starts from this file.

#include <stdio.h>

#include "frame/message_tables.h"

namespace {

void put_message(int number, const char *text) {
    printf("%d \"", number);
    for (const char *p = text; *p; ++p) {
        switch (*p) {
            case '\n': fputs("\\n", stdout); break;
            case '"': fputs("\\\"", stdout); break;
            case '\\': fputs("\\\\", stdout); break;
            default: putchar(*p); break;
        }
    }
    puts("\"");
}

template <int N>
void put_set(int set, const char *const (&table)[N], int first_number, const char *what) {
    printf("$ %s\n$set %d\n", what, set);
    for (int i = 0; i < N; ++i)
        if (table[i]) put_message(first_number + i, table[i]);
}

}  // namespace

int main() {
    puts("$ Messages of the Fortran run-time library libkrm.");
    puts("$quote \"");
    put_set(1, __f90_runtime_error, 1000, "Run-time errors, by error number");
    printf("$ POSIX interface errors\n");
    for (int i = 0; i < 24; ++i)
        if (__f90_posix9_error[i]) put_message(2000 + i, __f90_posix9_error[i]);
    put_set(2, __f90_loc_format, 0, "Location lines, by statement kind");
    put_set(3, __f90_misc_format, 0, "Other report lines");
    put_set(4, __f90_ps_format, 0, "STOP and PAUSE");
    return 0;
}
