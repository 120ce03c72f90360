// The message catalogue: how NLSPATH templates become paths, and a real
// catalogue, built by gencat from the library's own source with some texts
// changed, replacing the built-in texts in a report.

#include <gtest/gtest.h>

#include <signal.h>
#include <stdlib.h>

#include "frame/catalogue.h"
#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

struct template_case {
    const char *tmpl;
    const char *locale;
    const char *expected;
};
void PrintTo(const template_case &c, std::ostream *os) { *os << '"' << c.tmpl << "\" in " << c.locale; }

class NlsTemplate : public ::testing::TestWithParam<template_case> {};

TEST_P(NlsTemplate, ExpandsToPath) {
    const template_case &c = GetParam();
    char out[1024];
    size_t n = krm::expand_nls_template(c.tmpl, strlen(c.tmpl), "CAT", c.locale, out, sizeof out);
    EXPECT_EQ(std::string(out, n), c.expected);
}

const template_case kTemplates[] = {
    {"", "C", "./CAT"},                               // an empty template is the name itself
    {"%N", "C", "./CAT"},                             // no slash: relative to the current directory
    {"%L/%N.cat", "C", "C/CAT.cat"},                  // a slash anywhere: taken as it stands
    {"/nls/%L/%N", "de_DE.UTF-8@euro", "/nls/de_DE.UTF-8@euro/CAT"},
    {"/nls/%l/%t/%c/%N", "de_DE.UTF-8@euro", "/nls/de/DE/UTF-8/CAT"},
    {"/nls/%l/[%t][%c]", "fr", "/nls/fr/[][]"},       // missing parts are empty
    {"/nls/%%/%x/%N", "C", "/nls/%/x/CAT"},           // % and another character copies that character
    {"/nls/%N%", "C", "/nls/CAT"},                    // a lone % at the end copies nothing
};
INSTANTIATE_TEST_SUITE_P(Cases, NlsTemplate, ::testing::ValuesIn(kTemplates));

TEST(NlsTemplate, LongTemplateIsCutNotOverrun) {
    std::string tmpl = "/" + std::string(3000, 'd') + "/%N";
    char out[1024];
    size_t n = krm::expand_nls_template(tmpl.data(), tmpl.size(), "CAT", "C", out, sizeof out);
    EXPECT_EQ(n, strlen(out));
    EXPECT_LT(n, sizeof out);
    EXPECT_EQ(std::string(out, 4), "/ddd");
}

// A failing WRITE after start-up, reported through whatever texts are in force.
KRM_SCENARIO(catalogue_report) {
    char prog[] = "prog";
    char *argv[] = {prog, nullptr};
    __f90_init(1, argv);
    write_list(-1, {i4(1)});
}

const char kBuiltinReport[] =
    "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n"
    " Error 1001:  illegal unit number\n"
    " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
    " Unit:  *\n";

class Catalogue : public InTempDir {
protected:
    // Builds a catalogue from the shipped source with some texts replaced.
    void build_catalogue(const std::string &path) {
        std::string source = read_file(KRM_CATALOGUE_SOURCE);
        ASSERT_FALSE(source.empty());
        replace(source, "1001 \"illegal unit number\"", "1001 \"numero d'unite illegal\"");
        replace(source, "25 \" Location:  the WRITE statement at line %ld of \\\"%s\\\"\\n\"",
                "25 \" Endroit:  WRITE, ligne %ld de \\\"%s\\\"\\n\"");
        write_file("changed.msg", source);
        std::string cmd = "gencat '" + path + "' changed.msg";
        ASSERT_EQ(system(cmd.c_str()), 0);
    }
    static void replace(std::string &s, const std::string &from, const std::string &to) {
        size_t at = s.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        s.replace(at, from.size(), to);
    }
};

TEST_F(Catalogue, InstalledCatalogueReplacesBuiltinTexts) {
    ASSERT_EQ(system("mkdir -p nls/fr_FR"), 0);
    build_catalogue("nls/fr_FR/KORM_RTL_FC_libf90.cat");
    child_options opt;
    opt.env = {"NLSPATH=" + dir_ + "/nls/%L/%N.cat", "LC_ALL=", "LC_MESSAGES=fr_FR", "LANG=C"};
    child_result r = run_scenario("catalogue_report", opt);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err,
              "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n"
              " Error 1001:  numero d'unite illegal\n"
              " Endroit:  WRITE, ligne 20 de \"t.f90\"\n"
              " Unit:  *\n");
}

TEST_F(Catalogue, WithoutNlspathNoCatalogueIsOpened) {
    build_catalogue("KORM_RTL_FC_libf90");
    child_options opt;
    opt.env = {"NLSPATH"};  // removes it
    child_result r = run_scenario("catalogue_report", opt);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, kBuiltinReport);
}

TEST_F(Catalogue, LaterTemplateIsTriedWhenEarlierFindsNothing) {
    build_catalogue("KORM_RTL_FC_libf90");
    child_options opt;
    opt.env = {"NLSPATH=" + dir_ + "/missing/%L/%N:%N", "LANG=C", "LC_ALL=", "LC_MESSAGES="};
    child_result r = run_scenario("catalogue_report", opt);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_NE(r.err.find(" Error 1001:  numero d'unite illegal\n"), std::string::npos) << r.err;
}

TEST_F(Catalogue, TemplatesThatFindNothingLeaveBuiltinTexts) {
    child_options opt;
    opt.env = {"NLSPATH=" + dir_ + "/nowhere/%N::%L/%N", "LANG=C"};
    child_result r = run_scenario("catalogue_report", opt);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, kBuiltinReport);
}

}  // namespace
