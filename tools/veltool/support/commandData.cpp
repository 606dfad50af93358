// Reads command data from a text or from a container.
#include "tools/veltool/support/commandData.h"

#include "tools/veltool/ds/dsCommandData.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/programPlace.h"
#include "veltext/libraryFaults.h"
#include "veltext/textFault.h"

#include <filesystem>
#include <fstream>
#include <new>
#include <optional>

namespace veltool {

namespace {

bool isRegularFile(const std::string &file)
{
    std::error_code error;
    return file != standardInput && std::filesystem::is_regular_file(file, error);
}

/// Drops the library's messages, because the text of its code is enough here.
int dropMessage(const char *, std::int32_t)
{
    return 0;
}

/// The command data of the container at `path`. Messages name `file`.
veltext::SourceText readContainer(const std::string &path, const std::string &file)
{
    try {
        return veltext::SourceText(readCommandData(ReadableFile(path), dropMessage));
    } catch (const ContainerFailure &failure) {
        throw Failure(file + ": cannot read its command data: " + io_code_text(failure.status()));
    }
}

} // namespace

FileKind kindOf(std::string_view firstBytes)
{
    return veltext::isContainer(firstBytes) ? FileKind::Container : FileKind::Text;
}

FileKind kindOfFile(const std::string &file)
{
    if (!isRegularFile(file)) {
        return FileKind::Text;
    }
    std::ifstream in(file, std::ios::binary);
    std::string start(veltext::containerStartLength, '\0');
    in.read(start.data(), static_cast<std::streamsize>(start.size()));
    return kindOf(start);
}

Refusal containerRefusal(const std::string &file)
{
    return Refusal(
        file + ": is a def or res file; nothing was written; write its command data to "
               "a file with veltool extract, edit that file, and put it back with veltool embed");
}

velHandlePtr newHandle(Libraries libraries)
{
    velHandlePtr handle(velCreateHandle());
    if (!handle) {
        throw std::bad_alloc();
    }
    if (libraries == Libraries::Skip) {
        return handle;
    }
    const Places places = findPlaces();
    const auto named = librariesOf(places);
    const char *errors =
        named ? readNamedLibraries(handle.get(), named->files.c_str(), named->folder.c_str())
              : readLibraries(handle.get());
    if (errors != nullptr) {
        throw Failure(veltext::placedLibraryErrors(errors, {}, libraryFiles(places)));
    }
    return handle;
}

velHandlePtr loadFile(const std::string &file, Libraries libraries)
{
    // The fast way: the database reads a regular file directly. The slow way
    // below also reads pipes, and finds the line of a mistake.
    if (isRegularFile(file) && kindOfFile(file) == FileKind::Text) {
        velHandlePtr handle = newHandle(libraries);
        if (loadVELFile(handle.get(), file.c_str(), "vel") == nullptr) {
            return handle;
        }
    }
    velHandlePtr handle = newHandle(libraries);
    parseText(handle.get(), readText(file), file);
    return handle;
}

veltext::SourceText readText(const std::string &file)
{
    // A container may be large; only its command data is read.
    if (kindOfFile(file) == FileKind::Container) {
        return readContainer(file, file);
    }
    std::string bytes = readInput(file);
    if (kindOf(bytes) == FileKind::Container) {
        return readContainer(TemporaryCopy(bytes).path(), file);
    }
    return veltext::SourceText(std::move(bytes));
}

void throwParseFailure(const veltext::SourceText &text, const std::string &file,
                       const std::string &message, Libraries libraries)
{
    const velHandlePtr handle = newHandle(libraries);
    const std::optional<veltext::TextFault> fault = veltext::findFault(text, handle.get());
    throw Failure(file, fault ? fault->line : 0, fault ? fault->message : message);
}

void parseText(velHandle *handle, const veltext::SourceText &text, const std::string &file)
{
    const velArray lines = text.parsedLines();
    const char *error = parseVELData(handle, &lines, 0);
    if (error == nullptr) {
        return;
    }
    throwParseFailure(text, file, error);
}

void requireShallow(const velHandle *handle, const std::string &file)
{
    if (velDeepestBlock(handle) > mostLevels) {
        throwTooDeep(file);
    }
}

void throwTooDeep(const std::string &file)
{
    throw Failure(file, 0,
                  "objects are nested more than " + std::to_string(mostLevels) +
                      " levels deep; this command cannot read such a file");
}

} // namespace veltool
