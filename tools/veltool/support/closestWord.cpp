// Computes the edit distance between words. Two swapped neighbours are one edit.
#include "tools/veltool/support/closestWord.h"

#include "tools/veltool/support/caseFold.h"

#include <algorithm>
#include <vector>

namespace veltool {

namespace {

constexpr std::size_t lettersPerEdit = 3;

/// How many edits change one word into the other. Each row of the table has the
/// distances between a beginning of `a` and all beginnings of `b`.
std::size_t editDistance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        last[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::vector<std::size_t> row(b.size() + 1, i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast = std::move(last);
        last = std::move(row);
    }
    return last[b.size()];
}

} // namespace

std::string closestWord(std::string_view word, std::span<const std::string> known)
{
    const std::string folded = foldCase(word);
    std::string closest;
    std::size_t fewest = 0;
    for (const std::string &candidate : known) {
        const std::size_t edits = editDistance(folded, foldCase(candidate));
        const std::size_t allowed = std::max(folded.size(), candidate.size()) / lettersPerEdit;
        if (edits > allowed || (!closest.empty() && edits >= fewest)) {
            continue;
        }
        closest = candidate;
        fewest = edits;
    }
    return closest;
}

} // namespace veltool
