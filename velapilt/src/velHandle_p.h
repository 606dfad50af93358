// The inside of a handle: the state that the operations work on.
//
// The operations on each part are in the header of that topic: velPathStack_p.h,
// velTree_p.h, velRemove_p.h, velValidity_p.h, velHandlers_p.h, velOperation_p.h and
// velError_p.h.
#pragma once

#include "velapilt/src/velArena.h"
#include "velapilt/src/velNode_p.h"
#include "velapilt/src/velPathTable.h"
#include "velapilt/src/velWords.h"
#include "velapilt/src/velapilt.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// An entry of the stack of current paths.
struct velPathEntry
{
    velNode *node = nullptr; ///< the current node; not owned
    std::string text;        ///< the path, if it names no node
};

/// Everything that belongs to one database, and is freed with it; see velDestroyHandle.
struct velHandle
{
    // --- The tree (velTree_p.h, velRemove_p.h)

    velArena arena; ///< owns the nodes, their texts and the words
    velWords words{arena};
    velPathTable table{words};
    velNode *root = nullptr; ///< made by the first insertion; owned through the arena

    // --- The current path (velPathStack_p.h)

    std::vector<velPathEntry> stack; ///< empty until first used, its bottom is "/"
    std::string currentPath;         ///< what getCurrentPath returned last

    // --- Handlers (velHandlers_p.h)

    /// Handlers with the data that each is called with.
    struct ChangeEntry
    {
        velChangeHandler handler;
        void *userData; ///< the caller's; not owned
    };
    struct ReplaceEntry
    {
        velReplaceHandler handler;
        void *userData; ///< the caller's; not owned
    };
    struct ActionEntry
    {
        velActionHandler handler;
        void *userData; ///< the caller's; not owned
    };
    std::vector<ChangeEntry> changeHandlers;
    std::vector<ReplaceEntry> replaceHandlers;
    std::unique_ptr<ActionEntry> action; ///< the one without a name; null before the first
    const char *interrupted = nullptr;   ///< the message of a handler that failed; a constant

    // --- The parser's state between lines (velParser.cpp)

    std::string pendingLine; ///< the text of the continued lines so far
    bool hasPendingLine = false;
    std::vector<std::uint32_t> flagStack; ///< one word for each block, and one for depth 0
    std::int32_t depth = 0;               ///< the number of open blocks
    std::int32_t deepest = 0;             ///< the largest depth so far

    // --- Validity (velValidity_p.h)

    /// The number of nodes with velFlagSubtreeValid. If it is 0, invalidation does not need
    /// to go up to the root.
    std::int64_t subtreeValidCount = 0;

    // --- Operations, and what they free (velOperation_p.h)

    int operations = 0;                                    ///< number of nested running operations
    int reporting = 0;                                     ///< number of running handlers
    std::vector<std::pair<void *, std::size_t>> graveyard; ///< blocks of the arena and their sizes

    // --- Errors (velError_p.h)

    char *errorText = nullptr;   ///< owned (malloc)
    char *retiredText = nullptr; ///< the one before it, overwritten; owned

    // --- What callers keep with the handle (velHandle.cpp)

    void *userData = nullptr; ///< given to releaseUserData with the handle
    void (*releaseUserData)(void *) = nullptr;
    std::int32_t validationLevel = 0;
};
