// What the main window has besides its menus. Each feature is a class of its own,
// follows the document, and belongs to the window.
#include "veleditor/src/Editor.h"

#include "veleditor/src/ChangesFeature.h"
#include "veleditor/src/HistoryFeature.h"
#include "veleditor/src/UndoKeeper.h"

namespace velEditor {

// An action that a feature adds to the window is listed in the strip's menu.
void Editor::addFeatures()
{
    new UndoKeeper(*document_, *history_, *notice_, this);
    new HistoryFeature(this, *document_, *history_, *notice_);
    new ChangesFeature(this, *document_, *history_, *tree_);
}

} // namespace velEditor
