// The inside of a handle, shared by the sources of the database only.
#pragma once

#include "velapilt/src/velArena.h"
#include "velapilt/src/velNode_p.h"
#include "velapilt/src/velPages.h"
#include "velapilt/src/velPathTable.h"
#include "velapilt/src/velWords.h"
#include "velapilt/src/velapilt.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct velPathEntry
{
    velNode *node = nullptr; ///< the current node; not owned
    std::string text;        ///< the path where it names no node
};

struct velHandle
{
    velArena arena;
    velWords words{arena};
    velPathTable table{words};
    velNode *root = nullptr; ///< made by the first insertion; owned through the arena

    // The current-path stack; empty until first used, its bottom is "/".
    std::vector<velPathEntry> stack;
    std::string currentPath; ///< what getCurrentPath returned last

    struct ChangeEntry
    {
        velChangeHandler handler;
        void *userData;
    };
    struct ReplaceEntry
    {
        velReplaceHandler handler;
        void *userData;
    };
    std::vector<ChangeEntry> changeHandlers;
    std::vector<ReplaceEntry> replaceHandlers;
    struct ActionEntry
    {
        velActionHandler handler;
        void *userData;
    };
    std::unique_ptr<ActionEntry> action; ///< the one without a name; null before the first

    // The parser's state between lines.
    std::string pendingLine; ///< what continued lines have gathered
    bool hasPendingLine = false;
    std::vector<std::uint32_t> flagStack; ///< one word a block, and one for depth 0
    std::int32_t depth = 0;               ///< blocks open
    std::int32_t deepest = 0;             ///< the most that were ever open

    /// Nodes with velFlagSubtreeValid: while there are none, invalidation need
    /// not climb to the root.
    std::int64_t subtreeValidCount = 0;

    // A handler may change the tree under the operation that called it: what is
    // freed while one runs is given back when the outermost operation ends.
    int operations = 0;
    int reporting = 0;
    std::vector<std::pair<void *, std::size_t>> graveyard;
    const char *interrupted = nullptr;

    char *errorText = nullptr;   ///< owned (malloc)
    char *retiredText = nullptr; ///< the one before it, overwritten; owned

    void *userData = nullptr;
    void (*releaseUserData)(void *) = nullptr;
    std::int32_t validationLevel = 0;
};

// --- Errors (velHandle.cpp)

/// Makes the handle's error text and returns it. Every formatted message of
/// the library is made here.
[[gnu::format(printf, 2, 3)]] const char *velSetError(velHandle *handle, const char *format, ...);

/// Whether ZOT_VELAPI_DEBUG is set; asked anew each time.
[[nodiscard]] bool velDebugging();
/// The handle as the trace names it.
[[nodiscard]] unsigned velTraceName(const velHandle *handle);

// --- Memory (velHandle.cpp)

/// Gives a block back, or, while a handler runs, keeps it until the outermost
/// operation has ended.
void velRelease(velHandle *handle, void *block, std::size_t bytes) noexcept;

/// Stands in every function that may call handlers.
class velOperation
{
public:
    explicit velOperation(velHandle *handle) : handle_(handle) { ++handle_->operations; }
    ~velOperation();
    velOperation(const velOperation &) = delete;
    velOperation &operator=(const velOperation &) = delete;

private:
    velHandle *handle_;
};

// --- Paths (velPathStack.cpp)

/// The current node; null when the current path names none.
[[nodiscard]] velNode *velFindCurrentNode(velHandle *handle);
[[nodiscard]] inline velNode *velCurrentNode(velHandle *handle)
{
    const bool isKnown = !handle->stack.empty() && handle->stack.back().node != nullptr;
    return isKnown ? handle->stack.back().node : velFindCurrentNode(handle);
}
void velPushNode(velHandle *handle, velNode *node);
void velPop(velHandle *handle);
/// The node's path as text on every stack entry that points to it.
void velUnpin(velHandle *handle, velNode *node);
/// The node with a path as a caller gives it, or null.
[[nodiscard]] velNode *velResolve(velHandle *handle, const char *path);
[[nodiscard]] std::string velPathOf(const velHandle *handle, const velNode *node);

// --- Tree (velTree.cpp)

/// What a line or a create operation says.
struct velStatement
{
    velComponent component; ///< without a type a Parameter, without a name a Singleton
    std::string_view value; ///< of a Parameter
    std::uint32_t flags;
};

/// Makes or updates the node below the current one and makes an Object or
/// Singleton current. Null when it is refused: no current node, a Parameter as
/// parent, another kind in its place, or a path beyond 2^28 bytes. Throws
/// bad_alloc with tree and table in step.
[[nodiscard]] velNode *velUpdateObject(velHandle *handle, const velStatement &statement);

/// Makes the root if there is none.
void velMakeRoot(velHandle *handle);

// --- Nodes and their paths (velRemove.cpp)
//
// A handler may delete a node and make another one at its path, and a node that
// was removed before its children leaves them in the table. What a node is, and
// whose flags pass to it, is decided by the path.

[[nodiscard]] velNode *velFindNodeNow(velHandle *handle, const velNode *node);
[[nodiscard]] velNode *velFindParentNow(velHandle *handle, const velNode *node);

/// The node that is now at the path of `node`, which may have been removed
/// during the present operation; null for none. Throws bad_alloc.
[[nodiscard]] inline velNode *velNodeNow(velHandle *handle, velNode *node)
{
    return node->inTable != 0 || node->isPending != 0 ? node : velFindNodeNow(handle, node);
}

/// The node at the path of the parent of `node`, which is in the table; null
/// for none, and for the root. Throws bad_alloc.
[[nodiscard]] inline velNode *velParentNow(velHandle *handle, const velNode *node)
{
    return node->isRoot() || !handle->table.hasDetached() ? node->parent
                                                          : velFindParentNow(handle, node);
}

// --- Removing (velRemove.cpp)

/// Unlinks a node; `before` may name the sibling before it.
[[nodiscard]] const char *velRemoveNode(velHandle *handle, velNode *node,
                                        velNode *before = nullptr);
/// Deletes a node and all below it. Throws bad_alloc.
[[nodiscard]] const char *velDeleteNode(velHandle *handle, velNode *node);

// --- Flags (velValidity.cpp)

inline void velSetFlags(velHandle *handle, velNode *node, std::uint32_t flags)
{
    if (((flags ^ node->flags) & velFlagSubtreeValid) != 0) {
        handle->subtreeValidCount += (flags & velFlagSubtreeValid) != 0 ? 1 : -1;
    }
    node->flags = flags;
}
/// Takes velFlagSubtreeValid from a node and all above it.
void velInvalidateUpward(velHandle *handle, velNode *node);
/// velInvalidate, by the paths of the nodes above. Throws bad_alloc.
void velInvalidateByPath(velHandle *handle, const velNode *node);
/// Takes the node's mark away, of a Parameter its owner's as well, and from
/// everything above those that of a valid subtree. Throws bad_alloc.
inline void velInvalidate(velHandle *handle, velNode *node)
{
    node->flags &= ~velFlagValid;
    if (handle->table.hasDetached()) {
        velInvalidateByPath(handle, node);
        return;
    }
    velNode *up = node->parent;
    if (up != nullptr && node->isParam()) {
        up->flags &= ~velFlagValid;
        up = up->parent;
    }
    if (handle->subtreeValidCount > 0) {
        velInvalidateUpward(handle, up);
    }
}

// --- Words (velCheck.cpp): null or the message

[[nodiscard]] const char *velCheckType(velHandle *handle, std::string_view type);
[[nodiscard]] const char *velCheckObjectName(velHandle *handle, std::string_view name);
[[nodiscard]] const char *velCheckParamName(velHandle *handle, std::string_view name);
[[nodiscard]] const char *velCheckValue(velHandle *handle, std::string_view value);

// --- Handlers (velHandlers.cpp)

/// Tells the change handlers; `oldValue` and `newValue` may be null.
void velCallChangeHandlers(velHandle *handle, const velNode *node, velChange code,
                           const char *newValue, const char *oldValue);
inline void velReport(velHandle *handle, const velNode *node, velChange code, const char *newValue,
                      const char *oldValue)
{
    if (!handle->changeHandlers.empty()) {
        velCallChangeHandlers(handle, node, code, newValue, oldValue);
    }
}
void velReportReplace(velHandle *handle);
/// The trace handler that prints every change.
void velAddTraceHandler(velHandle *handle);
/// The interruption that a handler asked for, once; else null.
[[nodiscard]] const char *velTakeInterrupt(velHandle *handle);

// --- Files

/// The bytes of a file, followed by a line feed and the slack of velScan.h.
struct velFileBytes
{
    velPages data;
    std::size_t size = 0;
    std::size_t start = 0; ///< of the text: after a byte order mark

    [[nodiscard]] std::string_view view() const { return {data.get() + start, size - start}; }
};

/// Reads the whole of a file (velFile.cpp); messages of loadFileData. Throws
/// bad_alloc.
[[nodiscard]] const char *velReadFile(velHandle *handle, const char *path, velFileBytes *bytes);

/// Parses the lines of a file as parseVELData does those of a list (velParser.cpp).
[[nodiscard]] const char *velParseFile(velHandle *handle, const velFileBytes &bytes,
                                       std::uint32_t flags, const velDigest *expected,
                                       velDigest *digest);

// --- Characters

/// The six white-space characters of the C locale.
[[nodiscard]] constexpr bool velIsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// A text between the white space around it.
[[nodiscard]] inline std::string_view velTrim(std::string_view text)
{
    const char *start = text.data();
    const char *end = start + text.size();
    constexpr std::uint64_t blanks = 0x2020202020202020U; // an indentation, eight at a time
    while (end - start >= 8 && velLoadBytes(start, 8) == blanks) {
        start += 8;
    }
    while (start < end && velIsSpace(*start)) {
        ++start;
    }
    while (end > start && velIsSpace(end[-1])) {
        --end;
    }
    return {start, static_cast<std::size_t>(end - start)};
}
