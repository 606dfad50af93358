// Takes over what another program has written to the file of a document: instead of
// the data, or merged into it. Either is one step that can be undone.
//
// Afterwards the document knows the new version of the file (Document::knownVersion),
// and is modified if its data differs from that.
#pragma once

#include "veleditor/src/CommandData.h"
#include "veltext/dataMerge.h"

#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace velEditor {

class Document;
class FileVersion;
class UndoHistory;

/// The data becomes that of the file. Returns why the file is refused, with the line,
/// and then changes nothing.
[[nodiscard]] Message reload(Document &document, UndoHistory &history);

/// A three-way merge by path: the base is the version that the document knows.
class FileMerge
{
public:
    /// Compares the three. Throws veltext::Error if the file is refused; the message
    /// names the line. The data must not change until `apply`.
    explicit FileMerge(const Document &document);

    /// What both the user and the other program have changed.
    [[nodiscard]] const std::vector<veltext::DataMergeStep> &conflicts() const
    {
        return conflicts_;
    }

    /// Makes the changes of the other program, and its side of those conflicts for
    /// which `takesTheirs` is true. Returns the message of a change that failed; undo
    /// reverts those before it.
    [[nodiscard]] Message apply(Document &document, UndoHistory &history,
                                const std::vector<bool> &takesTheirs) const;

private:
    std::shared_ptr<FileVersion> theirs_;
    std::vector<veltext::DataMergeStep> steps_;
    std::vector<veltext::DataMergeStep> conflicts_; ///< those of the steps
};

} // namespace velEditor
