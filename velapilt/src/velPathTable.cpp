#include "velapilt/src/velPathTable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t batch = 64;           // Parameters that are hashed together
constexpr std::uint32_t fewChildren = 24;   // up to here children are walked
constexpr std::size_t longestFolder = 4096; // longer paths are not remembered

/// A quick hash of a whole path, eight bytes a step.
std::uint64_t quickHash(std::string_view text)
{
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
    std::uint64_t hash = text.size() * factor;
    const char *next = text.data();
    std::size_t left = text.size();
    for (; left >= 8; left -= 8, next += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, next, 8);
        hash = (hash ^ word) * factor;
        hash ^= hash >> 29;
    }
    std::uint64_t tail = 0;
    if (text.size() >= 8) { // the last eight bytes, some of them again
        std::memcpy(&tail, text.data() + text.size() - 8, 8);
    } else {
        std::memcpy(&tail, next, left);
    }
    hash = (hash ^ tail) * factor;
    return hash ^ hash >> 32;
}

/// Takes `part` off the end of `text`; false if it does not stand there.
bool takeEnd(std::string_view &text, std::string_view part)
{
    if (!text.ends_with(part)) {
        return false;
    }
    text.remove_suffix(part.size());
    return true;
}

} // namespace

velPathTable::velPathTable(const velWords &words)
    : words_(words), function_(velChooseBucketCount(1)),
      buckets_(static_cast<std::size_t>(function_.buckets()))
{
    pending_.reserve(batch);
}

// --- Entering and removing ----------------------------------------------------

std::uint32_t velPathTable::childHash(velHashFunction &function, const velNode *parent,
                                      std::uint32_t type, std::uint32_t name) const
{
    std::uint32_t state = 0;
    std::size_t position = 0;
    if (!parent->isRoot()) {
        state = parent->pathHash;
        position = parent->pathLength;
    }
    state = function.extend(state, position++, "/");
    if (type != velWords::none) {
        const std::string_view word = words_.view(type);
        state = function.extend(state, position, word);
        position += word.size();
        if (name == velWords::none) {
            return state;
        }
        state = function.extend(state, position++, ":");
    }
    return function.extend(state, position, words_.view(name));
}

std::uint32_t velPathTable::hashOf(velHashFunction &function, const velNode *node) const
{
    return node->isRoot() ? function.hash("/")
                          : childHash(function, node->parent, node->type, node->name);
}

void velPathTable::link(velNode *node, std::uint32_t bucket) noexcept
{
    node->bucketNext = buckets_[bucket];
    buckets_[bucket] = node;
    node->inTable = 1;
    node->isPending = 0;
    ++entries_;
}

void velPathTable::growIfFull()
{
    if (velTableIsFull(entries_, buckets())) {
        resize(entries_ / 3 * 2);
    }
}

void velPathTable::presize(std::int64_t expected)
{
    flush();
    const std::int64_t coming = entries_ + expected;
    if (velTableIsFull(coming, buckets())) {
        resize(coming / 3 * 2);
    }
}

void velPathTable::enter(velNode *node)
{
    flush();
    growIfFull();
    node->pathHash = hashOf(function_, node);
    link(node, node->pathHash);
    ++folders_;
}

void velPathTable::enterLater(velNode *node)
{
    const std::size_t above = node->parent->isRoot() ? 0 : node->parent->pathLength;
    function_.prepare(above + 1 + words_.view(node->name).size());
    node->isPending = 1;
    pending_.push_back(node);
    if (pending_.size() == batch) {
        flush();
    }
}

void velPathTable::flush()
{
    if (pending_.empty()) {
        return;
    }
    if (velTableIsFull(entries_ + pendingCount() - 1, buckets())) {
        for (velNode *node : pending_) { // growth comes at its laid-down entry
            growIfFull();
            link(node, hashOf(function_, node));
        }
        pending_.clear();
        return;
    }
    std::array<std::uint32_t, batch> hashes;
    for (std::size_t i = 0; i < pending_.size(); ++i) {
        hashes[i] = hashOf(function_, pending_[i]);
    }
    for (std::size_t i = 0; i < pending_.size(); ++i) {
        link(pending_[i], hashes[i]);
    }
    pending_.clear();
}

void velPathTable::forget(const velNode *node)
{
    if (remembered_.empty() || node->isParam() || node->pathLength >= longestFolder) {
        return;
    }
    std::string path;
    appendPath(node, path);
    Remembered &place = remembered_[quickHash(path) & (remembered_.size() - 1)];
    if (place.node == node) {
        place = Remembered();
    }
}

void velPathTable::remove(velNode *node)
{
    flush();
    forget(node);
    velNode **place = &buckets_[hashOf(function_, node)];
    while (*place != node) {
        place = &(*place)->bucketNext;
    }
    *place = node->bucketNext;
    node->inTable = 0;
    --entries_;
    folders_ -= node->isParam() ? 0 : 1;
}

void velPathTable::detach(velNode *node)
{
    detached_.push_back(node);
    remembered_.clear();
}

/// The tree is walked without recursion, parents first, so that each child
/// continues a hash that is already of the new function.
void velPathTable::rehashBelow(velNode *top, std::vector<velNode *> &buckets,
                               velHashFunction &function)
{
    velNode *node = top;
    for (;;) {
        if (velNode *child = node->firstChild(); child != nullptr) {
            node = child;
        } else {
            while (node != top && node->next == nullptr) {
                node = node->parent;
            }
            if (node == top) {
                return;
            }
            node = node->next;
        }
        if (node->inTable == 0) {
            continue;
        }
        const std::uint32_t hash = hashOf(function, node);
        if (!node->isParam()) {
            node->pathHash = hash;
        }
        node->bucketNext = buckets[hash];
        buckets[hash] = node;
        ++entries_;
    }
}

void velPathTable::resize(std::int64_t requestedSize)
try {
    velHashFunction function(velChooseBucketCount(requestedSize));
    function.prepare(function_.prepared());
    std::vector<velNode *> buckets(static_cast<std::size_t>(function.buckets()));

    // Nothing below can fail.
    const std::int64_t before = entries_;
    entries_ = 0;
    if (root_ != nullptr && root_->inTable != 0) {
        root_->pathHash = function.hash("/");
        root_->bucketNext = buckets[root_->pathHash];
        buckets[root_->pathHash] = root_;
        ++entries_;
        rehashBelow(root_, buckets, function);
    }
    for (velNode *top : detached_) {
        std::string path;
        appendPath(top, path);
        top->pathHash = function.hash(path);
        rehashBelow(top, buckets, function);
    }
    assert(entries_ == before);
    static_cast<void>(before);
    function_ = std::move(function);
    buckets_.swap(buckets);
} catch (const std::bad_alloc &) {
    return; // the old table stays in use
}

// --- Finding --------------------------------------------------------------------

velComponent velPathTable::componentOf(std::string_view text) const
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return {velWords::none, words_.find(text)};
    }
    const std::uint32_t type = words_.find(text.substr(0, colon));
    const std::uint32_t name = words_.find(text.substr(colon + 1));
    if (type == velWords::none || name == velWords::none) {
        return {velWords::none, velWords::none};
    }
    return {type, name};
}

velNode *velPathTable::findChild(velNode *parent, velComponent component)
{
    if (component.name == velWords::none || parent->isParam()) {
        return nullptr;
    }
    if (parent->childCount <= fewChildren) {
        for (velNode *child = parent->children.first; child != nullptr; child = child->next) {
            if (child->hasComponent(component.type, component.name)) {
                return child;
            }
        }
        return nullptr;
    }
    flush();
    const std::uint32_t bucket = childHash(function_, parent, component.type, component.name);
    for (velNode *node = buckets_[bucket]; node != nullptr; node = node->bucketNext) {
        if (node->parent == parent && node->hasComponent(component.type, component.name)) {
            return node;
        }
    }
    return nullptr;
}

velNode *velPathTable::find(std::string_view path)
{
    if (root_ == nullptr || path.empty() || path.front() != '/') {
        return nullptr;
    }
    if (hasDetached()) {
        return findByText(path);
    }
    if (path.size() == 1) {
        return root_;
    }
    const std::size_t slash = path.rfind('/');
    velNode *folder = slash == 0 ? root_ : findFolder(path.substr(0, slash));
    return folder == nullptr ? nullptr : findChild(folder, componentOf(path.substr(slash + 1)));
}

velNode *velPathTable::findFolder(std::string_view path)
{
    if (path.size() >= longestFolder) {
        return walkDown(path);
    }
    if (remembered_.size() < static_cast<std::size_t>(folders_)) {
        remembered_.assign(std::bit_ceil(static_cast<std::size_t>(folders_) | 63), Remembered());
    }
    const std::uint64_t hash = quickHash(path);
    Remembered &place = remembered_[hash & (remembered_.size() - 1)];
    if (place.hash == hash && place.node != nullptr && hasPath(place.node, path)) {
        return place.node;
    }
    velNode *node = walkDown(path);
    if (node != nullptr && !node->isParam()) {
        place = {hash, node};
    }
    return node;
}

velNode *velPathTable::walkDown(std::string_view path)
{
    velNode *node = root_;
    while (node != nullptr && !path.empty()) {
        path.remove_prefix(1); // the '/' in front of the component
        const std::size_t end = std::min(path.find('/'), path.size());
        node = findChild(node, componentOf(path.substr(0, end)));
        path.remove_prefix(end);
    }
    return node;
}

velNode *velPathTable::findByText(std::string_view path)
{
    flush();
    if (path.size() > function_.prepared()) {
        return nullptr; // longer than every key
    }
    for (velNode *node = buckets_[function_.hash(path)]; node != nullptr; node = node->bucketNext) {
        if (hasPath(node, path)) {
            return node;
        }
    }
    return nullptr;
}

bool velPathTable::hasPath(const velNode *node, std::string_view path) const
{
    if (node->isRoot()) {
        return path == "/";
    }
    for (; !node->isRoot(); node = node->parent) {
        if (node->name != velWords::none && !takeEnd(path, words_.view(node->name))) {
            return false;
        }
        if (node->type != velWords::none) {
            if (node->name != velWords::none && !takeEnd(path, ":")) {
                return false;
            }
            if (!takeEnd(path, words_.view(node->type))) {
                return false;
            }
        }
        if (!takeEnd(path, "/")) {
            return false;
        }
    }
    return path.empty();
}

void velPathTable::appendPath(const velNode *node, std::string &path) const
{
    if (node->isRoot()) {
        path += '/';
        return;
    }
    // Written from its end, for the parents are only known one by one.
    const std::size_t start = path.size();
    std::size_t length = 0;
    const auto size = [this](std::uint32_t word) {
        return word == velWords::none ? 0 : words_.view(word).size();
    };
    for (const velNode *up = node; !up->isRoot(); up = up->parent) {
        const bool isObject = up->type != velWords::none && up->name != velWords::none;
        length += 1 + size(up->type) + (isObject ? 1 : 0) + size(up->name);
    }
    path.resize(start + length);
    char *end = path.data() + start + length;
    const auto put = [&end](std::string_view text) {
        end -= text.size();
        std::memcpy(end, text.data(), text.size());
    };
    for (; !node->isRoot(); node = node->parent) {
        if (node->name != velWords::none) {
            put(words_.view(node->name));
        }
        if (node->type != velWords::none) {
            if (node->name != velWords::none) {
                put(":");
            }
            put(words_.view(node->type));
        }
        put("/");
    }
}
