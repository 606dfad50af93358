#include "tools/veltool/commandData.h"

#include "tools/veltool/dsCommandData.h"

#include <filesystem>
#include <fstream>
#include <new>

namespace veltool {

namespace {

constexpr std::string_view containerStart = "*INFO";

/// The number of the first line that the parser refuses, 0 for none: what is
/// wrong then is the text as a whole.
std::size_t faultyLine(const SourceText &text)
{
    const velHandlePtr handle = newHandle();
    for (std::size_t i = 0; i < text.lineCount(); ++i) {
        const std::string line(text.parsedLine(i));
        if (parseVELLineH(handle.get(), line.c_str(), 0))
            return i + 1;
    }
    return 0;
}

bool isRegularFile(const std::string &file)
{
    std::error_code error;
    return file != standardInput && std::filesystem::is_regular_file(file, error);
}

/// One message says it all here: that of the code.
int dropMessage(const char *, std::int32_t)
{
    return 0;
}

/// The command data of the container at `path`; `file` is named in messages.
SourceText readContainer(const std::string &path, const std::string &file)
{
    try {
        return SourceText(readCommandData(ReadableFile(path), dropMessage));
    } catch (const ContainerFailure &failure) {
        throw Failure(file + ": no command data can be read: " + io_code_text(failure.status()));
    }
}

} // namespace

FileKind kindOf(std::string_view firstBytes)
{
    return firstBytes.substr(0, containerStart.size()) == containerStart ? FileKind::Container
                                                                         : FileKind::Text;
}

FileKind kindOfFile(const std::string &file)
{
    if (!isRegularFile(file))
        return FileKind::Text;
    std::ifstream in(file, std::ios::binary);
    std::string start(containerStart.size(), '\0');
    in.read(start.data(), static_cast<std::streamsize>(start.size()));
    return kindOf(start);
}

Refusal containerRefusal(const std::string &file)
{
    return Refusal(file + ": is a def or res file; take its command data out with veltool extract, "
                          "edit that, and put it back with veltool embed");
}

velHandlePtr newHandle(Libraries libraries)
{
    velHandlePtr handle(velCreateHandle());
    if (!handle)
        throw std::bad_alloc();
    if (libraries == Libraries::Read)
        require(readLibraries(handle.get()));
    return handle;
}

velHandlePtr loadFile(const std::string &file, Libraries libraries)
{
    // The database reads a plain file by itself, without a copy of ours. The
    // slower way serves pipes, and finds the line at fault.
    if (isRegularFile(file) && kindOfFile(file) == FileKind::Text) {
        velHandlePtr handle = newHandle(libraries);
        if (!loadVELFile(handle.get(), file.c_str(), "vel"))
            return handle;
    }
    velHandlePtr handle = newHandle(libraries);
    parseText(handle.get(), readText(file), file);
    return handle;
}

SourceText readText(const std::string &file)
{
    // Of a container, which may be large, only the command data is read.
    if (kindOfFile(file) == FileKind::Container)
        return readContainer(file, file);
    std::string bytes = readBytes(file);
    if (kindOf(bytes) == FileKind::Container)
        return readContainer(TemporaryCopy(bytes).path(), file);
    return SourceText(std::move(bytes));
}

void parseText(velHandle *handle, const SourceText &text, const std::string &file)
{
    const velArray lines = text.parsedLines();
    const char *error = parseVELData(handle, &lines, 0);
    if (!error)
        return;
    const std::string message = error;
    const std::size_t line = faultyLine(text);
    throw Failure(file + (line ? ':' + std::to_string(line) : "") + ": " + message);
}

} // namespace veltool
