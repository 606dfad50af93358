// Opens and accesses def and res files for commands.
//
// The messages of the container library go to standard error as they come. A code
// that is not 0 then ends the command with a ContainerFailure.
#pragma once

#include "io/Src/Main/get_ds_location.h"
#include "io/Src/Main/io_session.h"
#include "tools/veltool/ds/dsProgress.h"
#include "tools/veltool/support/failure.h"

#include <optional>
#include <string>
#include <string_view>

namespace veltool {

/// Ends a command with the library's code as its exit status.
class ContainerFailure : public Failure
{
public:
    /// The message is `what` and the text of the code; `what` may be empty.
    ContainerFailure(const std::string &what, int code);

    /// The message is the sentence alone, without the text of the code.
    [[nodiscard]] static ContainerFailure sentence(const std::string &text, int code)
    {
        return {text, code, Whole()};
    }

private:
    struct Whole
    {
    };
    ContainerFailure(const std::string &text, int code, Whole) : Failure(text, code) {}
};

/// A temporary file with these bytes; the destructor removes it. Throws a Failure.
class TemporaryCopy
{
public:
    explicit TemporaryCopy(std::string_view bytes);
    ~TemporaryCopy();
    TemporaryCopy(const TemporaryCopy &) = delete;
    TemporaryCopy &operator=(const TemporaryCopy &) = delete;

    [[nodiscard]] std::string path() const { return folder_ + "/input"; }

private:
    void remove() const;

    std::string folder_;
};

/// A file to read. For "-" it is a temporary copy of standard input. Throws a
/// Failure.
class ReadableFile
{
public:
    explicit ReadableFile(const std::string &file);

    /// The path to open.
    [[nodiscard]] const std::string &path() const { return path_; }
    /// The name that the user gave, for messages.
    [[nodiscard]] const std::string &name() const { return name_; }

private:
    std::string name_;
    std::optional<TemporaryCopy> copy_;
    std::string path_;
};

/// Throws a Failure for "-": standard input cannot be changed.
void requireFile(const std::string &file);

/// An error routine for the library that writes each message to standard error.
int reportMessage(const char *text, std::int32_t length);

/// A reporter that writes each message to standard error.
[[nodiscard]] io_reporter toStandardError();

/// The name of a dataset, from the words of a command line.
struct DatasetName
{
    /// Throws a Failure if WHEN is not a whole number of 32 bits.
    DatasetName(std::string whatWord, std::string whereWord, const std::string &whenWord);

    /// A header for requests; it points into this object.
    [[nodiscard]] IO_header header();

    std::string what;
    std::string where;
    std::int32_t when;
    std::int32_t count = 0;
    std::string type;
    std::int32_t blockfactor = 1;
};

/// The open containers of one command. Each function throws a ContainerFailure if
/// the library fails.
class Container
{
public:
    /// The library's messages go to `routine`.
    explicit Container(io_error_routine routine = reportMessage) : routine_(routine), session_(env_)
    {
    }

    /// Opens with IO_OPEN_PRIMARY or a similar request. Throws if a file to read
    /// does not exist.
    void open(io_request number, const std::string &file);
    /// Opens a file for reading.
    void open(const ReadableFile &file);
    void close(io_request number = IO_CLOSE_PRIMARY);
    void request(io_request number, IO_header header, IO_data &data);

    [[nodiscard]] open_file &primary() { return *session_.primary(); }

    /// The matching datasets of the primary file, in the library's order. Throws if
    /// there is none.
    [[nodiscard]] located_datasets locate(const DatasetName &name);

    /// Throws if the code is not 0. The message names the primary file.
    void check(int code) const;

private:
    std::string name_; ///< of the file opened last
    io_error_routine routine_;
    ProgressEnv env_;
    io_session session_;
};

} // namespace veltool
