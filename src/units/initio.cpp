// The one-time set-up: the three default records on the standard streams.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "krm/units.h"
#include "platform/stream_query.h"
#include "units/units.h"

namespace {

constexpr uint32_t DEFAULT_READ_WRITE = 0x3C11;
constexpr uint32_t DEFAULT_WRITE_ONLY = 0x3811;
constexpr uint32_t DEFAULT_READ_ONLY = 0x3411;

uint32_t flags_of_access_mode(int fl) {
    switch (fl & O_ACCMODE) {
        case O_RDWR: return DEFAULT_READ_WRITE;
        case O_WRONLY: return DEFAULT_WRITE_ONLY;
        default: return DEFAULT_READ_ONLY;
    }
}

void describe_file(unit *up, int fd, const struct stat64 &st, int64_t reclen) {
    up->fd = fd;
    up->st_dev = st.st_dev;
    up->st_ino = st.st_ino;
    up->block_size = st.st_blksize >= 1024 ? static_cast<uint32_t>(st.st_blksize) : 1024;
    up->recl = reclen;
    if (S_ISREG(st.st_mode)) up->flags |= UNIT_REGULAR;
    up->flags |= UNIT_BLANK_NULL;
}

// Connects a default record to its standard stream, or leaves it unconnected
// (flags 0) when the stream cannot be examined; statements on it then fail.
void set_up_default(unit *up, FILE *stream, int fd_number, int64_t reclen) {
    flockfile(stream);
    bool readable = krm::platform::stream_readable(stream);
    bool writable = krm::platform::stream_writable(stream);
    struct stat64 st;
    if (readable || writable) {
        int fd = fileno(stream);
        if (fd >= 0 && fstat64(fd, &st) == 0) {
            int fl = fcntl(fd, F_GETFL);
            if (fl != -1) {
                up->stream = stream;
                up->flags = readable && writable ? DEFAULT_READ_WRITE
                            : readable           ? DEFAULT_READ_ONLY
                                                 : DEFAULT_WRITE_ONLY;
                if (fl & O_APPEND) fseeko64(stream, 0, SEEK_END);
                describe_file(up, fd, st, reclen);
            } else {
                up->flags = 0;
            }
        }
    } else {
        // The stream is closed; the descriptor may still be open.
        int fl = fcntl(fd_number, F_GETFL);
        if (fl != -1 && fstat64(fd_number, &st) == 0) {
            up->flags = flags_of_access_mode(fl);
            describe_file(up, fd_number, st, reclen);
        }
    }
    funlockfile(stream);
}

void initio() {
    pthread_mutex_lock(&__f90_io_master_lock);
    if (__f90_initio_done) {
        pthread_mutex_unlock(&__f90_io_master_lock);
        return;
    }
    unit *records[3] = {&__f90_default_error_unit, &__f90_default_input_unit,
                        &__f90_default_output_unit};
    const int32_t numbers[3] = {0, 5, 6};
    for (int i = 0; i < 3; ++i) {
        pthread_mutex_init(&records[i]->mutex, nullptr);
        pthread_cond_init(&records[i]->cond, nullptr);
        records[i]->unit_number = numbers[i];
    }
    set_up_default(&__f90_default_error_unit, stderr, 2, __f90_stderr_reclen);
    set_up_default(&__f90_default_input_unit, stdin, 0, 81);
    set_up_default(&__f90_default_output_unit, stdout, 1, __f90_stdout_reclen);
    if (__f90_default_error_unit.flags & UNIT_CAN_WRITE) __f90_default_error_unit.flags |= UNIT_WRITING;
    if (__f90_default_output_unit.flags & UNIT_CAN_WRITE) __f90_default_output_unit.flags |= UNIT_WRITING;
    if (__f90_default_input_unit.flags & UNIT_CAN_READ) __f90_default_input_unit.flags |= UNIT_READING;

    __f90_small_unit_pointer_table[0] = &__f90_default_error_unit;
    __f90_small_unit_pointer_table[5] = &__f90_default_input_unit;
    __f90_small_unit_pointer_table[6] = &__f90_default_output_unit;
    __atomic_store_n(&__f90_initio_done, 1, __ATOMIC_RELEASE);
    pthread_mutex_unlock(&__f90_io_master_lock);
}

}  // namespace

extern "C" {

void __f90_initio_a(const stmt_location *) { initio(); }
int __f90_initio_r(void) {
    initio();
    return 0;
}
KRM_API void __f90_initio_f(void) { initio(); }

}  // extern "C"
