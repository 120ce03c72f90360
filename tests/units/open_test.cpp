// OPEN end to end, as compiled code makes it: a flags word, the specifier
// parsers, __f90_open; then list-directed WRITE through the unit, CLOSE, and
// a look at the bytes on disk. Every test runs its statements in a child
// whose unit tables hold only the default records, in a fresh directory.

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "frame/report.h"
#include "support/child.h"
#include "support/files.h"
#include "support/open_close.h"
#include "support/statements.h"
#include "units/units.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";
const char kOpenLocation[] = " Location:  the OPEN statement at line 30 of \"t.f90\"\n";

using parser_fn = int (*)(uint32_t *, const char *, int32_t, const stmt_location *);

// One run-time specifier: its parser and its value.
struct specifier {
    parser_fn fn;
    const char *value;
};

// OPEN (n, [FILE=name,] specifiers...): the parsers work on the word, then
// the statement's call. A parser's failure ends the statement.
int open_with(int64_t n, const char *name, const std::vector<specifier> &specs, uint32_t flags = OPEN_RETURNING,
              int64_t recl = 0) {
    for (const specifier &s : specs)
        if (int err = s.fn(&flags, s.value, static_cast<int32_t>(strlen(s.value)), &kOpenAt)) return err;
    if (!name) return open_unit(n, flags, recl);
    return open_file(n, name, flags, recl);
}

// The base flags of an OPEN that asked for nothing: connected for reading
// and writing to a regular file, sequential, formatted, BLANK='NULL'.
constexpr uint32_t kPlainFlags = UNIT_CONNECTED | UNIT_CAN_READ | UNIT_CAN_WRITE | UNIT_REGULAR |
                                 UNIT_SEQUENTIAL | UNIT_FORMATTED | UNIT_BLANK_NULL;

uint32_t unit_flags(int64_t n) {
    uint32_t flags = 0;
    with_unit(n, [&](unit *up) { flags = up->flags; });
    return flags;
}

child_options with_env(const std::string &name_value) {
    child_options opt;
    opt.env.push_back(name_value);
    return opt;
}

// How many scratch files stand in dir.
int scratch_files_in(const std::string &dir) {
    int n = 0;
    if (DIR *d = opendir(dir.c_str())) {
        while (struct dirent *e = readdir(d)) n += strncmp(e->d_name, "tmp.F", 5) == 0;
        closedir(d);
    }
    return n;
}

std::string unit_file_name(int64_t n) {
    std::string name;
    with_unit(n, [&](unit *up) { name = up->file_name ? up->file_name : "(null)"; });
    return name;
}

// Root is not stopped by permission bits: as root a child takes the
// identity of an ordinary user before its statements.
class AsOrdinaryUser : public InTempDir {
protected:
    static constexpr int kCannotDrop = 77;

    void SetUp() override {
        InTempDir::SetUp();
        if (geteuid() == 0) {
            ASSERT_EQ(chmod(dir_.c_str(), 0777), 0);
        }
    }

    static void become_ordinary_user() {
        if (geteuid() != 0) return;
        if (setgid(65534) != 0 || setuid(65534) != 0 || geteuid() == 0) _exit(kCannotDrop);
    }

    // Creates a file as the ordinary user will see it: owned by that user.
    void make_file(const char *name, const std::string &bytes, mode_t mode) {
        write_file(name, bytes);
        if (geteuid() == 0) {
            ASSERT_EQ(chown(name, 65534, 65534), 0);
        }
        ASSERT_EQ(chmod(name, mode), 0);
    }
};

#define SKIP_IF_CANNOT_DROP(r)                                                                 \
    if ((r).exit_code == kCannotDrop)                                                         \
    GTEST_SKIP() << "running as root, which ignores permission bits, and cannot take another " \
                    "user's identity"

using OpenFile = InTempDir;

// ---------------------------------------------------------------- FILE=

TEST_F(OpenFile, TrailingBlanksOfTheNameAreCut) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "a b  "), 0);
        EXPECT_EQ(unit_file_name(10), "a b");
        EXPECT_EQ(write_list(10, {ch("x")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("a b"), " x\n");
    EXPECT_FALSE(file_exists("a b  "));
    EXPECT_FALSE(file_exists("fort.10"));
}

// The name ends at a NUL; blanks before it stay, since the given length was
// not reached.
TEST_F(OpenFile, NulEndsTheNameAndKeepsBlanksBeforeIt) {
    child_result r = run_checked([] {
        static const char name[] = "a b  \0after";
        EXPECT_EQ(__f90_open(OPEN_RETURNING | OPEN_FILE, 10, name, 11, 0, &kOpenAt, 0), 0);
        EXPECT_EQ(unit_file_name(10), "a b  ");
        EXPECT_EQ(write_list(10, {ch("y")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("a b  "), " y\n");
    EXPECT_FALSE(file_exists("a b"));
}

struct empty_name_case {
    const char *name;
    const char *text;
    int32_t length;
};

void PrintTo(const empty_name_case &c, std::ostream *os) { *os << c.name; }

class EmptyFileName : public InTempDir, public ::testing::WithParamInterface<empty_name_case> {};

TEST_P(EmptyFileName, Is1130) {
    const empty_name_case &c = GetParam();
    child_result r = run_checked([&] {
        EXPECT_EQ(__f90_open(OPEN_RETURNING | OPEN_FILE, 10, c.text, c.length, 0, &kOpenAt, 0), 1130);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("fort.10"));
}

const empty_name_case kEmptyNames[] = {
    {"length_0", "x", 0},
    {"blanks", "    ", 4},
    {"nul_first", "\0abc", 4},
    {"negative_length", "abc", -1},
    {"most_negative_length", "abc", INT32_MIN},
};

INSTANTIATE_TEST_SUITE_P(Names, EmptyFileName, ::testing::ValuesIn(kEmptyNames),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(OpenFile, NullNameIs1117) {
    child_result r = run_checked([] {
        EXPECT_EQ(__f90_open(OPEN_RETURNING | OPEN_FILE, 10, nullptr, 5, 0, &kOpenAt, 0), 1117);
        EXPECT_EQ(__f90_open(OPEN_RETURNING | OPEN_FILE, 10, nullptr, 0, 0, &kOpenAt, 0), 1117);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("fort.10"));
}

// Without the FILE= bit the name argument is not looked at: fort.N.
TEST_F(OpenFile, NoFileBitConnectsFortN) {
    child_result r = run_checked([] {
        EXPECT_EQ(__f90_open(OPEN_RETURNING, 10, "ignored", 7, 0, &kOpenAt, 0), 0);
        EXPECT_EQ(__f90_open(OPEN_RETURNING, 1200, nullptr, 99, 0, &kOpenAt, 0), 0);
        EXPECT_EQ(unit_file_name(10), "fort.10");
        EXPECT_EQ(write_list(10, {ch("ten")}), 0);
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_EQ(close_unit(1200), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("fort.10"), " ten\n");
    EXPECT_TRUE(file_exists("fort.1200"));
    EXPECT_FALSE(file_exists("ignored"));
}

class LongFileName : public InTempDir, public ::testing::WithParamInterface<size_t> {};

// The system refuses the name; nothing is left behind.
TEST_P(LongFileName, SystemSaysTooLong) {
    const std::string name(GetParam(), 'n');
    child_result r = run_checked([&] {
        EXPECT_EQ(open_file(10, name), ENAMETOOLONG);
        EXPECT_EQ(open_file(10, name, OPEN_RETURNING | OPEN_STATUS_OLD), ENAMETOOLONG);
        EXPECT_EQ(open_file(10, name, OPEN_RETURNING | OPEN_STATUS_NEW), ENAMETOOLONG);
        EXPECT_EQ(open_file(10, name, OPEN_RETURNING | OPEN_STATUS_REPLACE), ENAMETOOLONG);
        EXPECT_EQ(open_file(10, name, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 1145);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

INSTANTIATE_TEST_SUITE_P(Lengths, LongFileName, ::testing::Values(1000, 1024, 1025, 5000, 100000));

// The report names the file as every report does: cut at 1024 bytes.
TEST_F(OpenFile, LongNameAbortReport) {
    const std::string name(3000, 'n');
    child_result r = run_checked([&] { open_file(10, name, 0); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 36:  " + strerror(ENAMETOOLONG) + "\n" + kOpenLocation +
                         " Unit:  10\n File:  " + std::string(1024, 'n') + "\n");
}

// ---------------------------------------------------------------- STATUS=

// Nothing of the name: the system's ENOENT, not the dialect's 1018.
TEST_F(OpenFile, OldOfMissingFileIsENOENT) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD), ENOENT);
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD | OPEN_ACTION_READ), ENOENT);
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD | OPEN_ACTION_WRITE), ENOENT);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("x"));
}

TEST_F(OpenFile, OldOfMissingFileAbortReport) {
    child_result r = run_checked([] { open_file(10, "x", OPEN_STATUS_OLD); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 2:  No such file or directory\n" + kOpenLocation +
                         " Unit:  10\n File:  x\n");
}

TEST_F(OpenFile, OldOfMissingFileUnderDialectIs1018) {
    ASSERT_EQ(symlink("nowhere", "dangling"), 0);
    child_result r = run_checked([] {
        for (uint32_t dialect : {OPEN_F77COMPAT, OPEN_F77_READ_COMPAT}) {
            EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD | dialect), 1018);
            EXPECT_EQ(open_file(10, "dangling", OPEN_RETURNING | OPEN_STATUS_OLD | dialect), 1018);
        }
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(OpenFile, OldOfDanglingLinkIs1149) {
    ASSERT_EQ(symlink("nowhere", "x"), 0);
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD), 1149);
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD | OPEN_ACTION_READ), 1149);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("nowhere"));
}

TEST_F(OpenFile, OldKeepsTheContentsUntilTheFirstWrite) {
    write_file("x", "old contents\n");
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags);
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_EQ(read_file("x"), "old contents\n");
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD), 0);
        EXPECT_EQ(write_list(10, {ch("new")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " new\n");
}

TEST_F(OpenFile, NewOfExistingFileIsEEXIST) {
    write_file("x", "old\n");
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_NEW), EEXIST);
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_NEW | OPEN_ACTION_WRITE), EEXIST);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), "old\n");
}

TEST_F(OpenFile, NewOfExistingFileAbortReport) {
    write_file("x", "old\n");
    child_result r = run_checked([] { open_file(10, "x", OPEN_STATUS_NEW); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 17:  File exists\n" + kOpenLocation +
                         " Unit:  10\n File:  x\n");
}

TEST_F(OpenFile, NewCreatesTheFile) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_NEW), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags);
        EXPECT_EQ(write_list(10, {ch("made")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " made\n");
    struct stat st;
    ASSERT_EQ(stat("x", &st), 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(st.st_mode & 0777, 0666u & ~mask);
}

struct link_case {
    const char *name;
    bool target_exists;
    uint32_t action;
    int expected;
};

void PrintTo(const link_case &c, std::ostream *os) { *os << c.name; }

class NewOfSymlink : public InTempDir, public ::testing::WithParamInterface<link_case> {};

TEST_P(NewOfSymlink, Refused) {
    const link_case &c = GetParam();
    if (c.target_exists) write_file("target", "t\n");
    ASSERT_EQ(symlink("target", "x"), 0);
    child_result r = run_checked([&] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_NEW | c.action), c.expected);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(file_exists("target"), c.target_exists);
}

const link_case kLinkCases[] = {
    {"no_action", true, 0, 1150},
    {"read", true, OPEN_ACTION_READ, 1150},
    {"write", true, OPEN_ACTION_WRITE, 1149},
    {"readwrite", true, OPEN_ACTION_READWRITE, 1149},
    {"dangling_no_action", false, 0, 1150},
    {"dangling_read", false, OPEN_ACTION_READ, 1150},
    {"dangling_write", false, OPEN_ACTION_WRITE, 1149},
    {"dangling_readwrite", false, OPEN_ACTION_READWRITE, 1149},
};

INSTANTIATE_TEST_SUITE_P(Links, NewOfSymlink, ::testing::ValuesIn(kLinkCases),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(OpenFile, ReplaceEmptiesTheFileAtOpen) {
    write_file("x", "old contents\n");
    child_result r = run_checked([] {
        EXPECT_EQ(open_with(10, "x", {{__f90_open_status, "REPLACE"}}), 0);
        EXPECT_EQ(read_file("x"), "");
        EXPECT_EQ(write_list(10, {ch("new")}), 0);
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_EQ(read_file("x"), " new\n");
        // A missing file is made.
        EXPECT_EQ(open_with(10, "y", {{__f90_open_status, "replace"}, {__f90_open_action, "READWRITE"}}), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags);
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_EQ(read_file("y"), "");
        EXPECT_TRUE(file_exists("y"));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(OpenFile, ScratchWithNameIs1145) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_with(10, "x", {{__f90_open_status, "SCRATCH"}}), 1145);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("x"));
}

// A failure before the unit is in hand: banner, message, location, unit;
// no file line, although a name was given.
TEST_F(OpenFile, ScratchWithNameAbortReport) {
    child_result r = run_checked([] { open_with(10, "x", {{__f90_open_status, "SCRATCH"}}, 0); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1145:  a file name has been specified for a scratch file\n" +
                         kOpenLocation + " Unit:  10\n");
}

// The older dialect allows a named scratch file; CLOSE removes it.
TEST_F(OpenFile, NamedScratchUnderDialect) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_with(10, "x", {{__f90_open_status, "SCRATCH"}}, OPEN_RETURNING | OPEN_F77COMPAT), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags | UNIT_SCRATCH);
        EXPECT_EQ(unit_file_name(10), "x");
        EXPECT_EQ(write_list(10, {ch("s")}), 0);
        EXPECT_TRUE(file_exists("x"));
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_FALSE(file_exists("x"));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// ---------------------------------------------------------------- specifier errors

struct refusal_case {
    const char *name;
    int64_t unit;
    const char *file;  // FILE=, or null
    uint32_t flags;    // OPEN_RETURNING added
    std::vector<specifier> specs;
    int64_t recl;
    int expected;
};

void PrintTo(const refusal_case &c, std::ostream *os) { *os << c.name; }

class OpenRefused : public InTempDir, public ::testing::WithParamInterface<refusal_case> {};

// The statement fails, creates no file and leaves no record.
TEST_P(OpenRefused, ReturnsTheNumber) {
    const refusal_case &c = GetParam();
    child_result r = run_checked([&] {
        uint32_t flags = OPEN_RETURNING | c.flags;
        int got = 0;
        for (const specifier &s : c.specs)
            if ((got = s.fn(&flags, s.value, static_cast<int32_t>(strlen(s.value)), &kOpenAt)) != 0) break;
        ASSERT_EQ(got, 0);
        const int32_t len = c.file ? static_cast<int32_t>(strlen(c.file)) : 0;
        EXPECT_EQ(__f90_open(flags | (c.file ? OPEN_FILE : 0), c.unit, c.file, len, c.recl, &kOpenAt, 0),
                  c.expected);
        EXPECT_FALSE(in_tables(10));
        if (c.unit == 6) {
            // The default record stays where it was.
            pthread_mutex_lock(&__f90_io_master_lock);
            EXPECT_EQ(__f90_small_unit_pointer_table[6], &__f90_default_output_unit);
            pthread_mutex_unlock(&__f90_io_master_lock);
        } else {
            EXPECT_FALSE(in_tables(c.unit));
        }
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("x"));
    EXPECT_FALSE(file_exists("fort.10"));
}

const refusal_case kRefusals[] = {
    {"unit_minus_1", -1, "x", 0, {}, 0, 1001},
    {"unit_2_to_31", 2147483648LL, "x", 0, {}, 0, 1001},
    {"unit_high_word", (1LL << 32) + 10, nullptr, 0, {}, 0, 1001},
    {"unit_most_negative", INT64_MIN, "x", 0, {}, 0, 1001},
    {"direct_without_recl", 10, "x", 0, {{__f90_open_access, "DIRECT"}}, 0, 1139},
    {"direct_fort_n_without_recl", 10, nullptr, 0, {{__f90_open_access, "direct"}}, 0, 1139},
    {"stream_with_recl", 10, "x", OPEN_RECL, {{__f90_open_access, "STREAM"}}, 80, 1180},
    {"recl_0", 10, "x", OPEN_RECL, {}, 0, 1138},
    {"recl_negative", 10, "x", OPEN_RECL, {}, -1, 1138},
    {"recl_most_negative", 10, "x", OPEN_RECL, {{__f90_open_access, "DIRECT"}}, INT64_MIN, 1138},
    {"status_6", 10, "x", 0x1800, {}, 0, 1144},
    {"status_7", 10, nullptr, 0x1c00, {}, 0, 1144},
    {"append_with_new", 10, "x", 0, {{__f90_open_access_f77compat, "APPEND"}, {__f90_open_status, "NEW"}}, 0,
     1025},
    {"scratch_with_name", 10, "x", 0, {{__f90_open_status, "SCRATCH"}}, 0, 1145},
    {"stream_on_unit_6", 6, nullptr, 0, {{__f90_open_access, "STREAM"}}, 0, 1152},
};

INSTANTIATE_TEST_SUITE_P(Specifiers, OpenRefused, ::testing::ValuesIn(kRefusals),
                         [](const auto &info) { return std::string(info.param.name); });

struct buffer_case {
    const char *fileopt;
    int expected;
    uint32_t block_size;
};

class OpenBufferSize : public InTempDir, public ::testing::WithParamInterface<buffer_case> {};

TEST_P(OpenBufferSize, ZeroOrNegativeIs1154) {
    const buffer_case &c = GetParam();
    child_result r = run_checked([&] {
        uint32_t flags = OPEN_RETURNING;
        int64_t size = 0;
        ASSERT_EQ(__f95_open_fileopt(&flags, c.fileopt, static_cast<int32_t>(strlen(c.fileopt)), &kOpenAt, &size),
                  0);
        EXPECT_EQ(__f90_open(flags | OPEN_FILE, 10, "x", 1, 0, &kOpenAt, size), c.expected);
        if (c.expected == 0) {
            with_unit(10, [&](unit *up) { EXPECT_EQ(up->block_size, c.block_size); });
            // A buffer of the largest size may not be had: then error 12.
            const int wrote = write_list(10, {ch(std::string(5000, 'b'))}, IO_RETURNING);
            if (wrote != ENOMEM) {
                EXPECT_EQ(wrote, 0);
            }
            EXPECT_EQ(close_unit(10), 0);
            EXPECT_EQ(read_file("x"), wrote ? "" : " " + std::string(5000, 'b') + "\n");
        } else {
            EXPECT_FALSE(in_tables(10));
            EXPECT_FALSE(file_exists("x"));
        }
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

const buffer_case kBufferSizes[] = {
    {"BUFFER=0", 1154, 0},
    {"BUFFER=-1", 1154, 0},
    {"BUFFER=-9223372036854775807", 1154, 0},
    {"BUFFER=4096", 0, 4096},
    {"BUFFER = 300", 0, 300},
    {"BUFFER=1", 0, 1},
    {"BUFFER=2147483647", 0, 0x7fffffff},
    // Sizes no buffer can have stop at the largest block: a unit that works.
    {"BUFFER=2147483648", 0, 0x7fffffff},
    {"BUFFER=4294967296", 0, 0x7fffffff},
    {"BUFFER=9223372036854775807", 0, 0x7fffffff},
};

INSTANTIATE_TEST_SUITE_P(Values, OpenBufferSize, ::testing::ValuesIn(kBufferSizes));

// Under a dialect bit RECL= counts only for direct access: a bad value on a
// sequential connection is ignored, and no record limit is stated.
TEST_F(OpenFile, DialectIgnoresReclOnSequential) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_RECL | OPEN_F77COMPAT, 0), 0);
        with_unit(10, [](unit *up) {
            EXPECT_EQ(up->recl, 0x7ffffffe);
            EXPECT_EQ(up->record_limit, 0);
        });
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_EQ(open_with(10, "x", {{__f90_open_access, "DIRECT"}}, OPEN_RETURNING | OPEN_RECL | OPEN_F77COMPAT,
                            0),
                  1138);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(OpenFile, BadUnitAbortReport) {
    child_result r = run_checked([] { open_file(-1, "x", 0); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1001:  illegal unit number\n" + kOpenLocation + " Unit:  *\n");
    EXPECT_FALSE(file_exists("x"));
}

// ---------------------------------------------------------------- a directory

struct directory_case {
    const char *name;
    uint32_t flags;
    int expected;
};

void PrintTo(const directory_case &c, std::ostream *os) { *os << c.name; }

class OpenDirectory : public InTempDir, public ::testing::WithParamInterface<directory_case> {};

// Where the system refuses to open a directory for writing with EISDIR,
// OPEN reports its own 1148 too, the same as for a directory it could open.
TEST_P(OpenDirectory, Refused) {
    const directory_case &c = GetParam();
    ASSERT_EQ(mkdir("d", 0755), 0);
    child_result r = run_checked([&] {
        EXPECT_EQ(open_file(10, "d", OPEN_RETURNING | c.flags), c.expected);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    struct stat st;
    ASSERT_EQ(stat("d", &st), 0);
    EXPECT_TRUE(S_ISDIR(st.st_mode));
}

const directory_case kDirectories[] = {
    {"no_status", 0, 1148},
    {"unknown_read", OPEN_STATUS_UNKNOWN | OPEN_ACTION_READ, 1148},
    {"unknown_write", OPEN_STATUS_UNKNOWN | OPEN_ACTION_WRITE, 1148},
    {"old", OPEN_STATUS_OLD, 1148},
    {"old_read", OPEN_STATUS_OLD | OPEN_ACTION_READ, 1148},
    {"old_readwrite", OPEN_STATUS_OLD | OPEN_ACTION_READWRITE, 1148},
    {"replace", OPEN_STATUS_REPLACE, 1148},
    {"replace_read", OPEN_STATUS_REPLACE | OPEN_ACTION_READ, 1148},
    // NEW finds something that is no link: the system's EEXIST.
    {"new", OPEN_STATUS_NEW, EEXIST},
};

INSTANTIATE_TEST_SUITE_P(Statuses, OpenDirectory, ::testing::ValuesIn(kDirectories),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(OpenFile, DirectoryAbortReport) {
    ASSERT_EQ(mkdir("d", 0755), 0);
    child_result r = run_checked([] { open_file(10, "d", OPEN_STATUS_OLD | OPEN_ACTION_READ); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1148:  attempting to open a directory\n" + kOpenLocation +
                         " Unit:  10\n File:  d\n");
}

// ---------------------------------------------------------------- permissions

using OpenPermissions = AsOrdinaryUser;

TEST_F(OpenPermissions, ActionWriteOnReadOnlyFileIsEACCES) {
    make_file("x", "old\n", 0444);
    child_result r = run_checked([] {
        become_ordinary_user();
        EXPECT_EQ(open_with(10, "x", {{__f90_open_action, "WRITE"}}), EACCES);
        EXPECT_EQ(open_with(10, "x", {{__f90_open_action, "READWRITE"}, {__f90_open_status, "OLD"}}), EACCES);
        EXPECT_EQ(open_with(10, "x", {{__f90_open_action, "WRITE"}, {__f90_open_status, "REPLACE"}}), EACCES);
        EXPECT_FALSE(in_tables(10));
    });
    SKIP_IF_CANNOT_DROP(r);
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), "old\n");
}

class ReadOnlyFallback : public AsOrdinaryUser, public ::testing::WithParamInterface<uint32_t> {};

// Without ACTION= the file is connected read-only; WRITE then gives 1028.
TEST_P(ReadOnlyFallback, WriteIs1028) {
    const uint32_t status = GetParam();
    make_file("x", "old\n", 0444);
    child_result r = run_checked([&] {
        become_ordinary_user();
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | status), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags & ~UNIT_CAN_WRITE);
        EXPECT_EQ(write_list(10, {ch("no")}, IO_RETURNING), 1028);
        EXPECT_EQ(close_unit(10), 0);
    });
    SKIP_IF_CANNOT_DROP(r);
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), "old\n");
}

INSTANTIATE_TEST_SUITE_P(Statuses, ReadOnlyFallback,
                         ::testing::Values(0u, OPEN_STATUS_OLD, OPEN_STATUS_UNKNOWN));

// A file that may only be written: read-write and read-only both fail, the
// write-only open serves.
TEST_F(OpenPermissions, WriteOnlyFallback) {
    make_file("x", "old\n", 0222);
    child_result r = run_checked([] {
        become_ordinary_user();
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags & ~UNIT_CAN_READ);
        EXPECT_EQ(write_list(10, {ch("w")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    SKIP_IF_CANNOT_DROP(r);
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    ASSERT_EQ(chmod("x", 0644), 0);
    EXPECT_EQ(read_file("x"), " w\n");
}

TEST_F(OpenPermissions, NoPermissionAtAllIsEACCES) {
    make_file("x", "old\n", 0);
    child_result r = run_checked([] {
        become_ordinary_user();
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING), EACCES);
        EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_OLD), EACCES);
        EXPECT_FALSE(in_tables(10));
    });
    SKIP_IF_CANNOT_DROP(r);
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// ---------------------------------------------------------------- the connection

struct connection_case {
    const char *name;
    uint32_t flags;  // OPEN_RETURNING added
    std::vector<specifier> specs;
    int64_t recl;
    uint32_t unit_flags;
    int64_t unit_recl;
    int64_t record_limit;
};

void PrintTo(const connection_case &c, std::ostream *os) { *os << c.name; }

class OpenConnection : public InTempDir, public ::testing::WithParamInterface<connection_case> {};

TEST_P(OpenConnection, UnitRecord) {
    const connection_case &c = GetParam();
    child_result r = run_checked([&] {
        uint32_t flags = OPEN_RETURNING | c.flags;
        for (const specifier &s : c.specs)
            ASSERT_EQ(s.fn(&flags, s.value, static_cast<int32_t>(strlen(s.value)), &kOpenAt), 0) << s.value;
        ASSERT_EQ(open_file(10, "x", flags, c.recl), 0);
        with_unit(10, [&](unit *up) {
            EXPECT_EQ(up->flags, c.unit_flags);
            EXPECT_EQ(up->recl, c.unit_recl);
            EXPECT_EQ(up->record_limit, c.record_limit);
            EXPECT_EQ(up->next_record, 1);
            EXPECT_EQ(up->record_pos, 0);
            EXPECT_STREQ(up->file_name, "x");
            EXPECT_EQ(up->stream, nullptr);
            EXPECT_EQ(up->buffer, nullptr);
            struct stat st;
            ASSERT_EQ(fstat(up->fd, &st), 0);
            EXPECT_EQ(up->st_ino, static_cast<uint64_t>(st.st_ino));
            EXPECT_EQ(up->st_dev, static_cast<uint64_t>(st.st_dev));
            EXPECT_EQ(up->block_size, st.st_blksize >= 1024 ? static_cast<uint32_t>(st.st_blksize) : 1024u);
            EXPECT_EQ(up->lock_depth, 1);
        });
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

constexpr uint32_t kRW = UNIT_CONNECTED | UNIT_CAN_READ | UNIT_CAN_WRITE | UNIT_REGULAR;
constexpr int64_t kFmt = 0x7ffffffe;
constexpr int64_t kUnf = 0x7fffffff;

uint32_t round_bits(uint32_t code) { return code << 27; }

const connection_case kConnections[] = {
    {"plain", 0, {}, 0, kPlainFlags, kFmt, kFmt},
    {"sequential_formatted", 0, {{__f90_open_access, "SEQUENTIAL"}, {__f90_open_form, "FORMATTED"}}, 0,
     kPlainFlags, kFmt, kFmt},
    {"unformatted", 0, {{__f90_open_form, "UNFORMATTED"}}, 0,
     kRW | UNIT_SEQUENTIAL | UNIT_BLANK_NULL, kUnf, kUnf},
    {"binary", 0, {{__f90_open_form, "BINARY"}}, 0, kRW | UNIT_SEQUENTIAL | UNIT_BINARY | UNIT_BLANK_NULL, kUnf,
     kUnf},
    {"print", 0, {{__f90_open_form_f77compat, "PRINT"}}, 0,
     kRW | UNIT_SEQUENTIAL | UNIT_PRINT | UNIT_BLANK_NULL, kFmt, kFmt},
    {"direct", OPEN_RECL, {{__f90_open_access, "DIRECT"}}, 100, kRW | UNIT_BLANK_NULL, 100, 100},
    {"direct_formatted", OPEN_RECL, {{__f90_open_access, "DIRECT"}, {__f90_open_form, "FORMATTED"}}, 80,
     kRW | UNIT_FORMATTED | UNIT_BLANK_NULL, 80, 80},
    // Without FORM= the record length is that of a formatted connection,
    // whatever the access.
    {"stream", 0, {{__f90_open_access, "STREAM"}}, 0, kRW | UNIT_STREAM | UNIT_BLANK_NULL, kFmt, kFmt},
    {"stream_unformatted", 0, {{__f90_open_access, "STREAM"}, {__f90_open_form, "UNFORMATTED"}}, 0,
     kRW | UNIT_STREAM | UNIT_BLANK_NULL, kUnf, kUnf},
    {"stream_formatted", 0, {{__f90_open_access, "STREAM"}, {__f90_open_form, "FORMATTED"}}, 0,
     kRW | UNIT_STREAM | UNIT_FORMATTED | UNIT_BLANK_NULL, kFmt, kFmt},
    {"recl_sequential", OPEN_RECL, {}, 132, kPlainFlags, 132, 132},
    {"recl_words_unformatted", OPEN_RECL | OPEN_RECL_WORDS, {{__f90_open_access, "DIRECT"}}, 10,
     kRW | UNIT_BLANK_NULL, 40, 40},
    {"recl_words_formatted", OPEN_RECL | OPEN_RECL_WORDS, {}, 10, kPlainFlags, 10, 10},
    {"action_read", 0, {{__f90_open_action, "READ"}}, 0, kPlainFlags & ~UNIT_CAN_WRITE, kFmt, kFmt},
    {"action_write", 0, {{__f90_open_action, "write"}}, 0, kPlainFlags & ~UNIT_CAN_READ, kFmt, kFmt},
    {"blank_zero", 0, {{__f90_open_blank, "ZERO"}}, 0, (kPlainFlags & ~UNIT_BLANK_NULL) | UNIT_BLANK_ZERO, kFmt,
     kFmt},
    {"blank_null", 0, {{__f90_open_blank, "NULL"}}, 0, kPlainFlags, kFmt, kFmt},
    {"pad_no", 0, {{__f90_open_pad, "NO"}}, 0, kPlainFlags | UNIT_NOPAD, kFmt, kFmt},
    {"fileopt_nopad", 0, {{__f90_open_fileopt, "NOPAD"}}, 0, kPlainFlags | UNIT_NOPAD, kFmt, kFmt},
    {"delim_apostrophe", 0, {{__f90_open_delim, "APOSTROPHE"}}, 0, kPlainFlags | UNIT_DELIM, kFmt, kFmt},
    {"delim_quote", 0, {{__f90_open_delim, "QUOTE"}}, 0, kPlainFlags | UNIT_DELIM | UNIT_DELIM_QUOTE, kFmt,
     kFmt},
    {"delim_none", 0, {{__f90_open_delim, "NONE"}}, 0, kPlainFlags, kFmt, kFmt},
    {"asynchronous", 0, {{__f90_open_asynchronous, "YES"}}, 0, kPlainFlags | UNIT_ASYNC, kFmt, kFmt},
    {"decimal_comma", 0, {{__f90_open_decimal, "COMMA"}}, 0, kPlainFlags | UNIT_DECIMAL_COMMA, kFmt, kFmt},
    {"decimal_point", 0, {{__f90_open_decimal, "POINT"}}, 0, kPlainFlags, kFmt, kFmt},
    {"round_up", 0, {{__f90_open_round, "UP"}}, 0, kPlainFlags | round_bits(1), kFmt, kFmt},
    {"round_compatible", 0, {{__f90_open_round, "COMPATIBLE"}}, 0, kPlainFlags | round_bits(5), kFmt, kFmt},
    {"round_processor_defined", 0, {{__f90_open_round, "PROCESSOR_DEFINED"}}, 0, kPlainFlags | round_bits(6),
     kFmt, kFmt},
    {"dialect_states_no_limit", OPEN_F77COMPAT, {}, 0, kPlainFlags, kFmt, 0},
    {"dialect_direct_recl", OPEN_F77_READ_COMPAT | OPEN_RECL, {{__f90_open_access, "DIRECT"}}, 64,
     kRW | UNIT_BLANK_NULL, 64, 64},
};

INSTANTIATE_TEST_SUITE_P(Specifiers, OpenConnection, ::testing::ValuesIn(kConnections),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- position

struct position_case {
    const char *name;
    std::vector<specifier> specs;
    const char *result;  // the file after WRITE and CLOSE
};

void PrintTo(const position_case &c, std::ostream *os) { *os << c.name; }

class OpenPosition : public InTempDir, public ::testing::WithParamInterface<position_case> {};

// The first WRITE after OPEN cuts the file where the unit stands: at the
// start it replaces the contents, at the end it adds to them.
TEST_P(OpenPosition, WriteAfterOpen) {
    const position_case &c = GetParam();
    write_file("x", "an old line that is long\n");
    child_result r = run_checked([&] {
        EXPECT_EQ(open_with(10, "x", c.specs), 0);
        EXPECT_EQ(read_file("x"), "an old line that is long\n");
        EXPECT_EQ(write_list(10, {ch("new"), i4(1)}), 0);
        EXPECT_EQ(write_list(10, {i4(2)}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), c.result);
}

const char kReplaced[] = " new 1\n 2\n";
const char kAppended[] = "an old line that is long\n new 1\n 2\n";

const position_case kPositions[] = {
    {"default", {}, kReplaced},
    {"asis", {{__f90_open_position, "ASIS"}}, kReplaced},
    {"rewind", {{__f90_open_position, "REWIND"}}, kReplaced},
    {"old_rewind", {{__f90_open_status, "OLD"}, {__f90_open_position, "REWIND"}}, kReplaced},
    {"append", {{__f90_open_position, "APPEND"}}, kAppended},
    {"old_append", {{__f90_open_status, "OLD"}, {__f90_open_position, "append"}}, kAppended},
    {"unknown_append_write",
     {{__f90_open_status, "UNKNOWN"}, {__f90_open_position, "APPEND"}, {__f90_open_action, "WRITE"}},
     kAppended},
    {"fileopt_eof", {{__f90_open_fileopt, "EOF"}}, kAppended},
    {"access_append", {{__f90_open_access_f77compat, "APPEND"}}, kAppended},
    // REWIND wins over FILEOPT='EOF'.
    {"rewind_over_eof", {{__f90_open_fileopt, "EOF"}, {__f90_open_position, "REWIND"}}, kReplaced},
};

INSTANTIATE_TEST_SUITE_P(Specifiers, OpenPosition, ::testing::ValuesIn(kPositions),
                         [](const auto &info) { return std::string(info.param.name); });

class OpenFifo : public InTempDir, public ::testing::WithParamInterface<uint32_t> {};

// A named pipe cannot seek: a position asked for is passed over, and the
// connection works.
TEST_P(OpenFifo, PositionIsPassedOver) {
    const uint32_t position = GetParam();
    ASSERT_EQ(mkfifo("p", 0600), 0);
    child_result r = run_checked([&] {
        // A reader keeps what is written in the pipe.
        const int reader = open("p", O_RDONLY | O_NONBLOCK);
        ASSERT_GE(reader, 0);
        EXPECT_EQ(open_file(10, "p", OPEN_RETURNING | position), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags & ~UNIT_REGULAR);
        EXPECT_EQ(write_list(10, {ch("through"), i4(1)}), 0);
        EXPECT_EQ(close_unit(10), 0);
        char buf[64] = {};
        EXPECT_EQ(read(reader, buf, sizeof buf - 1), 11);
        EXPECT_STREQ(buf, " through 1\n");
        close(reader);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

INSTANTIATE_TEST_SUITE_P(Positions, OpenFifo,
                         ::testing::Values(0u, OPEN_POSITION_REWIND, OPEN_POSITION_APPEND, OPEN_FILEOPT_EOF));

// ---------------------------------------------------------------- re-open

using Reopen = InTempDir;

// With no FILE= the connection stays; DELIM= (like BLANK=, PAD=) is set
// afresh, falling back to NONE when not given.
TEST_F(Reopen, ChangesDelimiters) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("ab")}), 0);
        EXPECT_EQ(open_with(10, nullptr, {{__f90_open_delim, "QUOTE"}}), 0);
        EXPECT_EQ(write_list(10, {ch("ab"), ch("a\"b")}), 0);
        EXPECT_EQ(open_with(10, nullptr, {{__f90_open_delim, "APOSTROPHE"}}), 0);
        EXPECT_EQ(write_list(10, {ch("it's")}), 0);
        EXPECT_EQ(open_unit(10), 0);
        EXPECT_EQ(write_list(10, {ch("ab")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " ab\n \"ab\" \"a\"\"b\"\n 'it''s'\n ab\n");
}

// Only BLANK=, DELIM=, PAD=, DECIMAL=, ROUND= change; everything else, the
// buffered output included, stays as the first OPEN left it.
TEST_F(Reopen, ChangesOnlyTheChangeableModes) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_with(10, "x",
                            {{__f90_open_blank, "ZERO"},
                             {__f90_open_pad, "NO"},
                             {__f90_open_decimal, "COMMA"},
                             {__f90_open_round, "DOWN"},
                             {__f90_open_asynchronous, "YES"}}),
                  0);
        EXPECT_EQ(write_list(10, {ch("kept")}), 0);
        const uint32_t before = unit_flags(10);
        EXPECT_EQ(before, (kPlainFlags & ~UNIT_BLANK_NULL) | UNIT_BLANK_ZERO | UNIT_NOPAD | UNIT_DECIMAL_COMMA |
                              round_bits(2) | UNIT_ASYNC | UNIT_WRITING);
        // Nothing given: the modes fall back to their defaults.
        EXPECT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_OLD), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags | UNIT_ASYNC | UNIT_WRITING);
        // Other specifiers are not looked at: no 1139 for DIRECT without
        // RECL=, no new ACTION=, FORM=, RECL=, position.
        EXPECT_EQ(open_with(10, nullptr,
                            {{__f90_open_access, "DIRECT"},
                             {__f90_open_action, "READ"},
                             {__f90_open_form, "UNFORMATTED"},
                             {__f90_open_position, "REWIND"},
                             {__f90_open_blank, "ZERO"},
                             {__f90_open_round, "NEAREST"}},
                            OPEN_RETURNING | OPEN_RECL, 5),
                  0);
        EXPECT_EQ(unit_flags(10), (kPlainFlags & ~UNIT_BLANK_NULL) | UNIT_BLANK_ZERO | round_bits(4) | UNIT_ASYNC |
                                      UNIT_WRITING);
        with_unit(10, [](unit *up) {
            EXPECT_EQ(up->recl, kFmt);
            EXPECT_STREQ(up->file_name, "x");
        });
        // ASYNCHRONOUS= is not among them either.
        ASSERT_EQ(close_unit(10), 0);
        ASSERT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_POSITION_APPEND), 0);
        EXPECT_EQ(open_with(10, nullptr, {{__f90_open_asynchronous, "YES"}}), 0);
        EXPECT_EQ(unit_flags(10), kPlainFlags);
        EXPECT_EQ(write_list(10, {ch("more")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " kept\n more\n");
}

// The same name again, or a hard link to the open file: the same file, no
// file operation; buffered output stays in the buffer.
TEST_F(Reopen, SameFileByNameOrHardLink) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("one")}), 0);
        EXPECT_EQ(open_with(10, "x", {{__f90_open_delim, "QUOTE"}}), 0);
        EXPECT_EQ(read_file("x"), "");
        ASSERT_EQ(link("x", "hard"), 0);
        EXPECT_EQ(open_with(10, "hard", {{__f90_open_status, "OLD"}}), 0);
        EXPECT_EQ(unit_file_name(10), "x");
        EXPECT_EQ(read_file("x"), "");
        EXPECT_EQ(write_list(10, {ch("two")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " one\n two\n");
}

// A symbolic link to the open file counts as another file: the unit is
// closed (its buffer reaches the file) and connected anew through the link.
TEST_F(Reopen, SymbolicLinkIsAnotherFile) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("one")}), 0);
        ASSERT_EQ(symlink("x", "sym"), 0);
        EXPECT_EQ(open_with(10, "sym", {{__f90_open_position, "APPEND"}}), 0);
        EXPECT_EQ(read_file("x"), " one\n");
        EXPECT_EQ(unit_file_name(10), "sym");
        EXPECT_EQ(write_list(10, {ch("two")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " one\n two\n");
}

// OPEN of a connected unit with another name closes the old file first.
TEST_F(Reopen, AnotherNameClosesTheOldFile) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_with(10, "x", {{__f90_open_delim, "QUOTE"}}), 0);
        EXPECT_EQ(write_list(10, {ch("first")}), 0);
        EXPECT_EQ(read_file("x"), "");
        EXPECT_EQ(open_file(10, "y"), 0);
        EXPECT_EQ(read_file("x"), " \"first\"\n");
        EXPECT_EQ(unit_file_name(10), "y");
        EXPECT_EQ(unit_flags(10), kPlainFlags);  // a new connection: no delimiters
        EXPECT_EQ(write_list(10, {ch("second")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " \"first\"\n");
    EXPECT_EQ(read_file("y"), " second\n");
}

// A name that cannot even be looked up (other than missing) is that
// system error; the unit stays connected as it was.
TEST_F(Reopen, NameThatCannotBeLookedUp) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("first")}), 0);
        EXPECT_EQ(open_file(10, std::string(5000, 'n')), ENAMETOOLONG);
        EXPECT_EQ(open_file(10, "x/below"), ENOTDIR);
        EXPECT_EQ(unit_file_name(10), "x");
        with_unit(10, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
        EXPECT_EQ(write_list(10, {ch("second")}), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " first\n second\n");
}

// The old file is closed before the new one is tried; when that fails the
// unit is left unconnected.
TEST_F(Reopen, AnotherNameThatFails) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("first")}), 0);
        EXPECT_EQ(open_file(10, "missing", OPEN_RETURNING | OPEN_STATUS_OLD), ENOENT);
        EXPECT_EQ(read_file("x"), " first\n");
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

struct reopen_status_case {
    const char *name;
    uint32_t status;
    uint32_t returning;
    int expected;
    int expected_with_name;  // the same with FILE= naming the open file
};

void PrintTo(const reopen_status_case &c, std::ostream *os) { *os << c.name; }

class ReopenStatus : public InTempDir, public ::testing::WithParamInterface<reopen_status_case> {};

// On the connected file only OLD (and, in the abort form, UNKNOWN) may be
// stated; the unit stays as it was either way.
TEST_P(ReopenStatus, OnTheConnectedFile) {
    const reopen_status_case &c = GetParam();
    child_result r = run_checked([&] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("kept")}), 0);
        EXPECT_EQ(open_unit(10, c.returning | c.status | OPEN_DELIM_QUOTE), c.expected);
        EXPECT_EQ(open_file(10, "x", c.returning | c.status | OPEN_DELIM_QUOTE), c.expected_with_name);
        EXPECT_EQ(unit_flags(10) & ~(UNIT_DELIM | UNIT_DELIM_QUOTE), kPlainFlags | UNIT_WRITING);
        with_unit(10, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " kept\n");
}

const reopen_status_case kReopenStatuses[] = {
    {"none", 0, OPEN_RETURNING, 0, 0},
    {"old", OPEN_STATUS_OLD, OPEN_RETURNING, 0, 0},
    {"unknown_abort_form", OPEN_STATUS_UNKNOWN, 0, 0, 0},
    {"unknown_return_form", OPEN_STATUS_UNKNOWN, OPEN_RETURNING, 1141, 1141},
    {"new", OPEN_STATUS_NEW, OPEN_RETURNING, 1141, 1141},
    {"replace", OPEN_STATUS_REPLACE, OPEN_RETURNING, 1141, 1141},
    // A name with SCRATCH is refused before the unit is looked at.
    {"scratch", OPEN_STATUS_SCRATCH, OPEN_RETURNING, 1141, 1145},
};

INSTANTIATE_TEST_SUITE_P(Statuses, ReopenStatus, ::testing::ValuesIn(kReopenStatuses),
                         [](const auto &info) { return std::string(info.param.name); });

class ReopenStatusReport : public InTempDir, public ::testing::WithParamInterface<std::pair<uint32_t, const char *>> {};

// The abort form adds the status line; the file line names the unit's file.
TEST_P(ReopenStatusReport, AbortReport) {
    const auto &[status, text] = GetParam();
    child_result r = run_checked([&] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("kept")}), 0);
        exit_if_failed();
        open_unit(10, status);
    });
    EXPECT_EQ(r.signal, SIGABRT) << r.out;
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1141:  status is specified and not 'OLD' for connected unit\n" +
                         kOpenLocation + " Unit:  10\n File:  x\n Status:  " + text + "\n");
    // The report's cleanup wrote what the buffer owed.
    EXPECT_EQ(read_file("x"), " kept\n");
}

INSTANTIATE_TEST_SUITE_P(Statuses, ReopenStatusReport,
                         ::testing::Values(std::make_pair(OPEN_STATUS_NEW, "NEW"),
                                           std::make_pair(OPEN_STATUS_REPLACE, "REPLACE"),
                                           std::make_pair(OPEN_STATUS_SCRATCH, "SCRATCH")));

struct form_change_case {
    const char *name;
    uint32_t first_form;  // FORM= of the first OPEN
    uint32_t form;        // FORM= of the re-open, under a dialect bit
    uint32_t returning;
    int expected;
    uint32_t form_bits;   // UNIT_FORMATTED / UNIT_PRINT afterwards
};

void PrintTo(const form_change_case &c, std::ostream *os) { *os << c.name; }

class ReopenFormUnderDialect : public InTempDir, public ::testing::WithParamInterface<form_change_case> {};

TEST_P(ReopenFormUnderDialect, Changes) {
    const form_change_case &c = GetParam();
    child_result r = run_checked([&] {
        ASSERT_EQ(open_file(10, "x", OPEN_RETURNING | c.first_form), 0);
        EXPECT_EQ(open_unit(10, c.returning | OPEN_F77COMPAT | c.form), c.expected);
        EXPECT_EQ(unit_flags(10) & (UNIT_FORMATTED | UNIT_PRINT | UNIT_BINARY), c.form_bits);
        with_unit(10, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

const form_change_case kFormChanges[] = {
    {"formatted_to_formatted", OPEN_FORM_FORMATTED, OPEN_FORM_FORMATTED, OPEN_RETURNING, 0, UNIT_FORMATTED},
    {"print_to_formatted", OPEN_FORM_PRINT, OPEN_FORM_FORMATTED, OPEN_RETURNING, 0, UNIT_FORMATTED},
    {"formatted_to_print", OPEN_FORM_FORMATTED, OPEN_FORM_PRINT, OPEN_RETURNING, 0, UNIT_PRINT},
    {"formatted_to_print_abort_form", 0, OPEN_FORM_PRINT, 0, 0, UNIT_PRINT},
    {"unformatted_to_formatted", OPEN_FORM_UNFORMATTED, OPEN_FORM_FORMATTED, OPEN_RETURNING, 1002, 0},
    {"unformatted_to_print", OPEN_FORM_UNFORMATTED, OPEN_FORM_PRINT, OPEN_RETURNING, 1002, 0},
    {"unformatted_to_unformatted", OPEN_FORM_UNFORMATTED, OPEN_FORM_UNFORMATTED, OPEN_RETURNING, 0, 0},
    {"formatted_to_unformatted", OPEN_FORM_FORMATTED, OPEN_FORM_UNFORMATTED, OPEN_RETURNING, 1003,
     UNIT_FORMATTED},
    // The return form moves a PRINT unit over to FORMATTED and still fails.
    {"print_to_unformatted", OPEN_FORM_PRINT, OPEN_FORM_UNFORMATTED, OPEN_RETURNING, 1003, UNIT_FORMATTED},
    {"formatted_to_binary", OPEN_FORM_FORMATTED, OPEN_FORM_BINARY, OPEN_RETURNING, 1021, UNIT_FORMATTED},
    {"print_to_binary", OPEN_FORM_PRINT, OPEN_FORM_BINARY, OPEN_RETURNING, 1021, UNIT_FORMATTED},
    {"unformatted_to_binary", OPEN_FORM_UNFORMATTED, OPEN_FORM_BINARY, OPEN_RETURNING, 1021, 0},
    {"no_form", OPEN_FORM_PRINT, 0, OPEN_RETURNING, 0, UNIT_PRINT},
};

INSTANTIATE_TEST_SUITE_P(Forms, ReopenFormUnderDialect, ::testing::ValuesIn(kFormChanges),
                         [](const auto &info) { return std::string(info.param.name); });

// Outside the dialect FORM= of a re-open is not looked at.
TEST_F(Reopen, FormIgnoredOutsideDialect) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_FORM_UNFORMATTED), 0);
        EXPECT_EQ(open_unit(10, OPEN_RETURNING | OPEN_FORM_FORMATTED), 0);
        EXPECT_EQ(open_unit(10, OPEN_RETURNING | OPEN_FORM_BINARY), 0);
        EXPECT_EQ(unit_flags(10) & (UNIT_FORMATTED | UNIT_PRINT | UNIT_BINARY), 0u);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// OPEN from a function called in the I/O list of a statement on the same
// unit: 1146, and the outer statement goes on.
TEST_F(Reopen, RecursiveOpenIs1146) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        io_control_list_write outer = {0, &kWriteAt, 10, nullptr};
        ASSERT_EQ(__f90_sslw(&outer), 0);
        EXPECT_EQ(__f90_slw_i4(&outer, 1), 0);
        EXPECT_EQ(open_unit(10), 1146);
        EXPECT_EQ(open_file(10, "other"), 1146);
        EXPECT_EQ(outer.up->lock_depth, 1);
        EXPECT_EQ(__f90_slw_i4(&outer, 2), 0);
        EXPECT_EQ(__f90_eslw(&outer), 0);
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " 1 2\n");
    EXPECT_FALSE(file_exists("other"));
}

// In this process, not a child, so that a leak checker sees the failing
// paths: each frees the name and leaves no record.
TEST_F(OpenFile, FailuresLeaveNothingBehind) {
    ASSERT_EQ(mkdir("d", 0755), 0);
    ASSERT_EQ(symlink("nowhere", "dangling"), 0);
    write_file("exists", "e\n");
    const std::string long_name(5000, 'n');
    EXPECT_EQ(open_file(10, "missing", OPEN_RETURNING | OPEN_STATUS_OLD), ENOENT);
    EXPECT_EQ(open_file(10, "missing", OPEN_RETURNING | OPEN_STATUS_OLD | OPEN_F77COMPAT), 1018);
    EXPECT_EQ(open_file(10, "dangling", OPEN_RETURNING | OPEN_STATUS_OLD), 1149);
    EXPECT_EQ(open_file(10, "dangling", OPEN_RETURNING | OPEN_STATUS_NEW), 1150);
    EXPECT_EQ(open_file(10, "exists", OPEN_RETURNING | OPEN_STATUS_NEW), EEXIST);
    EXPECT_EQ(open_file(10, "d", OPEN_RETURNING), 1148);
    EXPECT_EQ(open_file(10, "d", OPEN_RETURNING | OPEN_STATUS_OLD | OPEN_ACTION_READ), 1148);
    EXPECT_EQ(open_file(10, long_name, OPEN_RETURNING), ENAMETOOLONG);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_STATUS_SCRATCH), 1145);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_RECL, 0), 1138);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_ACCESS_DIRECT), 1139);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_ACCESS_STREAM | OPEN_RECL, 10), 1180);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_FILEOPT_BUFFER, 0, 0), 1154);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | 0x1800), 1144);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_ACCESS_APPEND | OPEN_STATUS_NEW), 1025);
    EXPECT_EQ(open_file(1200, "x", OPEN_RETURNING | OPEN_ACCESS_DIRECT), 1139);
    EXPECT_EQ(open_file(-1, "x", OPEN_RETURNING), 1001);
    EXPECT_FALSE(in_tables(10));
    EXPECT_FALSE(in_tables(1200));
    // A connection that is re-opened, moved to another file, written and closed.
    ASSERT_EQ(open_file(10, "x"), 0);
    EXPECT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_DELIM_QUOTE), 0);
    EXPECT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_NEW), 1141);
    EXPECT_EQ(open_file(10, "y"), 0);
    EXPECT_EQ(write_list(10, {ch("y")}), 0);
    EXPECT_EQ(open_file(10, "missing", OPEN_RETURNING | OPEN_STATUS_OLD), ENOENT);
    EXPECT_FALSE(in_tables(10));
    EXPECT_EQ(read_file("y"), " y\n");
    EXPECT_EQ(read_file("x"), "");
}

// ---------------------------------------------------------------- default units

// With FILE= unit 6 gets a record of its own; PRINT * keeps the static one.
TEST_F(OpenFile, Unit6WithFileLeavesPrintOnStandardOutput) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(6, "out"), 0);
        EXPECT_EQ(print_list({ch("to stdout")}), 0);
        EXPECT_EQ(write_list(6, {ch("to file")}), 0);
        EXPECT_EQ(print_list({ch("again")}), 0);
        pthread_mutex_lock(&__f90_io_master_lock);
        EXPECT_NE(__f90_small_unit_pointer_table[6], &__f90_default_output_unit);
        pthread_mutex_unlock(&__f90_io_master_lock);
        EXPECT_EQ(close_unit(6), 0);
        EXPECT_EQ(read_file("out"), " to file\n");
        EXPECT_EQ(print_list({ch("after close")}), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.out, " to stdout\n again\n after close\n");
    EXPECT_EQ(r.err, "");
}

// Without FILE= unit 6 is the static record itself, so PRINT * sees the
// change of DELIM=.
TEST_F(OpenFile, Unit6WithoutFileChangesTheDefaultRecord) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_with(6, nullptr, {{__f90_open_delim, "QUOTE"}}), 0);
        EXPECT_EQ(print_list({ch("q")}), 0);
        EXPECT_EQ(write_list(6, {ch("w")}), 0);
        EXPECT_EQ(open_unit(6), 0);
        EXPECT_EQ(print_list({ch("n")}), 0);
        // STREAM on the default record is refused; with a file it is not.
        EXPECT_EQ(open_with(6, nullptr, {{__f90_open_access, "STREAM"}}), 1152);
        EXPECT_EQ(open_with(6, "s", {{__f90_open_access, "STREAM"}}), 0);
        EXPECT_EQ(close_unit(6), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.out, " \"q\"\n \"w\"\n n\n");
    EXPECT_TRUE(file_exists("s"));
}

// Units in the hashed table, two of them in one slot.
TEST_F(OpenFile, HashedUnitsShareASlot) {
    child_result r = run_checked([] {
        EXPECT_EQ(open_file(128, "a"), 0);
        EXPECT_EQ(open_file(1152, "b"), 0);
        EXPECT_EQ(open_file(2176, "c"), 0);
        EXPECT_EQ(write_list(128, {i4(128)}), 0);
        EXPECT_EQ(write_list(1152, {i4(1152)}), 0);
        EXPECT_EQ(write_list(2176, {i4(2176)}), 0);
        EXPECT_EQ(close_unit(1152), 0);
        EXPECT_FALSE(in_tables(1152));
        EXPECT_TRUE(in_tables(128));
        EXPECT_TRUE(in_tables(2176));
        EXPECT_EQ(close_unit(128), 0);
        EXPECT_EQ(close_unit(2176), 0);
        EXPECT_FALSE(in_tables(128));
        EXPECT_FALSE(in_tables(2176));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("a"), " 128\n");
    EXPECT_EQ(read_file("b"), " 1152\n");
    EXPECT_EQ(read_file("c"), " 2176\n");
}

// ---------------------------------------------------------------- scratch files

const char kR64[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._";

// Checks a scratch name made by this process in `dir` ("" for the current
// directory): tmp.F, three seed letters, and a tail that encodes the process
// number above 16 bits of counter, 6 bits a character, lowest first.
void expect_scratch_name(const std::string &name, const std::string &dir) {
    const unsigned long pid = static_cast<unsigned long>(getpid());
    const size_t tail = pid < 0x100000 ? 6 : pid < 0x4000000 ? 7 : 8;
    const std::string prefix = dir.empty() ? "tmp.F" : dir + "/tmp.F";
    ASSERT_EQ(name.size(), prefix.size() + 3 + tail) << name;
    ASSERT_EQ(name.substr(0, prefix.size()), prefix) << name;
    for (size_t i = 0; i < 3; ++i) {
        const char c = name[prefix.size() + i];
        EXPECT_TRUE(c >= 'A' && c <= 'Z') << name;
    }
    uint64_t value = 0;
    for (size_t i = 0; i < tail; ++i) {
        const char *at = strchr(kR64, name[prefix.size() + 3 + i]);
        ASSERT_TRUE(at && *at) << name;
        value |= static_cast<uint64_t>(at - kR64) << (6 * i);
    }
    EXPECT_EQ(value >> 16, pid) << name;
}

using Scratch = InTempDir;

TEST_F(Scratch, MadeInTmpdirAndRemovedByClose) {
    ASSERT_EQ(mkdir("tmpd", 0755), 0);
    const std::string tmpdir = dir_ + "/tmpd";
    child_result r = run_checked(
        [&] {
            ASSERT_EQ(open_with(10, nullptr, {{__f90_open_status, "SCRATCH"}}), 0);
            const std::string name = unit_file_name(10);
            expect_scratch_name(name, tmpdir);
            struct stat st;
            ASSERT_EQ(stat(name.c_str(), &st), 0);
            EXPECT_EQ(st.st_mode & 0777, 0600u);
            with_unit(10, [&](unit *up) {
                EXPECT_EQ(up->flags, kPlainFlags | UNIT_SCRATCH);
                EXPECT_EQ(up->recl, kFmt);
                EXPECT_EQ(up->st_ino, static_cast<uint64_t>(st.st_ino));
                const uint32_t blk = static_cast<uint32_t>(st.st_blksize);
                EXPECT_EQ(up->block_size, blk >= 512 ? blk : ((blk + 1023) / blk) * 1024);
            });
            EXPECT_EQ(write_list(10, {ch("scratch"), i4(10)}), 0);
            EXPECT_EQ(close_unit(10), 0);
            EXPECT_FALSE(file_exists(name));
            EXPECT_FALSE(in_tables(10));
        },
        with_env("TMPDIR=" + tmpdir + "///"));
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(Scratch, ActionAndBufferSize) {
    ASSERT_EQ(mkdir("tmpd", 0755), 0);
    child_result r = run_checked(
        [&] {
            uint32_t flags = OPEN_RETURNING | OPEN_STATUS_SCRATCH;
            int64_t size = 0;
            ASSERT_EQ(__f95_open_fileopt(&flags, "BUFFER=700", 10, &kOpenAt, &size), 0);
            ASSERT_EQ(__f90_open_action(&flags, "WRITE", 5, &kOpenAt), 0);
            ASSERT_EQ(__f90_open(flags, 10, nullptr, 0, 0, &kOpenAt, size), 0);
            with_unit(10, [](unit *up) {
                EXPECT_EQ(up->flags, (kPlainFlags & ~UNIT_CAN_READ) | UNIT_SCRATCH);
                EXPECT_EQ(up->block_size, 700u);
            });
            EXPECT_EQ(close_unit(10), 0);
            EXPECT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH | OPEN_ACTION_READ), 0);
            EXPECT_EQ(unit_flags(10), (kPlainFlags & ~UNIT_CAN_WRITE) | UNIT_SCRATCH);
            EXPECT_EQ(close_unit(10), 0);
        },
        with_env("TMPDIR=" + dir_ + "/tmpd"));
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

struct tmpdir_case {
    const char *name;
    const char *tmpdir;  // null: unset; relative to the test directory unless empty
};

void PrintTo(const tmpdir_case &c, std::ostream *os) { *os << c.name; }

class ScratchFallsBackToCurrentDirectory : public InTempDir,
                                           public ::testing::WithParamInterface<tmpdir_case> {};

TEST_P(ScratchFallsBackToCurrentDirectory, Made) {
    const tmpdir_case &c = GetParam();
    write_file("plain", "");
    child_result r = run_checked([&] {
        if (!c.tmpdir)
            unsetenv("TMPDIR");
        else if (!*c.tmpdir)
            setenv("TMPDIR", "", 1);
        else
            setenv("TMPDIR", (dir_ + "/" + c.tmpdir).c_str(), 1);
        ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
        const std::string name = unit_file_name(10);
        expect_scratch_name(name, "");
        EXPECT_TRUE(file_exists(name));
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_FALSE(file_exists(name));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

const tmpdir_case kTmpdirs[] = {
    {"unset", nullptr},
    {"empty", ""},
    {"missing", "no/such/dir"},
    {"a_file", "plain"},
};

INSTANTIATE_TEST_SUITE_P(Tmpdir, ScratchFallsBackToCurrentDirectory, ::testing::ValuesIn(kTmpdirs),
                         [](const auto &info) { return std::string(info.param.name); });

using ScratchPermissions = AsOrdinaryUser;

// A TMPDIR that may not be written is passed over.
TEST_F(ScratchPermissions, UnwritableTmpdirIsPassedOver) {
    ASSERT_EQ(mkdir("ro", 0555), 0);
    child_result r = run_checked(
        [&] {
            become_ordinary_user();
            ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
            const std::string name = unit_file_name(10);
            expect_scratch_name(name, "");
            EXPECT_EQ(close_unit(10), 0);
        },
        with_env("TMPDIR=" + dir_ + "/ro"));
    SKIP_IF_CANNOT_DROP(r);
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// The seed letters advance like an odometer, the first letter fastest, from
// "AAA" at load; a fresh process is needed to see them from the start.
KRM_SCENARIO(scratch_seed_letters) {
    for (int i = 0; i < 28; ++i) {
        if (open_unit(10 + i % 2, OPEN_RETURNING | OPEN_STATUS_SCRATCH) != 0) _exit(3);
        with_unit(10 + i % 2, [](unit *up) {
            const char *base = strstr(up->file_name, "tmp.F");
            if (base) printf("%.3s\n", base + 5);
        });
        if (i % 2 == 1 && (close_unit(10) != 0 || close_unit(11) != 0)) _exit(4);
    }
}

TEST_F(Scratch, SeedLettersDifferBetweenOpens) {
    child_result r = run_scenario("scratch_seed_letters", with_env("TMPDIR=" + dir_));
    EXPECT_EQ(r.exit_code, 0) << r.err;
    std::string expected;
    for (int i = 0; i < 28; ++i) {
        expected += static_cast<char>('A' + i % 26);
        expected += static_cast<char>('A' + i / 26);
        expected += "A\n";
    }
    EXPECT_EQ(r.out, expected);
    // Every one of them was removed by its CLOSE.
    EXPECT_EQ(scratch_files_in(dir_), 0);
}

// What the end of a program runs removes scratch files still connected.
TEST_F(Scratch, CleanupRemovesThem) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
        ASSERT_EQ(open_unit(1300, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
        const std::string a = unit_file_name(10), b = unit_file_name(1300);
        EXPECT_EQ(write_list(10, {ch("gone")}), 0);
        EXPECT_TRUE(file_exists(a));
        EXPECT_TRUE(file_exists(b));
        __f90_cleanup();
        EXPECT_FALSE(file_exists(a));
        EXPECT_FALSE(file_exists(b));
        // CLOSE afterwards finds nothing more to remove and says nothing.
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_EQ(close_unit(1300), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(Scratch, StopRemovesThem) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
        printf("%s\n", unit_file_name(10).c_str());
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    ASSERT_GT(r.out.size(), 1u);
    EXPECT_FALSE(file_exists(r.out.substr(0, r.out.size() - 1)));
}

}  // namespace
