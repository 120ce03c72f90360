// STATUS='SCRATCH': a new file with a made-up name in the first usable
// temporary directory, removed again by CLOSE or at the end of the program.

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "units/open_request.h"

namespace krm {
namespace {

char seed[3] = {'A', 'A', 'A'};
pthread_mutex_t seed_lock = PTHREAD_MUTEX_INITIALIZER;
const char r64c[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._";

// Takes the three letters and advances them like an odometer, the first
// letter fastest, so that names made in one process differ.
void take_seed(char out[3]) {
    pthread_mutex_lock(&seed_lock);
    memcpy(out, seed, 3);
    for (int i = 0; i < 3; ++i) {
        if (seed[i] != 'Z') {
            ++seed[i];
            break;
        }
        seed[i] = 'A';
    }
    pthread_mutex_unlock(&seed_lock);
}

bool usable_directory(const char *dir) {
    struct stat64 st;
    return stat64(dir, &st) == 0 && S_ISDIR(st.st_mode) && access(dir, W_OK | X_OK) == 0;
}

// TMPDIR, the current directory, /var/tmp/, /tmp: the first that is a
// directory we may write and search. Null when none is.
const char *scratch_directory(char *tmpdir_buf, size_t size) {
    const char *tmpdir = getenv("TMPDIR");
    if (tmpdir && *tmpdir) {
        size_t n = strnlen(tmpdir, size - 1);
        memcpy(tmpdir_buf, tmpdir, n);
        while (n > 1 && tmpdir_buf[n - 1] == '/') --n;
        tmpdir_buf[n] = '\0';
        if (usable_directory(tmpdir_buf)) return tmpdir_buf;
    }
    const char *fallbacks[] = {".", "/var/tmp/", "/tmp"};
    for (const char *d : fallbacks)
        if (usable_directory(d)) return d;
    return nullptr;
}

int tail_length(unsigned long pid) {
    if (pid < 0x100000) return 6;
    if (pid < 0x4000000) return 7;
    return 8;
}

void write_tail(char *out, int len, uint64_t value) {
    for (int i = 0; i < len; ++i) {
        out[i] = r64c[value & 63];
        value >>= 6;
    }
    out[len] = '\0';
}

}  // namespace

int open_scratch(open_request &rq) {
    int mode = rq.action() == OPEN_ACTION_READ ? O_RDONLY : rq.action() == OPEN_ACTION_WRITE ? O_WRONLY : O_RDWR;
    if (rq.name) {
        // Only the older dialect lets a scratch file have a name.
        int err = open_unknown(rq);
        if (err == 0) rq.up->flags |= UNIT_SCRATCH;
        return err;
    }

    unsigned long pid = static_cast<unsigned long>(getpid());
    char tmpdir_buf[4096];
    const char *dir = scratch_directory(tmpdir_buf, sizeof tmpdir_buf);
    if (!dir) return fail_open(rq, 1151);

    const int len = tail_length(pid);
    size_t dir_len = strcmp(dir, ".") == 0 ? 0 : strlen(dir);
    bool slash = dir_len > 0 && dir[dir_len - 1] != '/';
    size_t size = dir_len + (slash ? 1 : 0) + 5 + 3 + static_cast<size_t>(len) + 1;
    char *name = static_cast<char *>(malloc(size));
    if (!name) return fail_open(rq, ENOMEM);
    memcpy(name, dir, dir_len);
    char *p = name + dir_len;
    if (slash) *p++ = '/';
    memcpy(p, "tmp.F", 5);
    p += 5;
    take_seed(p);
    p += 3;
    rq.name = name;

    const uint32_t first = static_cast<uint32_t>(clock()) & 0xffff;
    uint32_t counter = first;
    int fd;
    for (;;) {
        write_tail(p, len, (static_cast<uint64_t>(pid) << 16) | counter);
        fd = open64(name, O_CREAT | O_EXCL | mode, 0600);
        if (fd >= 0) break;
        if (errno != EEXIST) return fail_open(rq, errno);
        counter = (counter + 1) & 0xffff;
        if (counter == first) return fail_open(rq, 1151);
    }

    struct stat64 st;
    if (fstat64(fd, &st) != 0) {
        int err = errno;
        close(fd);
        unlink(name);
        return fail_open(rq, err);
    }
    unit *up = rq.up;
    free(up->file_name);
    up->file_name = name;
    rq.name = nullptr;
    up->fd = fd;
    up->stream = nullptr;
    up->st_dev = st.st_dev;
    up->st_ino = st.st_ino;
    up->flags = UNIT_CONNECTED | UNIT_SCRATCH | (S_ISREG(st.st_mode) ? UNIT_REGULAR : 0) |
                (mode != O_WRONLY ? UNIT_CAN_READ : 0) | (mode != O_RDONLY ? UNIT_CAN_WRITE : 0);
    int64_t blk = st.st_blksize;
    if ((rq.flags & OPEN_FILEOPT_MASK) == OPEN_FILEOPT_BUFFER)
        up->block_size = requested_block_size(rq.buffer_size);
    else if (blk >= 512)
        up->block_size = static_cast<uint32_t>(blk);
    else if (blk > 0)
        up->block_size = static_cast<uint32_t>(((blk + 1023) / blk) * 1024);
    else
        up->block_size = 1024;
    return 0;
}

}  // namespace krm
