// Tests format codes: the choice for a dataset, and the deleted mark of each.
#include "io/Src/Main/iofmt.h"

#include "io/Src/Main/container_format.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

namespace {

std::string text_of(format_code format)
{
    return {format.letter, format.second};
}

std::string chosen(const char *asked, std::int64_t bytes = 0, const char *forced = nullptr)
{
    io_memory_env env;
    if (forced != nullptr) {
        env.variables["ZOT_FORMAT"] = forced;
    }
    io_reporter report(env);
    report.set_routine(collect_message);
    take_messages();
    format_code format;
    if (int code = iofmt_choose(report, env, asked, bytes, format)) {
        return std::to_string(code) + " " + take_messages();
    }
    return text_of(format);
}

TEST(Iofmt, NewDatasetsAreNative)
{
    EXPECT_EQ(chosen(""), "u5");
    EXPECT_EQ(chosen("U9"), "u9");
    EXPECT_EQ(chosen("L"), "l ");
    EXPECT_EQ(chosen("lx"), "l ");
    EXPECT_EQ(chosen("F5"), "F ");
    EXPECT_EQ(chosen("d"), "D ");
    EXPECT_EQ(chosen("x"), "x ");
    EXPECT_EQ(chosen("X"), "x ");
    EXPECT_EQ(chosen("D"), "D ");
    EXPECT_EQ(chosen("Z5"), "15 iofmt_make_native: unrecognised format Z5\n");
}

TEST(Iofmt, TheVariableOverridesTheClient)
{
    EXPECT_EQ(chosen("u3", 0, "F"), "F ");
    EXPECT_EQ(chosen("F", 0, "U5"), "u5");
    EXPECT_EQ(chosen("u3", 0, "Z5"), "F ");
    EXPECT_EQ(chosen("u3", 0, ""), "u3");
    EXPECT_EQ(chosen("u3", 0, "U57"), "u5");
}

TEST(Iofmt, LargeDataGetsWideLengths)
{
    EXPECT_EQ(chosen("U ", 0x60000000), "u ");
    EXPECT_EQ(chosen("U ", 0x60000001), "l ");
    EXPECT_EQ(chosen("u5", 0x60000001), "l5");
    EXPECT_EQ(chosen("F", 0x60000001), "F ");
}

struct mark_case
{
    format_code live;
    std::string mark;
    format_code restored;
};

TEST(Iofmt, DeletedMarks)
{
    const mark_case cases[] = {
        {{'F', ' '}, "DF", {'F', ' '}},    {{'F', '3'}, "DF", {'F', ' '}},
        {{'U', '5'}, "D5", {'U', '5'}},    {{'U', 0}, "DU", {'U', ' '}},
        {{'u', '5'}, "D\xb5", {'u', '5'}}, {{'u', ' '}, "Du", {'u', ' '}},
        {{'L', '0'}, "X0", {'L', '0'}},    {{'L', ' '}, "XL", {'L', ' '}},
        {{'l', '9'}, "x\xb9", {'l', '9'}}, {{'l', ' '}, "xl", {'l', ' '}},
    };
    for (const mark_case &one : cases) {
        std::optional<format_code> mark = iofmt_deleted_mark(one.live);
        ASSERT_TRUE(mark.has_value());
        EXPECT_EQ(text_of(*mark), one.mark);
        std::vector<format_code> restored = iofmt_restore(*mark);
        ASSERT_EQ(restored.size(), 1U) << one.mark;
        EXPECT_EQ(text_of(restored[0]), text_of(one.restored)) << one.mark;
    }
    for (char letter : {'D', 'd', 'X', 'x', 'Z'}) {
        EXPECT_FALSE(iofmt_deleted_mark({letter, '5'}).has_value());
    }
}

TEST(Iofmt, MarksOfOtherWriters)
{
    auto candidates = [](char letter, char second) {
        std::string text;
        for (format_code format : iofmt_restore({letter, second})) {
            text += format.letter;
            text += format.second;
        }
        return text;
    };
    EXPECT_EQ(candidates('d', 'F'), "F ");
    EXPECT_EQ(candidates('d', '5'), "U5");
    EXPECT_EQ(candidates('x', '5'), "l5");
    EXPECT_EQ(candidates('X', '\xb5'), "l5");
    EXPECT_EQ(candidates('D', ' '), "U u F ");
    EXPECT_EQ(candidates('D', '\0'), "U u F ");
    EXPECT_EQ(candidates('x', 'F'), "L l ");
}

TEST(Iofmt, ByteOrder)
{
    for (char letter : {'F', 'l', 'u'}) {
        EXPECT_FALSE((format_code{letter, ' '}.swapped())) << letter;
    }
    for (char letter : {'U', 'L', 'D', 'X', 'x', 'd'}) {
        EXPECT_TRUE((format_code{letter, ' '}.swapped())) << letter;
    }
}

} // namespace
