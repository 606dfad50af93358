// Looks for the folders of the pages and of the icons.
#include "help/viewer/Places.h"

#include "help/viewer/Environment.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

namespace velHelp {

namespace {

/// The first of these folders that contains `content`; empty if none does.
QString folderWith(const QString &content, const QStringList &folders)
{
    for (const QString &folder : folders) {
        if (!folder.isEmpty() && QFileInfo::exists(folder + content)) {
            return folder;
        }
    }
    return {};
}

} // namespace

QString helpFolder()
{
    const QString here = QCoreApplication::applicationDirPath();
    return folderWith(QStringLiteral("/en-us"),
                      {environment::testHelpFolder(), environment::helpFolder(),
                       here + QLatin1String("/../help"),
                       here + QLatin1String("/../../share/veleditor/help")});
}

QIcon programIcon()
{
    const QString here = QCoreApplication::applicationDirPath();
    const QString root = folderWith(QStringLiteral("/etc/icons/ZOT.png"),
                                    {environment::rootFolder(), here + QLatin1String("/.."),
                                     here + QLatin1String("/../../share/veleditor")});
    QIcon icon;
    if (root.isEmpty()) {
        return icon;
    }
    for (const char *file : {"ZOT.png", "ZOT32x32.png", "ZOT48x48.png"}) {
        icon.addFile(root + QLatin1String("/etc/icons/") + QLatin1String(file));
    }
    return icon;
}

} // namespace velHelp
