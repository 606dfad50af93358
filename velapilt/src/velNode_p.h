// The node of the tree, only for the sources of the database.
#pragma once

#include "velapilt/src/velTypes.h"
#include "velapilt/src/velWords.h"

#include <cstdint>

/// One Object, Singleton or Parameter.
///
///        parent
///          ▲
///          │      next            next
///        node ──────────▶ node ──────────▶ …
///          │ first                  last ▲
///          └─▶ child ──▶ child ──▶ child ┘
///
/// A node does not contain its path, which consists of the parent's path and the node's own
/// words. The size of a node determines the memory of a large set-up. Texts come after
/// their nodes in the arena.
struct velNode
{
    velNode *parent;     ///< not owned; null for the root
    velNode *next;       ///< the sibling after it
    velNode *bucketNext; ///< the node after it in its bucket of the path table
    std::uint32_t type;  ///< word; `none` for a Parameter
    std::uint32_t name;  ///< word; `none` for a Singleton and the root
    union {
        struct
        {
            velNode *first; ///< owned through the arena, as all nodes
            velNode *last;
        } children; ///< of an Object or Singleton
        struct
        {
            char *text;           ///< owned, in the arena; null if there is no value
            std::uint32_t length; ///< of the text, without its NUL
        } value;                  ///< of a Parameter
    };
    std::uint32_t flags; ///< velFlag…, from the last line that stated it
    std::uint32_t childCount;
    std::uint32_t pathHash;        ///< hash state after its path; Objects and Singletons only
    std::uint32_t pathLength : 28; ///< of its full path; Objects and Singletons only
    std::uint32_t inTable : 1;     ///< the path table finds it
    std::uint32_t isPending : 1;   ///< in the tree, but not yet in the table
    std::uint32_t onStack : 1;     ///< an entry of the path stack points to it
    std::uint32_t childWords;      ///< at least the bits of all children's last words (wordBit)
    std::uint32_t pathNote;        ///< where the memo may have its path (velPathMemo.h)

    [[nodiscard]] bool isParam() const { return type == velWords::none; }
    [[nodiscard]] bool isRoot() const { return type == velWords::slash; }
    /// Null if there is none, and for a Parameter.
    [[nodiscard]] velNode *firstChild() const { return isParam() ? nullptr : children.first; }

    /// The bit that a word sets in its parent's `childWords`. If the bit is not set,
    /// no child has the word and no search is needed; most statements are new.
    [[nodiscard]] static std::uint32_t wordBit(std::uint32_t word)
    {
        return 1U << (word * 0x9E3779B1U >> 27);
    }

    /// False only if there is no child with this last word.
    [[nodiscard]] bool mayHaveChild(std::uint32_t word) const
    {
        return (childWords & wordBit(word)) != 0;
    }

    /// Never velNone.
    [[nodiscard]] velKind kind() const
    {
        if (isParam()) {
            return velParam;
        }
        return name == velWords::none && !isRoot() ? velSingleton : velObject;
    }

    /// Whether the last component of the node's path consists of these words. A Singleton
    /// and a Parameter with the same word have the same path.
    [[nodiscard]] bool hasComponent(std::uint32_t aType, std::uint32_t aName) const
    {
        if (aType != velWords::none && aName != velWords::none) {
            return type == aType && name == aName;
        }
        const std::uint32_t word = aType != velWords::none ? aType : aName;
        return (isParam() && name == word) || (type == word && name == velWords::none);
    }
};

static_assert(sizeof(velNode) <= 72);

/// Bytes of the longest path that a node may have.
inline constexpr std::size_t velLongestPath = (std::size_t{1} << 28) - 1;
