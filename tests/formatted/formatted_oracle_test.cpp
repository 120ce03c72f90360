// Standard-defined output editing (I, B, O, Z, L, A, G on integers,
// logicals and characters) and the layout of records (X, T, TL, TR, slash,
// strings, repeat groups, reversion, colon), compared with gfortran.
//
// The cases live in oracle_cases.txt. At build time oracle.f90, compiled by
// gfortran, writes each case with its own run-time library; here each case
// is written through libkrm's entries as compiled code calls them, to unit
// 11, and the file's records must equal gfortran's one for one. Editing does
// not depend on the ABI, so the i386 build compares with the same output.

#include <gtest/gtest.h>

#include <stdlib.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "formatted/formatted_statements.h"
#include "support/files.h"
#include "support/open_close.h"

using namespace krm_test;

namespace {

struct oracle_case {
    std::string name;
    std::string format;
    std::vector<fitem> items;
    std::string problem;  // why the line could not be read, if it could not
    int line = 0;
};

void PrintTo(const oracle_case &c, std::ostream *os) { *os << c.name << " " << c.format; }

std::string trim(const std::string &s) {
    size_t b = s.find_first_not_of(' ');
    if (b == std::string::npos) return "";
    size_t e = s.find_last_not_of(' ');
    return s.substr(b, e - b + 1);
}

// The items of a case, by the rules the oracle program reads them with.
bool parse_items(const std::string &text, std::vector<fitem> &items, std::string &problem) {
    std::vector<std::string> tokens;
    std::string cur;
    bool quoted = false;
    for (char c : text) {
        if (c == '"') quoted = !quoted;
        if (c == ';' && !quoted) {
            tokens.push_back(trim(cur));
            cur.clear();
        } else {
            cur += c;
        }
    }
    tokens.push_back(trim(cur));
    for (const std::string &t : tokens) {
        size_t sp = t.find(' ');
        std::string type = t.substr(0, sp);
        std::string arg = sp == std::string::npos ? "" : trim(t.substr(sp));
        if (type == "none") continue;
        if (type == "ch") {
            size_t first = t.find('"'), last = t.rfind('"');
            if (first == std::string::npos || first == last) {
                problem = "a ch value needs two double quotes";
                return false;
            }
            items.push_back(fch(t.substr(first + 1, last - first - 1)));
            continue;
        }
        if (type[0] == 'l') {
            if (arg != "T" && arg != "F") {
                problem = "a logical value is T or F";
                return false;
            }
            int64_t v = arg == "T" ? 1 : 0;
            if (type == "l1") items.push_back(fl1(static_cast<int32_t>(v)));
            else if (type == "l2") items.push_back(fl2(static_cast<int32_t>(v)));
            else if (type == "l4") items.push_back(fl4(static_cast<int32_t>(v)));
            else if (type == "l8") items.push_back(fl8(v));
            else {
                problem = "unknown item type " + type;
                return false;
            }
            continue;
        }
        char *end = nullptr;
        int64_t v = strtoll(arg.c_str(), &end, 10);
        if (arg.empty() || *end) {
            problem = "bad integer " + arg;
            return false;
        }
        if (type == "i1") items.push_back(fi1(static_cast<int32_t>(v)));
        else if (type == "i2") items.push_back(fi2(static_cast<int32_t>(v)));
        else if (type == "i4") items.push_back(fi4(static_cast<int32_t>(v)));
        else if (type == "i8") items.push_back(fi8(v));
        else {
            problem = "unknown item type " + type;
            return false;
        }
    }
    return true;
}

std::vector<oracle_case> load_cases() {
    std::vector<oracle_case> cases;
    std::ifstream in(KRM_ORACLE_CASES);
    if (!in) {
        cases.push_back({"case_file_missing", "", {}, "cannot read " KRM_ORACLE_CASES});
        return cases;
    }
    std::string line;
    int lineno = 0;
    while (std::getline(in, line)) {
        ++lineno;
        if (trim(line).empty() || line[0] == '#') continue;
        oracle_case c;
        c.line = lineno;
        size_t p = line.find('|');
        size_t q = p == std::string::npos ? p : line.find('|', p + 1);
        if (q == std::string::npos) {
            c.name = "line_" + std::to_string(lineno);
            c.problem = "a case needs name | format | items";
        } else {
            c.name = trim(line.substr(0, p));
            c.format = trim(line.substr(p + 1, q - p - 1));
            parse_items(line.substr(q + 1), c.items, c.problem);
        }
        cases.push_back(c);
    }
    return cases;
}

// gfortran's records for each case, by name; "@@ name error N" marks a case
// its library refused.
struct oracle_output {
    bool read = false;
    std::map<std::string, std::string> records;
    std::map<std::string, std::string> refused;
};

const oracle_output &expected() {
    static oracle_output out = [] {
        oracle_output o;
        std::ifstream in(KRM_ORACLE_OUTPUT, std::ios::binary);
        if (!in) return o;
        o.read = true;
        std::string line, name;
        while (std::getline(in, line)) {
            if (line.rfind("@@ ", 0) == 0) {
                std::string rest = line.substr(3);
                size_t sp = rest.find(' ');
                if (sp != std::string::npos && rest.compare(sp, 7, " error ") == 0) {
                    o.refused[rest.substr(0, sp)] = rest.substr(sp + 7);
                    continue;
                }
                name = rest;
                o.records[name];
                continue;
            }
            o.records[name] += line + "\n";
        }
        return o;
    }();
    return out;
}

class FormattedOracle : public InTempDir, public ::testing::WithParamInterface<oracle_case> {};

TEST_P(FormattedOracle, RecordsMatchGfortran) {
    const oracle_case &c = GetParam();
    ASSERT_EQ(c.problem, "") << KRM_ORACLE_CASES << ":" << c.line;
    const oracle_output &o = expected();
    ASSERT_TRUE(o.read) << "no gfortran output at " KRM_ORACLE_OUTPUT
                        << ": gfortran is needed at build time to write it";
    ASSERT_EQ(o.refused.count(c.name), 0u) << "gfortran refused the case: iostat " << o.refused.at(c.name);
    auto want = o.records.find(c.name);
    ASSERT_NE(want, o.records.end()) << "gfortran wrote nothing for the case";

    fw_options opt;
    opt.flags = IO_RETURNING;
    ASSERT_EQ(formatted_write(11, c.format, c.items, opt), 0);
    ASSERT_EQ(close_unit(11), 0);
    const std::string got = read_file("fort.11");
    EXPECT_TRUE(same_records(got, want->second)) << "format " << c.format;
}

INSTANTIATE_TEST_SUITE_P(Cases, FormattedOracle, ::testing::ValuesIn(load_cases()),
                         [](const auto &info) { return info.param.name; });

}  // namespace
