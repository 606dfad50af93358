// All places of a text that state given nodes.
//
// A parameter may be assigned more than once, and several blocks may open the
// same object. To remove one from a text, all its places must be known.
#pragma once

#include "velapilt/src/velapilt.h"
#include "veltext/statementTree.h"

#include <unordered_map>
#include <vector>

namespace veltext {

/// One assignment, or one block from its header to its END.
struct Place
{
    LineRange lines;
    std::size_t bodyLine = 0; ///< the first line after the header

    /// The line after the last one.
    [[nodiscard]] std::size_t endLine() const { return lines.first + lines.count; }
};

/// The places of the wanted nodes in one text.
class StatementPlaces
{
public:
    /// `handle` has the data of the text and must not change during the call.
    /// Null nodes in `wanted` are ignored.
    StatementPlaces(const SourceText &source, velHandle *handle,
                    const std::vector<const velNode *> &wanted);

    /// In the order of the text; empty if no line states the node, or it was not wanted.
    [[nodiscard]] const std::vector<Place> &of(const velNode *node) const;

private:
    std::unordered_map<const velNode *, std::vector<Place>> places_;
};

} // namespace veltext
