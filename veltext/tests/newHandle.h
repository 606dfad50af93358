// Creates a new database for a test.
#pragma once

#include "velapilt/src/velapilt.h"

#include <new>

namespace veltext::test {

inline velHandlePtr newHandle()
{
    velHandlePtr handle(velCreateHandle());
    if (!handle) {
        throw std::bad_alloc();
    }
    return handle;
}

} // namespace veltext::test
