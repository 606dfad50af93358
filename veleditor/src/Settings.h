// What the user has set for all files: $XDG_CONFIG_HOME/veleditor/veleditor.conf.
//
// The file is read once and written when a setting changes. A file that is not there, is
// damaged or cannot be written never stops the editor: settings have their defaults, and
// a change holds as long as the window.
#pragma once

#include <QString>

namespace velEditor {

class Settings
{
public:
    /// Reads the file that the environment names.
    Settings();
    /// Another file; an empty name is none.
    explicit Settings(const QString &file);

    /// Why the file could not be read; empty if it was, or if it is not there.
    [[nodiscard]] const QString &fault() const { return fault_; }

    /// save/keepLayout: whether a save keeps comments and layout. False by default.
    [[nodiscard]] bool keepsLayout() const { return keepsLayout_; }

    /// Sets it, and gives why it could not be stored; empty if it was.
    [[nodiscard]] QString setKeepsLayout(bool keeps);

private:
    QString file_;
    QString fault_;
    bool keepsLayout_ = false;
};

} // namespace velEditor
