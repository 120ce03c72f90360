// Files and directories for tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace krm_test {

std::string read_file(const std::string &path);
void write_file(const std::string &path, const std::string &bytes);
bool file_exists(const std::string &path);

// Every test of this fixture runs in a new empty directory, which is the
// current directory for the test's span and is removed afterwards.
class InTempDir : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    std::string dir_;

private:
    std::string previous_;
};

}  // namespace krm_test
