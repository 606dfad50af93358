// checkValueText: which values a command file keeps, and the mistakes in others.
#include "veltext/valueText.h"

#include "veltext/tests/newHandle.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace veltext {

namespace {

void expectFault(std::string_view value, ValueFault fault, std::size_t position)
{
    const ValueCheck check = checkValueText(value);
    EXPECT_EQ(check.fault, fault) << value;
    EXPECT_EQ(check.position, position) << value;
}

/// The value after it was read from a line of a command file.
std::string readBack(const std::string &value)
{
    const std::string line = "x = " + value;
    const char *const lines[] = {"FLOW: A", line.c_str(), "END"};
    const velHandlePtr handle = test::newHandle();
    EXPECT_EQ(loadVELData(handle.get(), lines, 3), nullptr) << value;
    std::optional<std::string> stored;
    EXPECT_EQ(getStringValue(handle.get(), "/FLOW:A/x", &stored), nullptr) << value;
    return stored.value_or("");
}

} // namespace

TEST(ValueText, AcceptsValuesThatAFileKeeps)
{
    for (const char *value : {"", "a", "1.5 [kg s^-1]", "a, b c", "\\# kept", "a \\# b \\# c",
                              "back\\slash", "\xC3\xA4", "\xE4\xFF"}) {
        expectFault(value, ValueFault::None, 0);
        EXPECT_EQ(readBack(value), value);
    }
}

TEST(ValueText, FindsEachFault)
{
    expectFault("a\nb", ValueFault::ControlCharacter, 1);
    expectFault(std::string_view("a\0b", 3), ValueFault::ControlCharacter, 1);
    expectFault("a # b", ValueFault::Comment, 2);
    expectFault("#", ValueFault::Comment, 0);
    expectFault("\\# #", ValueFault::Comment, 3);
    expectFault("a\\", ValueFault::FinalBackslash, 1);
    expectFault("a\\ \t", ValueFault::FinalBackslash, 1);
    expectFault("a\tb", ValueFault::WhiteSpace, 1);
    expectFault("a  b", ValueFault::WhiteSpace, 2);
    expectFault(" a", ValueFault::WhiteSpace, 0);
    expectFault("a ", ValueFault::WhiteSpace, 1);
    expectFault(" ", ValueFault::WhiteSpace, 0);
}

TEST(ValueText, ReportsTheWorstFault)
{
    expectFault("a  # b\n", ValueFault::ControlCharacter, 6);
    expectFault("a  # b\\", ValueFault::Comment, 3);
    expectFault("a  b\\", ValueFault::FinalBackslash, 4);
}

// A file really changes the values that are reported.
TEST(ValueText, ReportsOnlyValuesThatAFileChanges)
{
    EXPECT_EQ(readBack("a # b"), "a");
    EXPECT_EQ(readBack("a\tb"), "a b");
    EXPECT_EQ(readBack("a  b"), "a b");
    EXPECT_EQ(readBack(" a "), "a");
}

} // namespace veltext
