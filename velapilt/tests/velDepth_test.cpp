// Tests deep nesting: no part of the database may need a stack as deep as the tree.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isInstrumented = true;
#else
constexpr bool isInstrumented = false;
#endif

std::string nested(int depth)
{
    std::string text;
    for (int i = 0; i < depth; ++i) {
        text += i % 2 == 0 ? "A:\n" : "B: b\n";
    }
    text += "x = 1\n";
    for (int i = 0; i < depth; ++i) {
        text += "END\n";
    }
    return text;
}

/// The path of the innermost object.
std::string innermost(int depth)
{
    std::string path;
    for (int i = 0; i < depth; ++i) {
        path += i % 2 == 0 ? "/A" : "/B:b";
    }
    return path;
}

TEST(VelDepth, TenThousandBlocksInAndOut)
{
    constexpr int depth = 10000;
    const velHandlePtr handle = parsed(nested(depth));
    const std::string path = innermost(depth);
    EXPECT_EQ(valueAt(handle, (path + "/x").c_str()), "1");

    velStringList lines;
    EXPECT_EQ(said(getObjectVELH(handle.get(), "/", &lines, true)), "");
    ASSERT_EQ(lines.size(), 2U * depth + 1);
    EXPECT_STREQ(lines[0], "A:");
    EXPECT_EQ(lines[depth], std::string(2 * depth, ' ') + "x = 1");
    EXPECT_STREQ(lines[2 * depth], "END");

    EXPECT_EQ(said(velWrapText(handle.get(), "/", 0, &lines)), "");
    ASSERT_EQ(lines.size(), 2U * depth + 1);
    EXPECT_EQ(lines[depth], std::string(2 * depth, ' ') + "x = 1");
    EXPECT_EQ(said(velWrapText(handle.get(), "/", 79, &lines)), "");
    EXPECT_GT(lines.size(), 2U * depth + 1);
}

TEST(VelDepth, TenThousandBlocksQueriedAndDeleted)
{
    constexpr int depth = 10000;
    const velHandlePtr handle = parsed(nested(depth));
    const std::string path = innermost(depth);
    velStringList list;
    EXPECT_EQ(said(getChildObjectList(handle.get(), path.c_str(), true, true, &list)), "");
    EXPECT_EQ(asLines(list), "x\n");
    EXPECT_EQ(said(getObjectsByTypeH(handle.get(), "/", "B", 0, 0, &list)), "");
    ASSERT_EQ(list.size(), depth / 2U);
    EXPECT_STREQ(list[0], "/A/B:b");
    EXPECT_EQ(list[depth / 2 - 1], path);
    EXPECT_EQ(said(getObjectsByNameH(handle.get(), "/", "C", 0, 0, &list)), "");
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(said(setValid(handle.get(), path.c_str(), 0, true)), "");
    EXPECT_EQ(said(pushPath(handle.get(), path.c_str())), "");
    EXPECT_EQ(getCurrentPath(handle.get()), path);
    EXPECT_EQ(said(deleteObjH(handle.get(), "/A")), "");
    EXPECT_EQ(getCurrentPath(handle.get()), path);
    EXPECT_EQ(stored(handle), "");
}

// The search for a long path starts where the last one ended.
TEST(VelDepth, LongPathsAreFoundInAnyOrder)
{
    constexpr int depth = 4000;
    std::string text;
    for (int i = 0; i < depth; ++i) {
        text += "x = " + std::to_string(i) + "\nB: b\nEND\nB: bb\n";
    }
    text += "y = 1\n";
    for (int i = 0; i < depth; ++i) {
        text += "END\n";
    }
    const velHandlePtr handle = parsed("A:\n" + text + "END\n");
    const auto at = [](int level, const char *rest) {
        std::string path = "/A";
        for (int i = 0; i < level; ++i) {
            path += "/B:bb";
        }
        return path + rest;
    };
    const auto have = [&](int level, const char *rest) {
        return havePath(handle.get(), at(level, rest).c_str());
    };
    for (const int level : {1000, 1001, 3999, 900, 2000, 1999, 3998, 1500, 3000}) {
        EXPECT_EQ(valueAt(handle, at(level, "/x").c_str()), std::to_string(level));
        EXPECT_EQ(have(level, "/B:b"), 1) << level;
        EXPECT_EQ(have(level, "/B:b/x"), 0) << "a shorter name";
        EXPECT_EQ(have(level, "/B:bbb"), 0) << "a longer name";
        EXPECT_EQ(have(level, "/B"), 0) << level;
        EXPECT_EQ(have(level, "/x"), 1) << level;
        EXPECT_EQ(have(level, "/x/x"), 0) << "below a parameter";
        EXPECT_EQ(have(level, "/y"), 0) << level;
        EXPECT_EQ(have(level, ""), 1) << level;
        EXPECT_EQ(have(level, "x"), 0) << level;
    }
    EXPECT_EQ(have(depth, "/y"), 1);
    EXPECT_EQ(have(depth, "/x"), 0);

    EXPECT_EQ(have(3500, "/B:b"), 1);
    EXPECT_EQ(said(deleteObjH(handle.get(), at(3500, "/B:b").c_str())), "");
    EXPECT_EQ(have(3500, "/B:b"), 0) << "deleted where the last question led";
    EXPECT_EQ(have(3500, "/x"), 1);
    EXPECT_EQ(said(deleteObjH(handle.get(), at(3000, "").c_str())), "");
    EXPECT_EQ(have(3500, "/x"), 0) << "with all that was around it";
    EXPECT_EQ(have(2999, "/x"), 1);
    EXPECT_EQ(parse(handle, "A:\nB: bb\nz = 1\nEND\nEND\n"), "");
    EXPECT_EQ(have(1, "/z"), 1);
}

TEST(VelDepth, AReplaceBlockSweepsTenThousandBlocks)
{
    const velHandlePtr handle = parsed(nested(10000));
    EXPECT_EQ(parse(handle, "&replace A:\ny = 2\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  y = 2\nEND\n");
}

// Below about forty levels, the indentation alone is wider than a saved line.
TEST(VelDepth, SavedDeepBlocksReadTheSame)
{
    for (const int depth : {37, 38, 39, 40, 41, 300}) {
        const velHandlePtr handle = parsed(nested(depth));
        const velHandlePtr again = parsed(saved(handle, "/", 79));
        EXPECT_EQ(stored(again), stored(handle)) << depth;
    }
    for (const std::int32_t width : {3, 4, 5, 8, 20}) {
        const velHandlePtr handle = parsed(nested(30));
        const velHandlePtr again = parsed(saved(handle, "/", width));
        EXPECT_EQ(stored(again), stored(handle)) << width;
    }
}

/// Runs `work` in a separate process. Returns its peak memory in bytes, −1 if it
/// failed.
template <typename Work>
long long peakOf(Work work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(work() ? 0 : 1);
    }
    int status = -1;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
        return -1;
    }
    return static_cast<long long>(usage.ru_maxrss) * 1024;
}

TEST(VelDepth, AHundredThousandBlocksTakeLessThanAGibibyte)
{
    constexpr int depth = 100000;
    const std::string text = nested(depth);
    const std::string path = innermost(depth) + "/x";
    const long long peak = peakOf([&] {
        velHandlePtr handle(velCreateHandle());
        bool isGood = parse(handle, text).empty();
        const char *value = velFindValue(handle.get(), path.c_str());
        isGood = isGood && value != nullptr && std::strcmp(value, "1") == 0;
        isGood = isGood && havePath(handle.get(), (path + "/y").c_str()) == 0;
        return isGood && velDestroyHandle(handle.release()) == 0;
    });
    ASSERT_GE(peak, 0) << "it ended with a failure or a signal";
    if (!isInstrumented) {
        EXPECT_LT(peak, 1LL << 30);
    }
}

} // namespace
