// Finds, reads and replaces the dataset with the command data of a container.
#include "tools/veltool/ds/dsCommandData.h"

#include "tools/veltool/ds/dsValues.h"
#include "veltext/heldSignals.h"

#include "io/Src/Main/command_data.h"
#include "io/Src/Main/delete_ds.h"
#include "io/Src/Main/get_ds_location.h"

#include <algorithm>

namespace veltool {

namespace {

/// The datasets with command data at a WHEN; there may be none.
located_datasets findAt(Container &container, std::int32_t when)
{
    open_file &file = container.primary();
    located_datasets found;
    const int code =
        find_datasets(*file.report, file.index, IO_COMMANDS_WHAT, IO_COMMANDS_WHERE, when, found);
    if (code != IO_NOT_FOUND) {
        container.check(code);
    }
    return found;
}

/// If there are more than IO_COMMANDS_CANDIDATES, uses only the one at WHEN 0 and
/// sets `many`.
located_datasets findAll(Container &container, bool &many)
{
    located_datasets found = findAt(container, -1);
    many = found.size() > IO_COMMANDS_CANDIDATES;
    return many ? findAt(container, 0) : found;
}

std::string joinLines(const IO_data &data, std::int32_t count)
{
    std::string lines;
    for (std::int32_t i = 0; i < count; ++i) {
        lines += data.strings + static_cast<std::size_t>(i) * IO_STRING_SLOT;
        lines += '\n';
    }
    return lines;
}

std::string readLines(Container &container, std::int64_t position)
{
    open_file &file = container.primary();
    located_start start;
    container.check(read_located_dataset_start(file, position, start));
    reading_plan plan;
    container.check(plan_reading(file, start, "STRI", plan));
    element_storage storage;
    if (!storage.allocate(plan.counts(), IO_STRING_SLOT)) {
        container.check(file.report->no_memory("extract", storage.bytes()));
    }
    container.check(read_planned(file, start, plan, storage.data()));
    return joinLines(storage.data(), plan.stored.count);
}

void writeAt(Container &container, std::int32_t when, std::int32_t count, IO_data &data)
{
    DatasetName name(IO_COMMANDS_WHAT, IO_COMMANDS_WHERE, std::to_string(when));
    name.type = "STRI";
    name.count = count;
    container.request(IO_WRITE_PRIMARY_DS, name.header(), data);
}

/// Deletes all command data at a WHEN except the newest.
void deleteFormer(Container &container, std::int32_t when)
{
    located_datasets found = findAt(container, when);
    const auto newest = std::max_element(
        found.begin(), found.end(),
        [](const located_dataset &a, const located_dataset &b) { return a.position < b.position; });
    found.erase(newest);
    if (!found.empty()) {
        container.check(delete_located(container.primary(), found));
    }
}

} // namespace

std::optional<std::int32_t> findCommandData(Container &container)
{
    bool many = false;
    const located_datasets found = findAll(container, many);
    if (found.empty()) {
        return std::nullopt;
    }
    return found.front().when;
}

std::string readCommandData(const ReadableFile &file, io_error_routine routine)
{
    Container container(routine);
    container.open(file);
    bool many = false;
    const located_datasets found = findAll(container, many);
    if (found.empty() && many) {
        throw ContainerFailure::sentence(
            file.name() + ": Can not locate the Command File data from the input file. Code: " +
                std::to_string(IO_NOT_FOUND) + " (of more than " +
                std::to_string(IO_COMMANDS_CANDIDATES) +
                " datasets with Command File data none has WHEN 0)",
            IO_NOT_FOUND);
    }
    if (found.empty()) {
        throw ContainerFailure(file.name() + ": does not contain Command File data", IO_NOT_FOUND);
    }
    std::string lines = readLines(container, found.front().position);
    container.close();
    return lines;
}

void writeCommandData(const std::string &file, std::string_view lines)
{
    data_type type;
    type.entries = {{IO_STRI, 1, static_cast<std::int32_t>(commandLineLength)}};
    const std::int32_t count = countElements(type, lines);
    element_storage storage;
    if (!storage.allocate(total_counts(type, count), type.string_slot())) {
        throw ContainerFailure(file, IO_NO_MEMORY);
    }
    parseValues(type, lines, storage.data());

    const veltext::HeldSignals held;
    Container container;
    container.open(IO_OPEN_PRIMARY_WRITE, file);
    const std::optional<std::int32_t> former = findCommandData(container);
    const std::int32_t when = former.value_or(0);
    // Between these two calls, the file has both datasets under one name. So one
    // of them is complete even if the program ends here.
    writeAt(container, when, count, storage.data());
    deleteFormer(container, when);
    container.close();
}

} // namespace veltool
