// velhelp: shows the topics of the help, as an editor asks for them over a
// socket. The first line on standard output is the port at which it listens.
#include "common/writeSignals.h"
#include "help/viewer/Viewer.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

#include <cstdio>

namespace {

/// The folder with the pages: what the environment names, as for the client,
/// if there are pages in it; else the one that belongs to this program, in the
/// build tree or installed.
QString helpFolder()
{
    const QString here = QCoreApplication::applicationDirPath();
    for (const QString &folder :
         {qEnvironmentVariable("KOA_TEST_HELP_DIR"), qEnvironmentVariable("ZOT_HELP_DIR"),
          here + QLatin1String("/../help"), here + QLatin1String("/../../share/veleditor/help")}) {
        if (!folder.isEmpty() && QFileInfo(folder + QLatin1String("/en-us")).isDir())
            return folder;
    }
    return {};
}

void announce(quint16 port)
{
    std::printf("%u\n", static_cast<unsigned>(port));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    velEditor::ignoreWriteSignals();
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velhelp"));
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Shows help. Prints the port at which it takes requests."));
    options.addHelpOption();
    const QCommandLineOption language(QStringLiteral("language"),
                                      QStringLiteral("Language of the pages."),
                                      QStringLiteral("language"), QStringLiteral("en-us"));
    const QCommandLineOption session(QStringLiteral("sessionID"),
                                     QStringLiteral("Session that the viewer belongs to."),
                                     QStringLiteral("id"));
    options.addOptions({language, session});
    options.addPositionalArgument(QStringLiteral("topic"), QStringLiteral("Topic to show at once."),
                                  QStringLiteral("[topic]"));
    options.process(application);

    velHelp::Viewer viewer(helpFolder(), options.value(language));
    if (viewer.port() == 0) {
        std::fprintf(stderr, "velhelp: no port to listen on\n");
        return 1;
    }
    announce(viewer.port());
    const QStringList topics = options.positionalArguments();
    if (!topics.isEmpty())
        viewer.show(topics.join(u' '), QString());
    return QCoreApplication::exec();
}
