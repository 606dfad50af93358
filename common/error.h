// The two exceptions of the editor.
//
// They are thrown on the GUI thread only and never travel through the event
// loop: the application object catches them where events are delivered and
// `main` handles them at last.
#pragma once

#include <string>
#include <utility>

namespace velEditor {

/// An editor error after which the command data may still be saved.
class error
{
public:
    /// `message` is for the user, and complete.
    explicit error(std::string message) : message_(std::move(message)) {}
    virtual ~error() = default;

    error(const error &) = default;
    error &operator=(const error &) = default;

    /// The text for the user, in bytes as the database gave it.
    [[nodiscard]] const std::string &message() const { return message_; }

private:
    std::string message_;
};

/// The command file could not be loaded; the message is the loader's own.
/// A handler for it must stand before the one for `error`.
class fileError : public error
{
public:
    using error::error;
};

} // namespace velEditor
