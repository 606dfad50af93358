// veltool embed: puts a command file into a def or res file, as its command data.
#include "tools/veltool/ds/dsCommandData.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "veltext/sourceText.h"

namespace veltool {

namespace {

std::string formattedLines(velHandle *handle)
{
    velStringList lines;
    require(getFormattedVEL(handle, "/", velUsualWidth, &lines));
    std::string text;
    for (const char *line : lines) {
        text.append(line).append(1, '\n');
    }
    return text;
}

bool everyLineFits(const veltext::SourceText &text)
{
    for (std::size_t i = 0; i < text.lineCount(); ++i) {
        if (text.line(i).size() > commandLineLength) {
            return false;
        }
    }
    return true;
}

/// The text as the dataset stores it: without white space at the ends of lines.
std::string stored(const veltext::SourceText &text)
{
    std::string lines;
    for (std::size_t i = 0; i < text.lineCount(); ++i) {
        const std::string_view line = text.parsedLine(i);
        lines += line.substr(0, line.find_last_not_of(" \t\r\v\f") + 1);
        lines += '\n';
    }
    return lines;
}

/// The text itself if the container can store it, otherwise the formatted text.
std::string embeddable(const std::string &file)
{
    const veltext::SourceText text = readText(file);
    const velHandlePtr handle = newHandle();
    parseText(handle.get(), text, file);
    requireShallow(handle.get(), file);
    const std::string data = formattedLines(handle.get());
    for (const veltext::SourceText &candidate : {text, veltext::SourceText(data)}) {
        const veltext::SourceText lines(stored(candidate));
        const velHandlePtr again = newHandle();
        if (!everyLineFits(lines)) {
            continue;
        }
        parseText(again.get(), lines, file);
        if (formattedLines(again.get()) == data) {
            return lines.bytes();
        }
    }
    throw ContainerFailure(file + ": a def or res file cannot hold a line of more than " +
                               std::to_string(commandLineLength) + " characters; shorten the value",
                           IO_NO_ROOM);
}

class EmbedTask : public Task
{
public:
    int run(const Words &words) override
    {
        requireFile(words[1]);
        const std::string lines = embeddable(words[0]);
        // Opening for writing would create a missing file, so the file is opened
        // for reading first.
        {
            Container existing;
            existing.open(IO_OPEN_PRIMARY, words[1]);
            existing.close();
        }
        writeCommandData(words[1], lines);
        return statusGood;
    }
};

} // namespace

const Command embedCommand = {
    .name = "embed",
    .words = "VELFILE DEFFILE",
    .fewest = 2,
    .most = 2,
    .passesOn = false,
    .purpose = "Put a command file into a def or res file",
    .details = "Replaces the command data of DEFFILE. A text with lines of more than 80 characters "
               "is stored formatted, without its comments. If the container library fails, the "
               "status is its code (1 to 31).",
    .make = makeTask<EmbedTask>,
};

} // namespace veltool
