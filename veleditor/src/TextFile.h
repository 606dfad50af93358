// A text file that is written from start to end, with every failure kept: a
// full disk often shows only when the data leaves the buffers.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace velEditor {

class TextFile
{
public:
    /// Opens `name` for writing and truncates what was there.
    explicit TextFile(const std::string &name);

    /// Takes over an open descriptor, which is written to from where it is.
    explicit TextFile(int descriptor);

    /// Closes the file; failures are then lost.
    ~TextFile() = default;

    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    /// Whether it could be opened.
    [[nodiscard]] bool isOpen() const { return file_ != nullptr; }

    /// Does nothing after the first failure.
    void write(std::string_view text);

    /// Brings everything to the disk and closes. True when all of it arrived.
    [[nodiscard]] bool close();

    /// What failed first, in the system's words; empty while nothing has.
    [[nodiscard]] const std::string &error() const { return error_; }

private:
    struct Close
    {
        void operator()(std::FILE *file) const { static_cast<void>(std::fclose(file)); }
    };

    void keepError();

    std::unique_ptr<std::FILE, Close> file_;
    std::string error_;
};

} // namespace velEditor
