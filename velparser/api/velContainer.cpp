// Reads command data from def and res files. Messages about failures go to the console;
// the caller gets the code.
#include "velparser/api/velContainer_p.h"

#include "io/Src/Main/command_data.h"
#include "io/Src/Main/iocntc.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

constexpr std::size_t slotBytes = IO_STRING_SLOT;

constexpr std::size_t candidates = IO_COMMANDS_CANDIDATES;

/// Prints the messages of the container library to standard error.
int printMessage(const char *text, std::int32_t)
{
    std::fprintf(stderr, "IO: %s", text);
    return 0;
}

/// The dataset with command data in the primary file. There may be only one object at a
/// time, because the library has one primary file.
class CommandDataset
{
public:
    CommandDataset()
    {
        io_set_text(names_.what, IO_COMMANDS_WHAT);
        io_set_text(names_.where, IO_COMMANDS_WHERE);
        names_.when = -1;
    }

    /// If there are several, the first that the library gives.
    int locate()
    {
        IO_data data = arrays();
        return request(IO_LOCATE_PRIMARY, data);
    }

    /// The WHEN of the next searches: the largest that the last locate reported, or 0 if it
    /// reported none.
    void takeLargestWhen() { names_.when = *std::ranges::max_element(whens_); }

    /// The number of records, even if the library says that the array is too small.
    int size(std::int32_t *count)
    {
        IO_data data;
        const int code = read(data);
        *count = names_.count;
        return code;
    }

    /// `records` has space for `count` records of slotBytes.
    int readRecords(char *records, std::int32_t count)
    {
        IO_data data;
        data.strings = records;
        data.strings_size = count;
        return read(data);
    }

private:
    int request(io_request number, IO_data &data)
    {
        IO_header header = names_.header();
        return iocntc(number, printMessage, &header, &data);
    }

    int read(IO_data &data)
    {
        data.offsets = offsets_.data();
        data.offsets_size = 2;
        // Longer strings are cut to 80 characters.
        io_set_text(names_.type, "STRI");
        return request(IO_READ_LOCATED_DS, data);
    }

    IO_data arrays()
    {
        IO_data data;
        data.strings = matches_.data();
        data.strings_size = 2 * candidates;
        data.integers = whens_.data();
        data.integers_size = candidates;
        data.offsets = offsets_.data();
        data.offsets_size = 2 * candidates;
        return data;
    }

    io_header_storage names_;
    std::array<char, 2 *candidates *slotBytes> matches_ = {};
    std::array<std::int32_t, candidates> whens_ = {};
    std::array<std::int64_t, 2 *candidates> offsets_ = {};
};

int open(const char *file)
{
    IO_data data;
    data.filename = file;
    data.filename_length = static_cast<std::int32_t>(std::strlen(file));
    const int code = iocntc(IO_OPEN_PRIMARY, printMessage, nullptr, &data);
    if (code != IO_OK) {
        std::printf("Fail to open the def/res file\n");
    }
    return code;
}

int close(const char *file)
{
    IO_data data;
    const int code = iocntc(IO_CLOSE_PRIMARY, printMessage, nullptr, &data);
    if (code != IO_OK) {
        std::printf("Fail to close the %s file\n", file);
    }
    return code;
}

int locate(CommandDataset &dataset)
{
    int code = dataset.locate();
    if (code == IO_OK) {
        return IO_OK;
    }
    if (code == IO_NOT_FOUND) {
        std::printf("The file you have specified does not contain Command File data.\n\n"
                    "            Definition files created in versions of ZOT-5 earlier than "
                    "ZOT-5.4 do not             contain Command File data.\n");
        return code;
    }
    dataset.takeLargestWhen();
    code = dataset.locate();
    if (code != IO_OK) {
        std::printf("Can not locate the Command File data from the input file. Code: %i\n", code);
    }
    return code;
}

void pushLines(AV *lines, std::span<const char> records)
{
    pTHX = velInterpreter();
    for (; !records.empty(); records = records.subspan(slotBytes)) {
        av_push(lines, newSVpvf("%s\n", records.data()));
    }
}

int readLines(CommandDataset &dataset, AV *lines)
{
    std::int32_t count = 0;
    int code = dataset.size(&count);
    if (code != IO_OK && code != IO_NO_ROOM) {
        std::printf("Can not read the Command File data from the input file. Code %i\n", code);
        return code;
    }
    const std::size_t bytes = static_cast<std::size_t>(std::max(count, 0)) * slotBytes;
    const std::unique_ptr<char[]> records(new (std::nothrow) char[bytes]);
    if (!records) {
        std::printf("Error: malloc failed in load_vel_from_def \n");
        return IO_NO_ROOM;
    }
    code = dataset.readRecords(records.get(), count);
    if (code != IO_OK) {
        std::printf("Can not read the Command File data from the input file.\n");
        return code;
    }
    pushLines(lines, {records.get(), bytes});
    return IO_OK;
}

} // namespace

int load_vel_from_def(const char *file, AV *lines)
{
    if (const int code = open(file)) {
        return code;
    }
    CommandDataset dataset;
    int code = locate(dataset);
    if (code == IO_OK) {
        code = readLines(dataset, lines);
    }
    if (code == IO_OK) {
        return close(file);
    }
    // The failure has been reported. A second failure, of closing, would hide it.
    IO_data data;
    static_cast<void>(iocntc(IO_CLOSE_PRIMARY, printMessage, nullptr, &data));
    return code;
}

} // namespace velparser
