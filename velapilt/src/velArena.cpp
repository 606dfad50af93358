// Chunks for small blocks, the heap for larger ones, and lists of free blocks.
#include "velapilt/src/velArena.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t largestChunk = std::size_t{16} << 20;

} // namespace

velArena::~velArena()
{
    while (large_ != nullptr) {
        Large *next = large_->next;
        std::free(large_);
        large_ = next;
    }
}

void *velArena::allocateSlowly(std::size_t bytes)
{
    if (bytes > largest) {
        return fromHeap(bytes);
    }
    const std::size_t index = (bytes + unit - 1) / unit;
    if (Free *block = free_[index]; block != nullptr) {
        free_[index] = block->next;
        return block;
    }
    newChunk();
    return allocate(bytes);
}

void velArena::release(void *block, std::size_t bytes) noexcept
{
    if (bytes > largest) {
        Large *large = static_cast<Large *>(block) - 1;
        (large->previous != nullptr ? large->previous->next : large_) = large->next;
        if (large->next != nullptr) {
            large->next->previous = large->previous;
        }
        std::free(large);
        return;
    }
    const std::size_t index = (bytes + unit - 1) / unit;
    free_[index] = new (block) Free{free_[index]};
}

void velArena::newChunk()
{
    velPages chunk = velAllocatePages(chunkSize_);
    char *start = chunk.get();
    chunks_.push_back(std::move(chunk));
    next_ = start;
    left_ = chunkSize_;
    chunkSize_ = std::min(chunkSize_ * 2, largestChunk);
}

void *velArena::fromHeap(std::size_t bytes)
{
    if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Large)) {
        throw std::bad_alloc();
    }
    void *memory = std::malloc(sizeof(Large) + bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto *large = new (memory) Large{nullptr, large_};
    if (large_ != nullptr) {
        large_->previous = large;
    }
    large_ = large;
    return large + 1;
}
