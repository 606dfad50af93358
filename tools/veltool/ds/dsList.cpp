// veltool ds list: lists the datasets of a container.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsPrint.h"

#include "io/Src/Main/container_check.h"

namespace veltool {

namespace {

std::string formatText(format_code format)
{
    std::string text(1, format.letter);
    return format.has_digit() ? text + format.second : text;
}

/// The header of a deleted dataset may be unreadable; its fields are then empty.
std::string entryLine(const container_entry &entry)
{
    const dataset_header &header = entry.header;
    const bool known = entry.has_header;
    return std::string(1, entry.status) + '\t' + header.what + '\t' + header.where + '\t' +
           (known ? std::to_string(header.when) : "") + '\t' + formatText(entry.format) + '\t' +
           header.type + '\t' + (known ? std::to_string(header.count) : "") + '\t' +
           std::to_string(entry.length) + '\t' + std::to_string(entry.position);
}

std::string jsonNumber(std::string_view name, bool known, std::int64_t number)
{
    return '"' + std::string(name) + "\":" + (known ? std::to_string(number) : "null");
}

std::string jsonText(std::string_view name, bool known, const std::string &text)
{
    return jsonMember(name, known ? text.c_str() : nullptr);
}

std::string entryJson(const container_entry &entry)
{
    const dataset_header &header = entry.header;
    const bool known = entry.has_header;
    return '{' + jsonMember("status", std::string(1, entry.status)) + ',' +
           jsonText("what", known, header.what) + ',' + jsonText("where", known, header.where) +
           ',' + jsonNumber("when", known, header.when) + ',' +
           jsonMember("format", formatText(entry.format)) + ',' +
           jsonText("type", known, header.type) + ',' + jsonNumber("count", known, header.count) +
           ',' + jsonNumber("length", true, entry.length) + ',' +
           jsonNumber("position", true, entry.position) + '}';
}

class ListTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--all", all_, "Show deleted datasets too");
        options.flag("--json", json_, "Print a JSON array");
    }

    int run(const Words &words) override
    {
        const ReadableFile file(words[0]);
        Container container;
        container.open(file);
        std::vector<container_entry> entries;
        const int code = list_container(container.primary(), all_, entries);
        // Shows the datasets before the damage too.
        printEach(entries, json_, entryLine, entryJson);
        container.check(code);
        container.close();
        return statusGood;
    }

private:
    bool all_ = false;
    bool json_ = false;
};

} // namespace

const Command dsListCommand = {
    .name = "ds list",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "List datasets in the order of the file",
    .details =
        "Prints a line for each dataset, separated by tabs: status (Y live, N deleted), WHAT, "
        "WHERE, WHEN, format, type, count, length, position.",
    .make = makeTask<ListTask>,
};

} // namespace veltool
