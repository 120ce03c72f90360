#include "support/files.h"

#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace krm_test {

std::string read_file(const std::string &path) {
    std::string bytes;
    int fd = open(path.c_str(), O_RDONLY);
    if (fd < 0) return bytes;
    char buf[65536];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0) bytes.append(buf, static_cast<size_t>(n));
    close(fd);
    return bytes;
}

void write_file(const std::string &path, const std::string &bytes) {
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) return;
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
    close(fd);
}

bool file_exists(const std::string &path) {
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

namespace {
int remove_entry(const char *path, const struct stat *, int, struct FTW *) {
    chmod(path, 0700);
    return remove(path);
}
}  // namespace

void InTempDir::SetUp() {
    char cwd[4096];
    previous_ = getcwd(cwd, sizeof cwd) ? cwd : "/";
    const char *base = getenv("TMPDIR");
    std::string tmpl = std::string(base && *base ? base : "/tmp") + "/krm-test-XXXXXX";
    std::vector<char> name(tmpl.begin(), tmpl.end());
    name.push_back('\0');
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    dir_ = name.data();
    ASSERT_EQ(chdir(dir_.c_str()), 0);
}

void InTempDir::TearDown() {
    if (chdir(previous_.c_str()) != 0) return;
    nftw(dir_.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace krm_test
