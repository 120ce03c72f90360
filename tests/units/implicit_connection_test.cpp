// WRITE (u, *) on a unit that no OPEN named: the unit is connected to fort.N
// in the current directory, and its bytes reach the file when the buffer
// fills, at STOP, or before an error report. Each test runs its statements in
// a child, whose unit tables start as the parent left them (untouched), in a
// fresh directory.

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"
#include "units/units.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";
const char kWriteLocation[] = " Location:  the WRITE statement at line 20 of \"t.f90\"\n";

bool in_tables(int64_t n) {
    bool found = false;
    pthread_mutex_lock(&__f90_io_master_lock);
    if (n < SMALL_UNIT_SLOTS) {
        found = __f90_small_unit_pointer_table[n] != nullptr;
    } else {
        unit *head = __f90_unit_pointer_table[n & HASH_MASK];
        found = head && head->unit_number == n;
        for (collision_cell *c = __f90_unit_collision_table[n & HASH_MASK]; c; c = c->next)
            found = found || (c->u && c->u->unit_number == n);
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
    return found;
}

// ---------------------------------------------------------------- a new connection

class ImplicitConnectionTest : public InTempDir, public ::testing::WithParamInterface<int64_t> {};

TEST_P(ImplicitConnectionTest, WriteConnectsFortN) {
    const int64_t n = GetParam();
    const std::string name = "fort." + std::to_string(n);
    child_result r = run_checked([&] {
        EXPECT_EQ(write_list(n, {ch("unit"), i8(n)}), 0);
        struct stat st;
        EXPECT_EQ(stat(name.c_str(), &st), 0);
        EXPECT_TRUE(S_ISREG(st.st_mode));
        const mode_t mask = umask(0);
        umask(mask);
        EXPECT_EQ(st.st_mode & 0777, 0666u & ~mask);
        // A unit without a stream keeps its bytes until the buffer fills.
        EXPECT_EQ(st.st_size, 0);
        with_unit(n, [&](unit *up) {
            EXPECT_EQ(up->flags, UNIT_CONNECTED | UNIT_WRITING | UNIT_CAN_READ | UNIT_CAN_WRITE |
                                     UNIT_SEQUENTIAL | UNIT_FORMATTED | UNIT_REGULAR);
            EXPECT_STREQ(up->file_name, name.c_str());
            EXPECT_EQ(up->stream, nullptr);
            EXPECT_EQ(up->recl, 0x7ffffffe);
            EXPECT_EQ(up->record_limit, up->recl);
            EXPECT_EQ(up->record_pos, 0);
            EXPECT_EQ(up->st_ino, static_cast<uint64_t>(st.st_ino));
            EXPECT_EQ(up->block_size, static_cast<uint32_t>(st.st_blksize));
            // List output on a regular file: twice the block size.
            EXPECT_EQ(up->buffer_end - up->buffer, 2 * static_cast<ptrdiff_t>(up->block_size));
            EXPECT_EQ(up->lock_depth, 1);
        });
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(read_file(name), " unit " + std::to_string(n) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Units, ImplicitConnectionTest,
                         ::testing::Values(1, 11, 127, 128, 1152, 2147483647),
                         [](const auto &info) { return std::to_string(info.param); });

using ImplicitConnection = InTempDir;

TEST_F(ImplicitConnection, OldContentsAreLost) {
    write_file("fort.11", std::string(10000, 'o') + "\nold\n");
    child_result r = run_checked([] {
        EXPECT_EQ(write_list(11, {ch("new")}, IO_RETURNING), 0);
        EXPECT_EQ(read_file("fort.11"), "");  // emptied at connection
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("fort.11"), " new\n");
}

// In the older dialect nothing limits the record: record_limit stays 0.
TEST_F(ImplicitConnection, OlderDialectStatesNoRecordLimit) {
    child_result r = run_checked([] {
        EXPECT_EQ(write_list(12, {i4(1)}, IO_F77COMPAT), 0);
        with_unit(12, [](unit *up) {
            EXPECT_EQ(up->recl, 0x7ffffffe);
            EXPECT_EQ(up->record_limit, 0);
        });
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(ImplicitConnection, StatementsAccumulateUntilStop) {
    child_result r = run_checked([] {
        EXPECT_EQ(write_list(11, {i4(1)}), 0);
        EXPECT_EQ(write_list(11, {i4(2), i4(3)}), 0);
        EXPECT_EQ(write_list(11, {ch("text"), l4(1)}), 0);
        EXPECT_EQ(write_list(12, {ch("other unit")}), 0);
        EXPECT_EQ(read_file("fort.11"), "");
        EXPECT_EQ(read_file("fort.12"), "");
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("fort.11"), " 1\n 2 3\n text T\n");
    EXPECT_EQ(read_file("fort.12"), " other unit\n");
}

// More than a buffer's worth: whole buffers go out on the way, the rest at STOP.
TEST_F(ImplicitConnection, FullBuffersGoOutOnTheWay) {
    std::string expected;
    for (int i = 0; i < 3000; ++i) expected += " line " + std::to_string(i) + "\n";
    child_result r = run_checked([&] {
        for (int i = 0; i < 3000; ++i) ASSERT_EQ(write_list(11, {ch("line"), i4(i)}), 0);
        std::string so_far = read_file("fort.11");
        EXPECT_FALSE(so_far.empty());
        EXPECT_LT(so_far.size(), expected.size());
        EXPECT_EQ(expected.compare(0, so_far.size(), so_far), 0);
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("fort.11"), expected);
}

TEST_F(ImplicitConnection, SynchronousFlagPassesBytesAtEachStatementEnd) {
    child_result r = run_checked([] {
        EXPECT_EQ(__f90_set_synchronous_flag(1), 0);
        EXPECT_EQ(write_list(11, {i4(1)}), 0);
        EXPECT_EQ(read_file("fort.11"), " 1\n");
        EXPECT_EQ(write_list(11, {i4(2)}), 0);
        EXPECT_EQ(read_file("fort.11"), " 1\n 2\n");
        EXPECT_EQ(__f90_set_synchronous_flag(0), 1);
        EXPECT_EQ(write_list(11, {i4(3)}), 0);
        EXPECT_EQ(read_file("fort.11"), " 1\n 2\n");
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// The report's banner runs the cleanup: what unit buffers hold reaches the
// files before the report, and standard output is flushed.
TEST_F(ImplicitConnection, BuffersReachFilesBeforeAReport) {
    child_result r = run_checked([] {
        write_list(11, {ch("kept"), i4(11)});
        write_list(1200, {ch("hashed"), i4(1200)});
        fputs("stdout pending", stdout);
        write_list(-1, {ch("never")});  // aborts with 1001
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(read_file("fort.11"), " kept 11\n");
    EXPECT_EQ(read_file("fort.1200"), " hashed 1200\n");
    EXPECT_EQ(r.out, "stdout pending");
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1001:  illegal unit number\n" + kWriteLocation +
                         " Unit:  *\n");
}

// ---------------------------------------------------------------- fort.N is a directory

TEST_F(ImplicitConnection, DirectoryReturnsEISDIR) {
    ASSERT_EQ(mkdir("fort.11", 0755), 0);
    child_result r = run_checked([] {
        EXPECT_EQ(write_list(11, {ch("x")}, IO_RETURNING), EISDIR);
        EXPECT_FALSE(in_tables(11));  // released unconnected: removed
        EXPECT_EQ(write_list(11, {ch("x")}, IO_RETURNING), EISDIR);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    struct stat st;
    ASSERT_EQ(stat("fort.11", &st), 0);
    EXPECT_TRUE(S_ISDIR(st.st_mode));
}

TEST_F(ImplicitConnection, DirectoryAbortReport) {
    ASSERT_EQ(mkdir("fort.11", 0755), 0);
    child_result r = run_checked([] { write_list(11, {ch("x")}); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1148:  attempting to open a directory\n" +
                         kWriteLocation + " Unit:  11\n File:  fort.11\n");
}

// ---------------------------------------------------------------- permissions

// Root is not stopped by permission bits, so as root the child takes the
// identity of an ordinary user before its statements.
class ImplicitPermissions : public InTempDir {
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
};

TEST_F(ImplicitPermissions, ReadOnlyFileCannotBeWritten) {
    write_file("fort.11", "old\n");
    ASSERT_EQ(chmod("fort.11", 0444), 0);
    child_result r = run_checked([] {
        become_ordinary_user();
        // Read-write fails, the write-only fallback fails too: the first errno.
        EXPECT_EQ(write_list(11, {ch("x")}, IO_RETURNING), EACCES);
        EXPECT_FALSE(in_tables(11));
    });
    if (r.exit_code == kCannotDrop) GTEST_SKIP() << "running as root, which ignores permission bits, "
                                                    "and cannot take another user's identity";
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("fort.11"), "old\n");
}

TEST_F(ImplicitPermissions, ReadOnlyFileAbortReport) {
    write_file("fort.11", "old\n");
    ASSERT_EQ(chmod("fort.11", 0444), 0);
    child_result r = run_checked([] {
        become_ordinary_user();
        write_list(11, {ch("x")});
    });
    if (r.exit_code == kCannotDrop) GTEST_SKIP() << "running as root, which ignores permission bits, "
                                                    "and cannot take another user's identity";
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 13:  Permission denied\n" + kWriteLocation +
                         " Unit:  11\n File:  fort.11\n");
}

// A file that may be written but not read: the fallback opens it write-only.
TEST_F(ImplicitPermissions, WriteOnlyFileIsConnectedWriteOnly) {
    write_file("fort.11", "old contents\n");
    ASSERT_EQ(chmod("fort.11", 0222), 0);
    child_result r = run_checked([] {
        become_ordinary_user();
        EXPECT_EQ(write_list(11, {ch("new")}, IO_RETURNING), 0);
        with_unit(11, [](unit *up) {
            EXPECT_NE(up->flags & UNIT_CAN_WRITE, 0u);
            EXPECT_EQ(up->flags & UNIT_CAN_READ, 0u);
            EXPECT_NE(up->flags & UNIT_WRITING, 0u);
        });
        exit_if_failed();
        __f90_stop();
    });
    if (r.exit_code == kCannotDrop) GTEST_SKIP() << "running as root, which ignores permission bits, "
                                                    "and cannot take another user's identity";
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    ASSERT_EQ(chmod("fort.11", 0644), 0);
    EXPECT_EQ(read_file("fort.11"), " new\n");
}

// ---------------------------------------------------------------- a device that is full

class FullDevice : public InTempDir {
protected:
    void SetUp() override {
        InTempDir::SetUp();
        if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
        ASSERT_EQ(symlink("/dev/full", "fort.11"), 0);
    }
};

TEST_F(FullDevice, OverflowingTheBufferReturnsENOSPC) {
    child_result r = run_checked([] {
        EXPECT_EQ(write_list(11, {ch("small")}, IO_RETURNING), 0);  // stays in the buffer
        with_unit(11, [](unit *up) {
            EXPECT_EQ(up->flags & UNIT_REGULAR, 0u);
            // Not a regular file: the buffer is one block.
            EXPECT_EQ(up->buffer_end - up->buffer, static_cast<ptrdiff_t>(up->block_size));
        });
        EXPECT_EQ(write_list(11, {ch(std::string(20000, 'x'))}, IO_RETURNING), ENOSPC);
        // The failed statement released the unit.
        with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(FullDevice, AbortReport) {
    child_result r = run_checked([] { write_list(11, {ch(std::string(20000, 'x'))}); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 28:  No space left on device\n" + kWriteLocation +
                         " Unit:  11\n File:  fort.11\n");
}

// What STOP cannot write out is lost without a word.
TEST_F(FullDevice, StopSaysNothing) {
    child_result r = run_checked([] {
        write_list(11, {ch("lost")});
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, "");
}

}  // namespace
