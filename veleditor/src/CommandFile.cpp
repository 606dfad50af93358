// Backups, spare copies, and writing of the target.
#include "veleditor/src/CommandFile.h"

#include "veleditor/src/SpareFile.h"
#include "veleditor/src/TextFile.h"
#include "velparser/api/velparser.h"
#include "veltext/backup.h"
#include "veltext/error.h"
#include "veltext/folder.h"
#include "veltext/readFile.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velEditor {

namespace {

/// The permissions of a file, if it exists.
class Permissions
{
public:
    explicit Permissions(const std::string &file)
    {
        std::error_code failure;
        const auto status = std::filesystem::status(file, failure);
        known_ = !failure && std::filesystem::is_regular_file(status);
        permissions_ = status.permissions();
    }

    /// Sets them on a file. On failure the file keeps the system's default.
    void giveTo(const std::string &file) const
    {
        std::error_code ignored;
        if (known_) {
            std::filesystem::permissions(file, permissions_, ignored);
        }
    }

private:
    bool known_ = false;
    std::filesystem::perms permissions_ = std::filesystem::perms::unknown;
};

/// The bytes to write; nothing, with the reason, if the data cannot be formatted.
std::optional<std::string> textOf(const SaveContent &content, std::string *reason)
{
    if (content.text) {
        return content.text;
    }
    velStringList lines;
    if (const char *failure = velparser::getFormattedVEL("/", velUsualWidth, &lines)) {
        *reason = failure;
        return std::nullopt;
    }
    std::string text;
    for (const char *line : lines) {
        text.append(line).append("\n");
    }
    return text;
}

/// All bytes of a file; nothing if it cannot be read.
std::optional<std::string> bytesOf(const std::string &file)
{
    try {
        return veltext::readBytes(file);
    } catch (const veltext::Error &) {
        return std::nullopt;
    }
}

/// An existing target. It does not change until a spare copy is complete.
class Overwriting
{
public:
    /// Opens the target, without waiting for a reader if it is a pipe.
    Overwriting(const std::string &target, const Permissions &permissions)
        : target_(target), permissions_(permissions),
          descriptor_(::open(target.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)),
          failure_(descriptor_ < 0 ? std::strerror(errno) : "")
    {
        struct stat status = {};
        isRegular_ = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    }
    ~Overwriting()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    Overwriting(const Overwriting &) = delete;
    Overwriting &operator=(const Overwriting &) = delete;

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] const std::string &failure() const { return failure_; }

    /// Replaces the content of the target. Afterwards the former data is in `backup`,
    /// if that name is not empty and can be used.
    SaveResult replace(const std::string &text, const std::string &backup)
    {
        const std::optional<std::string> former = isRegular_ ? bytesOf(target_) : std::nullopt;
        std::optional<SpareFile> copy;
        if (former) {
            copy.emplace(target_, *former);
        }
        if (copy && copy->isComplete()) {
            return replaceCopied(text, *former, *copy, backup);
        }
        return replaceUncopied(text, copy ? copy->error() : std::string());
    }

private:
    SaveResult replaceCopied(const std::string &text, const std::string &former, SpareFile &copy,
                             const std::string &backup)
    {
        permissions_.giveTo(target_);
        if (write(text)) {
            if (!backup.empty() && copy.becomes(backup)) {
                return {SaveOutcome::Written, {}, backup, {}};
            }
            return {SaveOutcome::Written, {}, {}, {}};
        }
        const std::string reason = failure_;
        if (write(former) && bytesOf(target_) == former) {
            return {SaveOutcome::Unchanged, reason, {}, {}};
        }
        return {SaveOutcome::Failed, reason, copy.keep(), {}};
    }

    SaveResult replaceUncopied(const std::string &text, const std::string &whyNoCopy)
    {
        SpareFile spare(target_, text);
        if (!spare.isComplete()) {
            return {SaveOutcome::Unchanged, whyNoCopy.empty() ? spare.error() : whyNoCopy, {}, {}};
        }
        if (write(text)) {
            return {SaveOutcome::Written, {}, {}, {}};
        }
        return {SaveOutcome::Failed, failure_, {}, spare.keep()};
    }

    bool write(const std::string &text)
    {
        ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) & ~O_NONBLOCK);
        const bool isEmpty = !isRegular_ || (::ftruncate(descriptor_, 0) == 0 &&
                                             ::lseek(descriptor_, 0, SEEK_SET) == 0);
        const int own = isEmpty ? ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0) : -1;
        if (own < 0) {
            failure_ = std::strerror(errno);
            return false;
        }
        TextFile file(own);
        file.write(text);
        const bool isComplete = file.close();
        failure_ = file.error();
        return isComplete;
    }

    std::string target_;
    const Permissions &permissions_; ///< for a regular file
    int descriptor_;                 ///< owned; −1 if the target cannot be opened
    std::string failure_;
    bool isRegular_ = false;
};

/// The name for the backup of a target's former data. Empty if another file has the
/// loaded data, or if the target is a link to that name.
std::string nameForFormer(const std::string &loaded, const std::string &target, bool isMoved)
{
    std::string name = veltext::backupNameOf(target);
    std::error_code unknown;
    const bool leadsThere =
        std::filesystem::is_symlink(target, unknown) && veltext::isSameFile(target, name);
    const bool isWanted = veltext::isSameFile(target, isMoved ? name : loaded);
    return isWanted && !leadsThere ? name : std::string();
}

SaveResult overwrite(const std::string &loaded, const std::string &target,
                     const Permissions &permissions, const std::string &backup,
                     const SaveContent &content)
{
    Overwriting overwriting(target, permissions);
    if (!overwriting.isOpen()) {
        return {SaveOutcome::NotOpened, overwriting.failure(), backup, {}};
    }
    std::string reason;
    std::optional<std::string> text = textOf(content, &reason);
    if (!text) {
        return {SaveOutcome::Unchanged, reason, backup, {}};
    }
    const std::string former =
        content.keepsBackup ? std::string() : nameForFormer(loaded, target, !backup.empty());
    SaveResult result = overwriting.replace(*text, former);
    if (result.outcome == SaveOutcome::Written) {
        result.written = std::move(*text);
    }
    if (result.backup.empty()) {
        result.backup = backup;
    }
    return result;
}

/// Writes a target that does not exist yet.
SaveResult create(const std::string &target, const Permissions &permissions,
                  const std::string &backup, const SaveContent &content)
{
    TextFile file(target);
    std::string reason;
    std::optional<std::string> text = textOf(content, &reason);
    if (!file.isOpen()) {
        return {SaveOutcome::NotOpened, file.error(), backup, {}};
    }
    permissions.giveTo(target);
    if (text) {
        file.write(*text);
    }
    if (file.close() && text) {
        return {SaveOutcome::Written, {}, backup, {}, std::move(*text)};
    }
    static_cast<void>(std::remove(target.c_str()));
    return {SaveOutcome::Failed, text ? file.error() : reason, backup, {}};
}

} // namespace

// 1. Move the loaded file to the backup.
// 2. If the target still exists, make a spare copy, then overwrite the target.
// 3. Otherwise create the target. Remove it if it is incomplete; the next save would
//    replace the backup with it.
SaveResult writeCommandFile(const std::string &loaded, const std::string &target,
                            const SaveContent &content)
{
    const Permissions permissions(loaded);
    const std::string name = veltext::backupNameOf(target);
    const bool isMoved =
        !content.keepsBackup && veltext::makeBackup(loaded, name, veltext::Backup::Move);
    const std::string backup = isMoved ? name : std::string();
    std::error_code unknown;
    const bool isThere = std::filesystem::exists(target, unknown) || unknown;
    SaveResult result = isThere ? overwrite(loaded, target, permissions, backup, content)
                                : create(target, permissions, backup, content);
    veltext::flushFolderOf(target);
    if (std::filesystem::path(loaded).parent_path() !=
        std::filesystem::path(target).parent_path()) {
        veltext::flushFolderOf(loaded);
    }
    return result;
}

} // namespace velEditor
