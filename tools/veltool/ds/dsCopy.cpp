// veltool ds copy: copies datasets into another container.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"

namespace veltool {

namespace {

class CopyTask : public Task
{
public:
    int run(const Words &words) override
    {
        if (words.size() != 2 && words.size() != 5) {
            throw Failure("wrong number of arguments; usage: veltool ds copy FROM TO [WHAT WHERE "
                          "WHEN]");
        }
        const bool all = words.size() == 2;
        DatasetName name(all ? "*" : words[2], all ? "*" : words[3], all ? "-1" : words[4]);
        requireFile(words[1]);
        const ReadableFile from(words[0]);
        Container container;
        container.open(from);
        if (!all) {
            static_cast<void>(container.locate(name));
        }
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
