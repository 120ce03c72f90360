// Reading newline-ended records into a unit's buffer for outside callers.

#include <gtest/gtest.h>

#include <signal.h>
#include <stdlib.h>

#include <string>

#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

constexpr int32_t kReturning = 1;
constexpr int32_t kReturningEof = 2;

class ReadSfRecord : public InTempDir {
protected:
    // Unit 21 connected for input to fort.21 holding `bytes`, with a buffer
    // of `block` bytes. Left held by this test.
    unit *connect(const std::string &bytes, uint32_t block) {
        write_file("fort.21", bytes);
        unit *up = nullptr;
        EXPECT_EQ(__f90_get_numbered_unit_r(&up, 21), 0);
        EXPECT_EQ(__f90_open_for_input_r(21, up), 0);
        up->block_size = block;
        up->buffer = static_cast<char *>(malloc(block));
        up->buffer_end = up->buffer + block;
        up->write_ptr = up->data_ptr = up->data_end = up->buffer;
        return up;
    }
    static std::string record(const unit *up) {
        return std::string(up->record_start, static_cast<size_t>(up->record_end - up->record_start));
    }
};

TEST_F(ReadSfRecord, RecordsLongerThanTheBufferStayWhole) {
    std::string long_line(1000, 'L');
    unit *up = connect("ab\n" + long_line + "\n\nlast\n", 16);
    const int32_t mode = kReturning | kReturningEof;
    ASSERT_EQ(__f90_read_sf_record(up, mode, 21, &kWriteAt), 0);
    EXPECT_EQ(record(up), "ab");
    ASSERT_EQ(__f90_read_sf_record(up, mode, 21, &kWriteAt), 0);
    EXPECT_EQ(record(up), long_line);
    EXPECT_GE(up->buffer_end - up->buffer, 1000);
    ASSERT_EQ(__f90_read_sf_record(up, mode, 21, &kWriteAt), 0);
    EXPECT_EQ(record(up), "");
    ASSERT_EQ(__f90_read_sf_record(up, mode, 21, &kWriteAt), 0);
    EXPECT_EQ(record(up), "last");
    // End of file releases the unit and comes back as -1.
    EXPECT_EQ(__f90_read_sf_record(up, mode, 21, &kWriteAt), -1);
    EXPECT_TRUE(up->flags & UNIT_AFTER_EOF);
}

TEST_F(ReadSfRecord, LastLineWithoutNewlineIsLost) {
    unit *up = connect("one\ntwo", 8);
    ASSERT_EQ(__f90_read_sf_record(up, kReturning | kReturningEof, 21, &kWriteAt), 0);
    EXPECT_EQ(record(up), "one");
    EXPECT_EQ(__f90_read_sf_record(up, kReturning | kReturningEof, 21, &kWriteAt), -1);
}

TEST_F(ReadSfRecord, EndOfFileWithoutReturningReports) {
    child_result r = run_forked([&] {
        unit *up = connect("", 8);
        __f90_read_sf_record(up, kReturning, 21, &kWriteAt);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err,
              "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n"
              " End-of-file:  -1\n"
              " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
              " Unit:  21\n"
              " File:  fort.21\n");
}

TEST(IoMalloc, ReturnsOrReportsNoMemory) {
    void *p = nullptr;
    EXPECT_EQ(__f90_io_malloc(&p, 1, 64, &kWriteAt), 0);
    ASSERT_NE(p, nullptr);
    free(p);
    // More than any address space holds.
    const size_t huge = SIZE_MAX - 4096;
    EXPECT_EQ(__f90_io_malloc(&p, 1, huge, &kWriteAt), 12);
    child_result r = run_forked([&] {
        void *q = nullptr;
        __f90_io_malloc(&q, 0, huge, &kWriteAt);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    // An address sanitizer warns of the failed allocation first; the report follows.
    std::string report = r.err.substr(std::min(r.err.size(), r.err.find("\n ******")));
    // The count is shown as 32 bits, as on the library's first target.
    EXPECT_EQ(report,
              "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n"
              " Error 12:  Cannot allocate memory\n"
              " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
              " Bytes requested:  4294963199\n");
}

}  // namespace
