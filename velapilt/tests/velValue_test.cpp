// Tests reading and setting values.
#include "velapilt/src/velSplit.h"
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

velHandlePtr withValue(const std::string &value)
{
    velHandlePtr handle = parsed("A:\nEND\n");
    EXPECT_EQ(said(velCreateParam(handle.get(), "/x", value.c_str())), "");
    return handle;
}

std::string integerOf(const std::string &value)
{
    const velHandlePtr handle = withValue(value);
    std::int32_t number = 0;
    const char *error = getIntegerValue(handle.get(), "/x", &number);
    return error == nullptr ? std::to_string(number) : error;
}

std::string joined(const std::vector<std::int32_t> &numbers)
{
    std::string text;
    for (const std::int32_t number : numbers) {
        text += (text.empty() ? "" : " ") + std::to_string(number);
    }
    return text;
}

std::string integersOf(const std::string &value)
{
    const velHandlePtr handle = withValue(value);
    std::vector<std::int32_t> numbers;
    const char *error = getIntegerList(handle.get(), "/x", &numbers);
    return error == nullptr ? joined(numbers) : error;
}

std::string logicalOf(const std::string &value)
{
    const velHandlePtr handle = withValue(value);
    std::int32_t number = 77;
    const char *error = getLogicalValue(handle.get(), "/x", &number);
    EXPECT_TRUE(error == nullptr || number == 77);
    return error == nullptr ? std::to_string(number) : error;
}

std::string logicalsOf(const std::string &value)
{
    const velHandlePtr handle = withValue(value);
    std::vector<std::int32_t> numbers;
    const char *error = getLogicalList(handle.get(), "/x", &numbers);
    return error == nullptr ? joined(numbers) : error;
}

/// The elements between bars.
std::string split(const std::string &text)
{
    velStringList list;
    EXPECT_EQ(said(splitStringString(text, &list)), "");
    std::string result = "|";
    for (const char *element : list) {
        result += std::string(element) + "|";
    }
    EXPECT_EQ(list.data()[list.size()], nullptr);
    return result;
}

// --- Texts ---------------------------------------------------------------------------

TEST(VelValue, Strings)
{
    const velHandlePtr handle = parsed("A:\nx = a  b \nempty =\nEND\n");
    EXPECT_EQ(valueAt(handle, "/A/x"), "a b");
    EXPECT_EQ(valueAt(handle, "/A/empty"), "");
    EXPECT_EQ(valueAt(handle, "/A"), "(none)"); // an object has no value
    EXPECT_EQ(valueAt(handle, " A / NONE "), "getStringValue: value \"/A/NONE\" does not exist");
    EXPECT_EQ(said(changePath(handle.get(), "/A")), "");
    EXPECT_EQ(valueAt(handle, "x"), "a b");
    EXPECT_EQ(valueAt(handle, "NONE"), "getStringValue: value \"/A/NONE\" does not exist");
}

TEST(VelValue, InPlace)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    EXPECT_STREQ(velFindValue(handle.get(), "/A/x"), "1");
    EXPECT_EQ(velFindValue(handle.get(), "/A"), nullptr);
    EXPECT_EQ(velFindValue(handle.get(), "/A/y"), nullptr);
}

TEST(VelValue, BeforeThereIsATree)
{
    const velHandlePtr handle(velCreateHandle());
    std::int32_t number = 0;
    EXPECT_EQ(valueAt(handle, "x"), "getStringValue: value \"/x\" does not exist");
    EXPECT_EQ(said(getIntegerValue(handle.get(), "x", &number)),
              "getIntegerValue: unable to find value");
    EXPECT_EQ(said(setStringValue(handle.get(), "x", "1")),
              "setStringValue: requested object does not exist");
}

// --- Setting -------------------------------------------------------------------------

TEST(VelValue, Setting)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    ChangeLog log(handle);
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "2")), "");
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "2")), "");
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "a\r\n\x01")), ""); // not checked here
    EXPECT_EQ(log.take(), "/A/x: 2 <- 1\n/A/x: a\r\n\x01 <- 2\n");
    EXPECT_EQ(said(setStringValue(handle.get(), nullptr, "1")),
              "setStringValue: error deriving full pathname");
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/y", "1")),
              "setStringValue: requested object does not exist");
    EXPECT_EQ(said(setStringValue(handle.get(), "/A", "1")),
              "setStringValue: requested object is not a parameter");
    EXPECT_EQ(said(setStringValue(handle.get(), "/", "1")),
              "setStringValue: requested object is not a parameter");
    EXPECT_EQ(log.take(), "");
}

TEST(VelValue, SettingAValueRemovesValidity)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    const auto marks = [&] {
        return std::to_string(isValid(handle.get(), "/")) +
               std::to_string(isValid(handle.get(), "/A")) +
               std::to_string(isValid(handle.get(), "/A/x"));
    };
    for (const char *path : {"/", "/A", "/A/x"}) {
        EXPECT_EQ(said(setValid(handle.get(), path, 1)), "");
        EXPECT_EQ(said(setValid(handle.get(), path, 2)), "");
    }
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "1")), "");
    EXPECT_EQ(marks(), "333"); // no change
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "2")), "");
    EXPECT_EQ(marks(), "122");
    // A parameter that was not valid does not change the others.
    for (const char *path : {"/", "/A"}) {
        EXPECT_EQ(said(setValid(handle.get(), path, 1)), "");
        EXPECT_EQ(said(setValid(handle.get(), path, 2)), "");
    }
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "3")), "");
    EXPECT_EQ(marks(), "332");
}

TEST(VelValue, ValuesOfAllLengths)
{
    const velHandlePtr handle = parsed("x = 1\n");
    for (std::size_t length = 0; length < 2000; ++length) {
        const std::string value(length, static_cast<char>('a' + length % 26));
        ASSERT_EQ(said(setStringValue(handle.get(), "/x", value.c_str())), "");
        ASSERT_EQ(valueAt(handle, "/x"), value);
    }
    const std::string large(50000000, 'x');
    EXPECT_EQ(said(setStringValue(handle.get(), "/x", large.c_str())), "");
    EXPECT_EQ(valueAt(handle, "/x"), large);
}

// --- Numbers -------------------------------------------------------------------------

TEST(VelValue, Integers)
{
    EXPECT_EQ(integerOf("2.5"), "3");
    EXPECT_EQ(integerOf("-2.5"), "-3");
    EXPECT_EQ(integerOf("-1.7"), "-2");
    EXPECT_EQ(integerOf("7 [m]"), "7");
    EXPECT_EQ(integerOf("1e2"), "100");
    EXPECT_EQ(integerOf("none"), "0");
    EXPECT_EQ(integerOf(""), "0");
    EXPECT_EQ(integerOf("99999999999"), "2147483647");
    EXPECT_EQ(integerOf("-99999999999"), "-2147483648");
    std::int32_t number = 5;
    const velHandlePtr handle = withValue("1");
    EXPECT_EQ(said(getIntegerValue(handle.get(), "/y", &number)),
              "getIntegerValue: unable to find value");
    EXPECT_EQ(number, 5);
    EXPECT_EQ(said(getIntegerValue(handle.get(), "/A", &number)), ""); // an empty text
    EXPECT_EQ(number, 0);
}

// Negative numbers in lists are rounded differently from single values.
TEST(VelValue, IntegerLists)
{
    EXPECT_EQ(integersOf("2.5, -2.5, -1.7, 1.4"), "3 -2 -1 1");
    EXPECT_EQ(integersOf(""), "0");
    EXPECT_EQ(integersOf("1,"), "1 0");
    EXPECT_EQ(integersOf("(1, 2), 3"), "0 3");
}

// --- Logicals ------------------------------------------------------------------------

TEST(VelValue, Logicals)
{
    for (const char *text : {"yes", "y", "true", "t", "on", "Yes", "TRUE please", " on ", "T\t#"}) {
        EXPECT_EQ(logicalOf(text), "-1") << text;
    }
    for (const char *text : {"no", "n", "false", "f", "off", "OFF", "No way"}) {
        EXPECT_EQ(logicalOf(text), "0") << text;
    }
    EXPECT_EQ(logicalOf("1"), "1");
    EXPECT_EQ(logicalOf("0"), "0");
    EXPECT_EQ(logicalOf("2.5"), "3");
    EXPECT_EQ(logicalOf("2x 7"), "2");
    EXPECT_EQ(logicalOf("1e99"), "2147483647");
}

TEST(VelValue, TextsThatAreNotLogicals)
{
    EXPECT_EQ(logicalOf(""), "isLogicalValue: value is whitespace only\n");
    EXPECT_EQ(logicalOf(" "), "isLogicalValue: value is whitespace only\n");
    EXPECT_EQ(logicalOf("-1"), "isLogicalValue: value is not a logical: -1\n");
    EXPECT_EQ(logicalOf(".5"), "isLogicalValue: value is not a logical: .5\n");
    EXPECT_EQ(logicalOf(" maybe so "), "isLogicalValue: value is not a logical:  maybe so \n");
    EXPECT_EQ(logicalOf("yes,"), "isLogicalValue: value is not a logical: yes,\n");
    EXPECT_EQ(logicalOf("t\xC3\xA4"), "isLogicalValue: value is not a logical: t\xC3\xA4\n");
    EXPECT_EQ(logicalOf("100% %s"), "100");
    EXPECT_EQ(logicalOf("%s"), "isLogicalValue: value is not a logical: %s\n");
    std::int32_t number = 5;
    const velHandlePtr handle = withValue("1");
    EXPECT_EQ(said(getLogicalValue(handle.get(), "/y", &number)),
              "getLogicalValue: unable to find value");
    EXPECT_EQ(said(getLogicalValue(handle.get(), "/A", &number)),
              "isLogicalValue: value is whitespace only\n");
    EXPECT_EQ(number, 5);
}

TEST(VelValue, ALogicalOutsideAHandle)
{
    std::int32_t value = 0;
    std::string message;
    EXPECT_EQ(said(isLogicalValue(" on ", &value, &message)), "");
    EXPECT_EQ(value, -1);
    const char *error = isLogicalValue("x y", &value, &message);
    EXPECT_STREQ(error, "isLogicalValue: value is not a logical: x y\n");
    EXPECT_EQ(error, message.c_str());
}

TEST(VelValue, LogicalLists)
{
    EXPECT_EQ(logicalsOf("yes, no, 3"), "-1 0 3");
    EXPECT_EQ(logicalsOf("maybe, yes, , 3, (a, b)"),
              "splitLogicalString: not all entries were logicals:\n"
              "isLogicalValue: value is not a logical: maybe\n"
              "isLogicalValue: value is whitespace only\n"
              "isLogicalValue: value is not a logical: (a, b)\n");
    EXPECT_EQ(logicalsOf(""), "splitLogicalString: not all entries were logicals:\n"
                              "isLogicalValue: value is whitespace only\n");
}

// --- Splitting -----------------------------------------------------------------------

TEST(VelValue, Splitting)
{
    EXPECT_EQ(split(""), "||");
    EXPECT_EQ(split("a"), "|a|");
    EXPECT_EQ(split("a,"), "|a||");
    EXPECT_EQ(split(","), "|||");
    EXPECT_EQ(split(" a b ,\tc "), "|a b|c|");
    EXPECT_EQ(split("Cartesian, (1, 2), 3"), "|Cartesian|(1, 2)|3|");
    EXPECT_EQ(split("f(a,b), c"), "|f(a,b)|c|");
    EXPECT_EQ(split("f(a,(b,c),d),e"), "|f(a,(b,c),d)|e|");
    EXPECT_EQ(split("(a, b"), "|(a, b|");
    EXPECT_EQ(split("a), b, c"), "|a), b, c|");  // at a depth below zero, nothing splits
    EXPECT_EQ(split("a), (b, c"), "|a), (b|c|"); // until the depth is 0 again
    EXPECT_EQ(split("[a,b]"), "|[a|b]|");
}

TEST(VelValue, SplittingAddsToAnArray)
{
    velArray array(velArrayKind::Strings);
    std::int32_t count = 0;
    array.addString("first");
    EXPECT_EQ(said(splitString(&array, "a, b", &count)), "");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(asLines(array), "first\na\nb\n");
    velArray integers(velArrayKind::Integers);
    EXPECT_EQ(said(splitString(&integers, "a", &count)), "splitString: failure to store string.\n");
}

TEST(VelValue, Lists)
{
    const velHandlePtr handle = withValue("a, b");
    velStringList list;
    std::vector<std::int32_t> numbers = {1};
    EXPECT_EQ(said(getStringList(handle.get(), "x", &list)), "");
    EXPECT_EQ(asLines(list), "a\nb\n");
    EXPECT_EQ(said(getStringList(handle.get(), "/A", &list)), "");
    EXPECT_EQ(asLines(list), "\n"); // one empty element
    // All three give the same message.
    EXPECT_EQ(said(getStringList(handle.get(), "/y", &list)),
              "getStringList: unable to find value");
    EXPECT_EQ(said(getIntegerList(handle.get(), "/y", &numbers)),
              "getStringList: unable to find value");
    EXPECT_EQ(said(getLogicalList(handle.get(), "/y", &numbers)),
              "getStringList: unable to find value");
    EXPECT_EQ(asLines(list), "\n");
    EXPECT_EQ(numbers, std::vector<std::int32_t>{1});
}

} // namespace
