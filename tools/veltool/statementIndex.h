// Which line of a text made what stands in the database.
#pragma once

#include "tools/veltool/statement.h"
#include "velapilt/src/velapilt.h"

#include <unordered_map>

namespace veltool {

/// The last statement that states each node: of a parameter its assignment,
/// of an object its header. It rests on a handle that holds the parsed text
/// and must not change meanwhile.
class StatementIndex
{
public:
    StatementIndex(const SourceText &source, velHandle *handle);

    /// Null for a node that no line of the text states.
    [[nodiscard]] const LineRange *find(const velNode *node) const;

    /// The number of the first of those lines, counted from 1; 0 for none.
    [[nodiscard]] std::size_t lineOf(const velNode *node) const;

private:
    std::unordered_map<const velNode *, LineRange> lines_;
};

} // namespace veltool
