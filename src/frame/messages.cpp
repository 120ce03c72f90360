#include "frame/messages.h"

#include <errno.h>

#include "frame/catalogue.h"
#include "frame/message_tables.h"

namespace {

template <int N>
const char *row_of(const char *const (&table)[N], int row) {
    return row >= 0 && row < N ? table[row] : nullptr;
}

// The catalogue's text where one is installed and has the message, the
// built-in text otherwise. errno is left as it was: reports read it.
const char *lookup(int set, int number, const char *builtin) {
    if (catd == reinterpret_cast<nl_catd>(-1)) return builtin;
    int saved = errno;
    const char *text = catgets(catd, set, number, builtin);
    errno = saved;
    return text;
}

}  // namespace

extern "C" {

const char *__f90_rmsg(int number) {
    return lookup(krm::set_errors, number, row_of(__f90_runtime_error, number - 1000));
}
const char *__f90_pmsg(int number) {
    return lookup(krm::set_errors, number, row_of(__f90_posix9_error, number - 2000));
}
const char *__f90_lfmt(int kind) { return lookup(krm::set_locations, kind, row_of(__f90_loc_format, kind)); }
const char *__f90_mfmt(int row) { return lookup(krm::set_misc, row, row_of(__f90_misc_format, row)); }
const char *__f90_psfmt(int row) { return lookup(krm::set_stop_pause, row, row_of(__f90_ps_format, row)); }

}  // extern "C"
