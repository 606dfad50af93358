// Tests the arena: blocks of many sizes do not overlap, and freed blocks are used
// again.
#include "velapilt/src/velArena.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

struct Block
{
    char *memory;
    std::size_t size;
    char fill;
};

bool isWhole(const Block &block)
{
    for (std::size_t i = 0; i < block.size; ++i) {
        if (block.memory[i] != block.fill) {
            return false;
        }
    }
    return true;
}

TEST(VelArena, BlocksAreAlignedAndDoNotOverlap)
{
    for (unsigned seed = 0; seed < 5; ++seed) {
        Random random(seed);
        velArena arena;
        std::vector<Block> blocks;
        for (int i = 0; i < 20000; ++i) {
            if (blocks.empty() || !random.once(3)) {
                const std::size_t size = 1 + random.below(random.once(20) ? 3000 : 100);
                auto *memory = static_cast<char *>(arena.allocate(size));
                ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignof(void *), 0U);
                blocks.push_back({memory, size, static_cast<char>(i)});
                std::memset(memory, blocks.back().fill, size);
            } else {
                Block &block = random.oneOf(blocks);
                ASSERT_TRUE(isWhole(block)) << block.size;
                arena.release(block.memory, block.size);
                block = blocks.back();
                blocks.pop_back();
            }
        }
        for (const Block &block : blocks) {
            ASSERT_TRUE(isWhole(block)) << block.size;
        }
    }
}

TEST(VelArena, AReleasedBlockIsUsedAgain)
{
    velArena arena;
    void *first = arena.allocate(72);
    static_cast<void>(arena.allocate(72));
    arena.release(first, 72);
    EXPECT_NE(arena.allocate(64), first); // a block of another size
    EXPECT_EQ(arena.allocate(72), first);
    arena.release(first, 72);
    EXPECT_EQ(arena.allocate(65), first); // sizes go in steps of 8
}

} // namespace
