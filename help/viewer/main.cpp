// velhelp, the help viewer: shows the topics that an editor requests over a
// socket. The first line on standard output is the port at which it listens.
#include "common/version.h"
#include "common/writeSignals.h"
#include "help/viewer/Places.h"
#include "help/viewer/Viewer.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

namespace {

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
    QCoreApplication::setApplicationVersion(QStringLiteral(VEL_VERSION));
    QApplication::setWindowIcon(velHelp::programIcon());
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Shows help. Prints the port at which it receives requests."));
    options.addHelpOption();
    options.addVersionOption();
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

    velHelp::Viewer viewer(velHelp::helpFolder(), options.value(language));
    if (viewer.port() == 0) {
        std::fprintf(stderr, "velhelp: cannot listen: no free port on this computer\n");
        return 1;
    }
    announce(viewer.port());
    const QStringList topics = options.positionalArguments();
    if (!topics.isEmpty()) {
        viewer.show(topics.join(u' '), QString());
    }
    return QCoreApplication::exec();
}
