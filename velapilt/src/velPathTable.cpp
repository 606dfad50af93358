// Adds nodes to the path table, removes them, and finds them.
#include "velapilt/src/velPathTable.h"

#include "velapilt/src/velBytes.h"
#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velWalk_p.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t fewChildren = 24; // up to this number, children are visited one by one
constexpr std::size_t longestRemembered = 4096; // the length of a path

/// A path that is compared from its end.
class PathEnd
{
public:
    explicit PathEnd(std::string_view path) : start_(path.data()), left_(path.size()) {}

    /// Removes a word and the character before it from the end; false if they are
    /// not there.
    bool take(char before, std::string_view word)
    {
        if (left_ <= word.size() || start_[left_ - word.size() - 1] != before) {
            return false;
        }
        left_ -= word.size() + 1;
        return velSameBytes(start_ + left_ + 1, word.data(), word.size());
    }

    [[nodiscard]] std::string_view rest() const { return {start_, left_}; }

private:
    const char *start_;
    std::size_t left_;
};

} // namespace

velPathTable::velPathTable(const velWords &words)
    : words_(words), function_(velChooseBucketCount(1)),
      buckets_(static_cast<std::size_t>(function_.buckets()))
{
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

void velPathTable::clear() noexcept
{
    std::fill(buckets_.begin(), buckets_.end(), nullptr);
    entries_ = 0;
    pendingCount_ = 0;
    detached_.clear();
    memo_.clear();
    root_ = nullptr;
    longNode_ = nullptr;
    longPath_.clear();
}

void velPathTable::enter(velNode *node)
{
    growIfFull(); // only entered nodes count; pending ones make the table grow later
    node->pathHash = hashOf(function_, node);
    link(node, node->pathHash);
}

void velPathTable::enterLater(velNode *node)
{
    const std::size_t above = node->parent->isRoot() ? 0 : node->parent->pathLength;
    function_.prepare(above + 1 + words_.view(node->name).size());
    node->isPending = 1;
    pending_[pendingCount_++] = node;
    if (pendingCount_ == batch) {
        flush();
    }
}

void velPathTable::flush()
{
    if (pendingCount_ == 0) {
        return;
    }
    if (velTableIsFull(entries() - 1, buckets())) {
        for (std::size_t i = 0; i < pendingCount_; ++i) {
            growIfFull(); // the table must grow at exactly this entry
            link(pending_[i], hashOf(function_, pending_[i]));
        }
        pendingCount_ = 0;
        return;
    }
    std::array<velHashFunction::Lane, batch> lanes;
    hashPending(lanes.data());
    for (std::size_t i = 0; i < pendingCount_; ++i) {
        link(pending_[i], lanes[i].state);
    }
    pendingCount_ = 0;
}

/// Hashes the pending parameters; each lane receives the state of one of them.
/// Names of the same length are hashed together, four at a time.
void velPathTable::hashPending(velHashFunction::Lane *lanes)
{
    constexpr std::size_t lengths = 32; // all longer names are treated alike
    std::array<std::uint8_t, lengths + 1> starts{};
    const velNode *parent = nullptr;
    std::uint32_t state = 0;
    std::uint32_t position = 0;
    for (std::size_t i = 0; i < pendingCount_; ++i) {
        const velNode *node = pending_[i];
        if (node->parent != parent) {
            parent = node->parent;
            position = parent->isRoot() ? 0 : parent->pathLength;
            state = function_.extend(parent->isRoot() ? 0 : parent->pathHash, position++, "/");
        }
        lanes[i] = {state, position, words_.view(node->name)};
        ++starts[std::min(lanes[i].text.size(), lengths - 1) + 1];
    }
    for (std::size_t length = 1; length <= lengths; ++length) {
        starts[length] = static_cast<std::uint8_t>(starts[length] + starts[length - 1]);
    }
    std::array<velHashFunction::Lane *, batch> ordered;
    for (std::size_t i = 0; i < pendingCount_; ++i) {
        ordered[starts[std::min(lanes[i].text.size(), lengths - 1)]++] = &lanes[i];
    }
    std::size_t i = 0;
    for (; i + 4 <= pendingCount_; i += 4) {
        function_.extendFour(&ordered[i]);
    }
    for (; i < pendingCount_; ++i) {
        function_.extendOne(*ordered[i]);
    }
}

void velPathTable::forget(const velNode *node)
{
    if (memo_.isEmpty() || (!node->isParam() && node->pathLength > longestRemembered)) {
        return;
    }
    std::string path;
    appendPath(node, path);
    memo_.forget(velPathMemo::hash(path), node);
}

void velPathTable::remove(velNode *node)
{
    flush();
    forget(node);
    if (node == longNode_) {
        longNode_ = node->parent->isRoot() ? nullptr : node->parent;
        longPath_.resize(longNode_ == nullptr ? 0 : longNode_->pathLength);
    }
    velNode **place = &buckets_[hashOf(function_, node)];
    while (*place != node) {
        place = &(*place)->bucketNext;
    }
    *place = node->bucketNext;
    node->inTable = 0;
    --entries_;
}

void velPathTable::detach(velNode *node)
{
    detached_.push_back(node);
    memo_.clear();
    longNode_ = nullptr; // it may be below `node`
}

/// Visits parents first, so that each child continues a hash that the new
/// function has computed.
void velPathTable::rehashBelow(velNode *top, std::vector<velNode *> &buckets,
                               velHashFunction &function)
{
    velVisitBelow(top, [this, &buckets, &function](velNode *node) {
        if (node->inTable == 0) {
            return true;
        }
        const std::uint32_t hash = hashOf(function, node);
        if (!node->isParam()) {
            node->pathHash = hash;
        }
        node->bucketNext = buckets[hash];
        buckets[hash] = node;
        ++entries_;
        return true;
    });
}

void velPathTable::resize(std::int64_t requestedSize)
try {
    velHashFunction function(velChooseBucketCount(requestedSize));
    function.prepare(function_.prepared());
    std::vector<velNode *> buckets(static_cast<std::size_t>(function.buckets()));
    std::vector<std::uint32_t> detachedHashes;
    detachedHashes.reserve(detached_.size());
    for (const velNode *top : detached_) {
        std::string path;
        appendPath(top, path);
        detachedHashes.push_back(function.hash(path));
    }

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
    for (std::size_t i = 0; i < detached_.size(); ++i) {
        detached_[i]->pathHash = detachedHashes[i];
        rehashBelow(detached_[i], buckets, function);
    }
    velAssertAllMoved(before, entries_);
    function_ = std::move(function);
    buckets_.swap(buckets);
} catch (const std::bad_alloc &) {
    return; // the old table stays in use
}

// --- Finding --------------------------------------------------------------------

velComponent velPathTable::componentOf(std::string_view text) const
{
    const velComponentParts parts = velSplitComponent(text);
    if (!parts.hasColon) {
        return {velWords::none, words_.find(text)};
    }
    const std::uint32_t type = words_.find(parts.type);
    const std::uint32_t name = words_.find(parts.name);
    if (type == velWords::none || name == velWords::none) {
        return {velWords::none, velWords::none};
    }
    return {type, name};
}

velNode *velPathTable::findChild(velNode *parent, velComponent component)
{
    if (component.name == velWords::none || parent->isParam() ||
        !parent->mayHaveChild(component.name)) {
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
    if (path.size() > longestRemembered) {
        return findLong(path);
    }
    const std::uint64_t hash = velPathMemo::hash(path);
    const auto isIt = [this, path](const velNode *node) { return hasPath(node, path); };
    if (velNode *known = memo_.find(hash, isIt); known != nullptr) {
        return known;
    }
    velNode *node = walkDown(root_, path);
    if (node != nullptr) {
        memo_.remember(hash, node, entries());
        if (!node->parent->isRoot()) {
            memo_.note(node->parent, path.substr(0, path.rfind('/')), entries());
        }
    }
    return node;
}

velNode *velPathTable::walkDown(velNode *from, std::string_view path)
{
    velNode *node = from;
    while (node != nullptr && !path.empty()) {
        path.remove_prefix(1); // the '/' before the component
        const std::size_t end = std::min(path.find('/'), path.size());
        node = findChild(node, componentOf(path.substr(0, end)));
        path.remove_prefix(end);
    }
    return node;
}

velNode *velPathTable::findLong(std::string_view path)
{
    velNode *above = nearestAbove(path);
    velNode *node = walkDown(above, path.substr(above->isRoot() ? 0 : above->pathLength));
    if (node != nullptr) {
        rememberLong(node->isParam() ? node->parent : node, path);
    }
    return node;
}

/// The object of the last long path if `path` leads through it, otherwise the
/// nearest object above it through which `path` leads.
velNode *velPathTable::nearestAbove(std::string_view path) const
{
    if (longNode_ == nullptr) {
        return root_;
    }
    std::size_t common = longPath_.size();
    if (!path.starts_with(longPath_)) {
        const auto end =
            std::mismatch(path.begin(), path.end(), longPath_.begin(), longPath_.end());
        common = static_cast<std::size_t>(end.first - path.begin());
    }
    const auto leadsThrough = [path, common](const velNode *node) {
        const std::size_t length = node->pathLength;
        return length <= common && (length == path.size() || path[length] == '/');
    };
    velNode *node = longNode_;
    while (!node->isRoot() && !leadsThrough(node)) {
        node = node->parent;
    }
    return node;
}

void velPathTable::rememberLong(velNode *node, std::string_view path)
try {
    if (node == longNode_) {
        return;
    }
    longNode_ = nullptr;
    longPath_ = path.substr(0, node->isRoot() ? 0 : node->pathLength);
    longNode_ = node;
} catch (const std::bad_alloc &) {
    return; // the search for the next long path starts at the root
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
    PathEnd end(path);
    for (; !node->isRoot(); node = node->parent) {
        const bool isObject = node->type != velWords::none && node->name != velWords::none;
        if (isObject && !end.take(':', words_.view(node->name))) {
            return false;
        }
        const std::uint32_t first = node->type != velWords::none ? node->type : node->name;
        if (!end.take('/', words_.view(first))) {
            return false;
        }
        if (const std::string_view noted = memo_.notedPath(node->parent); !noted.empty()) {
            return noted == end.rest();
        }
    }
    return end.rest().empty();
}

void velPathTable::appendPath(const velNode *node, std::string &path) const
{
    if (node->isRoot()) {
        path += '/';
        return;
    }
    // Written from its end, because the parents are found one by one.
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
