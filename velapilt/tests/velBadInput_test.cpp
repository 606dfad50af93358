// Tests input that is not command text, and too much input: every way to parse gives
// the same message or success, and the handle can be used afterwards.
#include "velapilt/src/velFile_p.h"
#include "velapilt/src/velHandle_p.h"
#include "velapilt/src/velScan.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

/// Parses bytes as those of a file.
std::string parseBytes(const velHandlePtr &handle, std::string_view content)
{
    velFileBytes bytes;
    bytes.data = velAllocatePages(content.size() + 1 + velScanSlack);
    bytes.size = content.size();
    std::memcpy(bytes.data.get(), content.data(), content.size());
    std::memset(bytes.data.get() + content.size(), '\n', 1 + velScanSlack);
    return said(velParseFile(handle.get(), bytes, 0, nullptr, nullptr));
}

/// The same, as a list of lines; each ends at its first NUL.
std::string parseLines(const velHandlePtr &handle, std::string_view content)
{
    std::string text;
    for (const std::string &line : linesOf(content)) {
        text += line.substr(0, line.find('\0')) + "\n";
    }
    return parse(handle, text);
}

/// Both ways to parse give the same result. Afterwards the handle parses correct
/// text.
void expectHarmless(std::string_view content)
{
    const velHandlePtr handle(velCreateHandle());
    const velHandlePtr other(velCreateHandle());
    ASSERT_EQ(parseBytes(handle, content), parseLines(other, content));
    ASSERT_EQ(stored(handle), stored(other));
    ASSERT_EQ(saved(handle, "/", 79), saved(other, "/", 79));
    while (handle->hasPendingLine) { // each line removes one '\\' from its end
        static_cast<void>(parseVELLineH(handle.get(), "", 0));
    }
    setVELStateH(handle.get(), 0);
    ASSERT_STREQ(getCurrentPath(handle.get()), "/");
    ASSERT_EQ(parse(handle, "SOUND: text\nx = 1\nEND\n"), "");
    ASSERT_EQ(valueAt(handle, "/SOUND:text/x"), "1");
    ASSERT_EQ(said(deleteObjH(handle.get(), "/")), "");
    ASSERT_EQ(stored(handle), "");
}

TEST(VelBadInput, RandomBytes)
{
    for (unsigned seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        std::string bytes(random.below(2000), '\0');
        for (char &c : bytes) {
            c = static_cast<char>(random.below(256));
        }
        ASSERT_NO_FATAL_FAILURE(expectHarmless(bytes));
    }
}

TEST(VelBadInput, RandomCharactersOfTheLanguage)
{
    for (unsigned seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const std::string_view alphabets[] = {"A:=\n \\#", "ABEND:\n\n\n", "aZ:= \t\r\n&!>#\\",
                                              std::string_view("A=\n\0\xC4", 5)};
        ASSERT_NO_FATAL_FAILURE(
            expectHarmless(random.text(random.below(400), alphabets[random.below(4)])));
    }
}

TEST(VelBadInput, RandomLinesOfTheLanguage)
{
    static constexpr std::array lines = {
        "A:",      "A: b",           "&replace A: b", "&replace A:",   "END",
        "x = 1",   "x = 2 # c",      "  y\t =  3 \\", "A: A",          "x =",
        "# END",   "&replace x = 3", "   ",           "%p.[]{|}_ = v", "\\",
        "B: c \r",
    };
    for (unsigned seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        std::string text;
        for (std::size_t left = random.below(60); left > 0; --left) {
            text += std::string(random.oneOf(lines)) + "\n";
        }
        ASSERT_NO_FATAL_FAILURE(expectHarmless(text));
    }
}

TEST(VelBadInput, OneFlippedByteOfACorrectText)
{
    Random random(7);
    const std::string text = randomSetup(random, 20);
    for (std::size_t place = 0; place < text.size(); place += 1 + random.below(3)) {
        std::string flipped = text;
        flipped[place] = static_cast<char>(random.below(256));
        ASSERT_NO_FATAL_FAILURE(expectHarmless(flipped));
    }
}

TEST(VelBadInput, EveryTruncationOfACorrectText)
{
    Random random(8);
    const std::string text = randomSetup(random, 8);
    for (std::size_t length = 0; length < text.size(); ++length) {
        ASSERT_NO_FATAL_FAILURE(expectHarmless(std::string_view(text).substr(0, length)));
    }
}

TEST(VelBadInput, AControlCharacterDoesNotEndALine)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parseBytes(handle, "x = a\x01z\n"), "invalid parameter value \"a\x01z\": control "
                                                  "character number 1 is not allowed.");
    EXPECT_EQ(parseBytes(handle, std::string_view("x = a\0\x01z\ny = 2\n", 15)), "");
    EXPECT_EQ(parseBytes(handle, "z = \x7F\xFF\r\n"), "");
    EXPECT_EQ(stored(handle), "x = a\ny = 2\nz = \x7F\xFF\n");
}

TEST(VelBadInput, RandomPaths)
{
    const velHandlePtr handle = parsed("A:\nB: b\nx = 1\nEND\nEND\n");
    for (unsigned seed = 0; seed < 3000; ++seed) {
        Random random(seed);
        std::string path = random.text(random.below(12), "AB/:b.x \t\\");
        if (random.once(10)) {
            path = random.text(1 + random.below(30), "\x01\xFF\x80\n%s/:");
        }
        std::optional<std::string> value;
        velStringList list;
        const int have = havePath(handle.get(), path.c_str());
        const std::string full = velFullPath(handle.get(), path.c_str());
        const bool isThere = full == "/" || full == "/A" || full == "/A/B:b" || full == "/A/B:b/x";
        ASSERT_EQ(have, isThere ? 1 : 0) << testing::PrintToString(path);
        ASSERT_EQ(getStringValue(handle.get(), path.c_str(), &value) == nullptr, isThere);
        ASSERT_EQ(getChildParamList(handle.get(), path.c_str(), &list) == nullptr, isThere);
        ASSERT_EQ(pushPath(handle.get(), path.c_str()) == nullptr, isThere);
        if (isThere) {
            ASSERT_EQ(getCurrentPath(handle.get()), full);
            ASSERT_EQ(said(popPath(handle.get())), "");
        }
    }
}

TEST(VelBadInput, RandomWordsInCreating)
{
    for (unsigned seed = 0; seed < 2000; ++seed) {
        Random random(seed);
        const velHandlePtr handle(velCreateHandle());
        for (int i = 0; i < 5; ++i) {
            const std::string path = "/" + random.text(random.below(8), "Ab1_%-:/. \t\xC4");
            const bool isParam = random.once(2);
            const std::string value = random.text(random.below(5), "a\t\n\r\x1F\xFF ");
            const char *error = isParam ? velCreateParam(handle.get(), path.c_str(), value.c_str())
                                        : velCreateObject(handle.get(), path.c_str(), false);
            if (error == nullptr) { // the new node is found and can be read back
                ASSERT_EQ(havePath(handle.get(), path.c_str()), 1) << path;
            }
        }
        ASSERT_EQ(parse(velHandlePtr(velCreateHandle()), stored(handle)), "") << stored(handle);
    }
}

// --- Large input -------------------------------------------------------------------------

constexpr std::size_t hundredMegabytes = 100U << 20;

TEST(VelBadInput, ALineOfAHundredMegabytes)
{
    const velHandlePtr handle(velCreateHandle());
    std::string content = "x = " + std::string(hundredMegabytes, 'v') + "\ny = 1\n";
    EXPECT_EQ(parseBytes(handle, content), "");
    EXPECT_EQ(std::strlen(velFindValue(handle.get(), "/x")), hundredMegabytes);
    EXPECT_EQ(valueAt(handle, "/y"), "1");
    content.replace(0, 4, "xxxx"); // no statement any more
    const char *const start = "parseVELLineH: syntax error near \"xxxxvvvv";
    const std::string message = parseBytes(handle, content);
    EXPECT_EQ(message.substr(0, std::strlen(start)), start);
    EXPECT_EQ(message.substr(message.size() - 3), "vv\"");
    EXPECT_EQ(parse(handle, "y = 2\n"), "");
}

TEST(VelBadInput, AHundredMegabytesWithoutAStatement)
{
    const velHandlePtr handle(velCreateHandle());
    for (const char c : {' ', '\0', '#', '\t'}) {
        EXPECT_EQ(parseBytes(handle, std::string(hundredMegabytes, c) + "\ny = 1\n"), "");
        EXPECT_EQ(stored(handle), "y = 1\n");
    }
}

TEST(VelBadInput, ManyContinuedLines)
{
    std::string content = "x = ";
    std::string expected;
    for (int i = 0; i < 200000; ++i) {
        content += "piece, \\\n   ";
        expected += "piece, ";
    }
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parseBytes(handle, content + "end\n"), "");
    EXPECT_EQ(valueAt(handle, "/x"), expected + "end");
}

TEST(VelBadInput, LongNames)
{
    const std::string name(1 << 20, 'n');
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parseBytes(handle, name + ": " + name + "x\n" + name + " = 1\nEND\n"), "");
    EXPECT_EQ(valueAt(handle, ("/" + name + ":" + name + "x/" + name).c_str()), "1");
    EXPECT_EQ(said(deleteObjH(handle.get(), ("/" + name + ":" + name + "x").c_str())), "");
    EXPECT_EQ(stored(handle), "");
}

} // namespace
