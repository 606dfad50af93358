// The table that finds every node of a handle by its full path.
//
// The hash function, the bucket counts and the growth are those of velHash.h. Keys are not
// stored: the key of a node is its path, which consists of the words of its parents and its
// own words, and its hash continues that of its parent. The nodes themselves contain the
// links of the chains.
//
// Three methods make the table fast. They do not change its results:
// - A Parameter that is made during a load waits in a short list and is hashed together with
//   others, because several hashes at the same time are faster than one after the other.
//   Every search first enters the waiting Parameters.
// - In a parent with few children, a child is found by comparing all of them, because they
//   are next to each other in memory.
// - A node that was found by its path is remembered under a quick hash of the path, so that
//   the next search need not walk down from the root (velPathMemo.h). The search for a longer
//   path starts where the last such search ended, because callers often look up the
//   parameters and neighbours of a deep block next.
//
// If a node is unlinked while it has children, its descendants stay in the table
// ("detached"). From then on all paths are compared as texts, because a new node may have
// the path of a detached one.
#pragma once

#include "velapilt/src/velHash.h"
#include "velapilt/src/velNode_p.h"
#include "velapilt/src/velPathMemo.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The words of one component of a path: "TYPE:Name", or a single word. A single word is in
/// `name`, even if it is the type of a Singleton.
struct velComponent
{
    std::uint32_t type;
    std::uint32_t name;
};

/// The table, and the list of Parameters that wait to be hashed. It owns no node.
class velPathTable
{
public:
    /// `words` has the texts of the nodes' words; it must outlive the table.
    explicit velPathTable(const velWords &words);

    // --- Entering and removing; each may throw bad_alloc before it changes
    // anything.

    /// Enters an Object or Singleton, whose path hash and length are set.
    void enter(velNode *node);
    /// Enters a Parameter, now or together with the next ones.
    void enterLater(velNode *node);
    /// Removes a node that is in the table.
    void remove(velNode *node);
    /// Removes all nodes and the root.
    void clear() noexcept;
    /// Grows in advance, for `expected` more entries.
    void presize(std::int64_t expected);

    /// From now on there are entries whose parents are not in the tree;
    /// `node`, the topmost of them, keeps its children.
    void detach(velNode *node);
    [[nodiscard]] bool hasDetached() const { return !detached_.empty(); }

    // --- Finding; null if there is no such node

    /// The node with an absolute path in normal form.
    [[nodiscard]] velNode *find(std::string_view path);
    /// The child of a node that is in the table.
    [[nodiscard]] velNode *findChild(velNode *parent, velComponent component);

    /// Sets the node from which `find` starts; it must be in the table.
    void setRoot(velNode *root) { root_ = root; }

    [[nodiscard]] std::int32_t buckets() const { return function_.buckets(); }
    /// The number of nodes in the table, including those that wait.
    [[nodiscard]] std::int64_t entries() const
    {
        return entries_ + static_cast<std::int64_t>(pendingCount_);
    }

    /// Whether this is the node's path.
    [[nodiscard]] bool hasPath(const velNode *node, std::string_view path) const;
    /// The path of a node as text.
    void appendPath(const velNode *node, std::string &path) const;

private:
    static constexpr std::size_t batch = 64; // Parameters that are hashed together

    void flush();
    void hashPending(velHashFunction::Lane *lanes);
    void forget(const velNode *node);
    void link(velNode *node, std::uint32_t bucket) noexcept;
    void growIfFull();
    void resize(std::int64_t requestedSize);
    void rehashBelow(velNode *top, std::vector<velNode *> &buckets, velHashFunction &function);

    [[nodiscard]] std::uint32_t childHash(velHashFunction &function, const velNode *parent,
                                          std::uint32_t type, std::uint32_t name) const;
    [[nodiscard]] std::uint32_t hashOf(velHashFunction &function, const velNode *node) const;

    [[nodiscard]] velComponent componentOf(std::string_view text) const;
    [[nodiscard]] velNode *findByText(std::string_view path);
    [[nodiscard]] velNode *walkDown(velNode *from, std::string_view path);
    [[nodiscard]] velNode *findLong(std::string_view path);
    [[nodiscard]] velNode *nearestAbove(std::string_view path) const;
    void rememberLong(velNode *node, std::string_view path);

    const velWords &words_;
    velHashFunction function_;
    std::vector<velNode *> buckets_;
    std::int64_t entries_ = 0;
    std::array<velNode *, batch> pending_; // the first pendingCount_ of them
    std::size_t pendingCount_ = 0;
    std::vector<velNode *> detached_;
    velPathMemo memo_;
    velNode *root_ = nullptr;     // not owned
    velNode *longNode_ = nullptr; // the block that a long path led to last; not owned
    std::string longPath_;        // its path
};
