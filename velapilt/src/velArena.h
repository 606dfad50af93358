// Memory for the nodes and texts of one handle.
//
// Small blocks come from large chunks, one after the other, so that data loaded
// together is close together. Freed blocks are kept by size and used again. Larger
// blocks come from the heap. Everything is freed with the arena.
#pragma once

#include "velapilt/src/velPages.h"

#include <array>
#include <cstddef>
#include <vector>

/// An arena is used by one thread at a time.
class velArena
{
public:
    velArena() = default;
    ~velArena();
    velArena(const velArena &) = delete;
    velArena &operator=(const velArena &) = delete;

    /// A block aligned for pointers. Throws bad_alloc.
    void *allocate(std::size_t bytes)
    {
        const std::size_t index = (bytes + unit - 1) / unit;
        if (index * unit <= left_ && index < free_.size() && free_[index] == nullptr) {
            void *block = next_;
            next_ += index * unit;
            left_ -= index * unit;
            return block;
        }
        return allocateSlowly(bytes);
    }

    /// Frees a block; `bytes` is the size given to `allocate`.
    void release(void *block, std::size_t bytes) noexcept;

private:
    struct Free
    {
        Free *next;
    };
    struct Large
    {
        Large *previous;
        Large *next;
    };

    static constexpr std::size_t unit = 8;
    static constexpr std::size_t largest = 512;

    void *allocateSlowly(std::size_t bytes);
    void newChunk();
    void *fromHeap(std::size_t bytes);

    std::array<Free *, largest / unit + 1> free_{};
    std::vector<velPages> chunks_;
    std::size_t chunkSize_ = 4096;
    char *next_ = nullptr;
    std::size_t left_ = 0;
    Large *large_ = nullptr;
};
