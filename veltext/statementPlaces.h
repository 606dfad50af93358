// All places of a text that state certain nodes.
//
// A parameter may be assigned more than once and an object opened by several
// blocks; who takes one out of a text must know them all.
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
    std::size_t bodyLine = 0; ///< the first line behind the header

    /// The line after the last one.
    [[nodiscard]] std::size_t endLine() const { return lines.first + lines.count; }
};

/// It rests on a handle that holds the parsed text and must not change
/// while it is made.
class StatementPlaces
{
public:
    /// Looks for these nodes only; null ones are passed over.
    StatementPlaces(const SourceText &source, velHandle *handle,
                    const std::vector<const velNode *> &wanted);

    /// In the order of the text; empty for what no line states.
    [[nodiscard]] const std::vector<Place> &of(const velNode *node) const;

private:
    std::unordered_map<const velNode *, std::vector<Place>> places_;
};

} // namespace veltext
