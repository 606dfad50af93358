// Decides when the memory that an operation frees is released.
#include "velapilt/src/velOperation_p.h"

#include <new>

void velRelease(velHandle *handle, void *block, std::size_t bytes) noexcept
{
    if (handle->reporting == 0) {
        handle->arena.release(block, bytes);
        return;
    }
    try {
        handle->graveyard.emplace_back(block, bytes);
    } catch (const std::bad_alloc &) {
        return; // freed with the handle
    }
}

velOperation::~velOperation()
{
    if (--handle_->operations > 0) {
        return;
    }
    for (const auto &[block, bytes] : handle_->graveyard) {
        handle_->arena.release(block, bytes);
    }
    handle_->graveyard.clear();
    handle_->interrupted = nullptr; // still set if the operation failed for another reason
}
