// Nodes by their paths, and paths by their nodes.
#pragma once

#include "velapilt/src/velNode_p.h"

#include <string>

struct velHandle;

/// The node with a path as a caller gives it; null for none and for a null
/// path. Throws bad_alloc.
[[nodiscard]] velNode *velResolve(velHandle *handle, const char *path);
/// The full path of a node. Throws bad_alloc.
[[nodiscard]] std::string velPathOf(const velHandle *handle, const velNode *node);
