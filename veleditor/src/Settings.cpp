// Reads and writes the file of settings.
#include "veleditor/src/Settings.h"

#include "veleditor/src/Environment.h"
#include "veleditor/src/Text.h"

#include <QFileInfo>
#include <QSettings>

namespace velEditor {

namespace {

const QLatin1String keepLayoutKey("save/keepLayout");

QString fileInHome()
{
    const std::string home = environment::configHome();
    return home.empty() ? QString() : fromBytes(home) + QLatin1String("/veleditor/veleditor.conf");
}

/// Why the file could not be read or written; empty if it could.
QString faultOf(const QSettings &settings)
{
    switch (settings.status()) {
    case QSettings::NoError:
        break;
    case QSettings::AccessError:
        return settings.fileName() + QObject::tr(": it cannot be read or written");
    case QSettings::FormatError:
        return settings.fileName() + QObject::tr(": it is damaged");
    }
    return {};
}

} // namespace

Settings::Settings() : Settings(fileInHome()) {}

Settings::Settings(const QString &file) : file_(file)
{
    if (!QFileInfo::exists(file_)) {
        return;
    }
    QSettings settings(file_, QSettings::IniFormat);
    settings.sync(); // the status is that of the last access
    const QString text = settings.value(keepLayoutKey, QStringLiteral("false")).toString();
    keepsLayout_ = text == QLatin1String("true");
    fault_ = faultOf(settings);
    if (fault_.isEmpty() && !keepsLayout_ && text != QLatin1String("false")) {
        fault_ = file_ + QObject::tr(": %1 must be true or false").arg(keepLayoutKey);
    }
}

QString Settings::setKeepsLayout(bool keeps)
{
    keepsLayout_ = keeps;
    if (file_.isEmpty()) {
        return QObject::tr("neither XDG_CONFIG_HOME nor HOME names a folder");
    }
    QSettings settings(file_, QSettings::IniFormat);
    settings.setValue(keepLayoutKey, keeps);
    settings.sync();
    // A damaged file was replaced by a good one.
    return settings.status() == QSettings::AccessError ? faultOf(settings) : QString();
}

} // namespace velEditor
