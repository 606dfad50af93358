// veltool ds read: prints the elements of a dataset as text.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsValues.h"

namespace veltool {

namespace {

class ReadTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.text("--as", "TYPE", as_, "Convert to this type");
    }

    int run(const Words &words) override
    {
        const DatasetName name(words[1], words[2], words[3]);
        const ReadableFile file(words[0]);
        Container container;
        container.open(file);
        print(container, container.locate(name).front().position);
        container.close();
        return statusGood;
    }

private:
    void print(Container &container, std::int64_t position) const
    {
        open_file &file = container.primary();
        // Checks the header first, because a damaged one could request too much
        // memory.
        located_start start;
        container.check(read_located_dataset_start(file, position, start));
        reading_plan plan;
        container.check(plan_reading(file, start, as_, plan));
        element_storage storage;
        if (!storage.allocate(plan.counts(), plan.wanted.string_slot())) {
            container.check(file.report->no_memory("ds read", storage.bytes()));
        }
        container.check(read_planned(file, start, plan, storage.data()));
        printValues(plan.wanted, plan.stored.count, storage.data());
    }

    std::string as_;
};

} // namespace

const Command dsReadCommand = {
    .name = "ds read",
    .words = "FILE WHAT WHERE WHEN",
    .fewest = 4,
    .most = 4,
    .passesOn = false,
    .purpose = "Print the data of a dataset",
    .details = "Prints one element per line, but characters all on one line, and a record of a "
               "structure as a line with tabs between its values. Of several matches, the first of "
               "ds locate is printed.",
    .make = makeTask<ReadTask>,
};

} // namespace veltool
