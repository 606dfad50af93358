// veltool ds: shows and changes the datasets of def and res files.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandLine.h"

namespace veltool {

namespace {

constexpr const Command *subCommands[] = {
    &dsListCommand, &dsLocateCommand, &dsReadCommand,    &dsWriteCommand,  &dsDeleteCommand,
    &dsCopyCommand, &dsVerifyCommand, &dsRebuildCommand, &dsUnlockCommand,
};

class DsTask : public Task
{
public:
    int run(const Words &words) override
    {
        const Command &command = requireCommand(subCommands, "ds", words[0]);
        return runCommand(command, Words(words.begin() + 1, words.end()));
    }
};

} // namespace

const Command dsCommand = {
    .name = "ds",
    .words = "list|locate|read|write|delete|copy|verify|rebuild|unlock ...",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = true,
    .purpose = "Show and change def and res files",
    .details = "Each of list, locate, read, write, delete, copy, verify, rebuild and unlock shows "
               "its arguments and options with --help. The exit status is 0, 2 for a usage error, "
               "or the code with which the container library fails (1 to 31).",
    .make = makeTask<DsTask>,
};

} // namespace veltool
