// Tests the help client with a program that replaces the viewer.
#include "help/JavaHelpServer.h"

#include "help/Socket.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <sys/wait.h>

namespace velEditor {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto patience = 60s;

// Makes a help directory with the viewer double, and an environment that names it.
class JavaHelpServerTest : public testing::Test
{
protected:
    JavaHelpServerTest()
    {
        std::string name = (fs::temp_directory_path() / "help_test_XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        fs::create_directories(helpDirectory());
        fs::create_directories(folder_ / "HelpViewer");
        fs::create_symlink(HELP_TEST_DOUBLE, viewer());
        set("ZOT_HELP_DIR", helpDirectory());
        set("HELP_DOUBLE_LOG", (folder_ / "log").string());
        for (const char *variable : {"KOA_TEST_HELP_DIR", "ZOT5MONO", "QRP_LOCALE150",
                                     "OMBHELP_SESSION_ID", "KOA_DEBUG_HELP", "HELP_DOUBLE"}) {
            ::unsetenv(variable);
        }
    }

    // Tries again because a viewer that is ending may still write its log.
    ~JavaHelpServerTest() override
    {
        std::error_code failure;
        do {
            fs::remove_all(folder_, failure);
        } while (failure);
    }

    static void set(const char *name, const std::string &value)
    {
        ::setenv(name, value.c_str(), 1);
    }

    [[nodiscard]] std::string helpDirectory() const { return (folder_ / "doc/zot").string(); }
    [[nodiscard]] fs::path viewer() const { return folder_ / "HelpViewer/OMBRAHelpViewer.exe"; }

    /// A client whose warnings are kept in `warnings`.
    std::unique_ptr<JavaHelpServer> newClient()
    {
        auto client = std::make_unique<JavaHelpServer>("DEFEditor");
        client->setWarning([this](const std::string &title, const std::string &text) {
            warnings.push_back(title + ": " + text);
        });
        return client;
    }

    [[nodiscard]] std::string log() const
    {
        std::ostringstream text;
        text << std::ifstream(folder_ / "log").rdbuf();
        return text.str();
    }

    /// The log of the viewer double; waits until it ends with `line`.
    std::string logUpTo(const std::string &line) const
    {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!log().ends_with(line + "\n") && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(10ms);
        }
        return log();
    }

    /// The output of the program helpSession.
    [[nodiscard]] std::string sessionOutput(const std::string &words) const
    {
        std::FILE *pipe = ::popen((HELP_TEST_SESSION " " + words).c_str(), "r");
        std::string text;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
            text += static_cast<char>(c);
        }
        ::pclose(pipe);
        return text;
    }

    fs::path folder_;
    std::vector<std::string> warnings;
};

const char started[] = "started '--language' 'en-us' '--sessionID' ''\n";

using Lines = std::vector<std::string>;

} // namespace

TEST_F(JavaHelpServerTest, startsTheViewerOnFirstUse)
{
    const auto client = newClient();
    EXPECT_FALSE(client->isConnected());
    EXPECT_EQ("", log());
    client->showHelp("Master Contents", "", JavaHelpServer::RegularHelp);
    EXPECT_TRUE(client->isConnected());
    EXPECT_EQ(std::string(started) + "got ZOT:Master Contents\n",
              logUpTo("got ZOT:Master Contents"));
    EXPECT_EQ(Lines(), warnings);
}

TEST_F(JavaHelpServerTest, usesOneViewerForAllRequests)
{
    const auto client = newClient();
    client->showHelp("One", "", 2);
    const int port = client->port();
    client->showHelp("Two", "", 2);
    client->start();
    client->showHelp("Three", "", 2);
    EXPECT_EQ(port, client->port());
    EXPECT_EQ(std::string(started) + "got ZOT:One\ngot ZOT:Two\ngot ZOT:Three\n",
              logUpTo("got ZOT:Three"));
}

TEST_F(JavaHelpServerTest, writesACommandForEveryKind)
{
    const auto client = newClient();
    client->showHelp("guide.pdf", "", JavaHelpServer::Pdf);
    client->showHelp("index", "top", JavaHelpServer::PlatformHelp);
    client->showHelp("Tutorials", "Second example", JavaHelpServer::RegularHelp);
    client->showHelp("", "", JavaHelpServer::RegularHelp);
    client->showHelp("", "alone", JavaHelpServer::RegularHelp);
    client->showHelp("seven", "", 7);
    client->showHelp("minus", "", -1);
    EXPECT_EQ(std::string(started) + "got OMBRA:/pdf/guide.pdf\n"
                                     "got DH2:file:index#top\n"
                                     "got ZOT:Tutorials#Second example\n"
                                     "got ZOT:\n"
                                     "got ZOT:#alone\n"
                                     "got ZOT:seven\n"
                                     "got ZOT:minus\n",
              logUpTo("got ZOT:minus"));
}

TEST_F(JavaHelpServerTest, quitsTheViewer)
{
    const auto client = newClient();
    client->disconnect();
    EXPECT_EQ("", log());
    client->showHelp("One", "", 2);
    client->disconnect();
    EXPECT_FALSE(client->isConnected());
    EXPECT_EQ(std::string(started) + "got ZOT:One\ngot QUIT\nended\n", logUpTo("ended"));
}

TEST_F(JavaHelpServerTest, quitsTheViewerAtItsEnd)
{
    newClient()->showHelp("One", "", 2);
    EXPECT_EQ(std::string(started) + "got ZOT:One\ngot QUIT\nended\n", logUpTo("ended"));
}

TEST_F(JavaHelpServerTest, startsAgainAfterDisconnecting)
{
    const auto client = newClient();
    client->showHelp("One", "", 2);
    client->disconnect();
    logUpTo("ended");
    client->showHelp("Two", "", 2);
    EXPECT_EQ(std::string(started) + "got ZOT:One\ngot QUIT\nended\n" + started + "got ZOT:Two\n",
              logUpTo("got ZOT:Two"));
    EXPECT_EQ(Lines(), warnings);
}

TEST_F(JavaHelpServerTest, takesLanguageAndSessionFromTheEnvironment)
{
    set("QRP_LOCALE150", "de");
    set("OMBHELP_SESSION_ID", "run 7");
    const auto client = newClient();
    client->showHelp("One", "", 2);
    EXPECT_EQ("started '--language' 'de' '--sessionID' 'run 7'\ngot ZOT:One\n",
              logUpTo("got ZOT:One"));
}

TEST_F(JavaHelpServerTest, prefersTheTestHelpDirectory)
{
    set("ZOT_HELP_DIR", "/nowhere");
    set("KOA_TEST_HELP_DIR", helpDirectory());
    const auto client = newClient();
    client->showHelp("One", "", 2);
    EXPECT_TRUE(client->isConnected());
}

TEST_F(JavaHelpServerTest, runsTheViewerInItsRuntime)
{
    set("ZOT5MONO", "env");
    const auto client = newClient();
    client->showHelp("One", "", 2);
    EXPECT_EQ(std::string(started) + "got ZOT:One\n", logUpTo("got ZOT:One"));
}

TEST_F(JavaHelpServerTest, takesAFileNamedByTheSuffixItself)
{
    fs::remove(viewer());
    fs::create_symlink(HELP_TEST_DOUBLE,
                       helpDirectory() + "\\..\\..\\HelpViewer\\OMBRAHelpViewer.exe");
    const auto client = newClient();
    client->showHelp("One", "", 2);
    EXPECT_TRUE(client->isConnected());
}

TEST_F(JavaHelpServerTest, reportsAMissingViewer)
{
    fs::remove(viewer());
    const auto client = newClient();
    testing::internal::CaptureStderr();
    client->showHelp("One", "", 2);
    EXPECT_EQ("ProcessControl::startProcess: _spawnvp(" + helpDirectory() +
                  "/../../HelpViewer/OMBRAHelpViewer.exe) - No such file or directory\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(Lines({"Warning: Deskhall help server was not successfully started."}), warnings);
    EXPECT_FALSE(client->isConnected());
}

TEST_F(JavaHelpServerTest, warnsOnTheErrorStreamWithoutAScreen)
{
    fs::remove(viewer());
    JavaHelpServer client("DEFEditor");
    testing::internal::CaptureStderr();
    client.showHelp("One", "", 2);
    EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with(
        "\nWarning: Deskhall help server was not successfully started.\n"));
}

// A number outside 1 to 65535 is treated like a text that is not a number.
TEST_F(JavaHelpServerTest, needsAPortFromTheViewer)
{
    const struct
    {
        const char *says;
        const char *returned;
    } table[] = {
        {"no port today\n", "no port today\n"},
        {"", ""},
        {"0\n", "0\n"},
        {"-1\n", "-1\n"},
        {"65536\n", "65536\n"},
        {"99999999999999999\n", "99999999999999999\n"},
        {"12345              \n", "12345              "},
        {"12345 and much more than fits", "12345 and much more"},
    };
    const auto client = newClient();
    for (const auto &row : table) {
        warnings.clear();
        set("HELP_DOUBLE", std::string("say ") + row.says);
        client->showHelp("One", "", 2);
        EXPECT_EQ(Lines({std::string("Warning: Deskhall help server was not successfully "
                                     "started.  Returned: '") +
                         row.returned + "'"}),
                  warnings);
        EXPECT_FALSE(client->isConnected());
    }
}

TEST_F(JavaHelpServerTest, readsThePortInAnyNotation)
{
    Socket listener;
    listener.openListenPort(0);
    char hexadecimal[32];
    std::snprintf(hexadecimal, sizeof hexadecimal, "say  0x%x rest", listener.port());
    set("HELP_DOUBLE", hexadecimal);
    const auto client = newClient();
    client->showHelp("One", "", 2);
    EXPECT_EQ(listener.port(), client->port());
    EXPECT_EQ("ZOT:One\n", listener.waitForConnection(patience)->socketRecv(100));
}

TEST_F(JavaHelpServerTest, saysThatItCannotConnect)
{
    set("HELP_DOUBLE", "say 1\n");
    const auto client = newClient();
    const auto begin = std::chrono::steady_clock::now();
    client->showHelp("One", "", 2);
    EXPECT_EQ(Lines({"Warning: Error connecting to Deskhall help server: Socket::connectHostPort - "
                     "connect call failed. Could not connect to host: " +
                     Socket::localHostName() + "   error code: " + std::to_string(ECONNREFUSED)}),
              warnings);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 4s);
    EXPECT_FALSE(client->isConnected());
}

TEST_F(JavaHelpServerTest, reportsALostViewerOnceAndStartsAgain)
{
    set("HELP_DOUBLE", "leave");
    const auto client = newClient();
    client->showHelp("One", "", 2);
    EXPECT_EQ(std::string(started) + "got ZOT:One\nended\n", logUpTo("ended"));
    // The viewer writes "ended" shortly before its process ends.
    while (warnings.empty() && client->isConnected()) {
        std::this_thread::sleep_for(50ms);
        client->showHelp("Two", "", 2);
    }
    EXPECT_EQ(Lines({"Warning: Socket::socketSend - send  call failed with error: connection "
                     "reset"}),
              warnings);
    ::unsetenv("HELP_DOUBLE");
    client->showHelp("Three", "", 2);
    EXPECT_EQ(std::string(started) + "got ZOT:One\nended\n" + started + "got ZOT:Three\n",
              logUpTo("got ZOT:Three"));
    EXPECT_EQ(1U, warnings.size());
}

// A viewer that shuts down its sending half still receives requests.
TEST_F(JavaHelpServerTest, keepsAViewerThatSendsNoMore)
{
    set("HELP_DOUBLE", "half");
    const auto client = newClient();
    client->showHelp("One", "", 2);
    client->showHelp("Two", "", 2);
    client->showHelp("Three", "", 2);
    client->disconnect();
    EXPECT_EQ(std::string(started) + "got ZOT:One\ngot ZOT:Two\ngot ZOT:Three\ngot QUIT\nended\n",
              logUpTo("ended"));
    EXPECT_EQ(Lines(), warnings);
}

// The client waits at most 20 seconds for the port.
TEST_F(JavaHelpServerTest, stopsReadingThePortAfterTwentySeconds)
{
    set("HELP_DOUBLE", "silent");
    const auto client = newClient();
    const auto begin = std::chrono::steady_clock::now();
    client->showHelp("One", "", 2);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20s);
    EXPECT_EQ(Lines({"Warning: Deskhall help server was not successfully started.  Returned: ''"}),
              warnings);
    EXPECT_FALSE(client->isConnected());
}

// There is no warning if the viewer has ended before the editor closes.
TEST_F(JavaHelpServerTest, closesWithoutAWarningIfThereIsNoViewer)
{
    set("HELP_DOUBLE", "leave");
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    {
        const auto client = newClient();
        client->showHelp("One", "", 2);
        logUpTo("ended");
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(Lines(), warnings);
}

TEST_F(JavaHelpServerTest, sendsNothingToALostViewer)
{
    set("HELP_DOUBLE", "leave");
    const auto client = newClient();
    client->showHelp("One", "", 2);
    logUpTo("ended");
    client->disconnect();
    EXPECT_FALSE(client->isConnected());
    EXPECT_EQ(Lines(), warnings);
}

TEST_F(JavaHelpServerTest, acceptsOnlyOneApplication)
{
    EXPECT_EXIT(JavaHelpServer("ZOTPost"), testing::ExitedWithCode(255),
                "^GUI: FATAL: JavaHelpServer does not recognize ZOTPost as valid KOA "
                "application\\.\nTerminating\\.\\.\\.\n$");
}

TEST_F(JavaHelpServerTest, tracesItsConversationWithTheViewer)
{
    set("KOA_DEBUG_HELP", "");
    const std::string output =
        sessionOutput("DEFEditor 'Tutorials||2' 'a.pdf||0' 'index|top|1' disconnect");
    const std::string port = output.substr(output.find("number=") + 7, 5);
    EXPECT_EQ("DH viewer executable=" + helpDirectory() +
                  "\\..\\..\\HelpViewer\\OMBRAHelpViewer.exe, Language=en-us\n"
                  "Mono executable=\n"
                  "Displaying regular help for topic=Tutorials, section=\n"
                  "DH Helpserver command line = \"" +
                  helpDirectory() +
                  "/../../HelpViewer/OMBRAHelpViewer.exe --language en-us --sessionID  \"\n"
                  "DH Helpserver port number=" +
                  std::to_string(std::atoi(port.c_str())) +
                  "\n"
                  "Help server command: ZOT:Tutorials\n Length=14\n"
                  "Displaying PDF help for topic=a.pdf, section=\n"
                  "Help server command: OMBRA:/pdf/a.pdf\n Length=17\n"
                  "Displaying DH help for topic=index, section=top\n"
                  "Help server command: DH2:file:index#top\n Length=19\n"
                  "Disconnecting from DH helpServer\n",
              output);
}

TEST_F(JavaHelpServerTest, isSilentOtherwise)
{
    EXPECT_EQ("", sessionOutput("DEFEditor 'Tutorials||2' disconnect"));
}

} // namespace velEditor
