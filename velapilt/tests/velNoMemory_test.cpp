// Lets memory run out at every possible place. Tests that there is a message and
// that the tree and its table still agree.
//
// All allocations of the program go through the functions below (the linker
// redirects malloc and aligned_alloc to them). They refuse one allocation, or it and
// all later ones.
#include "velapilt/src/velSplit.h"
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <set>

namespace {

constexpr long unlimited = -1;
long allocationsLeft = unlimited;
bool refusesAllAfter = false;

bool mayAllocate()
{
    if (allocationsLeft == unlimited) {
        return true;
    }
    if (allocationsLeft > 0) {
        --allocationsLeft;
        return true;
    }
    if (!refusesAllAfter) {
        allocationsLeft = unlimited;
    }
    return false;
}

} // namespace

extern "C" {
// The names are the linker's. NOLINTBEGIN(bugprone-reserved-identifier)
void *__real_malloc(std::size_t size);
void *__real_aligned_alloc(std::size_t alignment, std::size_t size);

void *__wrap_malloc(std::size_t size)
{
    return mayAllocate() ? __real_malloc(size) : nullptr;
}

void *__wrap_aligned_alloc(std::size_t alignment, std::size_t size)
{
    return mayAllocate() ? __real_aligned_alloc(alignment, size) : nullptr;
}
// NOLINTEND(bugprone-reserved-identifier)
}

void *operator new(std::size_t size)
{
    if (void *block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}

void *operator new(std::size_t size, std::align_val_t alignment)
{
    const auto step = static_cast<std::size_t>(alignment);
    if (void *block = std::aligned_alloc(step, (size + step - 1) / step * step)) {
        return block;
    }
    throw std::bad_alloc();
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete(void *block, std::align_val_t) noexcept
{
    std::free(block);
}

void operator delete(void *block, std::size_t, std::align_val_t) noexcept
{
    std::free(block);
}

namespace {

constexpr const char *setup = "FLOW:\n"
                              "DOMAIN: d\n"
                              "x = 1, 2\n"
                              "BOUNDARY: in\n"
                              "y = yes, no\n"
                              "END\n"
                              "A LONG TYPE: of it\n"
                              "END\n"
                              "END\n"
                              "END\n";

/// Checks that every node is found by its path and that the saved tree reads back.
void expectInStep(const velHandlePtr &handle)
{
    const auto check = [&](const auto &again, const velNode *node,
                           const std::string &path) -> void {
        ASSERT_EQ(velFindNode(handle.get(), path.c_str()), node) << path;
        std::uint32_t count = 0;
        for (const velNode *child = velFirstChild(node); child != nullptr;
             child = velNextSibling(child)) {
            const velNodeInfo info = velDescribe(handle.get(), child);
            std::string component = info.kind == velParam ? "" : info.type;
            component += info.kind == velObject ? ":" : "";
            component += info.name == nullptr ? "" : info.name;
            again(again, child, (path == "/" ? "" : path) + "/" + component);
            ++count;
        }
        ASSERT_EQ(velChildCount(node), count) << path;
    };
    if (const velNode *root = velFindNode(handle.get(), "/")) {
        check(check, root, "/");
        EXPECT_EQ(stored(parsed(stored(handle))), stored(handle));
    }
}

using Operation = std::function<const char *(velHandle *handle)>;

/// Runs the operation on a new set-up with the n-th allocation refused, for every
/// n. Returns the messages.
std::set<std::string> messagesOf(const Operation &operation)
{
    std::set<std::string> messages;
    for (const bool all : {false, true}) {
        bool isThrough = false;
        for (long n = 0; !isThrough && !testing::Test::HasFailure(); ++n) {
            const velHandlePtr handle = parsed(setup);
            refusesAllAfter = all;
            allocationsLeft = n;
            const char *message = operation(handle.get());
            isThrough = allocationsLeft > 0; // the operation needs fewer allocations
            allocationsLeft = unlimited;
            messages.insert(said(message));
            EXPECT_STREQ(getCurrentPath(handle.get()), "/");
            expectInStep(handle);
            messages.insert(said(operation(handle.get()))); // the operation can be repeated
            expectInStep(handle);
        }
    }
    return messages;
}

using Messages = std::set<std::string>;

/// Runs `work` with only the n-th allocation refused.
template <typename Work>
auto without(long n, Work work)
{
    refusesAllAfter = false;
    allocationsLeft = n;
    auto result = work();
    allocationsLeft = unlimited;
    return result;
}

// The handle itself is the first of several allocations.
TEST(VelNoMemory, CreatingAHandle)
{
    int refused = 0;
    for (; refused < 100; ++refused) {
        const velHandlePtr handle(without(refused, velCreateHandle));
        if (handle != nullptr) {
            break;
        }
    }
    EXPECT_GT(refused, 1);
    EXPECT_LT(refused, 100);
}

TEST(VelNoMemory, Creating)
{
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  return velCreateObject(handle, "/FLOW/DOMAIN:d/A LONG TYPE:of a new name", false);
              }),
              (Messages{"", "velCreateObject: unable to create object"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  return velCreateParam(handle, "/FLOW/DOMAIN:d/a rather long name",
                                        "a value that no small string holds in place");
              }),
              (Messages{"", "velCreateParam: unable to create param"}));
}

TEST(VelNoMemory, SettingAValue)
{
    const std::string value(2000, 'v');
    EXPECT_EQ(messagesOf([&](velHandle *handle) {
                  return setStringValue(handle, "/FLOW/DOMAIN:d/x", value.c_str());
              }),
              (Messages{"", "setStringValue: error allocating new string"}));
}

TEST(VelNoMemory, Parsing)
{
    std::string text;
    for (int i = 0; i < 120; ++i) {
        text += "T" + std::to_string(i) + ": n\np" + std::to_string(i) + " = 1 # comment\nEND\n";
    }
    velArray lines(velArrayKind::Strings);
    for (const std::string &line : linesOf(text)) {
        lines.addString(line);
    }
    EXPECT_EQ(messagesOf([&](velHandle *handle) { return parseVELData(handle, &lines, 0); }),
              (Messages{"", "parseVELLineH: Memory allocation error"}));
}

/// "depth path".
std::string state(const velHandlePtr &handle)
{
    std::int32_t depth = -1;
    EXPECT_EQ(said(getVELStateH(handle.get(), &depth)), "");
    return std::to_string(depth) + " " + getCurrentPath(handle.get());
}

/// The messages of a header line inside `open` blocks, with each allocation refused
/// in turn. Checks that depth and current path always agree.
Messages messagesOfAHeader(int open)
{
    Messages messages;
    for (long n = 0; n < 100; ++n) {
        const velHandlePtr handle(velCreateHandle());
        std::string path;
        for (int i = 0; i < open; ++i) {
            EXPECT_EQ(said(parseVELLineH(handle.get(), "T: n", 0)), "");
            path += "/T:n";
        }
        const std::string message = said(without(
            n, [&] { return parseVELLineH(handle.get(), "A LONG TYPE: of a long name", 0); }));
        messages.insert(message);
        const std::string opened = path + "/A LONG TYPE:of a long name";
        EXPECT_EQ(state(handle), message.empty() ? std::to_string(open + 1) + " " + opened
                                 : path.empty()  ? "0 /"
                                                 : std::to_string(open) + " " + path);
        expectInStep(handle);
    }
    return messages;
}

// A failed header once left a block open without a path.
TEST(VelNoMemory, OpeningABlock)
{
    constexpr const char *elsewhere = "parseVELLineH: Memory allocation error";
    EXPECT_EQ(messagesOfAHeader(0),
              (Messages{"", elsewhere, "parseVELLineH: Memory error initialising flag stack"}));
    EXPECT_EQ(messagesOfAHeader(3), (Messages{"", elsewhere}));
    EXPECT_EQ(messagesOfAHeader(9),
              (Messages{"", elsewhere, "parseVELLineH: memory error extending flag stack"}));
}

TEST(VelNoMemory, TheFirstUseOfThePathStack)
{
    const auto firstUse = [](const auto &operation) {
        const velHandlePtr handle(velCreateHandle());
        std::string message = said(without(0, [&] { return operation(handle.get()); }));
        EXPECT_STREQ(getCurrentPath(handle.get()), "/");
        return message;
    };
    EXPECT_EQ(firstUse([](velHandle *handle) { return pushPath(handle, "/"); }),
              "pushPath: unable to initialize dirstack");
    EXPECT_EQ(firstUse([](velHandle *handle) { return velPushPath(handle, "/"); }),
              "velPushPath: unable to initialize dirstack");
    EXPECT_EQ(firstUse([](velHandle *handle) { return popPath(handle); }),
              "popPath unable to initialize dirstack");
    EXPECT_EQ(firstUse([](velHandle *handle) { return changePath(handle, "/"); }),
              "changePath: unable to initialize dirstack");
    EXPECT_EQ(firstUse([](velHandle *handle) { return velChangePath(handle, "/"); }),
              "velChangePath: unable to initialize dirstack");
    EXPECT_EQ(firstUse([](velHandle *handle) { return getCurrentPath(handle); }), "");
}

/// Pushes more paths than there is room for, and pops them again.
const char *pushMany(velHandle *handle, const char *(*push)(velHandle *, const char *))
{
    const char *message = nullptr;
    int pushed = 0;
    for (; pushed < 6 && message == nullptr; ++pushed) {
        message = push(handle, "/FLOW/DOMAIN:d/BOUNDARY:in/../BOUNDARY:in");
    }
    for (; pushed > 0; --pushed) {
        EXPECT_EQ(said(popPath(handle)), "");
    }
    return message;
}

TEST(VelNoMemory, PushingAndChangingPaths)
{
    EXPECT_EQ(messagesOf([](velHandle *handle) { return pushMany(handle, pushPath); }),
              (Messages{"", "pushPath: unable to create a full path",
                        "pushPath unable to allocate new path"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) { return pushMany(handle, velPushPath); }),
              (Messages{"", "pushPath unable to allocate new path"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  const char *message = changePath(handle, "/FLOW/DOMAIN:d/BOUNDARY:in/../..");
                  EXPECT_EQ(said(changePath(handle, "/")), "");
                  return message;
              }),
              (Messages{"", "changePath: unable to create a full path"}));
}

// The descendants of a node that was removed before them stay in the table. The
// table once lost all entries if it could not grow with such nodes in it.
TEST(VelNoMemory, GrowingWithDetachedNodes)
{
    constexpr std::string_view top = "/A LONG TYPE OF AN OBJECT:with a long name";
    const auto name = [](int i) { return "p" + std::to_string(i); };
    for (long n = 0; n < 40; ++n) {
        const velHandlePtr handle = parsed("A LONG TYPE OF AN OBJECT: with a long name\nEND\n");
        for (int i = 0; i < 60; ++i) {
            const std::string below = std::string(top) + "/" + name(i);
            EXPECT_EQ(said(velCreateParam(handle.get(), below.c_str(), "1")), "");
        }
        EXPECT_NE(said(deleteParamH(handle.get(), std::string(top).c_str())), "");
        for (int i = 0; i < 200; ++i) {
            const std::string path = "/" + name(i);
            const auto create = [&] { return velCreateParam(handle.get(), path.c_str(), "1"); };
            if (said(without(n, create)) != "") {
                EXPECT_EQ(said(create()), "");
            }
        }
        for (int i = 0; i < 200; ++i) {
            ASSERT_EQ(havePath(handle.get(), ("/" + name(i)).c_str()), 1) << n;
            const std::string below = std::string(top) + "/" + name(i);
            ASSERT_EQ(havePath(handle.get(), below.c_str()), i < 60 ? 1 : 0) << n;
        }
    }
}

TEST(VelNoMemory, ParsingAFile)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("case.vel", "A:\nx = 1 \\\n2\nEND\n");
    const Messages messages =
        messagesOf([&](velHandle *handle) { return loadVELFile(handle, file.c_str(), "vel"); });
    EXPECT_EQ(messages.count(""), 1U);
    EXPECT_EQ(messages.count("loadFileData: array allocation failed"), 1U);
}

TEST(VelNoMemory, Deleting)
{
    const Messages messages =
        messagesOf([](velHandle *handle) { return deleteObjH(handle, "/FLOW/DOMAIN:d"); });
    EXPECT_EQ(messages.count(""), 1U);
}

TEST(VelNoMemory, Replacing)
{
    velArray lines(velArrayKind::Strings);
    for (const char *line : {"FLOW:", "&replace DOMAIN: d", "z = 1", "END", "END"}) {
        lines.addString(line);
    }
    EXPECT_EQ(messagesOf([&](velHandle *handle) { return parseVELData(handle, &lines, 0); }),
              (Messages{"", "parseVELLineH: Memory allocation error"}));
}

TEST(VelNoMemory, Querying)
{
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  velStringList list;
                  return getChildObjectList(handle, "/FLOW/DOMAIN:d", true, true, &list);
              }),
              (Messages{"", "getChildObjectList: error allocating return array"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  std::vector<velChildInfo> children;
                  std::vector<velGroupInfo> groups;
                  return getChildList(handle, "/FLOW/DOMAIN:d", &children, &groups);
              }),
              (Messages{"", "getChildList: unable to allocate permanent memory context",
                        "getChildList: unable to allocate temporary memory context",
                        "getChildList: unable to allocate lookup table",
                        "getChildList: unable to allocate childrenAry",
                        "getChildList: unable to allocate groupInfoPtr structure",
                        "getChildList: unable to find childInfo in group hash table",
                        "getChildList: unable to allocate groupInfoChild structure",
                        "getChildList: unable to allocate velGroupInfo array"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  velStringList list;
                  return getObjectsByTypeH(handle, "/", "BOUNDARY", 0, 0, &list);
              }),
              (Messages{"", "getObjectsByTypeH: error allocating return array"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  velStringList list;
                  return getObjectsByNameH(handle, "/", "in", 0, 0, &list);
              }),
              (Messages{"", "getObjectsByNameH: error allocating return array"}));
}

TEST(VelNoMemory, Writing)
{
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  velStringList list;
                  return getObjectVELH(handle, "/FLOW", &list, true);
              }),
              (Messages{"", "getExpandedVELH: error allocating return array",
                        "getPartialVELH: memory error"}));
    EXPECT_EQ(messagesOf([](velHandle *handle) {
                  velStringList list;
                  return velWrapText(handle, "/", 10, &list);
              }),
              (Messages{"", "memory error", "velWrapText: failed to allocate array"}));
    std::vector<std::string> entries = {"A:a rather long name of it", "B:b"};
    EXPECT_EQ(
        messagesOf([&](velHandle *handle) { return velOrderObjectsForOutput(handle, &entries); }),
        (Messages{"", "velOrderObjectsForOutput: memory error"}));
}

TEST(VelNoMemory, Splitting)
{
    velStringList list;
    std::vector<std::int32_t> logicals;
    std::int32_t logical = 0;
    std::string text;
    EXPECT_EQ(messagesOf([&](velHandle *) { return splitStringString("a long one, b", &list); }),
              (Messages{"", "splitString: failure to store string.\n",
                        "splitStringString: unable to create string array"}));
    EXPECT_EQ(messagesOf([&](velHandle *) {
                  return isLogicalValue("a text that is none", &logical, &text);
              }),
              (Messages{"isLogicalValue: value is not a logical: a text that is none\n",
                        "isLogicalValue: unable to allocate error string\n"}));
    const std::string elements = "none, of them" + std::string(20, ',');
    const Messages messages =
        messagesOf([&](velHandle *) { return splitLogicalString(elements, &logicals, &text); });
    for (const char *message : {"splitLogicalString: Unable to allocate strings array\n",
                                "splitLogicalString: Unable to allocate errors array\n",
                                "splitLogicalString: Unable to allocate integers array\n",
                                "splitString: failure to store string.\n",
                                "splitLogicalString: unable to store logical value\n",
                                "splitLogicalString: unable to allocate error message.\n"}) {
        EXPECT_EQ(messages.count(message), 1U) << message;
    }
}

TEST(VelNoMemory, MakingAChildPath)
{
    std::string path;
    EXPECT_EQ(messagesOf([&](velHandle *) {
                  path.clear();
                  path.shrink_to_fit();
                  return makeChildPath("/FLOW/DOMAIN:d", "BOUNDARY:in", &path);
              }),
              (Messages{"", "makeChildPath: memory error"}));
}

TEST(VelNoMemory, LoadingLines)
{
    std::vector<std::string> texts;
    for (int i = 0; i < 30; ++i) {
        texts.push_back("parameter " + std::to_string(i) + " = " + std::string(100, 'v'));
    }
    std::vector<const char *> lines;
    for (const std::string &text : texts) {
        lines.push_back(text.c_str());
    }
    const auto count = static_cast<std::int32_t>(lines.size());
    EXPECT_EQ(
        messagesOf([&](velHandle *handle) { return loadVELData(handle, lines.data(), count); }),
        (Messages{"", "loadVELData: failed to allocate array",
                  "loadVELData: failed to store string",
                  "parseVELLineH: Memory allocation error"}));
    EXPECT_EQ(
        messagesOf([&](velHandle *handle) { return loadLibraryData(handle, lines.data(), count); }),
        (Messages{"", "loadLibraryData: failed to allocate array",
                  "loadLibraryData: failed to store string",
                  "parseVELLineH: Memory allocation error"}));
}

TEST(VelNoMemory, ActingOnALine)
{
    const auto done = [](velHandle *, const char *, const char *const *, void *) { return 1; };
    EXPECT_EQ(messagesOf([&](velHandle *handle) {
                  const char *error = addActionHandler(handle, done, nullptr);
                  return error != nullptr
                             ? error
                             : velRunActionLine(handle, ">save a rather long argument");
              }),
              (Messages{"", "unable to allocate memory for action handler list",
                        "velRunActionLine: Memory allocation error"}));
}

TEST(VelNoMemory, ReadingLibraries)
{
    const TemporaryFolder folder;
    folder.write("a library with a long name.vel", "RULES:\nx = 1\nEND\n");
    const std::string path = folder.path();
    const Messages messages = messagesOf([&](velHandle *handle) {
        return readNamedLibraries(handle, "a library with a long name.vel", path.c_str());
    });
    EXPECT_EQ(messages.count(""), 1U);
    EXPECT_EQ(messages.count("readNamedLibraries: unable to allocate a library item string\n"), 1U);
    EXPECT_EQ(messages.count("readNamedLibraries: unable to allocate the fullPath string\n"), 1U);
}

TEST(VelNoMemory, RegisteringHandlers)
{
    const auto handler = [](const char *, std::int32_t, const char *, const char *, void *) {
        return 1;
    };
    EXPECT_EQ(
        messagesOf([&](velHandle *handle) { return addChangeHandler(handle, handler, nullptr); }),
        (Messages{"", "unable to allocate memory for change handler list"}));
}

} // namespace
