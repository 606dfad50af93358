// workOnFiles with several processes: order, statuses, and processes that die.
#include "tools/veltool/support/workers.h"

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace veltool {
namespace {

FileResult failed(const std::string & /*file*/, const Failure &failure)
{
    return {failure.status(), {}, messageLine(failure.message())};
}

/// All output in order, and the status.
std::string run(const std::vector<std::string> &files, std::size_t jobs, const FileWork &work)
{
    std::string text;
    const int status = workOnFiles(files, jobs, work, failed, [&](const FileResult &result) {
        text += result.out + result.err;
    });
    return text + std::to_string(status);
}

FileResult name(const std::string &file)
{
    if (file == "slow") {
        usleep(50000);
    }
    if (file == "bad") {
        throw Failure("bad: no good");
    }
    return {file == "found" ? statusFindings : statusGood, file + '\n', {}};
}

TEST(Workers, KeepTheOrderOfTheFiles)
{
    const std::vector<std::string> files = {"slow", "a", "found", "b", "bad", "c"};
    const std::string expected = "slow\na\nfound\nb\nveltool: bad: no good\nc\n2";
    for (const std::size_t jobs : {1, 2, 3, 100}) {
        EXPECT_EQ(run(files, jobs, name), expected) << jobs;
    }
    EXPECT_EQ(run({"a", "found"}, 2, name), "a\nfound\n1");
    EXPECT_EQ(run({}, 2, name), "0");
}

TEST(Workers, PassLongTexts)
{
    const std::string longText(1'000'000, 'x');
    EXPECT_EQ(run({"a", "b"}, 2,
                  [&](const std::string &) {
                      return FileResult{statusGood, longText, {}};
                  }),
              longText + longText + '0');
}

TEST(Workers, DieWithOnlyTheirCurrentFile)
{
    const pid_t own = getpid();
    const auto work = [&](const std::string &file) {
        if (file == "deadly" && getpid() != own) {
            std::raise(SIGKILL);
        }
        return name(file);
    };
    EXPECT_EQ(run({"a", "deadly", "b", "c"}, 2, work),
              "a\nveltool: deadly: its worker process ended unexpectedly; try --jobs 1\nb\nc\n2");
    EXPECT_EQ(run({"deadly", "deadly", "a"}, 2, work),
              "veltool: deadly: its worker process ended unexpectedly; try --jobs 1\n"
              "veltool: deadly: its worker process ended unexpectedly; try --jobs 1\n"
              "veltool: a: its worker process ended unexpectedly; try --jobs 1\n2");
}

TEST(Workers, EndIfThePrintingFails)
{
    const auto work = [](const std::string &file) { return name(file); };
    EXPECT_THROW(
        static_cast<void>(workOnFiles(std::vector<std::string>(50, "slow"), 2, work, failed,
                                      [](const FileResult &) { throw Failure("full"); })),
        Failure);
}

TEST(Jobs, AreANumberOfOneOrMore)
{
    EXPECT_EQ(parseJobs("1"), 1U);
    EXPECT_EQ(parseJobs("64"), 64U);
    for (const char *text : {"0", "-1", "", "two", "2 ", "1.5", "99999999999999999999"}) {
        EXPECT_THROW(static_cast<void>(parseJobs(text)), Failure) << text;
    }
}

} // namespace
} // namespace veltool
