// The text of a merge: OURS with the steps of the plan.
//
// Everything that no step changes stays byte for byte as in OURS: comments, blank
// lines, order, wrapping, line ends. A conflict becomes
//
//     <<<<<<< ours
//       Kind = Fluid
//     =======
//       Kind = Solid
//     >>>>>>> theirs
//
// with the lines of both sides as their authors wrote them. Every parser of the
// language refuses such a text, so that nobody uses it by mistake.
#pragma once

#include "veltext/mergePlan.h"
#include "veltext/sourceText.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltext {

/// The texts of the three versions; not owned.
struct MergeTexts
{
    const SourceText &base;
    const SourceText &ours;
    const SourceText &theirs;
};

/// Which side a conflict shows; Marked shows both between markers.
enum class Resolution { Marked, Ours, Theirs };

/// The length of a conflict marker, unless the user wants another length.
inline constexpr std::size_t usualMarkerSize = 7;

/// Lines of OURS that are replaced.
struct LineEdit
{
    std::size_t first;  ///< the first line
    std::size_t count;  ///< if 0, the new lines come before the first line
    std::string ours;   ///< the replaced lines
    std::string theirs; ///< the new lines
    bool isConflict;
};

/// The text of OURS and the edits of the merge. The text must outlive the object.
class MergedText
{
public:
    /// The trees have the data of the texts. They must not change during the call.
    MergedText(const MergeTexts &texts, const MergeTrees &trees,
               const std::vector<MergeStep> &steps);

    /// The merged bytes. With Resolution::Marked, conflicts are between markers of
    /// `markerSize` characters.
    [[nodiscard]] std::string render(Resolution resolution,
                                     std::size_t markerSize = usualMarkerSize) const;

private:
    const SourceText &ours_;
    std::vector<LineEdit> edits_; ///< in the order of the lines
};

/// Both texts as a single conflict.
[[nodiscard]] std::string wholeConflict(const SourceText &ours, const SourceText &theirs,
                                        std::size_t markerSize);

/// How many comments of THEIRS are neither in BASE nor in the result.
[[nodiscard]] std::size_t countLostComments(const SourceText &base, const SourceText &theirs,
                                            const SourceText &result);

} // namespace veltext
