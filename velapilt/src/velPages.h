// Large blocks of memory.
//
// A set-up of a million parameters takes some hundred megabytes that are
// written once and then read all over. On pages of the usual size the kernel
// would be asked for each of them singly, and most reads would miss the
// translation cache; blocks from here lie on large pages where the platform
// has them.
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
