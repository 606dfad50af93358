// Large blocks, aligned so that the platform can use large pages for them.
#include "velapilt/src/velPages.h"

#include <cstdlib>
#include <limits>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;

} // namespace

void velFreePages::operator()(char *block) const noexcept
{
    std::free(block);
}

velPages velAllocatePages(std::size_t bytes)
{
    if (bytes > std::numeric_limits<std::size_t>::max() - largePage) {
        throw std::bad_alloc();
    }
    const bool isLarge = bytes >= largePage;
    const std::size_t rounded = (bytes + largePage - 1) / largePage * largePage;
    void *block = isLarge ? std::aligned_alloc(largePage, rounded) : std::malloc(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
#ifdef __linux__
    if (isLarge) { // a request only: the block also works without large pages
        static_cast<void>(::madvise(block, rounded, MADV_HUGEPAGE));
    }
#endif
    return velPages(static_cast<char *>(block));
}
