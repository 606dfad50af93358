// JSON strings, members and arrays, compared with their exact text.
#include "tools/veltool/support/json.h"

#include <gtest/gtest.h>

namespace veltool {
namespace {

TEST(Json, EscapesTexts)
{
    EXPECT_EQ(jsonString("a\"b\\c\n\x01\xC3\xA4"), "\"a\\\"b\\\\c\\n\\u0001\xC3\xA4\"");
}

TEST(Json, AddsTheBytesOfATextThatIsNotUtf8)
{
    EXPECT_EQ(jsonMember("value", "ok"), "\"value\":\"ok\"");
    EXPECT_EQ(jsonMember("value", "a\xFF"), "\"value\":\"a\xEF\xBF\xBD\",\"valueBytes\":\"61ff\"");
    EXPECT_EQ(jsonMember("value", "\xEF\xBF\xBD"), "\"value\":\"\xEF\xBF\xBD\"")
        << "U+FFFD itself is valid";
    EXPECT_EQ(jsonMember("value", static_cast<const char *>(nullptr)), "\"value\":null");
    EXPECT_EQ(jsonMember("line", std::size_t{12}), "\"line\":12");
}

TEST(Json, PutsEachElementOnItsOwnLine)
{
    JsonArray none;
    EXPECT_EQ(none.end(), "[]\n");
    JsonArray two;
    std::string text;
    for (const char *element : {"1", "2"}) {
        text.append(two.next()).append(element);
    }
    EXPECT_EQ(text.append(two.end()), "[\n1,\n2\n]\n");
}

} // namespace
} // namespace veltool
