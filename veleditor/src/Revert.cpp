// Applies the edits that revert differences.
#include "veleditor/src/Revert.h"

#include "veleditor/src/BaseDifferences.h"
#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/Edit.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UndoHistory.h"

#include <QCoreApplication>

#include <utility>

namespace velEditor {

namespace {

/// The item of a difference as its row shows it.
QString labelOf(const veltext::Change &difference)
{
    const std::string component = lastComponent(difference.path);
    const bool isParameter = difference.oldValue || difference.newValue;
    return fromBytes(isParameter ? component : velEditor::labelOf(component));
}

QString nameOf(const std::vector<veltext::Change> &chosen)
{
    if (chosen.size() == 1) {
        return QCoreApplication::translate("velEditor::Revert", "Revert %1")
            .arg(labelOf(chosen.front()));
    }
    return QCoreApplication::translate("velEditor::Revert", "Revert %1 changes").arg(chosen.size());
}

Message revertOne(Document &document, const BaseDifferences &differences,
                  const veltext::Change &difference)
{
    for (Edit &edit : differences.reverting(difference)) {
        if (Message failure = document.apply(std::move(edit))) {
            return failure;
        }
    }
    return std::nullopt;
}

Message revertInStep(Document &document, UndoHistory &history, const BaseDifferences &differences,
                     const std::vector<veltext::Change> &chosen, const QString &name)
{
    Message failure;
    {
        const UndoGroup group(history, name);
        for (const veltext::Change &difference : chosen) {
            if (!failure) {
                failure = revertOne(document, differences, difference);
            }
        }
    }
    static_cast<void>(document.validate());
    return failure;
}

} // namespace

Message revert(Document &document, UndoHistory &history, const BaseDifferences &differences,
               const std::vector<veltext::Change> &chosen)
{
    return revertInStep(document, history, differences, chosen, nameOf(chosen));
}

Message revertAll(Document &document, UndoHistory &history, const BaseDifferences &differences,
                  const QString &name)
{
    return revertInStep(document, history, differences, differences.all(), name);
}

} // namespace velEditor
