// The steps of an undo history as plain values, as they are kept between two sessions.
#pragma once

#include "veleditor/src/Edit.h"

#include <QString>

#include <vector>

namespace velEditor {

struct UndoStep
{
    QString name;                 ///< of a group; empty where it follows from the edit
    std::vector<Edit> edits = {}; ///< complete, in the order in which they were made

    bool operator==(const UndoStep &) const = default;
};

/// The steps on both sides of a state, the nearest ones first.
struct UndoSteps
{
    std::vector<UndoStep> done = {};   ///< that lead to the state; undo begins with the first
    std::vector<UndoStep> undone = {}; ///< that lead away from it; redo begins with the first

    [[nodiscard]] bool isEmpty() const { return done.empty() && undone.empty(); }

    bool operator==(const UndoSteps &) const = default;
};

} // namespace velEditor
