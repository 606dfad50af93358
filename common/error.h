// The two exceptions that the editor throws.
//
// They are thrown only on the GUI thread and never pass through the event loop.
// The application object catches them where events are delivered, and `main`
// catches the others.
#pragma once

#include <string>
#include <utility>

namespace velEditor {

/// An editor error after which the command data may still be saved.
class error
{
public:
    /// `message` is the complete text for the user.
    explicit error(std::string message) : message_(std::move(message)) {}
    virtual ~error() = default;

    error(const error &) = default;
    error &operator=(const error &) = default;

    /// The text for the user, in the same bytes as the database gave it.
    [[nodiscard]] const std::string &message() const { return message_; }

private:
    std::string message_;
};

/// The command file could not be loaded; the message comes from the loader. Catch
/// it before `error`, which is its base.
class fileError : public error
{
public:
    using error::error;
};

} // namespace velEditor
