// Tests the table of element types and the parser of data type strings: its results
// as text, and the messages for strings that it refuses.
#include "io/Src/Main/data_type.h"

#include "io/Src/Main/element_arrays.h"
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

/// The table entry of each type: name, array, bytes of a word and of the shortest
/// formatted element, letter, properties, and the types that it converts to.
TEST(DataType, TheTableOfElementTypes)
{
    std::string text;
    for (const element_traits &element : element_table) {
        text += std::string(element.name) + " " + element.array_name + " " +
                std::to_string(element.word_bytes) + " " + std::to_string(element.formatted_bytes) +
                " " + element.gzip_letter + (element.has_length ? " length" : "") +
                (element.has_blocks ? " blocks" : "") + (element.is_logical ? " logical" : "") +
                " ->";
        for (const element_traits &other : element_table) {
            text += element_converts(element.type, other.type) ? std::string(" ") + other.name : "";
        }
        text += "\n";
    }
    EXPECT_EQ(text, "STRI string 1 1 c length -> STRI\n"
                    "CHAR char 1 1 c blocks -> CHAR\n"
                    "INTR intr 4 10 i blocks -> INTR REAL DBLE LOGL\n"
                    "REAL real 4 20 r blocks -> INTR REAL DBLE\n"
                    "DBLE dble 8 20 d blocks -> INTR REAL DBLE\n"
                    "LOGL logl 1 2 c blocks logical -> INTR LOGL\n");
}

TEST(DataType, EachTypeHasItsOwnArray)
{
    for (const element_traits &element : element_table) {
        IO_data data;
        alignas(8) char memory[8];
        set_element_array(data, element.type, memory);
        set_element_array_size(data, element.type, 5);
        for (const element_traits &other : element_table) {
            bool same = other.type == element.type;
            EXPECT_EQ(element_array(data, other.type), same ? memory : nullptr) << other.name;
            EXPECT_EQ(element_array_size(data, other.type), same ? 5 : 0) << other.name;
        }
    }
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
    // Several spaces separate entries like one space.
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
