// Making nodes.
#pragma once

#include "velapilt/src/velPathTable.h"

#include <cstdint>
#include <string_view>

struct velHandle;

/// What a line or a create operation states.
struct velStatement
{
    velComponent component; ///< a Parameter has no type, a Singleton has no name
    std::string_view value; ///< of a Parameter
    std::uint32_t flags;    ///< velFlag…
};

/// Makes or updates a node below the current one; an Object or Singleton becomes the current
/// node. Null if it is refused: there is no current node, the parent is a Parameter, there
/// is a node of another kind, or the path has more than 2^28 bytes. May throw bad_alloc;
/// tree and table are then still consistent.
[[nodiscard]] velNode *velUpdateObject(velHandle *handle, const velStatement &statement);

/// Makes the root if there is none. Throws bad_alloc.
void velMakeRoot(velHandle *handle);
