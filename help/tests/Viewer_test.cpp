// Tests the real viewer, started by the real client.
#include "help/JavaHelpServer.h"

#include "common/error.h"
#include "help/ProcessControl.h"
#include "help/Socket.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>

namespace velEditor {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto patience = 60s;

// A script starts the viewer. It logs the start, the end, and the pages that the
// viewer reports.
class ViewerTest : public testing::Test
{
protected:
    ViewerTest()
    {
        std::string name = (fs::temp_directory_path() / "viewer_test_XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        const std::string runtime = (folder_ / "runtime").string();
        std::ofstream(runtime) << "#!/bin/sh\n"
                                  "cd \"$(dirname \"$0\")\"\n"
                                  "echo started >> log\n"
                                  "\"$@\" 2>> log\n"
                                  "echo ended $? >> log\n"
                                  "mv log finished\n";
        ::chmod(runtime.c_str(), 0755);
        ::setenv("ZOT5MONO", runtime.c_str(), 1);
        ::setenv("KOA_DEBUG_HELP", "", 1);
        ::unsetenv("KOA_TEST_HELP_DIR");
        ::unsetenv("QRP_LOCALE150");
        client_ = std::make_unique<JavaHelpServer>("DEFEditor");
        client().setWarning(
            [this](const std::string &, const std::string &text) { warnings += text + "\n"; });
    }

    ~ViewerTest() override
    {
        client_->disconnect();
        if (fs::exists(folder_ / "log")) {
            finalLog();
        }
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    JavaHelpServer &client() { return *client_; }

    /// Our lines in a log file, without messages of the toolkit.
    [[nodiscard]] std::string content(const char *name) const
    {
        std::ifstream file(folder_ / name);
        std::string notes;
        for (std::string line; std::getline(file, line);) {
            if (line == "started" || line.starts_with("ended ") || line.starts_with("velhelp: ")) {
                notes += line + "\n";
            }
        }
        return notes;
    }

    /// The log; waits until the viewer has shown a page.
    [[nodiscard]] std::string logUpTo(const std::string &page) const
    {
        const auto end = std::chrono::steady_clock::now() + patience;
        const std::string last = "velhelp: showing " + page + " - Help\n";
        while (!content("log").ends_with(last) && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(20ms);
        }
        return content("log");
    }

    /// The log; waits until the viewer has ended.
    std::string finalLog() const
    {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!fs::exists(folder_ / "finished") && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(20ms);
        }
        return content("finished");
    }

    fs::path folder_;
    std::string warnings;

private:
    std::unique_ptr<JavaHelpServer> client_;
};

const char contents[] = "velhelp: showing Contents - Help\n";

void send(Socket &socket, const std::string &text)
{
    socket.socketSend(text.data(), text.size());
}

int fuzzSeconds()
{
    const char *seconds = std::getenv("HELP_FUZZ_SECONDS");
    return seconds != nullptr ? std::atoi(seconds) : 3;
}

/// Random bytes, some after the beginning of a command; never a valid command.
std::string noise(std::mt19937 &random)
{
    static const char *const beginnings[] = {"", "ZOT:\xff", "QUIT\x01", "OMBRA:/pdf\xc0",
                                             "DH2:\x02"};
    std::string bytes = beginnings[random() % 5];
    bytes.resize(bytes.size() + random() % 20'000);
    for (char &byte : bytes) {
        byte = static_cast<char>(byte != '\0' ? byte : random());
    }
    return bytes;
}

/// Sends noise over one connection. Returns the number of bytes sent.
std::size_t attack(int port, std::mt19937 &random)
{
    std::size_t sent = 0;
    try {
        Socket attacker(Socket::localHostName(), static_cast<unsigned short>(port), 1);
        for (auto i = random() % 50; i > 0; --i) {
            const std::string bytes = noise(random);
            send(attacker, bytes);
            sent += bytes.size();
        }
    } catch (const error &) {
    }
    return sent;
}

} // namespace

TEST_F(ViewerTest, answersTheEditorInOneWindow)
{
    client().showHelp("Master Contents", "", 2);
    EXPECT_EQ(std::string("started\n") + contents, logUpTo("Contents"));
    client().showHelp("Tutorials", "Second example", 2);
    EXPECT_EQ(std::string("started\n") + contents + "velhelp: showing Tutorials - Help\n",
              logUpTo("Tutorials"));
    client().disconnect();
    EXPECT_EQ(std::string("started\n") + contents + "velhelp: showing Tutorials - Help\nended 0\n",
              finalLog());
    EXPECT_EQ("", warnings);
}

TEST_F(ViewerTest, showsEveryTopicOfTheMenu)
{
    const char *const pages[][2] = {
        {"Def File Editor", "The editor"}, {"Expert Parameters", "Expert parameters"},
        {"Master Contents", "Contents"},   {"Master Index", "Index"},
        {"Tutorials", "Tutorials"},        {"Search", "Searching"},
        {"Help On Help", "Help on help"},  {"BOUNDARY", "BOUNDARY"},
    };
    std::string expected = "started\n";
    for (const auto &[topic, title] : pages) {
        client().showHelp(topic, "", 2);
        expected += std::string("velhelp: showing ") + title + " - Help\n";
        EXPECT_EQ(expected, logUpTo(title));
    }
}

TEST_F(ViewerTest, saysThatATopicIsUnknown)
{
    client().showHelp("../../../etc/passwd", "", 2);
    EXPECT_EQ("started\nvelhelp: showing No such page - Help\n", logUpTo("No such page"));
    client().showHelp("/etc/passwd", "", 0);
    client().showHelp("Master Contents", "", 2);
    EXPECT_EQ("", warnings);
}

TEST_F(ViewerTest, staysWithTheEditorWhenOthersConnectAndLeave)
{
    client().start();
    Socket(Socket::localHostName(), static_cast<unsigned short>(client().port()), 5).closeAll();
    client().showHelp("Master Contents", "", 2);
    EXPECT_EQ(std::string("started\n") + contents, logUpTo("Contents"));
    EXPECT_EQ("", warnings);
}

TEST_F(ViewerTest, endsWhenItsOnlyClientLeavesBeforeAPageIsShown)
{
    const char *help = std::getenv("ZOT_HELP_DIR");
    ASSERT_NE(nullptr, help);
    int fd = -1;
    const int viewer = ProcessControl::startProcess(
        {std::string(help) + "/../../HelpViewer/OMBRAHelpViewer.exe"}, &fd, 1, true);
    ASSERT_NE(0, viewer);
    const int port = std::atoi(ProcessControl::readOnce(fd, 20, patience).c_str());
    ASSERT_GT(port, 0);
    Socket(Socket::localHostName(), static_cast<unsigned short>(port), 5).closeAll();
    int status = -1;
    EXPECT_EQ(viewer, ::waitpid(viewer, &status, 0));
    EXPECT_EQ(0, status);
    ProcessControl::closePipe(fd);
}

TEST_F(ViewerTest, listensAtLoopbackToo)
{
    client().start();
    Socket other("127.0.0.1", static_cast<unsigned short>(client().port()), 1);
    send(other, "ZOT:Tutorials\n");
    EXPECT_EQ("started\nvelhelp: showing Tutorials - Help\n", logUpTo("Tutorials"));
}

TEST_F(ViewerTest, survivesRandomBytes)
{
    client().showHelp("Master Contents", "", 2);
    EXPECT_EQ(std::string("started\n") + contents, logUpTo("Contents"));

    // The viewer may refuse a connection; it must not fail.
    std::mt19937 random(1);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(fuzzSeconds());
    std::size_t sent = 0;
    while (std::chrono::steady_clock::now() < end) {
        sent += attack(client().port(), random);
    }
    EXPECT_GT(sent, 100'000U);

    client().showHelp("Tutorials", "", 2);
    EXPECT_EQ(std::string("started\n") + contents + "velhelp: showing Tutorials - Help\n",
              logUpTo("Tutorials"));
    EXPECT_EQ("", warnings);
}

} // namespace velEditor
