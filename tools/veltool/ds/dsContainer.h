// An open def or res file, for commands.
//
// What the library says goes to standard error line by line, as it says it; a
// code that is not 0 then ends the command with a ContainerFailure.
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
    /// The text of the code follows `what`, which may be empty.
    ContainerFailure(const std::string &what, int code);

    /// A sentence that needs no text of a code.
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

/// Bytes in a temporary file that is gone with the object. Throws a Failure.
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

/// A file to be read: itself, or for "-" a copy of standard input. Throws a
/// Failure.
class ReadableFile
{
public:
    explicit ReadableFile(const std::string &file);

    /// Where it can be opened.
    [[nodiscard]] const std::string &path() const { return path_; }
    /// As given, for messages.
    [[nodiscard]] const std::string &name() const { return name_; }

private:
    std::string name_;
    std::optional<TemporaryCopy> copy_;
    std::string path_;
};

/// Throws a Failure for "-": a container that is to be changed is a file.
void requireFile(const std::string &file);

/// The library's error routine: a line of standard error for each message.
int reportMessage(const char *text, std::int32_t length);

/// A dataset's name as the words of a command line give it.
struct DatasetName
{
    /// Throws a Failure where WHEN is no 32-bit number.
    DatasetName(std::string whatWord, std::string whereWord, const std::string &whenWord);

    /// Points into this object.
    [[nodiscard]] IO_header header();

    std::string what;
    std::string where;
    std::int32_t when;
    std::int32_t count = 0;
    std::string type;
    std::int32_t blockfactor = 1;
};

/// The files of one command. Each function throws a ContainerFailure when the
/// library fails.
class Container
{
public:
    /// The library's messages go to `routine`.
    explicit Container(io_error_routine routine = reportMessage) : routine_(routine), session_(env_)
    {
    }

    /// IO_OPEN_PRIMARY and its like. Throws if a file to be read does not exist.
    void open(io_request number, const std::string &file);
    /// To read it.
    void open(const ReadableFile &file);
    void close(io_request number = IO_CLOSE_PRIMARY);
    void request(io_request number, IO_header header, IO_data &data);

    [[nodiscard]] open_file &primary() { return *session_.primary(); }

    /// The datasets of the primary file that match, in the library's order. Throws
    /// if there is none.
    [[nodiscard]] located_datasets locate(const DatasetName &name);

    /// Throws unless the code is 0; names the primary file.
    void check(int code) const;

private:
    std::string name_; ///< of the file opened last
    io_error_routine routine_;
    ProgressEnv env_;
    io_session session_;
};

} // namespace veltool
