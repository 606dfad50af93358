// Writes a text file from start to end and keeps the first failure. A full disk often
// shows only when the buffers are written.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace velEditor {

class TextFile
{
public:
    /// Opens `name` for writing and truncates it.
    explicit TextFile(const std::string &name);

    /// Takes ownership of an open descriptor; writes from its current position.
    explicit TextFile(int descriptor);

    /// Closes the file; a failure is lost.
    ~TextFile() = default;

    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    /// Whether the file could be opened.
    [[nodiscard]] bool isOpen() const { return file_ != nullptr; }

    /// Writes `text`; does nothing after the first failure.
    void write(std::string_view text);

    /// Writes everything to the disk and closes. True if nothing failed.
    [[nodiscard]] bool close();

    /// The system's message of the first failure; empty if there is none.
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
