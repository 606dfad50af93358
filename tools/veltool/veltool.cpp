// veltool: shows, checks and edits command files from the shell, without a display.
#include "common/writeSignals.h"
#include "tools/veltool/support/commandLine.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Opens /dev/null for the standard streams that the caller closed. Otherwise a
/// file of the user would get their number. The wrong direction makes every use
/// of them fail.
void occupyStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

} // namespace

int main(int count, char **words)
{
    occupyStandardStreams();
    // Then a closed pipe or a file that is too large gives a message and a
    // status.
    velEditor::ignoreWriteSignals();
    const veltool::Words arguments(words + (count > 0 ? 1 : 0), words + count);
    return veltool::runCommandLine(arguments);
}
