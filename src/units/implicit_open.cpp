// Connecting a unit that no OPEN named to the file fort.N in the current
// directory: created if missing, emptied first when the statement writes.

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "units/unit_failure.h"
#include "units/units.h"

namespace {

enum class direction { input, output };

struct implicit_failure {
    int number = 0;       // 0: connected
    char *name = nullptr; // the heap copy, for the report
    uint32_t bytes = 0;   // what an allocation that failed asked for
};

// Returns 0 or the error; on error the unit is still held and `f` says what
// the report needs.
implicit_failure connect(int64_t unit_number, unit *up, direction dir) {
    implicit_failure f;
    char text[32];
    int len = snprintf(text, sizeof text, "fort.%lld", static_cast<long long>(unit_number));
    char *name = static_cast<char *>(malloc(static_cast<size_t>(len) + 1));
    if (!name) {
        f.number = ENOMEM;
        f.bytes = static_cast<uint32_t>(len) + 1;
        return f;
    }
    memcpy(name, text, static_cast<size_t>(len) + 1);
    f.name = name;

    const bool in = dir == direction::input;
    int fallback_mode = in ? O_RDONLY : O_WRONLY;
    int extra = O_CREAT | (in ? 0 : O_TRUNC);
    int fd = open64(name, O_RDWR | extra, 0666);
    bool read_write = fd >= 0;
    if (fd < 0) {
        int first = errno;
        if (first == EACCES || first == EROFS) fd = open64(name, fallback_mode | extra, 0666);
        if (fd < 0) {
            f.number = first == EISDIR ? 1148 : first;
            return f;
        }
    }
    struct stat64 st;
    if (fstat64(fd, &st) != 0) {
        f.number = errno;
        close(fd);
        return f;
    }
    if (S_ISDIR(st.st_mode)) {
        close(fd);
        f.number = 1148;
        return f;
    }
    up->block_size = st.st_blksize > 0 ? static_cast<uint32_t>(st.st_blksize) : 1024;
    up->st_dev = st.st_dev;
    up->st_ino = st.st_ino;
    uint32_t flags = UNIT_CONNECTED;
    if (in) {
        flags |= UNIT_READING | UNIT_CAN_READ | (read_write ? UNIT_CAN_WRITE : 0);
    } else {
        flags |= UNIT_WRITING | UNIT_CAN_WRITE | (read_write ? UNIT_CAN_READ : 0);
    }
    if (S_ISREG(st.st_mode)) flags |= UNIT_REGULAR;
    free(up->file_name);
    up->file_name = name;
    f.name = nullptr;
    up->fd = fd;
    up->stream = nullptr;
    up->buffer = nullptr;
    up->next_record = 1;
    up->flags = flags;
    return f;
}

int connect_r(int64_t unit_number, unit *up, direction dir) {
    implicit_failure f = connect(unit_number, up, dir);
    free(f.name);
    if (f.number == 0) return 0;
    __f90_release_unit(up);
    // Outside the abort form a directory is the system's own error.
    return f.number == 1148 ? EISDIR : f.number;
}

void connect_a(int64_t unit_number, unit *up, direction dir, const stmt_location *loc) {
    implicit_failure f = connect(unit_number, up, dir);
    if (f.number == 0) return;
    __f90_release_unit(up);
    if (f.number == ENOMEM && !f.name) krm::report_no_memory(f.bytes, loc, &unit_number);
    krm::report_lines lines;
    lines.unit_number = unit_number;
    lines.file = f.name;
    krm::report_and_abort(f.number, loc, lines);
}

}  // namespace

extern "C" {

int __f90_open_for_input_r(int64_t unit_number, unit *up) {
    return connect_r(unit_number, up, direction::input);
}
int __f90_open_for_output_r(int64_t unit_number, unit *up) {
    return connect_r(unit_number, up, direction::output);
}
void __f90_open_for_input_a(int64_t unit_number, unit *up, const stmt_location *loc) {
    connect_a(unit_number, up, direction::input, loc);
}
void __f90_open_for_output_a(int64_t unit_number, unit *up, const stmt_location *loc) {
    connect_a(unit_number, up, direction::output, loc);
}

}  // extern "C"
