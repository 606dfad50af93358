// veltool ds delete and ds copy: delete datasets, or copy them to another container.
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
        // Opening for writing would create a missing file, so it is opened for
        // reading first.
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
            throw Failure("wrong number of arguments; usage: veltool ds copy FROM TO [WHAT WHERE "
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
    .details = "Deletes all datasets that ds locate finds. Their bytes stay in the file.",
    .make = makeTask<DeleteTask>,
};

const Command dsCopyCommand = {
    .name = "ds copy",
    .words = "FROM TO [WHAT WHERE WHEN]",
    .fewest = 2,
    .most = 5,
    .passesOn = false,
    .purpose = "Copy datasets into another file",
    .details = "Adds all live datasets of FROM, or those that match, to TO, which is created if it "
               "does not exist. The datasets keep their format.",
    .make = makeTask<CopyTask>,
};

} // namespace veltool
