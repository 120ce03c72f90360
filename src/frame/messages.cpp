#include "frame/messages.h"

#include "frame/message_tables.h"

namespace {

template <int N>
const char *row_of(const char *const (&table)[N], int row) {
    return row >= 0 && row < N ? table[row] : nullptr;
}

}  // namespace

extern "C" {

const char *__f90_rmsg(int number) { return row_of(__f90_runtime_error, number - 1000); }
const char *__f90_pmsg(int number) { return row_of(__f90_posix9_error, number - 2000); }
const char *__f90_lfmt(int kind) { return row_of(__f90_loc_format, kind); }
const char *__f90_mfmt(int row) { return row_of(__f90_misc_format, row); }
const char *__f90_psfmt(int row) { return row_of(__f90_ps_format, row); }

}  // extern "C"
