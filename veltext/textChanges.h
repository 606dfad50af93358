// The differences between a text and loaded data, and the order in the text.
//
// This header does not include the database, so that programs that reach the data in
// another way can use it, too.
#pragma once

#include "veltext/commandText.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace veltext {

/// The differences from a text to the data of a database, in the order of compareTrees
/// (treeDiff.h). What only the rule libraries state does not count as data.
[[nodiscard]] std::vector<Change> changesTo(velHandle *data, const CommandText &before);

/// Throws an Error, which names the text, if its data nests deeper than 10,000 levels:
/// what is compared grows with the square of the levels.
void requireComparable(const CommandText &text, const std::string &name);

/// Tells which item of a text comes directly before another one in the same object.
/// Fast if the questions about the same object follow each other.
class SiblingOrder
{
public:
    /// The text must outlive this object.
    explicit SiblingOrder(const CommandText &text) : text_(text) {}

    /// The component of the item before the one at this path of the text; empty for the
    /// first one.
    [[nodiscard]] const std::string &before(const std::string &path);

private:
    void readChildren();

    const CommandText &text_;
    std::string object_; ///< whose children are in `before_`; empty at first
    std::unordered_map<std::string, std::string> before_;
};

} // namespace veltext
