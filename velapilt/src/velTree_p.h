// Making nodes.
#pragma once

#include "velapilt/src/velPathTable.h"

#include <cstdint>
#include <string_view>

struct velHandle;

/// What a line or a create operation says.
struct velStatement
{
    velComponent component; ///< without a type a Parameter, without a name a Singleton
    std::string_view value; ///< of a Parameter
    std::uint32_t flags;    ///< velFlag…
};

/// Makes or updates the node below the current one and makes an Object or
/// Singleton current. Null when it is refused: no current node, a Parameter as
/// parent, another kind in its place, or a path beyond 2^28 bytes. Throws
/// bad_alloc with tree and table in step.
[[nodiscard]] velNode *velUpdateObject(velHandle *handle, const velStatement &statement);

/// Makes the root if there is none. Throws bad_alloc.
void velMakeRoot(velHandle *handle);
