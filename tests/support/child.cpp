#include "support/child.h"

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include <gtest/gtest.h>

#include "support/files.h"
#include "units/units.h"

namespace krm_test {
namespace {

std::map<std::string, void (*)()> &scenarios() {
    static std::map<std::string, void (*)()> table;
    return table;
}

constexpr const char *kScenarioVar = "KRM_TEST_SCENARIO";

struct capture_files {
    std::string dir, in, out, err;
    capture_files() {
        char tmpl[] = "/tmp/krm-child-XXXXXX";
        dir = mkdtemp(tmpl);
        in = dir + "/in";
        out = dir + "/out";
        err = dir + "/err";
    }
    ~capture_files() {
        unlink(in.c_str());
        unlink(out.c_str());
        unlink(err.c_str());
        rmdir(dir.c_str());
    }
};

// In the child: fds 0, 1, 2 as the options say.
void wire_standard_fds(const capture_files &files, const child_options &opt) {
    if (opt.close_stdin) {
        close(0);
    } else {
        write_file(files.in, opt.stdin_text);
        int fd = open(files.in.c_str(), O_RDONLY);
        dup2(fd, 0);
        close(fd);
    }
    if (opt.close_stdout) {
        close(1);
    } else {
        int fd = open(files.out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 1);
        close(fd);
    }
    int fd = open(files.err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(fd, 2);
    close(fd);
    for (const std::string &kv : opt.env) putenv(strdup(kv.c_str()));
}

child_result collect(pid_t pid, const capture_files &files) {
    child_result r;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
    }
    if (WIFEXITED(status)) r.exit_code = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) r.signal = WTERMSIG(status);
    r.out = read_file(files.out);
    r.err = read_file(files.err);
    return r;
}

}  // namespace

scenario_registration::scenario_registration(const char *name, void (*fn)()) { scenarios()[name] = fn; }

void run_scenario_if_asked() {
    const char *name = getenv(kScenarioVar);
    if (!name) return;
    auto it = scenarios().find(name);
    if (it == scenarios().end()) {
        fprintf(stderr, "no scenario %s\n", name);
        _exit(99);
    }
    it->second();
    fflush(nullptr);
    exit(0);
}

child_result run_forked(const std::function<void()> &fn, const child_options &opt) {
    capture_files files;
    fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        wire_standard_fds(files, opt);
        fn();
        fflush(nullptr);
        _exit(0);
    }
    return collect(pid, files);
}

void exit_if_failed() {
    if (!::testing::Test::HasFailure()) return;
    fflush(nullptr);
    _exit(1);
}

namespace {

void drop_record(unit *up) {
    if (!up || is_default_record(up)) return;
    if (up->flags & UNIT_CONNECTED) close(up->fd);
    free(up->file_name);
    free(up->buffer);
    free(up);
}

}  // namespace

void forget_inherited_units() {
    pthread_mutex_lock(&__f90_io_master_lock);
    for (unit *&up : __f90_small_unit_pointer_table) {
        if (is_default_record(up)) continue;
        drop_record(up);
        up = nullptr;
    }
    for (int slot = 0; slot < HASHED_UNIT_SLOTS; ++slot) {
        drop_record(__f90_unit_pointer_table[slot]);
        __f90_unit_pointer_table[slot] = nullptr;
        for (collision_cell *c = __f90_unit_collision_table[slot]; c;) {
            collision_cell *next = c->next;
            drop_record(c->u);
            free(c);
            c = next;
        }
        __f90_unit_collision_table[slot] = nullptr;
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
}

child_result run_checked(const std::function<void()> &fn, const child_options &opt) {
    return run_forked(
        [&] {
            forget_inherited_units();
            fn();
            exit_if_failed();
        },
        opt);
}

child_result run_scenario(const char *name, const child_options &opt) {
    capture_files files;
    fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        wire_standard_fds(files, opt);
        setenv(kScenarioVar, name, 1);
        char exe[] = "/proc/self/exe";
        char *argv[] = {exe, nullptr};
        execv(exe, argv);
        _exit(98);
    }
    return collect(pid, files);
}

}  // namespace krm_test
