// Keeps the previous version of a file, then replaces the file.
#include "tools/veltool/support/replacement.h"

#include "tools/veltool/support/failure.h"
#include "veltext/history.h"

namespace veltool {

void Replacement::addOptions(Options &options)
{
    options.flag("--no-backup", noBackup_,
                 "Keep the previous version neither as FILE.bak nor in the history");
}

void Replacement::replace(const veltext::EditedFile &file, std::string_view bytes) const
{
    keepVersion(file.name());
    file.replace(bytes, noBackup_ ? veltext::Former::Drop : veltext::Former::Backup);
}

void Replacement::write(const std::string &file, std::string_view bytes) const
{
    keepVersion(file);
    veltext::writeFile(file, bytes);
}

void Replacement::keepVersion(const std::string &file) const
{
    if (noBackup_) {
        return;
    }
    if (const std::string message = veltext::History(file).keep("veltool"); !message.empty()) {
        report(message);
    }
}

} // namespace veltool
