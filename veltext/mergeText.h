// OURS with the steps of a merge, as text.
//
// What no step is about stays as it is in OURS, byte for byte: remarks, blank
// lines, order, wrapping, line ends. A conflict becomes
//
//     <<<<<<< ours
//       Kind = Fluid
//     =======
//       Kind = Solid
//     >>>>>>> theirs
//
// with the lines of both sides as their authors wrote them. No parser of the
// language takes such a text, so that it cannot be used by mistake.
#pragma once

#include "veltext/mergePlan.h"
#include "veltext/sourceText.h"

#include <cstddef>
#include <string>
#include <vector>

namespace veltext {

/// The three versions as text; not owned.
struct MergeTexts
{
    const SourceText &base;
    const SourceText &ours;
    const SourceText &theirs;
};

/// Which side stands where there is a conflict.
enum class Resolution { Marked, Ours, Theirs };

/// The signs of a conflict marker, unless the user wants another number.
inline constexpr std::size_t usualMarkerSize = 7;

/// Where lines of OURS give way to others.
struct LineEdit
{
    std::size_t first; ///< line
    std::size_t count; ///< 0: the new lines stand before the first
    std::string ours;  ///< these lines, as they are
    std::string theirs;
    bool isConflict;
};

/// The text of OURS and the edits that a merge makes in it. The text must outlive
/// the object.
class MergedText
{
public:
    /// The trees hold the texts, and must not change while this is made.
    MergedText(const MergeTexts &texts, const MergeTrees &trees,
               const std::vector<MergeStep> &steps);

    /// The merged bytes; markers of `markerSize` signs stay where `resolution` is Marked.
    [[nodiscard]] std::string render(Resolution resolution,
                                     std::size_t markerSize = usualMarkerSize) const;

private:
    const SourceText &ours_;
    std::vector<LineEdit> edits_; ///< in the order of the lines
};

/// Both texts as one conflict.
[[nodiscard]] std::string wholeConflict(const SourceText &ours, const SourceText &theirs,
                                        std::size_t markerSize);

/// How many remarks of THEIRS stand neither in BASE nor in the result.
[[nodiscard]] std::size_t countLostRemarks(const SourceText &base, const SourceText &theirs,
                                           const SourceText &result);

} // namespace veltext
