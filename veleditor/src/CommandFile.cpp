#include "veleditor/src/CommandFile.h"

#include "veleditor/src/TextFile.h"
#include "velparser/api/velparser.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace velEditor {

namespace {

constexpr std::int32_t lineWidth = 79;

/// The permissions of a file, and nothing when it has none to copy.
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

    /// A failure leaves what the system gives new files.
    void giveTo(const std::string &file) const
    {
        std::error_code ignored;
        if (known_)
            std::filesystem::permissions(file, permissions_, ignored);
    }

private:
    bool known_ = false;
    std::filesystem::perms permissions_ = std::filesystem::perms::unknown;
};

/// Moves the loaded file aside and gives the name under which it now stands:
/// none when it has stayed where it was. An earlier save that fell short may
/// have moved it already.
std::string moveAside(const std::string &loaded, const std::string &backup)
{
    std::error_code unknown;
    if (std::rename(loaded.c_str(), backup.c_str()) == 0)
        return backup;
    const bool isGone = !std::filesystem::exists(loaded, unknown);
    return isGone && std::filesystem::exists(backup, unknown) ? backup : std::string();
}

} // namespace

// 1. The loaded file becomes the backup.
// 2. The target is opened, which empties it where it is another file.
// 3. The data is formatted and written.
// 4. A target that was made here and is not complete is removed: the next save
//    would otherwise put it in the backup's place.
SaveResult writeCommandFile(const std::string &loaded, const std::string &target)
{
    const Permissions permissions(loaded);
    const std::string backup = moveAside(loaded, target + ".bak");

    std::error_code unknown;
    const bool isNew = !std::filesystem::exists(target, unknown) && !unknown;
    TextFile file(target);
    velStringList lines;
    const char *failure = velparser::getFormattedVEL("/", lineWidth, &lines);
    if (!file.isOpen())
        return {SaveOutcome::NotOpened, file.error(), backup};
    permissions.giveTo(target);

    if (failure == nullptr) {
        for (const char *line : lines) {
            file.write(line);
            file.write("\n");
        }
    }
    const bool complete = file.close() && failure == nullptr;
    if (complete)
        return {SaveOutcome::Written, std::string(), backup};
    if (isNew)
        static_cast<void>(std::remove(target.c_str()));
    return {SaveOutcome::Failed, failure != nullptr ? failure : file.error(), backup};
}

} // namespace velEditor
