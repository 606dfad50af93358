// Answers questions about nodes, makes nodes, and gives them values.
#include "velapilt/src/velTree_p.h"

#include "velapilt/src/velCheck_p.h"
#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velHandlers_p.h"
#include "velapilt/src/velOperation_p.h"
#include "velapilt/src/velPath.h"
#include "velapilt/src/velPathParts.h"
#include "velapilt/src/velPathStack_p.h"
#include "velapilt/src/velRemove_p.h"
#include "velapilt/src/velResolve_p.h"
#include "velapilt/src/velValidity_p.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr const char *kindWords[] = {"None", "Param", "Object", "Singleton"};

char *newText(velHandle *handle, std::string_view text)
{
    auto *copy = static_cast<char *>(handle->arena.allocate(text.size() + 1));
    if (!text.empty()) {
        std::memcpy(copy, text.data(), text.size());
    }
    copy[text.size()] = '\0';
    return copy;
}

velNode *allocateNode(velHandle *handle, velNode *parent, std::uint32_t type, std::uint32_t name)
{
    auto *node = new (handle->arena.allocate(sizeof(velNode))) velNode{};
    node->parent = parent;
    node->type = type;
    node->name = name;
    return node;
}

void appendChild(velNode *parent, velNode *node)
{
    if (parent->children.first == nullptr) {
        parent->children.first = node;
    } else {
        parent->children.last->next = node;
    }
    parent->children.last = node;
    parent->childWords |= velNode::wordBit(node->name == velWords::none ? node->type : node->name);
    ++parent->childCount;
}

/// The path length of a child, 0 if it is above the limit.
std::size_t childPathLength(const velHandle *handle, const velNode *parent, std::uint32_t type,
                            std::uint32_t name)
{
    const bool isObject = type != velWords::none && name != velWords::none;
    const std::size_t length = (parent->isRoot() ? 0 : parent->pathLength) + std::size_t{1} +
                               (isObject ? 1 : 0) + handle->words.view(type).size() +
                               handle->words.view(name).size();
    return length > velLongestPath ? 0 : length;
}

/// The node at the path that the current path and these words give.
velNode *findBelow(velHandle *handle, velNode *parent, velComponent component)
{
    if (!handle->table.hasDetached()) {
        return parent->mayHaveChild(component.name) ? handle->table.findChild(parent, component)
                                                    : nullptr;
    }
    std::string path = parent->isRoot() ? "" : velPathOf(handle, parent);
    path += '/';
    velAppendComponent(&path, handle->words.view(component.type),
                       handle->words.view(component.name));
    return handle->table.find(path);
}

/// Sets the flags of a node that a line has made or touched, and changes the
/// validity of this node and of the nodes above it. Kept exactly: a plain user
/// line invalidates them. The word 0x100 or 0x400 alone only marks. Any other
/// word (library data, data that matched a digest) invalidates them.
void applyFlags(velHandle *handle, velNode *node, std::uint32_t word)
{
    node = velNodeNow(handle, node);
    if (node == nullptr) {
        return; // a handler has deleted it
    }
    std::uint32_t flags = word;
    if (const velNode *parent = velParentNow(handle, node)) {
        flags |= parent->flags & velFlagReplace;
    }
    velSetFlags(handle, node, flags);
    if (word == velFlagValid || word == velFlagSubtreeValid) {
        return; // the flags contain the mark already
    }
    velInvalidate(handle, node);
}

void setValue(velHandle *handle, velNode *node, std::string_view value, bool invalidate)
{
    char *text = newText(handle, value);
    char *oldText = node->value.text;
    const std::size_t oldLength = node->value.length;
    node->value.text = text;
    node->value.length = static_cast<std::uint32_t>(value.size());
    if (invalidate && (node->flags & velFlagValid) != 0) {
        velInvalidate(handle, node);
    }
    velReport(handle, node, velValueChanged, text, oldText);
    if (oldText != nullptr) {
        velRelease(handle, oldText, oldLength + 1);
    }
}

bool hasValue(const velNode *node, std::string_view value)
{
    return node->value.text != nullptr &&
           std::string_view(node->value.text, node->value.length) == value;
}

velNode *makeNode(velHandle *handle, velNode *parent, const velStatement &statement)
{
    const velComponent component = statement.component;
    const std::size_t length = childPathLength(handle, parent, component.type, component.name);
    if (length == 0 || statement.value.size() >= UINT32_MAX) {
        return nullptr;
    }
    velNode *node = allocateNode(handle, parent, component.type, component.name);
    if (node->isParam()) {
        node->value.text = newText(handle, statement.value);
        node->value.length = static_cast<std::uint32_t>(statement.value.size());
        handle->table.enterLater(node);
    } else {
        node->pathLength = static_cast<std::uint32_t>(length) & 0xFFFFFFFU;
        handle->table.enter(node);
    }
    appendChild(parent, node);
    velSetFlags(handle, node, statement.flags);
    if (node->isParam()) {
        velReport(handle, node, velValueChanged, node->value.text, nullptr);
    } else {
        velReport(handle, node, velObjectCreated, nullptr, nullptr);
    }
    return node;
}

/// The parent and the last component of a path that is to be created.
struct NewPlace
{
    std::string parentPath;
    std::string component;
};

std::optional<NewPlace> newPlace(velHandle *handle, const char *path)
{
    const std::string full =
        velNormalForm(velAbsolutePath(getCurrentPath(handle), path), velLastComponent::Keep);
    if (full.find('/') == std::string::npos) {
        return std::nullopt;
    }
    return NewPlace{velPathOfParent(full), velLastOfPath(full)};
}

/// Restores the current path, whatever was pushed meanwhile.
class StackGuard
{
public:
    explicit StackGuard(velHandle *handle)
        : handle_(handle), depth_(std::max<std::size_t>(handle->stack.size(), 1))
    {
    }
    ~StackGuard()
    {
        while (handle_->stack.size() > depth_) {
            velPop(handle_);
        }
    }
    StackGuard(const StackGuard &) = delete;
    StackGuard &operator=(const StackGuard &) = delete;

private:
    velHandle *handle_;
    std::size_t depth_;
};

/// Makes a node below `parentPath`, which exists or is "/".
bool createBelow(velHandle *handle, const std::string &parentPath, const velStatement &statement)
{
    velMakeRoot(handle);
    const StackGuard guard(handle);
    velPushNode(handle, handle->table.find(parentPath));
    return velUpdateObject(handle, statement) != nullptr;
}

} // namespace

// --- Questions ------------------------------------------------------------------

const char *velKindWord(velKind kind)
{
    return kindWords[kind];
}

int havePath(velHandle *handle, const char *path)
{
    return velFindNode(handle, path) != nullptr ? 1 : 0;
}

int isObject(velHandle *handle, const char *path)
{
    const velNode *node = velFindNode(handle, path);
    return node != nullptr && !node->isParam() ? 1 : 0;
}

velKind velKindOf(velHandle *handle, const char *path)
{
    const velNode *node = velFindNode(handle, path);
    return node == nullptr ? velNone : node->kind();
}

const velNode *velFirstChild(const velNode *node)
{
    return node->firstChild();
}

const velNode *velNextSibling(const velNode *node)
{
    return node->next;
}

std::uint32_t velChildCount(const velNode *node)
{
    return node->childCount;
}

velNodeInfo velDescribe(const velHandle *handle, const velNode *node)
{
    return {node->kind(), node->isParam() ? "String" : handle->words.text(node->type),
            node->name == velWords::none ? nullptr : handle->words.text(node->name),
            node->isParam() ? node->value.text : nullptr, node->flags};
}

std::string velComponentOf(const velNodeInfo &info)
{
    const std::string_view name = info.name == nullptr ? "" : info.name;
    return info.kind == velParam ? std::string(name) : velJoinComponent(info.type, name);
}

// --- Making ---------------------------------------------------------------------

void velMakeRoot(velHandle *handle)
{
    if (handle->root != nullptr) {
        return;
    }
    velNode *root = allocateNode(handle, nullptr, velWords::slash, velWords::none);
    handle->table.enter(root);
    handle->table.setRoot(root);
    handle->root = root;
}

velNode *velUpdateObject(velHandle *handle, const velStatement &statement)
{
    velMakeRoot(handle);
    velNode *parent = velCurrentNode(handle);
    if (parent == nullptr || parent->isParam()) {
        return nullptr;
    }
    const velComponent component = statement.component;
    const bool isParam = component.type == velWords::none;
    const bool isSingleton = component.name == velWords::none;
    // A single word may name a Singleton or a parameter: both have the same path.
    velNode *node = findBelow(
        handle, parent, isSingleton ? velComponent{velWords::none, component.type} : component);
    if (node == nullptr) {
        node = makeNode(handle, parent, statement);
        if (node == nullptr) {
            return nullptr;
        }
    } else if (node->isParam() != isParam) {
        return nullptr;
    } else if (node->isParam() && !hasValue(node, statement.value)) {
        if (statement.value.size() >= UINT32_MAX) {
            return nullptr;
        }
        setValue(handle, node, statement.value, false);
    }
    if (!node->isParam()) {
        velPushNode(handle, node);
    }
    applyFlags(handle, node, statement.flags);
    return node;
}

const char *velCreateObject(velHandle *handle, const char *path, bool isLibrary)
try {
    const velOperation operation(handle);
    const auto place = newPlace(handle, path);
    if (!place.has_value()) {
        return "velCreateObject: error finding parent object";
    }
    if (place->parentPath != "/" && handle->table.find(place->parentPath) == nullptr) {
        return "velCreateObject: parent object does not exist";
    }
    const auto [type, name, hasColon] = velSplitComponent(place->component);
    if (hasColon && type == name) {
        return "velCreateObject: TYPE:TYPE form for singletons is not permitted";
    }
    if (const char *error = velCheckType(handle, type)) {
        return error;
    }
    if (!name.empty()) {
        if (const char *error = velCheckObjectName(handle, name)) {
            return error;
        }
    }
    const velComponent words{handle->words.intern(type),
                             name.empty() ? velWords::none : handle->words.intern(name)};
    const std::uint32_t flags = isLibrary ? velFlagLibrary : 0;
    if (!createBelow(handle, place->parentPath, {words, {}, flags})) {
        return "velCreateObject: unable to create object";
    }
    return velTakeInterrupt(handle);
} catch (const std::bad_alloc &) {
    return "velCreateObject: unable to create object";
}

const char *velCreateParam(velHandle *handle, const char *path, const char *value)
try {
    const velOperation operation(handle);
    const auto place = newPlace(handle, path);
    if (!place.has_value() ||
        (place->parentPath != "/" && handle->table.find(place->parentPath) == nullptr)) {
        return "velCreateParam: parent object does not exist";
    }
    if (const char *error = velCheckParamName(handle, place->component)) {
        return error;
    }
    const std::string_view text = value == nullptr ? "" : value;
    if (const char *error = velCheckValue(handle, text)) {
        return error;
    }
    const velComponent words{velWords::none, handle->words.intern(place->component)};
    if (!createBelow(handle, place->parentPath, {words, text, 0})) {
        return "velCreateParam: unable to create param";
    }
    return velTakeInterrupt(handle);
} catch (const std::bad_alloc &) {
    return "velCreateParam: unable to create param";
}

const char *setStringValue(velHandle *handle, const char *path, const char *value)
try {
    const velOperation operation(handle);
    if (path == nullptr) {
        return "setStringValue: error deriving full pathname";
    }
    velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "setStringValue: requested object does not exist";
    }
    if (!node->isParam()) {
        return "setStringValue: requested object is not a parameter";
    }
    const std::string_view text = value == nullptr ? "" : value;
    if (hasValue(node, text)) {
        return nullptr;
    }
    if (text.size() >= UINT32_MAX) {
        return "setStringValue: error allocating new string";
    }
    setValue(handle, node, text, true);
    return velTakeInterrupt(handle);
} catch (const std::bad_alloc &) {
    return "setStringValue: error allocating new string";
}
