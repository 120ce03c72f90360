#include <string.h>

#include "frame/report.h"
#include "units/unit_tables.h"

// A report needs the name after the unit is released, which may destroy the
// record, so it is copied first.
extern "C" char *__f90_copy_filename(const unit *up, char *buf) {
    if (!up) return nullptr;
    if (!up->file_name) {
        if (up == &__f90_default_input_unit) return const_cast<char *>("standard input");
        if (up == &__f90_default_output_unit) return const_cast<char *>("standard output");
        if (up == &__f90_default_error_unit) return const_cast<char *>("standard error");
        return nullptr;
    }
    size_t n = strnlen(up->file_name, krm::filename_buffer_size - 1);
    memcpy(buf, up->file_name, n);
    buf[n] = '\0';
    return buf;
}
