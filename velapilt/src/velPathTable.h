// The table that finds every node of a handle by its full path.
//
// Function, bucket counts and growth are those of velHash.h. Keys are not
// stored: a node's key is its path, which its parents and words spell out, and
// its hash continues that of its parent. Chains run through the nodes.
//
// Three things make it quick without changing what it answers:
// - A Parameter made during a load waits in a short list and is hashed with
//   others, since the hash of one text is a chain of dependent steps while
//   those of several overlap. Every question enters them first.
// - Below a parent with few children a child is found by walking them, which
//   lie side by side in memory.
// - What was found by its path text is remembered under a quick hash of it, so
//   that the next look-up need not walk down from the root (velPathMemo.h). The
//   walk for a longer path starts where the last such path led, because callers
//   look up the parameters and neighbours of a deep block next.
//
// A node that was unlinked while it had children leaves its descendants in the
// table ("detached"). From then on paths are compared as texts throughout, for
// a new node may be at a path whose old descendants still answer.
#pragma once

#include "velapilt/src/velHash.h"
#include "velapilt/src/velNode_p.h"
#include "velapilt/src/velPathMemo.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The words of one component of a path: "TYPE:Name" or a single word, which
/// is in `name` and may be a Singleton's type as well.
struct velComponent
{
    std::uint32_t type;
    std::uint32_t name;
};

/// The table, and the list of Parameters that wait to be hashed. It owns no node.
class velPathTable
{
public:
    /// `words` spells the nodes; it must outlive the table.
    explicit velPathTable(const velWords &words);

    // --- Entering and removing; each may throw bad_alloc before it changes
    // anything.

    /// Enters an Object or Singleton, whose path hash and length are set.
    void enter(velNode *node);
    /// Enters a Parameter, now or with the next ones.
    void enterLater(velNode *node);
    /// Takes a node that is in the table out of it.
    void remove(velNode *node);
    /// Takes every node and the root out of the table.
    void clear() noexcept;
    /// Makes room ahead of `expected` further entries.
    void presize(std::int64_t expected);

    /// From now on there are entries whose parents are not in the tree;
    /// `node`, the topmost of them, keeps its children.
    void detach(velNode *node);
    [[nodiscard]] bool hasDetached() const { return !detached_.empty(); }

    // --- Finding; null where there is nothing

    /// The node with an absolute path in normal form.
    [[nodiscard]] velNode *find(std::string_view path);
    /// The child of a node that is in the table.
    [[nodiscard]] velNode *findChild(velNode *parent, velComponent component);

    /// Says which node `find` starts from; it has been entered.
    void setRoot(velNode *root) { root_ = root; }

    [[nodiscard]] std::int32_t buckets() const { return function_.buckets(); }
    /// Nodes in the table, those that wait included.
    [[nodiscard]] std::int64_t entries() const
    {
        return entries_ + static_cast<std::int64_t>(pendingCount_);
    }

    /// Whether this is the node's path.
    [[nodiscard]] bool hasPath(const velNode *node, std::string_view path) const;
    /// The path of a node, written out.
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
