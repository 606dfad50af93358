// Counts how many changes lead from each version of a history to the next one, in the
// background: a hundred versions of a large file take a while.
//
// The counting ends with this object, at the latest after the version that is read.
#pragma once

#include "veltext/history.h"

#include <QObject>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velEditor {

class VersionCounts : public QObject
{
    Q_OBJECT

public:
    /// `versions` are those of the history, the newest first. `current` is what the file
    /// has now, nothing if it cannot be read. Begins at once.
    VersionCounts(veltext::History history, std::vector<veltext::Version> versions,
                  std::optional<std::string> current, QObject *parent);
    ~VersionCounts() override;

signals:
    /// How many objects and parameters differ between a version (0 is the newest) and
    /// the one after it, or the file. Nothing if one of them is damaged, is not VEL, or
    /// nests too deep. Comes for each version in turn.
    void counted(int version, std::optional<std::size_t> changes);

private:
    struct Shared;

    std::shared_ptr<Shared> shared_; ///< with the thread that counts
};

} // namespace velEditor
