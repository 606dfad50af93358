// Large blocks of memory.
//
// A set-up of a million parameters needs some hundred megabytes, written once and
// then read in any order. With pages of the usual size the kernel would provide
// each page separately, and most reads would miss the translation cache. So these
// blocks use large pages if the platform has them.
#pragma once

#include <cstddef>
#include <memory>

/// Frees a block of velAllocatePages.
struct velFreePages
{
    void operator()(char *block) const noexcept;
};
/// A block that its owner frees.
using velPages = std::unique_ptr<char[], velFreePages>;

/// A block of at least `bytes`, not initialised. Throws bad_alloc.
[[nodiscard]] velPages velAllocatePages(std::size_t bytes);
