#include "velapilt/src/velArena.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t largestChunk = std::size_t{1} << 20;

} // namespace

velArena::~velArena()
{
    while (large_ != nullptr) {
        Large *next = large_->next;
        std::free(large_);
        large_ = next;
    }
}

void *velArena::allocate(std::size_t bytes)
{
    if (bytes > largest) {
        return fromHeap(bytes);
    }
    const std::size_t index = (bytes + unit - 1) / unit;
    if (Free *block = free_[index]; block != nullptr) {
        free_[index] = block->next;
        return block;
    }
    return fromChunk(index * unit);
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

void *velArena::fromChunk(std::size_t bytes)
{
    if (bytes > left_) {
        auto chunk = std::make_unique_for_overwrite<char[]>(chunkSize_);
        next_ = chunk.get();
        chunks_.push_back(std::move(chunk));
        left_ = chunkSize_;
        chunkSize_ = std::min(chunkSize_ * 2, largestChunk);
    }
    void *block = next_;
    next_ += bytes;
    left_ -= bytes;
    return block;
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
