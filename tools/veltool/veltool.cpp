// veltool: command files for the shell, scripts, clusters and continuous
// integration. No display is needed.
#include "common/writeSignals.h"
#include "tools/veltool/support/commandLine.h"
#include "tools/veltool/support/programPlace.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Standard streams that the caller closed are opened for the other direction,
/// so that no file of the user's gets their number and using them fails.
void occupyStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1)
            (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

} // namespace

int main(int count, char **words)
{
    occupyStandardStreams();
    // A reader that goes away and a file too large are short writes, with
    // their message and status.
    velEditor::ignoreWriteSignals();
    veltool::completeEnvironment();
    const veltool::Words arguments(words + (count > 0 ? 1 : 0), words + count);
    return veltool::runCommandLine(arguments);
}
