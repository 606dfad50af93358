// Tests that the process locale, which Qt and Perl set, does not matter.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <clocale>
#include <cstdio>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Runs a program; true if it ran and returned 0.
bool run(std::vector<std::string> words)
{
    std::vector<char *> arguments;
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = -1;
    return ::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0 &&
           ::waitpid(child, &status, 0) == child && status == 0;
}

/// Sets a German locale, made by the test, for the life of the object.
class GermanLocale
{
public:
    explicit GermanLocale(const std::string &characters)
        : locales_("LOCPATH", folder_.path()), before_(std::setlocale(LC_ALL, nullptr))
    {
        isThere_ = run({"localedef", "-i", "de_DE", "-f", characters, folder_.path("vel_DE")}) &&
                   std::setlocale(LC_ALL, "vel_DE") != nullptr;
    }
    ~GermanLocale() { std::setlocale(LC_ALL, before_.c_str()); }
    GermanLocale(const GermanLocale &) = delete;
    GermanLocale &operator=(const GermanLocale &) = delete;

    [[nodiscard]] bool isThere() const { return isThere_; }

private:
    TemporaryFolder folder_;
    Environment locales_;
    std::string before_;
    bool isThere_ = false;
};

/// The results, as text, of everything that reads or writes numbers or checks
/// classes of characters.
std::string allOfIt()
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle,
                    "RULES:\n"
                    "OBJECT: B\nOutput Ordering Priority = 1.6\nEND\n"
                    "OBJECT: C\nOutput Ordering Priority = 1.4\nEND\n"
                    "END\n",
                    velFlagLibrary),
              "");
    EXPECT_EQ(parse(handle, "C:\nx = 1.5, -1.5, 1,5 [m], 2.5e1\ny = 2.7\nl = TRUE, 1.6, OFF\nEND\n"
                            "B:\nEND\n"),
              "");
    std::int32_t number = 0;
    std::vector<std::int32_t> list;
    std::string text = saved(handle, "/", 20);
    EXPECT_EQ(said(getIntegerValue(handle.get(), "/C/y", &number)), "");
    text += std::to_string(number) + "\n";
    EXPECT_EQ(said(getIntegerList(handle.get(), "/C/x", &list)), "");
    for (const std::int32_t element : list) {
        text += std::to_string(element) + " ";
    }
    EXPECT_EQ(said(getLogicalList(handle.get(), "/C/l", &list)), "");
    for (const std::int32_t element : list) {
        text += std::to_string(element) + " ";
    }
    // 0xE4 is a letter in Latin-1, and 0xA0 is a space.
    text += "\n" + said(parseVELLineH(handle.get(), "\xE4 = 1", 0));
    text += "\n" + said(parseVELLineH(handle.get(), "a\xE4 = 1", 0));
    text += "\n" + said(parseVELLineH(handle.get(),
                                      "z = \xA0"
                                      "1\xA0",
                                      0));
    text += "\n" + valueAt(handle, "/z") + "\n" + velCleanPath("\xA0/A\xA0");
    return text;
}

void expectNoDifference(const std::string &characters, const std::string &expected)
{
    const GermanLocale locale(characters);
    if (!locale.isThere()) {
        GTEST_SKIP() << "localedef or its German source is not installed";
    }
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "%.1f", 1.5);
    ASSERT_STREQ(text.data(), "1,5"); // the locale is in use
    EXPECT_EQ(allOfIt(), expected);
}

TEST(VelLocale, NumbersAreReadTheSame)
{
    expectNoDifference("UTF-8", allOfIt());
}

TEST(VelLocale, LettersAreTheSame)
{
    expectNoDifference("ISO-8859-1", allOfIt());
}

TEST(VelLocale, TheResultsAreKnown)
{
    EXPECT_EQ(allOfIt(), "B:\nEND\nC:\n"
                         "  x = 1.5, -1.5, \\\n    1,5 [m], 2.5e1\n"
                         "  y = 2.7\n"
                         "  l = TRUE, 1.6, OFF\n"
                         "END\n"
                         "3\n"
                         "2 -1 1 5 25 -1 2 0 \n"
                         "invalid parameter name \"\xE4\": leading character must be alphabetic or "
                         "'_'\n"
                         "invalid parameter name \"a\xE4\": contains invalid character '\xE4'\n"
                         "\n"
                         "\xA0"
                         "1\xA0\n"
                         "\xA0/A\xA0");
}

} // namespace
