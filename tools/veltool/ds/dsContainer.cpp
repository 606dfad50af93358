// Opens and closes containers, and turns the library's codes into failures.
#include "tools/veltool/ds/dsContainer.h"

#include "tools/veltool/support/input.h"
#include "veltext/replaceFile.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>

namespace veltool {

namespace {

std::int32_t parseWhen(const std::string &word)
{
    std::int32_t when = 0;
    const char *end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, when);
    if (error != std::errc() || stop != end) {
        throw Failure("WHEN must be a whole number of 32 bits, not \"" + word + "\"");
    }
    return when;
}

std::string describe(const DatasetName &name)
{
    return "WHAT \"" + name.what + "\", WHERE \"" + name.where + "\" and " +
           (name.when < 0 ? "any WHEN" : "WHEN " + std::to_string(name.when));
}

} // namespace

ContainerFailure::ContainerFailure(const std::string &what, int code)
    : Failure(what + (what.empty() ? "" : ": ") + io_code_text(code), code)
{
}

TemporaryCopy::TemporaryCopy(std::string_view bytes)
    : folder_((std::filesystem::temp_directory_path() / "veltool-XXXXXX").string())
{
    if (mkdtemp(folder_.data()) == nullptr) {
        throw systemError(folder_, errno);
    }
    try {
        veltext::writeFile(path(), bytes);
    } catch (...) {
        remove();
        throw;
    }
}

TemporaryCopy::~TemporaryCopy()
{
    remove();
}

void TemporaryCopy::remove() const
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

ReadableFile::ReadableFile(const std::string &file) : name_(file), path_(file)
{
    if (file == standardInput) {
        copy_.emplace(readInput(file));
        path_ = copy_->path();
    }
}

void requireFile(const std::string &file)
{
    if (file == standardInput) {
        throw Failure("cannot change standard input; name a file (./- for a file called -)");
    }
}

int reportMessage(const char *text, std::int32_t length)
{
    report(std::string(text, static_cast<std::size_t>(length)));
    return 0;
}

io_reporter toStandardError()
{
    io_reporter reporter(io_real_env());
    reporter.set_routine(reportMessage);
    return reporter;
}

DatasetName::DatasetName(std::string whatWord, std::string whereWord, const std::string &whenWord)
    : what(std::move(whatWord)), where(std::move(whereWord)), when(parseWhen(whenWord))
{
}

IO_header DatasetName::header()
{
    IO_header header;
    header.what = what.data();
    header.where = where.data();
    header.when = &when;
    header.count = &count;
    header.type = type.data();
    header.blockfactor = &blockfactor;
    return header;
}

void Container::open(io_request number, const std::string &file)
{
    name_ = file;
    std::error_code error;
    if (number == IO_OPEN_PRIMARY && !std::filesystem::exists(file, error) && !error) {
        throw ContainerFailure::sentence(file + ": the file does not exist", IO_CANNOT_SEEK);
    }
    IO_data data;
    data.filename = file.c_str();
    request(number, {}, data);
}

void Container::open(const ReadableFile &file)
{
    open(IO_OPEN_PRIMARY, file.path());
    name_ = file.name();
}

void Container::close(io_request number)
{
    IO_data data;
    request(number, {}, data);
}

void Container::request(io_request number, IO_header header, IO_data &data)
{
    check(session_.request(number, routine_, &header, &data));
}

located_datasets Container::locate(const DatasetName &name)
{
    open_file &file = primary();
    located_datasets found;
    const int code = find_datasets(*file.report, file.index, name.what.c_str(), name.where.c_str(),
                                   name.when, found);
    if (code == IO_NOT_FOUND) {
        throw ContainerFailure::sentence(name_ + ": no dataset matches " + describe(name), code);
    }
    check(code);
    return found;
}

void Container::check(int code) const
{
    if (code != IO_OK) {
        throw ContainerFailure(name_, code);
    }
}

} // namespace veltool
