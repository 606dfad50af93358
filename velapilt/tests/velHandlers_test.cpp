// Tests change, replace and action handlers, and what they may do while they run.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

/// Calls a function of the test on every change.
class OnChange
{
public:
    using Action = std::function<void(const std::string &path, std::int32_t code)>;

    OnChange(const velHandlePtr &handle, Action action) : action_(std::move(action))
    {
        EXPECT_EQ(said(addChangeHandler(handle.get(), call, this)), "");
    }

private:
    static int call(const char *path, std::int32_t code, const char *, const char *, void *userData)
    {
        static_cast<OnChange *>(userData)->action_(path, code);
        return 1;
    }

    Action action_;
};

/// Records the actions: "word" or "word(argument)".
class ActionLog
{
public:
    explicit ActionLog(const velHandlePtr &handle) : handle_(handle.get())
    {
        EXPECT_EQ(said(addActionHandler(handle_, call, this)), "");
    }

    std::string take() { return std::exchange(text_, {}); }

    int answer = 1;
    const char *interrupt = nullptr;
    std::function<void()> meanwhile;

private:
    static int call(velHandle *handle, const char *action, const char *const *arguments,
                    void *userData)
    {
        ActionLog &log = *static_cast<ActionLog *>(userData);
        EXPECT_EQ(handle, log.handle_);
        log.text_ += action;
        for (const char *const *argument = arguments; argument != nullptr && *argument != nullptr;
             ++argument) {
            log.text_ += "(" + std::string(*argument) + ")";
        }
        log.text_ += arguments == nullptr ? "\n" : ";\n";
        if (log.meanwhile) {
            log.meanwhile();
        }
        if (log.interrupt != nullptr) {
            velInterrupt(handle, log.interrupt);
        }
        return log.answer;
    }

    velHandle *handle_;
    std::string text_;
};

// --- Changes -------------------------------------------------------------------------

TEST(VelHandlers, ReportedChanges)
{
    const velHandlePtr handle(velCreateHandle());
    ChangeLog log(handle);
    EXPECT_EQ(parse(handle, "FLOW:\n"
                            "DOMAIN: d\n"
                            "x = 1\n"
                            "x = 1\n"
                            "x = 2\n"
                            "x =\n"
                            "END\n"
                            "END\n"
                            "FLOW:\n"
                            "END\n"),
              "");
    EXPECT_EQ(log.take(), "/FLOW: created\n"
                          "/FLOW/DOMAIN:d: created\n"
                          "/FLOW/DOMAIN:d/x: 1 <- -\n"
                          "/FLOW/DOMAIN:d/x: 2 <- 1\n"
                          "/FLOW/DOMAIN:d/x:  <- 2\n");
    EXPECT_EQ(said(setStringValue(handle.get(), "/FLOW/DOMAIN:d/x", "3")), "");
    EXPECT_EQ(said(setStringValue(handle.get(), "/FLOW/DOMAIN:d/x", "3")), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/FLOW", true)), "");
    EXPECT_EQ(said(setValid(handle.get(), "/FLOW", 1)), "");
    EXPECT_EQ(log.take(), "/FLOW/DOMAIN:d/x: 3 <- \n");
    EXPECT_EQ(said(deleteParamH(handle.get(), "/FLOW/DOMAIN:d/x")), "");
    EXPECT_EQ(said(deleteObjH(handle.get(), "/")), "");
    EXPECT_EQ(log.take(), "/FLOW/DOMAIN:d/x: - <- 3\n"
                          "/FLOW/DOMAIN:d: deleted\n"
                          "/FLOW: deleted\n");
}

TEST(VelHandlers, HandlersAreCalledInTheOrderOfTheirRegistration)
{
    const velHandlePtr handle(velCreateHandle());
    std::string order;
    std::vector<std::unique_ptr<OnChange>> handlers;
    for (char c = 'a'; c <= 'z'; ++c) {
        handlers.push_back(std::make_unique<OnChange>(
            handle, [&order, c](const std::string &, std::int32_t) { order += c; }));
    }
    EXPECT_EQ(parse(handle, "x = 1\ny = 2\n"), "");
    EXPECT_EQ(order, "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz");
}

TEST(VelHandlers, TheMarksAreRemovedBeforeTheReport)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    for (const char *path : {"/A", "/A/x"}) {
        EXPECT_EQ(said(setValid(handle.get(), path, 1)), "");
    }
    std::string seen;
    const OnChange look(handle, [&](const std::string &, std::int32_t) {
        seen = std::to_string(isValid(handle.get(), "/A")) + " " +
               std::to_string(isValid(handle.get(), "/A/x")) + " " + valueAt(handle, "/A/x");
    });
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "2")), "");
    EXPECT_EQ(seen, "0 0 2");
}

// A new node already has its flags when it is reported, but it is not yet current.
TEST(VelHandlers, TheStateOfANewNodeWhenItIsReported)
{
    const velHandlePtr handle(velCreateHandle());
    std::string seen;
    const OnChange look(handle, [&](const std::string &path, std::int32_t) {
        seen += path + ": library " + std::to_string(isLibrary(handle.get(), path.c_str())) +
                ", at " + getCurrentPath(handle.get()) + "\n";
    });
    EXPECT_EQ(parse(handle, "A:\nB: b\nx = 1\nEND\nEND\n", velFlagLibrary), "");
    EXPECT_EQ(seen, "/A: library 1, at /\n"
                    "/A/B:b: library 1, at /A\n"
                    "/A/B:b/x: library 1, at /A/B:b\n");
}

// A line reports a parameter before it changes the parameter's marks.
TEST(VelHandlers, ALineReportsBeforeItInvalidates)
{
    const velHandlePtr handle = parsed("x = 1\n");
    EXPECT_EQ(said(setValid(handle.get(), "/x", 1)), "");
    std::int32_t seen = -1;
    const OnChange look(handle, [&](const std::string &path, std::int32_t) {
        seen = isValid(handle.get(), path.c_str());
    });
    EXPECT_EQ(parse(handle, "x = 2\n"), "");
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(isValid(handle.get(), "/x"), 0);
}

TEST(VelHandlers, AHandlerMayRegisterOthers)
{
    const velHandlePtr handle(velCreateHandle());
    std::vector<std::unique_ptr<ChangeLog>> logs;
    const OnChange more(handle, [&](const std::string &, std::int32_t) {
        logs.push_back(std::make_unique<ChangeLog>(handle));
    });
    EXPECT_EQ(parse(handle, "a = 1\nb = 2\nc = 3\n"), "");
    ASSERT_EQ(logs.size(), 3U);
    EXPECT_EQ(logs[0]->take(), "/b: 2 <- -\n/c: 3 <- -\n"); // receives later changes
    EXPECT_EQ(logs[1]->take(), "/c: 3 <- -\n");
    EXPECT_EQ(logs[2]->take(), "");
}

TEST(VelHandlers, AHandlerMayMakeNodes)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange mirror(handle, [&](const std::string &path, std::int32_t code) {
        if (code == velObjectCreated) {
            EXPECT_EQ(said(velCreateParam(handle.get(), (path + "/made").c_str(), "1")), "");
        }
    });
    EXPECT_EQ(parse(handle, "A:\nB: b\nx = 1\nEND\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\n"
                              "  made = 1\n"
                              "  B: b\n"
                              "    made = 1\n"
                              "    x = 1\n"
                              "  END\n"
                              "END\n");
}

TEST(VelHandlers, AHandlerMayParseOtherLines)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange other(handle, [&](const std::string &path, std::int32_t code) {
        if (path == "/A" && code == velObjectCreated) {
            EXPECT_EQ(parse(handle, "OWN:\nx = 1\nEND\n"), "");
        }
    });
    EXPECT_EQ(parse(handle, "A:\ny = 2\nEND\n"), "");
    EXPECT_EQ(havePath(handle.get(), "/A/y"), 1);
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
}

TEST(VelHandlers, AHandlerMayDeleteTheReportedNode)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange refuse(handle, [&](const std::string &path, std::int32_t code) {
        const bool isNew = code == velObjectCreated ? path.ends_with(":no") : path.ends_with("/no");
        if (isNew && havePath(handle.get(), path.c_str()) == 1) {
            EXPECT_EQ(said(deleteObjH(handle.get(), path.c_str())), "");
        }
    });
    ChangeLog log(handle);
    EXPECT_EQ(parse(handle, "A:\nno = 1\nyes = 2\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  yes = 2\nEND\n");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A/B:no", false)), "");
    EXPECT_EQ(havePath(handle.get(), "/A/B:no"), 0);
    EXPECT_EQ(said(velCreateParam(handle.get(), "/A/no", "x")), "");
    EXPECT_EQ(havePath(handle.get(), "/A/no"), 0);
    // A block whose object was deleted refuses lines, and ends as usual.
    EXPECT_EQ(parse(handle, "B: no\nx = 1\nEND\n"), "parseVELLineH: velUpdateObject failed");
    EXPECT_EQ(parse(handle, "B: no\nEND\ny = 1\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  yes = 2\nEND\ny = 1\n");
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
}

TEST(VelHandlers, AHandlerMayDeleteTheCurrentObject)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange clear(handle, [&](const std::string &path, std::int32_t) {
        if (path == "/A/B:b/x" && havePath(handle.get(), "/A/B:b/x") == 1) {
            EXPECT_EQ(said(deleteObjH(handle.get(), "/A")), "");
        }
    });
    EXPECT_EQ(parse(handle, "A:\nB: b\nw = 0\nx = 1\nEND\nEND\nC:\nEND\n"), "");
    EXPECT_EQ(stored(handle), "C:\nEND\n");
    EXPECT_EQ(parse(handle, "A:\nB: b\nx = 1\ny = 2\nEND\nEND\n"),
              "parseVELLineH: velUpdateObject failed");
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
    std::int32_t depth = -1;
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    EXPECT_EQ(depth, 0);
}

// It is a failure only if the object to be deleted itself is gone when the walk
// reaches it.
TEST(VelHandlers, AHandlerMayDeleteTheNodeBeingDeleted)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nB:\ny = 2\nEND\nz = 3\nEND\nC:\nEND\n");
    const OnChange more(handle, [&](const std::string &path, std::int32_t) {
        if (path == "/A/x") {
            EXPECT_EQ(said(deleteObjH(handle.get(), "/A")), "");
        }
    });
    ChangeLog log(handle);
    EXPECT_EQ(said(deleteObjH(handle.get(), "/A")), "velRemoveObjectH: entry not found");
    EXPECT_EQ(stored(handle), "C:\nEND\n");
    EXPECT_EQ(log.take(), "/A/B/y: - <- 2\n" // from the inner call, before the log's call
                          "/A/B: deleted\n"
                          "/A/z: - <- 3\n"
                          "/A: deleted\n"
                          "/A/x: - <- 1\n");
}

/// Deletes `top`, while the handler does `work` at each report of a deletion at `path`.
template <typename Work>
std::string deleteWith(const velHandlePtr &handle, const char *top, std::string_view path,
                       Work work)
{
    const OnChange more(handle, [&](const std::string &changed, std::int32_t) {
        if (changed == path && havePath(handle.get(), changed.c_str()) == 0) {
            work();
        }
    });
    return said(deleteObjH(handle.get(), top));
}

// Success was once reported although the object still existed.
TEST(VelHandlers, AChildObjectThatAHandlerDeletesIsSkipped)
{
    const velHandlePtr handle = parsed("A:\nB:\nx = 1\ny = 2\nEND\nC:\nEND\nEND\n");
    const auto deleteParent = [&] { EXPECT_EQ(said(deleteObjH(handle.get(), "/A/B")), ""); };
    EXPECT_EQ(deleteWith(handle, "/A", "/A/B/x", deleteParent), "");
    EXPECT_EQ(stored(handle), "");
    EXPECT_EQ(havePath(handle.get(), "/A"), 0);
}

// The walk once never ended.
TEST(VelHandlers, AChildMadeAgainIsNotDeletedAgain)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nB:\nEND\nEND\n");
    const auto makeAgain = [&] { EXPECT_EQ(said(velCreateParam(handle.get(), "/A/x", "2")), ""); };
    EXPECT_EQ(deleteWith(handle, "/A", "/A/x", makeAgain),
              "velRemoveObjectH: removal of non-empty object, did you mean deleteObj?");
    EXPECT_EQ(havePath(handle.get(), "/A"), 0);
    EXPECT_EQ(havePath(handle.get(), "/A/B"), 0);
    EXPECT_EQ(valueAt(handle, "/A/x"), "2"); // it is still found by its old path
}

TEST(VelHandlers, TheRootKeepsAChildThatIsMadeAgain)
{
    const velHandlePtr handle = parsed("x = 1\nB:\nEND\n");
    const auto makeAgain = [&] { EXPECT_EQ(said(velCreateParam(handle.get(), "/x", "2")), ""); };
    EXPECT_EQ(deleteWith(handle, "/", "/x", makeAgain), "");
    EXPECT_EQ(stored(handle), "x = 2\n");
}

// The sweep uses the node that is at a child's path when it visits the child, not
// the node at the start. A child made meanwhile gets the mark of its parent.
TEST(VelHandlers, TheSweepOfAReplaceBlockUsesTheMarkOfTheCurrentNode)
{
    const velHandlePtr handle = parsed("A:\nx = 1\ny = 1\nB:\nEND\nC:\nEND\nEND\n");
    const OnChange more(handle, [&](const std::string &path, std::int32_t) {
        if (path == "/A/x") {
            EXPECT_EQ(said(deleteParamH(handle.get(), "/A/y")), "");
            EXPECT_EQ(said(velCreateParam(handle.get(), "/A/y", "2")), "");
        } else if (path == "/A/B") {
            EXPECT_EQ(said(deleteObjH(handle.get(), "/A/C")), "");
            EXPECT_EQ(said(velCreateObject(handle.get(), "/A/C", false)), "");
            EXPECT_EQ(said(velCreateParam(handle.get(), "/A/C/z", "3")), "");
        }
    });
    EXPECT_EQ(parse(handle, "&replace A:\nEND\n"), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n/A Singleton 0\n/A/y Param 0\n"
                               "/A/C Singleton 0\n/A/C/z Param 0x200\n");
}

TEST(VelHandlers, TheSweepOfAReplaceBlockDeletesEachChildOnce)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nB:\ny = 1\nEND\nEND\n");
    int made = 0;
    const OnChange more(handle, [&](const std::string &path, std::int32_t) {
        if (havePath(handle.get(), path.c_str()) != 0 || ++made > 10) {
            return;
        }
        EXPECT_EQ(path == "/A/B" ? said(velCreateObject(handle.get(), path.c_str(), false))
                                 : said(velCreateParam(handle.get(), path.c_str(), "2")),
                  "");
    });
    EXPECT_EQ(parse(handle, "&replace A:\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  x = 2\n  B:\n  END\nEND\n");
    EXPECT_EQ(made, 3); // x, y and B
}

TEST(VelHandlers, AHandlerMayChangeTheValueReported)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange round(handle, [&](const std::string &path, std::int32_t code) {
        if (code == velValueChanged && valueAt(handle, path.c_str()) == "about 3") {
            EXPECT_EQ(said(setStringValue(handle.get(), path.c_str(), "3")), "");
        }
    });
    EXPECT_EQ(parse(handle, "x = about 3\n"), "");
    EXPECT_EQ(valueAt(handle, "/x"), "3");
    EXPECT_EQ(said(setStringValue(handle.get(), "/x", "about 3")), "");
    EXPECT_EQ(valueAt(handle, "/x"), "3");
}

TEST(VelHandlers, TheTextsStayReadableAfterAHandlerDeletesTheNode)
{
    const velHandlePtr handle = parsed("x = old\n");
    bool isBusy = false;
    const OnChange clear(handle, [&](const std::string &, std::int32_t) {
        if (std::exchange(isBusy, true)) {
            return;
        }
        for (int i = 0; i < 50; ++i) { // overwrites freed memory
            EXPECT_EQ(said(deleteObjH(handle.get(), "/")), "");
            EXPECT_EQ(said(velCreateParam(handle.get(), ("y" + std::to_string(i)).c_str(), "zzz")),
                      "");
        }
        EXPECT_EQ(said(deleteObjH(handle.get(), "/")), "");
    });
    std::string last;
    const auto keep = [](const char *path, std::int32_t, const char *newValue, const char *oldValue,
                         void *userData) {
        *static_cast<std::string *>(userData) = std::string(path) + ": " +
                                                (newValue == nullptr ? "-" : newValue) + " <- " +
                                                (oldValue == nullptr ? "-" : oldValue);
        return 1;
    };
    EXPECT_EQ(said(addChangeHandler(handle.get(), keep, &last)), "");
    EXPECT_EQ(said(setStringValue(handle.get(), "/x", "new")), "");
    EXPECT_EQ(last, "/x: new <- old");
    EXPECT_EQ(stored(handle), "");
}

TEST(VelHandlers, AnInterruptionStopsAParse)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange stop(handle, [&](const std::string &path, std::int32_t) {
        if (path == "/A/stop") {
            velInterrupt(handle.get(), "stopped by a handler");
        }
    });
    EXPECT_EQ(parse(handle, "A:\na = 1\nstop = 1\nb = 2\nEND\n"), "stopped by a handler");
    EXPECT_EQ(stored(handle), "A:\n  a = 1\n  stop = 1\nEND\n");
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
    EXPECT_EQ(parse(handle, "A:\nb = 2\nEND\n"), ""); // the interruption counts once
    EXPECT_EQ(valueAt(handle, "/A/b"), "2");
}

TEST(VelHandlers, AnInterruptionStopsEveryOperation)
{
    const velHandlePtr handle = parsed("A:\nx = 1\ny = 2\nEND\n");
    const OnChange stop(
        handle, [&](const std::string &, std::int32_t) { velInterrupt(handle.get(), "stop"); });
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/x", "2")), "stop");
    EXPECT_EQ(valueAt(handle, "/A/x"), "2");
    EXPECT_EQ(said(velCreateParam(handle.get(), "/A/z", "1")), "stop");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A/B", false)), "stop");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "w = 1", 0)), "stop");
    EXPECT_EQ(said(deleteParamH(handle.get(), "/w")), "stop");
    EXPECT_EQ(said(deleteObjH(handle.get(), "/A")), "stop"); // the first child is gone
    EXPECT_EQ(stored(handle), "A:\n  y = 2\n  z = 1\n  B:\n  END\nEND\n");
    EXPECT_EQ(said(setStringValue(handle.get(), "/A/y", "2")), ""); // no change, no report
}

TEST(VelHandlers, AnInterruptedContinuedLineIsCleared)
{
    const velHandlePtr handle(velCreateHandle());
    const OnChange stop(handle, [&](const std::string &path, std::int32_t) {
        if (path == "/x") {
            velInterrupt(handle.get(), "stop");
        }
    });
    EXPECT_EQ(parse(handle, "x = 1, \\\n2\ny = 1\n"), "stop");
    EXPECT_EQ(parse(handle, "y = 2\n"), "");
    EXPECT_EQ(stored(handle), "x = 1, 2\ny = 2\n");
}

// --- Replace handlers --------------------------------------------------------------------

TEST(VelHandlers, ReplaceHandlersAreCalledWithTheObjectOpened)
{
    const velHandlePtr handle(velCreateHandle());
    std::string paths;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(said(addReplaceHandler(
                      handle.get(),
                      [](const char *path, void *userData) {
                          *static_cast<std::string *>(userData) += std::string(path) + "\n";
                      },
                      &paths)),
                  "");
    }
    EXPECT_EQ(parse(handle, "A:\n"
                            "x = 1\n"
                            "&replace B: b\n"
                            "y = 1\n"
                            "END\n"
                            "&replace z = 1\n"
                            "END\n"),
              "");
    EXPECT_EQ(paths, "/A/B:b\n/A/B:b\n" // both handlers
                     "/A\n/A\n");       // a parameter opens no object
    EXPECT_EQ(parse(handle, "&replace bad\n"), "parseVELLineH: syntax error near \"bad\"");
    EXPECT_EQ(paths, "/A/B:b\n/A/B:b\n/A\n/A\n");
}

// --- Actions -------------------------------------------------------------------------------

TEST(VelHandlers, ActionLines)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog log(handle);
    const struct
    {
        const char *line;
        const char *expected;
    } cases[] = {
        {">save", "save\n"},
        {">>  save   file.vel", "save(file.vel);\n"},
        {"> save a b  c", "save(a b c);\n"},    // the parser leaves single spaces
        {"  >>>save x = 1 ", "save(x = 1);\n"}, // not a parameter
        {">save A: b", "save(A: b);\n"},
        {">save x # comment", "save(x);\n"},
        {">", "\n"},
        {">>", "\n"},
        {"> > x", ">(x);\n"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(said(parseVELLineH(handle.get(), c.line, 0)), "") << c.line;
        EXPECT_EQ(log.take(), c.expected) << c.line;
    }
    EXPECT_EQ(said(velRunActionLine(handle.get(), ">save  two  blanks ")), "");
    EXPECT_EQ(log.take(), "save(two  blanks );\n"); // outside a text, the line stays as it is
    EXPECT_EQ(said(velRunActionLine(handle.get(), ">save ")), "");
    EXPECT_EQ(log.take(), "save();\n"); // white space follows, which gives one empty element
    EXPECT_EQ(havePath(handle.get(), "/"), 0);
}

TEST(VelHandlers, ActionsWithoutAHandler)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, ">save\n"), "no handler was found for action line");
    EXPECT_EQ(said(invokeAction(handle.get(), "save", nullptr)),
              "no handler was found for action line");
}

TEST(VelHandlers, AnActionThatFails)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog log(handle);
    log.answer = 0;
    EXPECT_EQ(parse(handle, "A:\n>save\nx = 1\nEND\n"),
              "action invocation returned with error status");
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
    EXPECT_EQ(havePath(handle.get(), "/A/x"), 0);
    log.answer = -1; // only 0 is a failure
    EXPECT_EQ(parse(handle, ">save\n"), "");
}

TEST(VelHandlers, RegisteringAgainReplacesTheActionHandler)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog first(handle);
    ActionLog second(handle);
    EXPECT_EQ(parse(handle, ">save x\n"), "");
    EXPECT_EQ(first.take(), "");
    EXPECT_EQ(second.take(), "save(x);\n");

    int calls = 0;
    const auto count = [](velHandle *, const char *, const char *const *, void *userData) {
        return ++*static_cast<int *>(userData);
    };
    EXPECT_EQ(said(addActionHandler(handle.get(), count, &calls)), "");
    EXPECT_EQ(parse(handle, ">save\n"), "");
    EXPECT_EQ(second.take(), "");
    EXPECT_EQ(calls, 1);
}

TEST(VelHandlers, InvokingAnAction)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog log(handle);
    const char *const arguments[] = {"a", "", "b c", nullptr};
    EXPECT_EQ(said(invokeAction(handle.get(), "do it", arguments)), "");
    EXPECT_EQ(log.take(), "do it(a)()(b c);\n");
}

TEST(VelHandlers, AnInterruptedAction)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog log(handle);
    log.interrupt = "died";
    EXPECT_EQ(said(invokeAction(handle.get(), "save", nullptr)), "died");
    EXPECT_EQ(said(velRunActionLine(handle.get(), ">save")), "died");
    EXPECT_EQ(parse(handle, ">save\nx = 1\n"), "died");
    EXPECT_EQ(stored(handle), "");
}

TEST(VelHandlers, AnActionMayChangeTheTreeAndParse)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog log(handle);
    log.meanwhile = [&] {
        EXPECT_EQ(said(parseVELLineH(handle.get(), "made = by action", 0)), "");
        EXPECT_EQ(said(deleteParamH(handle.get(), "x")), "");
    };
    EXPECT_EQ(parse(handle, "A:\nx = 1\n>go \\\non\ny = 2\nEND\n"), "");
    EXPECT_EQ(log.take(), "go(on);\n");
    EXPECT_EQ(stored(handle), "A:\n  made = by action\n  y = 2\nEND\n");
}

// When an action handler failed in both ways, its interruption once affected the
// next operation.
TEST(VelHandlers, AnInterruptionDoesNotOutliveItsOperation)
{
    const velHandlePtr handle(velCreateHandle());
    ActionLog log(handle);
    log.answer = 0;
    log.interrupt = "died";
    EXPECT_NE(parse(handle, ">save\n"), "");
    EXPECT_EQ(parse(handle, "x = 1\n"), "");
    EXPECT_NE(said(parseVELLineH(handle.get(), ">save", 0)), "");
    EXPECT_EQ(parse(handle, "x = 2\n"), "");
    EXPECT_NE(said(invokeAction(handle.get(), "save", nullptr)), "");
    EXPECT_EQ(parse(handle, "x = 3\n"), "");
}

// When a handler closed the block that was being opened, its path once stayed
// current forever.
TEST(VelHandlers, ABlockClosedWhileItOpens)
{
    const velHandlePtr handle(velCreateHandle());
    const auto close = [](const char *, std::int32_t code, const char *, const char *,
                          void *userData) {
        if (code == velObjectCreated) {
            setVELStateH(static_cast<velHandle *>(userData), 0);
        }
        return 1;
    };
    ASSERT_EQ(said(addChangeHandler(handle.get(), close, handle.get())), "");
    EXPECT_EQ(parse(handle, "A:\nx = 1\n"), "");
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
    EXPECT_EQ(stored(handle), "A:\nEND\nx = 1\n");
}

// When a handler closed the block whose END was sweeping it, the depth once became
// negative.
TEST(VelHandlers, ABlockClosedWhileItEnds)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, "A:\nB:\nx = 1\nEND\nEND\n"), "");
    const OnChange close(handle, [&](const std::string &path, std::int32_t) {
        if (path == "/A/B/x") {
            setVELStateH(handle.get(), 0);
        }
    });
    EXPECT_EQ(parse(handle, "A:\n&replace B:\nEND\ny = 1\n"), "");
    std::int32_t depth = -1;
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    EXPECT_EQ(depth, 0);
    EXPECT_STREQ(getCurrentPath(handle.get()), "/");
    EXPECT_EQ(stored(handle), "A:\n  B:\n  END\nEND\ny = 1\n");
}

} // namespace
