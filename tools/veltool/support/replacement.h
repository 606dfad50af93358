// The one place where commands replace a file that a user edits.
//
// What the file held is kept twice: as FILE.bak, and in the history of the file, which
// `veltool history` shows. --no-backup turns both off.
#pragma once

#include "tools/veltool/support/options.h"
#include "veltext/replaceFile.h"

#include <string>
#include <string_view>

namespace veltool {

/// How a command replaces files.
class Replacement
{
public:
    /// Declares --no-backup.
    void addOptions(Options &options);

    /// Replaces the bytes of a file. Throws a veltext::Error. If the history cannot keep
    /// the previous version, it is reported, and the file is replaced anyway.
    void replace(const veltext::EditedFile &file, std::string_view bytes) const;

    /// The same for a file that need not exist, and without a FILE.bak.
    void write(const std::string &file, std::string_view bytes) const;

    /// Whether FILE.bak has the previous version.
    [[nodiscard]] bool makesBackup() const { return !noBackup_; }

private:
    void keepVersion(const std::string &file) const;

    bool noBackup_ = false;
};

} // namespace veltool
