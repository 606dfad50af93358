// Tests that freed memory is used again.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <malloc.h>

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isCounted = false; // the heap is not the usual one
#else
constexpr bool isCounted = true;
#endif

/// The bytes that the process has on its heap.
std::size_t bytesHeld()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// The heap may use a block that is slightly larger than the previous one.
constexpr std::ptrdiff_t heapSlack = 1024;

/// Bytes that `cycle` does not free after it has run a few times.
template <typename Cycle>
std::ptrdiff_t growthOf(int cycles, Cycle cycle)
{
    for (int i = 0; i < cycles / 4 + 4; ++i) {
        cycle(i);
    }
    const std::size_t before = bytesHeld();
    for (int i = 0; i < cycles; ++i) {
        cycle(i);
    }
    return static_cast<std::ptrdiff_t>(bytesHeld()) - static_cast<std::ptrdiff_t>(before);
}

class VelMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!isCounted) {
            GTEST_SKIP() << "the sanitizer replaces the heap";
        }
    }
};

TEST_F(VelMemory, CreateParseDestroy)
{
    Random random(1);
    const std::string text = randomSetup(random, 300);
    EXPECT_LT(growthOf(200,
                       [&](int) {
                           const velHandlePtr handle = parsed(text);
                           static_cast<void>(parseVELLineH(handle.get(), "bad line", 0));
                           static_cast<void>(saved(handle, "/", 79));
                           static_cast<void>(deleteParamH(handle.get(), "/DOMAIN:in"));
                       }),
              heapSlack);
}

TEST_F(VelMemory, NodesOfAHandleAreUsedAgain)
{
    const velHandlePtr handle = parsed("A:\nEND\n");
    const std::string block = "A:\nB: b\nx = 1\ny = some longer value\nC:\nz = 2\nEND\nEND\nEND\n";
    EXPECT_LT(growthOf(20000,
                       [&](int) {
                           ASSERT_EQ(parse(handle, block), "");
                           ASSERT_EQ(valueAt(handle, "/A/B:b/C/z"), "2");
                           ASSERT_EQ(said(deleteObjH(handle.get(), "/A/B:b")), "");
                       }),
              heapSlack);
}

TEST_F(VelMemory, ValuesAreUsedAgain)
{
    const velHandlePtr handle = parsed("x = 1\n");
    EXPECT_LT(growthOf(20000,
                       [&](int i) {
                           const std::string value(static_cast<std::size_t>(i % 1000), 'v');
                           ASSERT_EQ(said(setStringValue(handle.get(), "/x", value.c_str())), "");
                       }),
              heapSlack);
    EXPECT_EQ(valueAt(handle, "/x"), std::string(999, 'v'));
}

TEST_F(VelMemory, DeletingUnderAHandlerFreesMemoryToo)
{
    const velHandlePtr handle = parsed("");
    const auto clear = [](const char *path, std::int32_t code, const char *, const char *,
                          void *userData) {
        if (code == velObjectCreated && std::string_view(path) == "/A/B") {
            EXPECT_EQ(said(deleteObjH(static_cast<velHandle *>(userData), "/A")), "");
        }
        return 1;
    };
    ASSERT_EQ(said(addChangeHandler(handle.get(), clear, handle.get())), "");
    EXPECT_LT(
        growthOf(20000, [&](int) { ASSERT_EQ(parse(handle, "A:\nx = 1\nB:\nEND\nEND\n"), ""); }),
        heapSlack);
    EXPECT_EQ(stored(handle), "");
}

TEST_F(VelMemory, ErrorsDoNotAccumulate)
{
    const velHandlePtr handle(velCreateHandle());
    const std::string line(1000, '?');
    EXPECT_LT(
        growthOf(20000,
                 [&](int) { ASSERT_NE(parseVELLineH(handle.get(), line.c_str(), 0), nullptr); }),
        heapSlack);
}

TEST_F(VelMemory, LookUpsDoNotAccumulate)
{
    Random random(2);
    const velHandlePtr handle = parsed(randomSetup(random, 300));
    EXPECT_LT(growthOf(20000,
                       [&](int i) {
                           const std::string path = "/NONE:n" + std::to_string(i) + "/x";
                           ASSERT_EQ(havePath(handle.get(), path.c_str()), 0);
                       }),
              heapSlack);
}

} // namespace
