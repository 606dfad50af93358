// A session: one set of command data with its rules, as a value that its owner
// holds.
//
// A program may have several, one after the other or side by side, each with
// rule libraries of its own. What is done in one is not seen in the other:
// neither the data, nor the rules, nor the handlers of changes. They share the
// interpreter, the packages that it has loaded, and compiled rules where their
// libraries are the same.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace velparser {

struct velInstance;

/// Which rule libraries are read.
struct LibraryNames
{
    std::string folder; ///< of libraries named without a path; empty: the working folder
    std::string files;  ///< their names, separated by ';'; none: no library is read
};

/// What a session is made with.
struct SessionOptions
{
    /// Without it, those that the environment names when they are read.
    std::optional<LibraryNames> libraries;
};

/// Owns a Perl object of class `API` and its database, which are made by the
/// first call that needs them and freed with the session. Everything that calls
/// have given of the session, messages and handle included, ends then too. Only
/// Perl code that has kept the database keeps it longer.
///
/// A session that was moved from has nothing: calls with it fail with "Invalid
/// (NULL) instance handle", or as they do without a database. It may be
/// assigned to. Sessions may be destroyed in any order, also at the end of the
/// process, but not by Perl code of their own while it runs.
class Session
{
public:
    /// Throws std::bad_alloc, and nothing else. Starts nothing.
    explicit Session(const SessionOptions &options = {});
    Session(Session &&other) noexcept;
    Session &operator=(Session &&other) noexcept;
    ~Session();

    /// The bridge's own record of it; null where there is none.
    [[nodiscard]] velInstance *instance() const { return instance_; }

private:
    friend struct DefaultSession;
    constexpr explicit Session(std::nullptr_t) noexcept {}

    velInstance *instance_ = nullptr; ///< owned
};

/// The one that the calls without a session work on. It is made by the first of
/// them and lasts as long as the process. It must not be moved from.
[[nodiscard]] Session &defaultSession();

} // namespace velparser
