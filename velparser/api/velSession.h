// A session: one set of command data with its rules, as a value that the caller owns.
//
// A program may have several sessions, one after the other or at the same time, each with
// its own rule libraries. Sessions do not share data, rules or change handlers. They share
// the interpreter, the packages that it has loaded, and compiled rules if their libraries
// have the same contents.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace velparser {

struct velInstance;

/// Which rule libraries are read.
struct LibraryNames
{
    std::string folder; ///< of libraries named without a path; empty: the current folder
    std::string files;  ///< their names, separated by ';'; empty: no library is read
};

/// What a session is made with.
struct SessionOptions
{
    /// Without it, those that the environment names when they are read.
    std::optional<LibraryNames> libraries;
};

/// Owns a Perl object of class `API` and its database. The first call that needs them
/// makes them, and they are freed with the session. Messages and the handle from calls
/// with the session are then not valid any more. The database lasts longer only if Perl
/// code still has a reference to it.
///
/// A session that was moved from has nothing: calls with it fail with "Invalid (NULL)
/// instance handle", or as they do without a database. It may be assigned to. Sessions
/// may be destroyed in any order, even at the end of the process, but not by their own
/// Perl code while it runs.
class Session
{
public:
    /// May throw only std::bad_alloc. Does not start the interpreter.
    explicit Session(const SessionOptions &options = {});
    Session(Session &&other) noexcept;
    Session &operator=(Session &&other) noexcept;
    ~Session();

    /// The bridge's own record of the session; null if there is none.
    [[nodiscard]] velInstance *instance() const { return instance_; }

private:
    friend struct DefaultSession;
    constexpr explicit Session(std::nullptr_t) noexcept {}

    velInstance *instance_ = nullptr; ///< owned
};

/// The session of the calls without a session argument. The first of these calls makes it,
/// and it lasts as long as the process. It must not be moved from.
[[nodiscard]] Session &defaultSession();

} // namespace velparser
