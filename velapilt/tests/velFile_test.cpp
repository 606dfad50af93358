// Tests files: reading their lines, and loading them.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

class VelFile : public testing::Test
{
protected:
    /// The lines between bars, or the message.
    std::string lines(const std::string &path)
    {
        velArray array(velArrayKind::Strings);
        if (const char *error = loadFileData(handle_.get(), path.c_str(), &array)) {
            return error;
        }
        std::string text = "|";
        for (std::int32_t i = 0; i < array.count(); ++i) {
            text += std::string(array.string(i)) + "|";
        }
        return text;
    }

    std::string linesOfContent(std::string_view content)
    {
        return lines(folder_.write("file.vel", content));
    }

    std::string load(const std::string &path)
    {
        return said(loadVELFile(handle_.get(), path.c_str(), "vel"));
    }

    TemporaryFolder folder_;
    velHandlePtr handle_{velCreateHandle()};
};

TEST_F(VelFile, Lines)
{
    EXPECT_EQ(linesOfContent(""), "|");
    EXPECT_EQ(linesOfContent("\n"), "||");
    EXPECT_EQ(linesOfContent("a\nb\n"), "|a|b|");
    EXPECT_EQ(linesOfContent("a\nb"), "|a|b|"); // the last line may have no line feed
    EXPECT_EQ(linesOfContent(" a \n\n\tb"), "| a ||\tb|");
    EXPECT_EQ(linesOfContent("a\r\nb\r\n"), "|a\r|b\r|");
    EXPECT_EQ(linesOfContent(std::string_view("a\0b\nc\n", 6)), "|a|c|"); // a line ends at a NUL
    EXPECT_EQ(linesOfContent("\xFF\x80\n"), "|\xFF\x80|");
}

TEST_F(VelFile, TheFirstLineDoesNotContainTheByteOrderMark)
{
    EXPECT_EQ(linesOfContent("\xEF\xBB\xBF"
                             "A:\nEND\n"),
              "|A:|END|");
    EXPECT_EQ(linesOfContent("A:\n\xEF\xBB\xBF"
                             "END\n"),
              "|A:|\xEF\xBB\xBF"
              "END|");
    EXPECT_EQ(linesOfContent("\xEF\xBB\xBF"), "|");
    EXPECT_EQ(linesOfContent("\xEF\xBB"), "|\xEF\xBB|");
    const std::string path = folder_.write("marked.vel", "\xEF\xBB\xBF"
                                                         "x = 1\n");
    ASSERT_EQ(loadVELFile(handle_.get(), path.c_str(), "vel"), nullptr);
    EXPECT_STREQ(velFindValue(handle_.get(), "/x"), "1");
}

TEST_F(VelFile, LinesOfAllLengths)
{
    for (std::size_t length = 0; length < 200; ++length) {
        const std::string one(length, 'x');
        const std::string other(length + 1, 'y');
        std::string content = one;
        content += '\n' + other;
        std::string expected = '|' + one;
        expected += '|' + other + '|';
        EXPECT_EQ(linesOfContent(content), expected);
    }
}

TEST_F(VelFile, FilesThatCannotBeRead)
{
    const std::string missing = folder_.path("none.vel");
    EXPECT_EQ(lines(missing), "loadFileData: " + missing + ": open failed");
    EXPECT_EQ(load(missing), "loadFileData: " + missing + ": open failed");
    // A directory opens but cannot be read.
    EXPECT_EQ(lines(folder_.path()), "loadFileData: " + folder_.path() + ": open failed");
    EXPECT_EQ(load("/"), "loadFileData: /: open failed");
    EXPECT_EQ(lines(""), "loadFileData: : open failed");
    const std::string below = folder_.write("file", "") + "/x";
    EXPECT_EQ(lines(below), "loadFileData: " + below + ": open failed");
    EXPECT_EQ(havePath(handle_.get(), "/"), 0); // nothing was made
}

TEST_F(VelFile, AnUnreadableFile)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root reads every file";
    }
    const std::string file = folder_.write("secret.vel", "x = 1\n");
    ASSERT_EQ(::chmod(file.c_str(), 0), 0);
    EXPECT_EQ(load(file), "loadFileData: " + file + ": open failed");
}

TEST_F(VelFile, NamesOfAllKinds)
{
    for (const char *name : {"with blank.vel", "quote'\".vel", "-dash", "100%s%n", "\xC3\xA4"}) {
        const std::string file = folder_.write(name, "x = 1\n");
        EXPECT_EQ(load(file), "") << name;
        std::filesystem::remove(file);
        EXPECT_EQ(load(file), "loadFileData: " + file + ": open failed");
    }
}

TEST_F(VelFile, APipe)
{
    const std::string pipe = folder_.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string content;
    for (int i = 0; i < 30000; ++i) {
        content += "p" + std::to_string(i) + " = 1\n";
    }
    std::thread writer([&] { folder_.write("pipe", content); });
    EXPECT_EQ(load(pipe), "");
    writer.join();
    EXPECT_EQ(stored(handle_), content);
}

// A signal ends the reading of a pipe in the middle.
TEST_F(VelFile, AReadErrorAfterTheFirstBytes)
{
    const std::string pipe = folder_.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    struct sigaction before = {};
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);

    const pthread_t reader = ::pthread_self();
    std::atomic<bool> isThrough = false;
    std::thread writer([&] {
        const int file = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
        EXPECT_EQ(::write(file, "x = 1\n", 6), 6);
        int unread = 1;
        while (unread > 0 && ::ioctl(file, FIONREAD, &unread) == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        while (!isThrough) { // the reader waits for more bytes, or will soon
            ::pthread_kill(reader, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ::close(file);
    });
    EXPECT_EQ(load(pipe), "loadFileData: " + pipe + ": fgets failed");
    isThrough = true;
    writer.join();
    ::sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(havePath(handle_.get(), "/"), 0); // nothing was parsed
}

TEST_F(VelFile, LinesIntoAnArrayOfAnotherKind)
{
    const std::string file = folder_.write("case.vel", "x = 1\n");
    velArray numbers(velArrayKind::Integers);
    EXPECT_EQ(said(loadFileData(handle_.get(), file.c_str(), &numbers)),
              "loadFileData: malloc failed");
}

TEST_F(VelFile, AFileWithoutASize)
{
    if (std::ifstream("/proc/self/status").fail()) {
        GTEST_SKIP() << "no /proc here";
    }
    // The kernel reports size 0 for this file, but it has content.
    EXPECT_NE(lines("/proc/self/status").find("Name:"), std::string::npos);
}

TEST_F(VelFile, LoadingAFile)
{
    const std::string file = folder_.write("case.vel", "FLOW:\r\n"
                                                       "  x = 1, \\\r\n"
                                                       "    2\r\n"
                                                       "END");
    EXPECT_EQ(load(file), "");
    EXPECT_EQ(flagsOf(handle_), "/ Object 0\n/FLOW Singleton 0\n/FLOW/x Param 0\n");
    EXPECT_EQ(valueAt(handle_, "/FLOW/x"), "1, 2");
}

TEST_F(VelFile, TheTypeMustBeVel)
{
    const std::string file = folder_.write("case.vel", "");
    const auto refusal = [&](const char *path, const char *type) {
        return said(loadVELFile(handle_.get(), path, type));
    };
    EXPECT_EQ(refusal(nullptr, "vel"), "loadVELFile: Invalid file or file type");
    EXPECT_EQ(refusal(file.c_str(), nullptr), "loadVELFile: Invalid file or file type");
    for (const char *type : {"", "VEL", "vel ", "def", "ve"}) {
        EXPECT_EQ(refusal(file.c_str(), type),
                  "loadVELFile: fileType is invalid - it should be vel");
    }
    EXPECT_EQ(refusal(file.c_str(), "vel"), "");
}

TEST_F(VelFile, AFileAndItsLinesGiveTheSameData)
{
    const std::string contents[] = {"FLOW:\nx = 1\nEND\n",
                                    "FLOW:\nx = 1\nEND",
                                    "",
                                    "a = 1\r\n\r\nb = 2 # c\n",
                                    std::string("a = 1\0z\nb = 2\n", 14),
                                    std::string("\0\n\0", 3)};
    for (const std::string &content : contents) {
        const std::string file = folder_.write("case.vel", content);
        const velHandlePtr byLines(velCreateHandle());
        velArray array(velArrayKind::Strings);
        velDigest ofLines{};
        EXPECT_EQ(said(loadFileData(byLines.get(), file.c_str(), &array)), "");
        EXPECT_EQ(said(parseVELData(byLines.get(), &array, 0, nullptr, &ofLines)), "");
        const velHandlePtr byFile(velCreateHandle());
        velDigest ofFile{};
        EXPECT_EQ(said(loadVELFile(byFile.get(), file.c_str(), "vel", nullptr, &ofFile)), "");
        EXPECT_EQ(stored(byFile), stored(byLines));
        EXPECT_EQ(std::memcmp(&ofLines, &ofFile, sizeof ofLines), 0);
    }
}

TEST_F(VelFile, AFileThatWasSeenBefore)
{
    const std::string file = folder_.write("case.vel", "x = 1\n");
    velDigest digest{};
    EXPECT_EQ(said(loadVELFile(handle_.get(), file.c_str(), "vel", nullptr, &digest)), "");
    EXPECT_EQ(flagsOf(handle_), "/ Object 0\n/x Param 0\n");
    EXPECT_EQ(said(loadVELFile(handle_.get(), file.c_str(), "vel", &digest, &digest)), "");
    EXPECT_EQ(flagsOf(handle_), "/ Object 0\n/x Param 0x400\n");
}

} // namespace
