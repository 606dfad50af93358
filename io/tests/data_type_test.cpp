#include "io/Src/Main/data_type.h"

#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

/// "code" or the entries as "NAME*count/length".
std::string parsed(const std::string &text)
{
    io_memory_env env;
    io_reporter report(env);
    report.set_routine(collect_message);
    take_messages();
    data_type type;
    if (int code = parseStructure(report, text, type)) {
        return std::to_string(code) + " " + take_messages();
    }
    std::string out = type.structure ? "STRC" : "single";
    for (const type_entry &entry : type.entries) {
        out += std::string(" ") + element_type_name(entry.type) + "*" +
               std::to_string(entry.count) + "/" + std::to_string(entry.length);
    }
    return out;
}

std::string structure_of(int entries)
{
    std::string text = "STRC{";
    for (int i = 0; i < entries; i++) {
        text += i == 0 ? "INTR:1" : " INTR:1";
    }
    return text + "}";
}

TEST(DataType, SingleTypes)
{
    EXPECT_EQ(parsed("STRI"), "single STRI*1/80");
    EXPECT_EQ(parsed("STRI:10"), "single STRI*1/10");
    EXPECT_EQ(parsed("CHAR"), "single CHAR*1/0");
    EXPECT_EQ(parsed("INTRxyz"), "single INTR*1/0");
    EXPECT_EQ(parsed("LOGL"), "single LOGL*1/0");
}

TEST(DataType, RefusedSingleTypes)
{
    EXPECT_EQ(parsed("INTR:3"), "12 parseStructure: count forbidden for non-string type \"INTR:3\""
                                " outside structure\n");
    EXPECT_EQ(parsed("FOO"), "12 parseStructure: unrecognised type code \"FOO\"\n");
    EXPECT_EQ(parsed(""), "12 parseStructure: unrecognised type code \"\"\n");
    for (const char *bad_length : {"STRI:", "STRI:0", "STRI:-1", "STRI:x", "STRI:99999999999"}) {
        EXPECT_EQ(parsed(bad_length), std::string("12 parseStructure: unrecognised type code \"") +
                                          bad_length + "\"\n");
    }
}

TEST(DataType, Structures)
{
    EXPECT_EQ(parsed("STRC{INTR:1 REAL:2}"), "STRC INTR*1/0 REAL*2/0");
    EXPECT_EQ(parsed("STRC{STRI:4:80 CHAR:3}"), "STRC STRI*320/320 CHAR*3/0");
    // Several blanks separate entries as one does.
    EXPECT_EQ(parsed("STRC{INTR:1  REAL:2    LOGL:1}"), "STRC INTR*1/0 REAL*2/0 LOGL*1/0");
}

TEST(DataType, RefusedStructures)
{
    EXPECT_EQ(parsed("STRC INTR:1}"), "12 parseStructure: missing '{' in structure string\n");
    EXPECT_EQ(parsed("STRC{INTR:1"), "12 parseStructure: missing '}' in structure string\n");
    EXPECT_EQ(parsed("STRC{}"), "12 parseStructure: data type string is wrong\n");
    for (const char *entry :
         {"INTR", "INTR:", "INTR:0", "FOO:1", "INTRx:1", "INTR:2:2", "STRI:65536:65536"}) {
        EXPECT_EQ(parsed(std::string("STRC{") + entry + "}"),
                  std::string("12 parseStructure: unrecognised type name or missing count: \"") +
                      entry + "\"\n");
    }
    for (const char *body : {" INTR:1", "INTR:1 ", "INTR:1  "}) {
        EXPECT_EQ(parsed(std::string("STRC{") + body + "}"),
                  "12 parseStructure: unrecognised type name or missing count: \"\"\n");
    }
}

TEST(DataType, FortyOneEntriesPassAndFortyTwoDoNot)
{
    EXPECT_EQ(parsed(structure_of(41)).substr(0, 12), "STRC INTR*1/");
    EXPECT_EQ(parsed(structure_of(42)),
              "14 parseStructure: the entries of the datatype is more than IO_MAXENT\n");
}

} // namespace
