// The command database: one VEL command file in memory.
//
// A handle owns a tree of nodes (objects, singletons, parameters), a table
// that finds every node by its path, the current-path stack, the parse state,
// the handlers that are informed of changes, and the last error text. Everything
// here is a plain function over such a handle.
//
// Results. A function that can fail returns a message; null means success. A message is a
// constant, or belongs to the handle until its next error; the caller never frees it.
// Output arguments are written only on success. Functions that return a std::string may
// throw bad_alloc; no other function throws. All texts are bytes ended by NUL.
//
// Paths. "/" is the root; "/FLOW/DOMAIN:Duct/Option" is the parameter Option
// of the object Duct of type DOMAIN below the singleton FLOW. A path that does
// not begin with '/' is relative to the current path. Unnecessary spaces and slashes are
// removed, and ".." is resolved (see velPath.h).
//
// A handle is used by one thread at a time; different handles share nothing.
#pragma once

#include "velapilt/src/velArray.h"
#include "velapilt/src/velSpace.h"
#include "velapilt/src/velTypes.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct velHandle;

// --- Node kinds and flags -------------------------------------------------

/// "None", "Param", "Object" or "Singleton".
[[nodiscard]] const char *velKindWord(velKind kind);

inline constexpr std::uint32_t velFlagLibrary = 0x1;        ///< came from a library file
inline constexpr std::uint32_t velFlagValid = 0x100;        ///< the node itself is valid
inline constexpr std::uint32_t velFlagReplace = 0x200;      ///< restated in a &replace block
inline constexpr std::uint32_t velFlagSubtreeValid = 0x400; ///< everything below is valid

// --- Handle ---------------------------------------------------------------

/// A new, empty handle, or null if there is no memory.
[[nodiscard]] velHandle *velCreateHandle();

/// Frees everything that the handle owns, calls the release of its user data and returns 0.
/// Null is allowed. The handle must not be used after this.
int velDestroyHandle(velHandle *handle);

/// Destroys a handle, so that an owning pointer can hold it.
struct velHandleDeleter
{
    void operator()(velHandle *handle) const { velDestroyHandle(handle); }
};
/// A handle that its owner destroys.
using velHandlePtr = std::unique_ptr<velHandle, velHandleDeleter>;

/// The number of blocks that are open now.
[[nodiscard]] const char *getVELStateH(velHandle *handle, std::int32_t *depth);

/// The largest number of blocks that were open at the same time. The parsed data does not
/// nest deeper.
[[nodiscard]] std::int32_t velDeepestBlock(const velHandle *handle);

/// Closes open blocks down to `depth` (below 0 counts as 0); opens none.
void setVELStateH(velHandle *handle, std::int32_t depth);

/// A number that the handle keeps for the caller; 0 in a new handle.
[[nodiscard]] std::int32_t getValidationLevel(const velHandle *handle);
/// Sets the number; the database itself does not use it.
void setValidationLevel(velHandle *handle, std::int32_t level);

/// A value of the caller, and the release that frees it with the handle or when another
/// value is set. The release is called once, for null data too. At the end of the handle,
/// the tree is freed before the release is called.
[[nodiscard]] void *velUserData(const velHandle *handle);
/// Sets `data` with its release, which may be null. The release of the previous value is
/// called first, unless it is the same data.
void velSetUserData(velHandle *handle, void *data, void (*release)(void *data));

/// Makes `message` the handle's error text, unchanged, and returns it.
const char *velRecordError(velHandle *handle, const std::string &message);

// --- Paths and the current path (velPath.cpp, velPathStack.cpp) -------------

/// The normal form of a path, without resolving it against anything.
[[nodiscard]] std::string velCleanPath(const char *path);
/// Whether the path is already in normal form.
[[nodiscard]] bool velIsCleanPath(const char *path);

/// The absolute path in normal form.
[[nodiscard]] std::string velFullPath(velHandle *handle, const char *path);

/// The full path without its last component; nothing for a text without '/'.
[[nodiscard]] std::optional<std::string> velParentPath(velHandle *handle, const char *path);

/// The path of a child with this component ("TYPE:Name", "TYPE" or "Name").
[[nodiscard]] const char *makeChildPath(const char *parentPath, const char *component,
                                        std::string *path);

/// The current path, "/" at first. Valid until the stack next changes.
[[nodiscard]] const char *getCurrentPath(velHandle *handle);

/// Makes an existing node's path current; popPath restores the previous one.
[[nodiscard]] const char *pushPath(velHandle *handle, const char *path);
/// As pushPath, for a full path that is not checked.
[[nodiscard]] const char *velPushPath(velHandle *handle, const char *fullPath);
/// Popping the bottom entry is a silent success.
[[nodiscard]] const char *popPath(velHandle *handle);
/// Replaces the current path, even the bottom one.
[[nodiscard]] const char *changePath(velHandle *handle, const char *path);
/// As changePath, for a full path that is not checked.
[[nodiscard]] const char *velChangePath(velHandle *handle, const char *fullPath);
/// Empties the stack; its next use starts again from "/".
void velCleanPathStack(velHandle *handle);

// --- Tree (velTree.cpp) -----------------------------------------------------

/// 1 if there is a node at the path, otherwise 0.
[[nodiscard]] int havePath(velHandle *handle, const char *path);
/// 1 for an Object or Singleton, 0 for a Parameter or nothing.
[[nodiscard]] int isObject(velHandle *handle, const char *path);
/// The library bit (of a Parameter: its parent's), −1 for an unknown path.
[[nodiscard]] int isLibrary(velHandle *handle, const char *path);
/// 1 if valid, 0 if not; 3 and 2 if the subtree is also valid; −1 for an unknown path.
[[nodiscard]] int isValid(velHandle *handle, const char *path);
/// The kind of the node at the path; velNone for an unknown one.
[[nodiscard]] velKind velKindOf(velHandle *handle, const char *path);

/// Level 1 marks the node as valid, 2 its subtree; any other level removes the mark of the
/// node. With `propagate` it also removes the marks that depend on it, up to the root.
[[nodiscard]] const char *setValid(velHandle *handle, const char *path, std::int32_t level,
                                   bool propagate = false);

/// Makes an Object ("…/TYPE:Name") or Singleton ("…/TYPE"); the parent must exist. If the
/// node exists, it only gets the flags.
[[nodiscard]] const char *velCreateObject(velHandle *handle, const char *path, bool isLibrary);
/// Makes a Parameter, or gives an existing one a new value.
[[nodiscard]] const char *velCreateParam(velHandle *handle, const char *path, const char *value);

/// Unlinks one node. A node with children is refused, but only after it was removed from
/// tree and table. Callers that delete data use deleteObjH.
[[nodiscard]] const char *velRemoveObjectH(velHandle *handle, const char *path);
/// Deletes a node and everything below it; "/" is emptied and stays.
[[nodiscard]] const char *deleteObjH(velHandle *handle, const char *path);
/// As velRemoveObjectH, but an unknown path has another message.
[[nodiscard]] const char *deleteParamH(velHandle *handle, const char *path);

/// Moves a node to a place among its siblings, counted from 0; any place after
/// them all is the last. Only the stored order changes: nothing is marked, and
/// no handler is called. Messages: "velPlaceChild: " and "path not found", "the
/// root has no siblings" or "child not in parent's child list".
[[nodiscard]] const char *velPlaceChild(velHandle *handle, const char *path,
                                        std::uint32_t position);

// --- Values (velValue.cpp) ----------------------------------------------------

/// The value in place, without a copy: null for an unknown path, a node that
/// is not a Parameter, or a Parameter without a value. Valid until the tree next
/// changes.
[[nodiscard]] const char *velFindValue(velHandle *handle, const char *path);

/// A copy of the value; no text if there is none.
[[nodiscard]] const char *getStringValue(velHandle *handle, const char *path,
                                         std::optional<std::string> *value);
/// The number in the text, rounded half away from zero; 0 without a number.
[[nodiscard]] const char *getIntegerValue(velHandle *handle, const char *path, std::int32_t *value);
/// As isLogicalValue.
[[nodiscard]] const char *getLogicalValue(velHandle *handle, const char *path, std::int32_t *value);

/// The value split at the commas outside parentheses.
[[nodiscard]] const char *getStringList(velHandle *handle, const char *path, velStringList *list);
/// Each element rounded as x + 0.5 truncated, for every sign. Below zero this differs from
/// getIntegerValue; users rely on both.
[[nodiscard]] const char *getIntegerList(velHandle *handle, const char *path,
                                         std::vector<std::int32_t> *list);
/// Each element as isLogicalValue reads it; one message for all that are not logical.
[[nodiscard]] const char *getLogicalList(velHandle *handle, const char *path,
                                         std::vector<std::int32_t> *list);

/// Gives an existing Parameter a value; control characters are not checked.
[[nodiscard]] const char *setStringValue(velHandle *handle, const char *path, const char *value);

/// −1 for yes, y, true, t, on; 0 for no, n, false, f, off; a word that begins
/// with a digit is that number. On failure `message` gets the text that the
/// function returns.
[[nodiscard]] const char *isLogicalValue(const char *text, std::int32_t *value,
                                         std::string *message);

// --- Reading (velParser.cpp, velFile.cpp, velLibraries.cpp) --------------------

/// MD5 over the bytes of all lines, without line ends.
struct velDigest
{
    unsigned char bytes[16];
};

/// The lines of a file, without line ends and without a byte order mark before
/// them, into a string array.
[[nodiscard]] const char *loadFileData(velHandle *handle, const char *path, velArray *lines);

/// Reads and parses a file of type "vel" as user data. `expected` and `digest`
/// may be null; data whose digest is `expected` is marked valid.
[[nodiscard]] const char *loadVELFile(velHandle *handle, const char *path, const char *fileType,
                                      const velDigest *expected = nullptr,
                                      velDigest *digest = nullptr);

/// Parses the caller's lines as user data, or as library data.
[[nodiscard]] const char *loadVELData(velHandle *handle, const char *const *lines,
                                      std::int32_t count, const velDigest *expected = nullptr,
                                      velDigest *digest = nullptr);
/// The same for library data: every node that the lines make or change gets velFlagLibrary.
[[nodiscard]] const char *loadLibraryData(velHandle *handle, const char *const *lines,
                                          std::int32_t count, const velDigest *expected = nullptr,
                                          velDigest *digest = nullptr);
/// Parses the texts of a string array. The nodes that they make or change get `flags`
/// (velFlag…). A block that is still open at the end, or an END without a block, is a
/// failure.
[[nodiscard]] const char *parseVELData(velHandle *handle, const velArray *lines,
                                       std::uint32_t flags, const velDigest *expected = nullptr,
                                       velDigest *digest = nullptr);

/// Parses one line. After it, blocks may be open, and a continued line may be incomplete.
[[nodiscard]] const char *parseVELLineH(velHandle *handle, const char *line, std::uint32_t flags);

/// Reads the libraries that ZOT5_VEL_LIBS names, in ZOT5_VEL_LIBSDIR.
[[nodiscard]] const char *readLibraries(velHandle *handle);
/// Reads the libraries of a list separated by ';'.
[[nodiscard]] const char *readNamedLibraries(velHandle *handle, const char *list,
                                             const char *directory);
/// The files that readLibraries reads, in its order; none if it refuses to read. Throws
/// bad_alloc.
[[nodiscard]] std::vector<std::string> velLibraryFiles();
/// The same for readNamedLibraries.
[[nodiscard]] std::vector<std::string> velLibraryFiles(const char *list, const char *directory);

// --- Writing (velFormat.cpp) --------------------------------------------------

/// The lines of a node in stored order, with its own header and END. For a handle without a
/// tree the function succeeds and does not fill the list.
[[nodiscard]] const char *getObjectVELH(velHandle *handle, const char *path, velStringList *lines,
                                        bool includeLibrary);
/// Appends the lines of a node's children, with `indent` before each. An object is left out
/// if it has none of the flags of a non-zero `include`, or any of the flags of `exclude`.
[[nodiscard]] const char *getPartialVELH(velHandle *handle, const char *path, const char *indent,
                                         velArray *lines, std::uint32_t include,
                                         std::uint32_t exclude);
/// The user data below a node, parameters first, objects by their priorities, each line
/// wrapped to `width` columns (0: not wrapped).
[[nodiscard]] const char *velWrapText(velHandle *handle, const char *path, std::int32_t width,
                                      velStringList *lines);
/// velWrapText with the priorities that the rules in another handle give.
[[nodiscard]] const char *velWrapTextByRules(velHandle *handle, velHandle *rules, const char *path,
                                             std::int32_t width, velStringList *lines);
/// velWrapText, as the editor's save calls it.
[[nodiscard]] const char *getFormattedVEL(velHandle *handle, const char *path, std::int32_t width,
                                          velStringList *lines);
/// Sorts entries "TYPE:Name" or "TYPE" by their output priority, then by bytes.
[[nodiscard]] const char *velOrderObjectsForOutput(velHandle *handle,
                                                   std::vector<std::string> *entries);
/// Splits one line into pieces of at most `width` characters.
[[nodiscard]] const char *velWrapLine(const char *line, std::int32_t width, velArray *lines);
/// The text that a line needs after a value: " #" if the value ends in a backslash,
/// otherwise nothing. Without the empty comment, the backslash would continue the line.
[[nodiscard]] inline std::string_view velLineEnd(std::string_view value)
{
    // A reader drops the white space.
    return velTrimEnd(value).ends_with('\\') ? " #" : std::string_view();
}

// --- Children (velChildren.cpp) -----------------------------------------------

/// Children in stored order; groups in the reverse order of their first
/// member. Either result may be null.
[[nodiscard]] const char *getChildList(velHandle *handle, const char *path,
                                       std::vector<velChildInfo> *children,
                                       std::vector<velGroupInfo> *groups);

/// The components ("TYPE:Name", "TYPE", "Name") of the children wanted.
[[nodiscard]] const char *getChildObjectList(velHandle *handle, const char *path, bool wantObjects,
                                             bool wantParams, velStringList *list);
/// Only the Objects and Singletons.
[[nodiscard]] const char *getChildObjectList(velHandle *handle, const char *path,
                                             velStringList *list);
/// Only the Parameters.
[[nodiscard]] const char *getChildParamList(velHandle *handle, const char *path,
                                            velStringList *list);

/// Full paths of the objects below `path` with this name (of a Singleton its
/// type) or type, parents before their descendants. Masks as getPartialVELH.
[[nodiscard]] const char *getObjectsByNameH(velHandle *handle, const char *path, const char *name,
                                            std::uint32_t include, std::uint32_t exclude,
                                            velStringList *list);
/// The same by type.
[[nodiscard]] const char *getObjectsByTypeH(velHandle *handle, const char *path, const char *type,
                                            std::uint32_t include, std::uint32_t exclude,
                                            velStringList *list);

/// What a node is, for callers that walk the tree themselves.
struct velNodeInfo
{
    velKind kind;
    const char *type;  ///< "String" for a Parameter; "/" for the root
    const char *name;  ///< null for a Singleton and the root
    const char *value; ///< null, except for a Parameter with a value
    std::uint32_t flags;
};

/// A place in the tree; null if there is none. Valid until the tree changes.
struct velNode;
/// The node with a path in any form; null if there is none, or no memory.
[[nodiscard]] const velNode *velFindNode(velHandle *handle, const char *path);
/// The node whose full path is exactly this text: nothing is resolved.
[[nodiscard]] const velNode *velFindFullPath(velHandle *handle, const char *fullPath);
/// The first child in stored order; null if there is none, and for a Parameter.
[[nodiscard]] const velNode *velFirstChild(const velNode *node);
/// The next child of the same parent; null after the last.
[[nodiscard]] const velNode *velNextSibling(const velNode *node);
/// What the node is. The texts belong to the database and are valid until it changes.
[[nodiscard]] velNodeInfo velDescribe(const velHandle *handle, const velNode *node);
/// How many children the node has; 0 for a Parameter.
[[nodiscard]] std::uint32_t velChildCount(const velNode *node);
/// "TYPE:Name", "TYPE" or "Name", which distinguishes the node from its siblings.
/// Throws bad_alloc.
[[nodiscard]] std::string velComponentOf(const velNodeInfo &info);

// --- Handlers (velHandlers.cpp) -------------------------------------------------

/// The change for which a handler is called.
enum velChange : std::int32_t {
    velValueChanged = 0,  ///< or a Parameter was made (no old value) or removed (no new value)
    velObjectCreated = 1, ///< Object or Singleton
    velObjectDeleted = 2,
};

/// The texts belong to the database and are valid only during the call. A handler may call
/// the database, and may change it.
using velChangeHandler = int (*)(const char *path, std::int32_t code, const char *newValue,
                                 const char *oldValue, void *userData);
/// Called after every line under &replace with the path of the object opened.
using velReplaceHandler = void (*)(const char *path, void *userData);
/// `arguments` is null or ended by null; non-zero is success.
using velActionHandler = int (*)(velHandle *handle, const char *action,
                                 const char *const *arguments, void *userData);

/// Adds a handler after the others; the same handler may be added again. `userData` belongs
/// to the caller and is passed to every call.
[[nodiscard]] const char *addChangeHandler(velHandle *handle, velChangeHandler handler,
                                           void *userData);
/// As addChangeHandler.
[[nodiscard]] const char *addReplaceHandler(velHandle *handle, velReplaceHandler handler,
                                            void *userData);
/// One unnamed handler: registering again replaces it.
[[nodiscard]] const char *addActionHandler(velHandle *handle, velActionHandler handler,
                                           void *userData);

/// Passes a line that begins with '>' to the action handler.
[[nodiscard]] const char *velRunActionLine(velHandle *handle, const char *line);
/// Calls the action handler. A message if there is none, or if it returns 0.
[[nodiscard]] const char *invokeAction(velHandle *handle, const char *action,
                                       const char *const *arguments);

/// For a handler that has failed: the operation that called it stops as soon as tree and
/// table are consistent, and returns `message` (a constant).
void velInterrupt(velHandle *handle, const char *message);
