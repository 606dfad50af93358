// Tests the handle: its life, its depth, its error text and its trace.
#include "velapilt/src/velError_p.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace {

constexpr std::string_view marker =
    "USE OF FREED MEMORY.  This string belongs to a velapilt handle which has been destroyed.";

std::string name(const velHandlePtr &handle)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%x",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(handle.get())));
    return text.data();
}

TEST(VelHandle, ANewHandleIsEmpty)
{
    const velHandlePtr handle(velCreateHandle());
    std::int32_t depth = -1;
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    EXPECT_EQ(depth, 0);
    EXPECT_EQ(getValidationLevel(handle.get()), 0);
    EXPECT_EQ(velUserData(handle.get()), nullptr);
    EXPECT_EQ(havePath(handle.get(), "/"), 0);
    EXPECT_EQ(isObject(handle.get(), "/"), 0);
    EXPECT_EQ(isLibrary(handle.get(), "/"), -1);
    EXPECT_EQ(isValid(handle.get(), "/"), -1);
    EXPECT_EQ(velKindOf(handle.get(), "/"), velNone);
    EXPECT_EQ(velFindNode(handle.get(), "/"), nullptr);
}

TEST(VelHandle, CallsThatMakeTheTree)
{
    const velHandlePtr byText(velCreateHandle());
    EXPECT_EQ(parse(byText, ""), ""); // a complete text, although it has no lines
    EXPECT_EQ(havePath(byText.get(), "/"), 1);

    const velHandlePtr byLine(velCreateHandle());
    EXPECT_EQ(said(parseVELLineH(byLine.get(), "# comment", 0)), "");
    EXPECT_EQ(said(parseVELLineH(byLine.get(), "", 0)), "");
    EXPECT_EQ(havePath(byLine.get(), "/"), 0);
    EXPECT_EQ(said(parseVELLineH(byLine.get(), "x = 1", 0)), "");
    EXPECT_EQ(havePath(byLine.get(), "/"), 1);

    const velHandlePtr byCreation(velCreateHandle());
    EXPECT_EQ(said(velCreateObject(byCreation.get(), "/FLOW", false)), "");
    EXPECT_EQ(flagsOf(byCreation), "/ Object 0\n/FLOW Singleton 0\n");
}

TEST(VelHandle, DestroyReturnsZeroAndAcceptsNull)
{
    EXPECT_EQ(velDestroyHandle(nullptr), 0);
    EXPECT_EQ(velDestroyHandle(velCreateHandle()), 0);
}

TEST(VelHandle, ValidationLevelIsOnlyKept)
{
    const velHandlePtr handle(velCreateHandle());
    setValidationLevel(handle.get(), -7);
    EXPECT_EQ(getValidationLevel(handle.get()), -7);
}

TEST(VelHandle, UserDataIsReleasedWithTheHandle)
{
    static int released = 0;
    const auto release = [](void *data) { released += *static_cast<int *>(data); };
    int first = 1;
    int second = 10;
    {
        const velHandlePtr handle(velCreateHandle());
        velSetUserData(handle.get(), &first, release);
        EXPECT_EQ(velUserData(handle.get()), &first);
        velSetUserData(handle.get(), &first, release); // the same data: nothing to release
        EXPECT_EQ(released, 0);
        velSetUserData(handle.get(), &second, release);
        EXPECT_EQ(released, 1);
    }
    EXPECT_EQ(released, 11);
}

TEST(VelHandle, NullDataIsReleasedOnceToo)
{
    static std::vector<void *> released;
    released.clear();
    const auto release = [](void *data) { released.push_back(data); };
    int data = 0;
    {
        const velHandlePtr handle(velCreateHandle());
        velSetUserData(handle.get(), nullptr, release);
    }
    EXPECT_EQ(released, std::vector<void *>{nullptr});
    {
        const velHandlePtr handle(velCreateHandle());
        velSetUserData(handle.get(), nullptr, release);
        velSetUserData(handle.get(), &data, release);
    }
    EXPECT_EQ(released, (std::vector<void *>{nullptr, nullptr, &data}));
}

TEST(VelHandle, TheTreeIsGoneWhenTheUserDataIsReleased)
{
    struct Seen
    {
        velHandle *handle;
        std::string text;
    } seen;
    seen.handle = velCreateHandle();
    EXPECT_EQ(said(parseVELLineH(seen.handle, "A:", 0)), "");
    EXPECT_EQ(said(parseVELLineH(seen.handle, "x = 1 \\", 0)), "");
    velSetUserData(seen.handle, &seen, [](void *data) {
        auto &[handle, text] = *static_cast<Seen *>(data);
        text = getCurrentPath(handle);
        text += ' ' + std::to_string(havePath(handle, "/A")) + ' ';
        text += said(parseVELLineH(handle, "END", 0));
    });
    velDestroyHandle(seen.handle);
    EXPECT_EQ(seen.text, "/ 0 parseVELLineH: unmatched END");
}

// --- Depth -----------------------------------------------------------------------

TEST(VelHandle, Depth)
{
    const velHandlePtr handle = parsed("A:\nB:\nEND\nEND\n");
    std::int32_t depth = -1;
    EXPECT_EQ(said(getVELStateH(handle.get(), nullptr)), "getVELStateH: Invalid arguments");
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    EXPECT_EQ(depth, 0);
    for (const char *line : {"A:", "B:", "C: d"}) {
        EXPECT_EQ(said(parseVELLineH(handle.get(), line, 0)), "");
    }
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    EXPECT_EQ(depth, 3);
    EXPECT_STREQ(getCurrentPath(handle.get()), "/A/B/C:d");
}

TEST(VelHandle, TheDeepestBlockIsRemembered)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(velDeepestBlock(handle.get()), 0);
    const char *const lines[] = {"A: a", "B: b", "END", "END", "C: c", "x = 1", "END"};
    EXPECT_EQ(said(loadVELData(handle.get(), lines, 7)), "");
    EXPECT_EQ(velDeepestBlock(handle.get()), 2);
}

TEST(VelHandle, SettingTheDepthOnlyClosesBlocks)
{
    const velHandlePtr handle(velCreateHandle());
    for (const char *line : {"A:", "B:", "C: d"}) {
        EXPECT_EQ(said(parseVELLineH(handle.get(), line, 0)), "");
    }
    std::int32_t depth = -1;
    const auto depthAfter = [&](std::int32_t wanted) {
        setVELStateH(handle.get(), wanted);
        EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
        return std::to_string(depth) + " " + getCurrentPath(handle.get());
    };
    EXPECT_EQ(depthAfter(9), "3 /A/B/C:d");
    EXPECT_EQ(depthAfter(2), "2 /A/B");
    EXPECT_EQ(depthAfter(2), "2 /A/B");
    EXPECT_EQ(depthAfter(-5), "0 /");
    EXPECT_EQ(depthAfter(1), "0 /");
}

// --- Error text ---------------------------------------------------------------------

TEST(VelHandle, AMessageIsOverwrittenByTheNext)
{
    const velHandlePtr handle(velCreateHandle());
    const char *first = parseVELLineH(handle.get(), "no statement at all", 0);
    EXPECT_STREQ(first, "parseVELLineH: syntax error near \"no statement at all\"");
    const std::size_t length = std::string_view(first).size();
    const char *second = parseVELLineH(handle.get(), "nor this", 0);
    EXPECT_STREQ(second, "parseVELLineH: syntax error near \"nor this\"");
    EXPECT_EQ(first, marker.substr(0, length));
}

TEST(VelHandle, ALongMessageKeepsItsTail)
{
    const velHandlePtr handle(velCreateHandle());
    const std::string line(200, 'x');
    const char *first = parseVELLineH(handle.get(), line.c_str(), 0);
    const std::string whole(first);
    ASSERT_GT(whole.size(), marker.size());
    static_cast<void>(parseVELLineH(handle.get(), "y", 0));
    EXPECT_EQ(first, std::string(marker) + whole.substr(marker.size()));
}

TEST(VelHandle, TheLastMessageIsOverwrittenWithTheHandle)
{
    struct Kept
    {
        const char *message;
        std::string text;
    } kept;
    velHandle *handle = velCreateHandle();
    kept.message = parseVELLineH(handle, "no statement", 0);
    const std::size_t length = std::string_view(kept.message).size();
    velSetUserData(handle, &kept, [](void *data) {
        auto *last = static_cast<Kept *>(data);
        last->text = last->message;
    });
    velDestroyHandle(handle);
    EXPECT_EQ(kept.text, marker.substr(0, length));
}

TEST(VelHandle, LiteralMessagesDoNotChangeTheErrorText)
{
    const velHandlePtr handle(velCreateHandle());
    const char *first = parseVELLineH(handle.get(), "x", 0);
    EXPECT_EQ(said(parseVELLineH(handle.get(), "END", 0)), "parseVELLineH: unmatched END");
    EXPECT_STREQ(first, "parseVELLineH: syntax error near \"x\"");
}

TEST(VelHandle, OnlyAFormatIsFormatted)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_STREQ(velSetError(handle.get(), "not a format"), "not a format");
    EXPECT_STREQ(velSetError(handle.get(), "%d of %s", 3, "four"), "3 of four");
    EXPECT_STREQ(velRecordError(handle.get(), "100 % sure %s"), "100 % sure %s");
    EXPECT_STREQ(velRecordError(handle.get(), ""), "");
    const std::string large(1 << 20, 'x');
    EXPECT_EQ(velSetError(handle.get(), "<%s>", large.c_str()), "<" + large + ">");
}

TEST(VelHandle, AMessageMayContainThePreviousOne)
{
    const velHandlePtr handle(velCreateHandle());
    const char *error = velSetError(handle.get(), "inner %d", 1);
    EXPECT_STREQ(velSetError(handle.get(), "outer: %s", error), "outer: inner 1");
}

TEST(VelHandle, HandlesShareNothing)
{
    const velHandlePtr a = parsed("FLOW:\nx = 1\nEND\n");
    const velHandlePtr b = parsed("FLOW:\nx = 2\nEND\n");
    const char *error = parseVELLineH(a.get(), "bad", 0);
    static_cast<void>(parseVELLineH(b.get(), "worse", 0));
    EXPECT_STREQ(error, "parseVELLineH: syntax error near \"bad\"");
    EXPECT_EQ(valueAt(a, "/FLOW/x") + valueAt(b, "/FLOW/x"), "12");
}

// --- Trace ----------------------------------------------------------------------------

TEST(VelHandle, NothingIsPrintedWithoutTheVariable)
{
    const Environment debug("ZOT_VELAPI_DEBUG", std::nullopt);
    testing::internal::CaptureStdout();
    {
        const velHandlePtr handle(velCreateHandle());
        static_cast<void>(parse(handle, "FLOW:\nx = 1\nEND\nbad\n"));
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(VelHandle, TheTraceShowsLifeChangesAndErrors)
{
    const Environment debug("ZOT_VELAPI_DEBUG", ""); // any value turns the trace on
    testing::internal::CaptureStdout();
    std::string id;
    {
        const velHandlePtr handle(velCreateHandle());
        id = name(handle) + ": ";
        EXPECT_EQ(parse(handle, "FLOW:\n"
                                "x = 1\n"
                                "x = 1\n"
                                "x = 2 %s\n"
                                "END\n"),
                  "");
        static_cast<void>(parseVELLineH(handle.get(), "bad %d", 0));
        EXPECT_EQ(said(parseVELLineH(handle.get(), "END", 0)), "parseVELLineH: unmatched END");
        EXPECT_EQ(said(deleteObjH(handle.get(), "/FLOW")), "");
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              id + "*** created ***\n" +                                            //
                  id + "/FLOW: object created\n" +                                  //
                  id + "/FLOW/x: 1 <- (nul)\n" +                                    //
                  id + "/FLOW/x: 2 %s <- 1\n" +                                     //
                  id + "VEL ERROR: parseVELLineH: syntax error near \"bad %d\"\n" + //
                  id + "/FLOW/x: (nul) <- 2 %s\n" +                                 //
                  id + "/FLOW: object deleted\n" +                                  //
                  id + "*** destroyed ***\n");
}

TEST(VelHandle, TheVariableIsReadAtEachUse)
{
    testing::internal::CaptureStdout();
    std::string id;
    {
        velHandlePtr handle;
        {
            const Environment debug("ZOT_VELAPI_DEBUG", std::nullopt);
            handle.reset(velCreateHandle());
            id = name(handle) + ": ";
            static_cast<void>(parseVELLineH(handle.get(), "silent", 0));
        }
        {
            const Environment debug("ZOT_VELAPI_DEBUG", "1");
            // A handle made without the variable does not get the handler that prints changes.
            EXPECT_EQ(parse(handle, "x = 1\n"), "");
            static_cast<void>(parseVELLineH(handle.get(), "loud", 0));
        }
        const Environment debug("ZOT_VELAPI_DEBUG", std::nullopt);
        handle.reset();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              id + "VEL ERROR: parseVELLineH: syntax error near \"loud\"\n");
}

} // namespace
