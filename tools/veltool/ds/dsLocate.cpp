// veltool ds locate: finds datasets of a container by name.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsPrint.h"

namespace veltool {

namespace {

class LocateTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print a JSON array");
    }

    int run(const Words &words) override
    {
        const DatasetName name(words[1], words[2], words[3]);
        const ReadableFile file(words[0]);
        Container container;
        container.open(file);
        printEach(container.locate(name), json_, lineOf, jsonOf);
        container.close();
        return statusGood;
    }

private:
    bool json_ = false;
};

} // namespace

const Command dsLocateCommand = {
    .name = "ds locate",
    .words = "FILE WHAT WHERE WHEN",
    .fewest = 4,
    .most = 4,
    .passesOn = false,
    .purpose = "Find datasets by name",
    .details = "WHAT and WHERE may be patterns (* ? [...]); a negative WHEN matches all. Prints a "
               "line for each match, separated by tabs: WHAT, WHERE, WHEN, length, position. "
               "Status 17 without a match.",
    .make = makeTask<LocateTask>,
};

} // namespace veltool
