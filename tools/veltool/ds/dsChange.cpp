// veltool ds delete and ds copy.
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
        // Opening to write makes a missing file; opening to read does not, but
        // would have to wait before it may write.
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

class CopyTask : public Task
{
public:
    int run(const Words &words) override
    {
        if (words.size() != 2 && words.size() != 5)
            throw Failure("wrong number of words; usage: veltool ds copy FROM TO [WHAT WHERE "
                          "WHEN]");
        const bool all = words.size() == 2;
        DatasetName name(all ? "*" : words[2], all ? "*" : words[3], all ? "-1" : words[4]);
        requireFile(words[1]);
        const ReadableFile from(words[0]);
        Container container;
        container.open(from);
        if (!all)
            static_cast<void>(container.locate(name));
        container.open(IO_OPEN_SECONDARY, words[1]);
        std::int64_t byName[] = {0, 0};
        IO_data data;
        data.offsets = byName;
        data.offsets_size = 2;
        container.request(all ? IO_COPY_ALLVALID_DS : IO_COPY_DATASET, name.header(), data);
        container.close(IO_CLOSE_SECONDARY);
        container.close(IO_CLOSE_PRIMARY);
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
    .details = "All that match, as in ds locate. Their bytes stay in the file.",
    .make = makeTask<DeleteTask>,
};

const Command dsCopyCommand = {
    .name = "ds copy",
    .words = "FROM TO [WHAT WHERE WHEN]",
    .fewest = 2,
    .most = 5,
    .passesOn = false,
    .purpose = "Copy datasets into another file",
    .details = "All live datasets of FROM, or those that match, are added to TO, which is made if "
               "it does not exist. They keep their format.",
    .make = makeTask<CopyTask>,
};

} // namespace veltool
