// Operations that may call handlers, and the memory that they free.
//
// A handler may change the tree during the operation that called it. So memory
// that is freed while a handler runs is kept until the outermost operation ends.
#pragma once

#include "velapilt/src/velHandle_p.h"

#include <cstddef>

/// Frees a block of the handle's arena. While a handler runs, the block is kept until the
/// outermost operation has ended. `bytes` is the size that was requested.
void velRelease(velHandle *handle, void *block, std::size_t bytes) noexcept;

/// Every function that may call handlers has one.
class velOperation
{
public:
    /// `handle` outlives the operation.
    explicit velOperation(velHandle *handle) : handle_(handle) { ++handle_->operations; }
    ~velOperation();
    velOperation(const velOperation &) = delete;
    velOperation &operator=(const velOperation &) = delete;

private:
    velHandle *handle_;
};
