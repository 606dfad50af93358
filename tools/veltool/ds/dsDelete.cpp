// veltool ds delete: marks datasets of a container as deleted.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "veltext/heldSignals.h"

namespace veltool {

namespace {

class DeleteTask : public Task
{
public:
    int run(const Words &words) override
    {
        requireFile(words[0]);
        DatasetName name(words[1], words[2], words[3]);
        // Opening for writing would create a missing file, so the file is opened
        // for reading first.
        {
            Container existing;
            existing.open(IO_OPEN_PRIMARY, words[0]);
            static_cast<void>(existing.locate(name));
            existing.close();
        }
        const veltext::HeldSignals held;
        Container container;
        container.open(IO_OPEN_PRIMARY_WRITE, words[0]);
        IO_data data;
        container.request(IO_DELETE_PRIMARY_DS, name.header(), data);
        container.close();
        return statusGood;
    }
};

} // namespace

const Command dsDeleteCommand = {
    .name = "ds delete",
    .words = "FILE WHAT WHERE WHEN",
    .fewest = 4,
    .most = 4,
    .passesOn = false,
    .purpose = "Mark datasets as deleted",
    .details = "Deletes all datasets that ds locate finds. Their bytes stay in the file.",
    .make = makeTask<DeleteTask>,
};

} // namespace veltool
