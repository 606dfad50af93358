// Reads files in one piece, as lines and as user data.
#include "velapilt/src/velFile_p.h"

#include "common/takeLine.h"
#include "velapilt/src/velError_p.h"
#include "velapilt/src/velScan.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

struct CloseFile
{
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// The size of a file if seeking works in it, otherwise 0.
std::size_t sizeOf(std::FILE *file)
{
    if (std::fseek(file, 0, SEEK_END) != 0) {
        return 0;
    }
    const long size = std::ftell(file);
    std::rewind(file);
    return size < 0 ? 0 : static_cast<std::size_t>(size);
}

} // namespace

const char *velReadFile(velHandle *handle, const char *path, velFileBytes *bytes)
{
    const File file(std::fopen(path, "rb"));
    std::error_code ignored;
    if (file == nullptr || std::filesystem::is_directory(path, ignored)) {
        return velSetError(handle, "loadFileData: %s: open failed", path);
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0); // it is read in one piece
    // Has room for one byte more than the file, so that the same read finds its
    // end. A pipe has no size, and a file may grow: then the room doubles.
    std::size_t room = sizeOf(file.get()) + 1;
    std::size_t length = 0;
    velPages data = velAllocatePages(room + velScanSlack);
    for (;;) {
        length += std::fread(data.get() + length, 1, room - length, file.get());
        if (length < room) {
            break;
        }
        velPages grown = velAllocatePages(room * 2 + velScanSlack);
        std::memcpy(grown.get(), data.get(), length);
        data = std::move(grown);
        room *= 2;
    }
    if (std::ferror(file.get()) != 0) {
        return length == 0 ? velSetError(handle, "loadFileData: %s: open failed", path)
                           : velSetError(handle, "loadFileData: %s: fgets failed", path);
    }
    std::memset(data.get() + length, '\n', 1 + velScanSlack);
    bytes->data = std::move(data);
    bytes->size = length;
    bytes->start = std::string_view(bytes->data.get(), length).starts_with(byteOrderMark)
                       ? byteOrderMark.size()
                       : 0;
    return nullptr;
}

const char *loadFileData(velHandle *handle, const char *path, velArray *lines)
try {
    velFileBytes bytes;
    if (const char *error = velReadFile(handle, path, &bytes)) {
        return error;
    }
    std::string_view rest = bytes.view();
    while (!rest.empty()) {
        std::string_view line = velEditor::takeLine(&rest);
        line = line.substr(0, line.find('\0'));
        if (lines->addString(line) == 0) {
            return "loadFileData: malloc failed";
        }
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "loadFileData: array allocation failed";
}

const char *loadVELFile(velHandle *handle, const char *path, const char *fileType,
                        const velDigest *expected, velDigest *digest)
try {
    if (path == nullptr || fileType == nullptr) {
        return "loadVELFile: Invalid file or file type";
    }
    if (std::strcmp(fileType, "vel") != 0) {
        return "loadVELFile: fileType is invalid - it should be vel";
    }
    velFileBytes bytes;
    if (const char *error = velReadFile(handle, path, &bytes)) {
        return error;
    }
    return velParseFile(handle, bytes, 0, expected, digest);
} catch (const std::bad_alloc &) {
    return "loadFileData: array allocation failed";
}
