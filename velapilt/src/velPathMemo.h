// Remembers nodes that were found by their paths, under a quick hash of the path.
//
// It is a cache in front of the path table: it may forget any node, and the caller
// checks every answer against the node itself. Nodes are in sets of one cache line;
// a full set loses an entry. For the check the memo keeps the path texts of some
// parents, a few bytes per node: one comparison then replaces the climb to the root.
#pragma once

#include "velapilt/src/velArray.h"
#include "velapilt/src/velNode_p.h"

#include <cstdint>
#include <string_view>
#include <vector>

class velPathMemo
{
public:
    /// The quick hash of a path text, which is not the hash of the path table.
    [[nodiscard]] static std::uint64_t hash(std::string_view path);

    /// The node that is remembered under `hash` and for which `isIt` is true, or null.
    template <typename IsIt>
    [[nodiscard]] velNode *find(std::uint64_t hash, IsIt isIt) const
    {
        if (sets_.empty()) {
            return nullptr;
        }
        const Set &set = sets_[hash & (sets_.size() - 1)];
        const std::uint16_t tag = tagOf(hash);
        for (unsigned i = 0; i < ways; ++i) {
            if (set.tags[i] == tag && set.nodes[i] != nullptr && isIt(set.nodes[i])) {
                return set.nodes[i];
            }
        }
        return nullptr;
    }

    /// Remembers a node of a table that has `entries`. Without memory it does not.
    void remember(std::uint64_t hash, velNode *node, std::int64_t entries);
    /// Removes a node, as a result and as a parent; `hash` is that of its path.
    void forget(std::uint64_t hash, const velNode *node);
    /// Forgets everything.
    void clear();
    [[nodiscard]] bool isEmpty() const { return sets_.empty(); }

    /// The path that is noted for a parent; empty if there is none.
    [[nodiscard]] std::string_view notedPath(const velNode *parent) const
    {
        const std::uint32_t note = parent->pathNote;
        return note < notes_.size() && notes_[note].node == parent ? notes_[note].path
                                                                   : std::string_view();
    }
    /// Notes the path of a parent, if there is space for it.
    void note(velNode *parent, std::string_view path, std::int64_t entries);

private:
    static constexpr unsigned ways = 6;
    struct alignas(64) Set
    {
        std::uint16_t tags[ways];
        std::uint16_t last;   // the entry that was written last
        velNode *nodes[ways]; // not owned
    };
    static_assert(sizeof(Set) == 64);

    [[nodiscard]] static std::uint16_t tagOf(std::uint64_t hash)
    {
        return static_cast<std::uint16_t>(hash >> 48);
    }

    struct Note
    {
        const velNode *node;   // not owned; null once it is removed
        std::string_view path; // in texts_
    };

    std::vector<Set> sets_; // a power of two
    std::vector<Note> notes_;
    velTextBlocks texts_;
    std::int64_t textBytes_ = 0;
};
