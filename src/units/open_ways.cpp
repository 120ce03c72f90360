// The ways OPEN opens a file, by STATUS=. Without ACTION= each tries read
// and write first and falls back to what the file's permissions allow.

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "units/open_request.h"

namespace krm {
namespace {

// One open(2) attempt: the access mode and the extra flags.
struct attempt {
    int mode;
    int extra;
};

bool may_read(int mode) { return mode == O_RDONLY || mode == O_RDWR; }
bool may_write(int mode) { return mode == O_WRONLY || mode == O_RDWR; }

int mode_of_action(uint32_t action) {
    switch (action) {
        case OPEN_ACTION_READ: return O_RDONLY;
        case OPEN_ACTION_WRITE: return O_WRONLY;
        default: return O_RDWR;
    }
}

// A directory cannot be opened for writing: the system says EISDIR, which
// OPEN reports as its own error.
int open_error(int err) { return err == EISDIR ? 1148 : err; }

// The attempts of OLD, NEW and REPLACE: the mode ACTION= names, or without
// it read-write, then read-only, then write-only. Returns their number.
int action_attempts(const open_request &rq, int extra, attempt tries[3]) {
    if (rq.action()) {
        tries[0] = {mode_of_action(rq.action()), extra};
        return 1;
    }
    tries[0] = {O_RDWR, extra};
    tries[1] = {O_RDONLY, extra};
    tries[2] = {O_WRONLY, extra};
    return 3;
}

// Whether attempt i failing with err lets the next one be tried: only when
// no ACTION= was given and the file refused that kind of access.
bool may_fall_back(const open_request &rq, int i, int err) {
    if (rq.action()) return false;
    return (i == 0 && (err == EACCES || err == EROFS)) || (i == 1 && err == EACCES);
}

}  // namespace

int connect_descriptor(open_request &rq, int fd, bool can_read, bool can_write) {
    struct stat64 st;
    if (fstat64(fd, &st) != 0) {
        int err = errno;
        close(fd);
        return fail_open(rq, err);
    }
    if (S_ISDIR(st.st_mode)) {
        close(fd);
        return fail_open(rq, 1148);
    }
    unit *up = rq.up;
    uint32_t flags = UNIT_CONNECTED;
    if (can_read) flags |= UNIT_CAN_READ;
    if (can_write) flags |= UNIT_CAN_WRITE;
    if (S_ISREG(st.st_mode)) flags |= UNIT_REGULAR;
    if ((rq.flags & OPEN_FILEOPT_MASK) == OPEN_FILEOPT_BUFFER)
        up->block_size = requested_block_size(rq.buffer_size);
    else
        up->block_size = st.st_blksize >= 1024 ? static_cast<uint32_t>(st.st_blksize) : 1024;
    free(up->file_name);
    up->file_name = rq.name;
    rq.name = nullptr;
    up->fd = fd;
    up->stream = nullptr;
    up->flags = flags;
    up->st_dev = st.st_dev;
    up->st_ino = st.st_ino;
    return 0;
}

int open_old(open_request &rq) {
    attempt tries[3];
    const int n = action_attempts(rq, 0, tries);
    for (int i = 0; i < n; ++i) {
        int fd;
        for (;;) {
            fd = open64(rq.name, tries[i].mode | tries[i].extra, 0666);
            if (fd >= 0 || errno != ENOENT) break;
            if (rq.dialect()) return fail_open(rq, 1018);
            struct stat64 st;
            if (lstat64(rq.name, &st) != 0) return fail_open(rq, ENOENT);
            if (S_ISLNK(st.st_mode)) return fail_open(rq, 1149);
            // The file came into being after the open: try again.
        }
        if (fd >= 0) return connect_descriptor(rq, fd, may_read(tries[i].mode), may_write(tries[i].mode));
        const int err = errno;
        if (!may_fall_back(rq, i, err)) return fail_open(rq, open_error(err));
    }
    return fail_open(rq, EACCES);
}

int open_new(open_request &rq) {
    attempt tries[3];
    const int n = action_attempts(rq, O_CREAT | O_EXCL, tries);
    for (int i = 0; i < n; ++i) {
        int fd;
        for (;;) {
            fd = open64(rq.name, tries[i].mode | tries[i].extra, 0666);
            if (fd >= 0 || errno != EEXIST) break;
            struct stat64 st;
            if (lstat64(rq.name, &st) == 0) {
                if (!S_ISLNK(st.st_mode)) return fail_open(rq, EEXIST);
                bool writes = rq.action() == OPEN_ACTION_WRITE || rq.action() == OPEN_ACTION_READWRITE;
                return fail_open(rq, writes ? 1149 : 1150);
            }
            if (errno != ENOENT) return fail_open(rq, EEXIST);
            // The file went away meanwhile: try again.
        }
        if (fd >= 0) return connect_descriptor(rq, fd, may_read(tries[i].mode), may_write(tries[i].mode));
        const int err = errno;
        if (!may_fall_back(rq, i, err)) return fail_open(rq, open_error(err));
    }
    return fail_open(rq, EACCES);
}

int open_replace(open_request &rq) {
    attempt tries[3];
    const int n = action_attempts(rq, O_CREAT | O_TRUNC, tries);
    for (int i = 0; i < n; ++i) {
        int fd = open64(rq.name, tries[i].mode | tries[i].extra, 0666);
        if (fd >= 0) {
            if (rq.action() == OPEN_ACTION_READWRITE) fsync(fd);
            return connect_descriptor(rq, fd, may_read(tries[i].mode), may_write(tries[i].mode));
        }
        const int err = errno;
        if (!may_fall_back(rq, i, err)) return fail_open(rq, open_error(err));
    }
    return fail_open(rq, EACCES);
}

int open_unknown(open_request &rq) {
    attempt tries[4];
    int n = 0;
    switch (rq.action()) {
        case 0:
            tries[n++] = {O_RDWR, O_CREAT};
            tries[n++] = {O_RDONLY, O_CREAT};
            tries[n++] = {O_RDONLY, 0};
            tries[n++] = {O_WRONLY, O_CREAT};
            break;
        case OPEN_ACTION_READ:
            tries[n++] = {O_RDONLY, O_CREAT};
            tries[n++] = {O_RDONLY, 0};
            break;
        default:
            tries[n++] = {mode_of_action(rq.action()), O_CREAT};
            break;
    }
    int err = 0;
    for (int i = 0; i < n; ++i) {
        int fd = open64(rq.name, tries[i].mode | tries[i].extra, 0666);
        if (fd >= 0) return connect_descriptor(rq, fd, may_read(tries[i].mode), may_write(tries[i].mode));
        err = errno;
    }
    return fail_open(rq, open_error(err));
}

}  // namespace krm
