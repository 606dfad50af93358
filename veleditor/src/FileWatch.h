// Notices when another program changes, removes or renames a file.
//
// The watch compares the file with the version that the editor has: the one that it
// loaded or saved last, see `expect`. It compares when the system reports a change,
// and when it is asked to: not every file system reports what other computers do.
// A file that is only touched, or rewritten with the same bytes, has not changed.
//
// A file may be replaced, removed and made again any number of times, and so may
// its folder and the links that lead to it. GUI thread only.
#pragma once

#include "veleditor/src/FileVersion.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace velEditor {

class FileWatch : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Same,    ///< the file is as the editor knows it
        Changed, ///< it has other bytes
        Removed,
        Moved, ///< it has another name in the same folder
    };

    /// Watches nothing until `expect` is called.
    explicit FileWatch(const std::string &file, QObject *parent = nullptr);

    /// From now on this is the version that the editor has, and the file is taken to
    /// have it. Null ends the watch.
    void expect(std::shared_ptr<FileVersion> version);

    /// What was found at the last comparison.
    [[nodiscard]] State state() const { return found_.state; }

    /// The new path of a file that was moved.
    [[nodiscard]] const std::string &newPath() const { return found_.newPath; }

    /// Compares now. Reads the file only if it may have changed since the last time.
    void check();

signals:
    /// The state is another one, or the file has changed once more.
    void noticed(velEditor::FileWatch::State state);

private:
    struct Found
    {
        State state = State::Same;
        std::string newPath = {};
        std::size_t hash = 0; ///< of the changed bytes

        bool operator==(const Found &) const = default;
    };

    /// A device and an inode.
    using Identity = std::pair<std::uint64_t, std::uint64_t>;

    [[nodiscard]] Found look() const;
    void report(Found now);
    void checkSoon();
    void watchAgain();
    void watch(const std::string &path);
    void unwatch(const std::string &path);

    std::string file_; ///< an absolute path
    std::shared_ptr<FileVersion> version_;
    Found found_;
    QFileSystemWatcher watcher_;
    std::map<std::string, Identity> watched_; ///< what was at each watched path
    QTimer soon_;                             ///< one comparison for all changes until it ends
};

} // namespace velEditor
