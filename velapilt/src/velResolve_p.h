// Finds nodes by their paths, and writes the paths of nodes.
#pragma once

#include "velapilt/src/velNode_p.h"

#include <string>

struct velHandle;

/// The node at a path that a caller gives; null if there is no such node or the
/// path is null. Throws bad_alloc.
[[nodiscard]] velNode *velResolve(velHandle *handle, const char *path);
/// The full path of a node. Throws bad_alloc.
[[nodiscard]] std::string velPathOf(const velHandle *handle, const velNode *node);
