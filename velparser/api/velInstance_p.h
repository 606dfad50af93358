// The bridge's record of one Perl `API` object, and the ways to call it.
//
// A session owns one instance. Tests make their own instances with their own Perl objects.
//
// A method that succeeds returns undef or an empty text. Any other text is the message of
// a failure, and so is the text of an exception. A message is a constant, or belongs to
// the instance and is valid until the next call with it.
#pragma once

#include "velapilt/src/velapilt.h"
#include "velparser/api/perlCall_p.h"
#include "velparser/api/velparser.h"

namespace velparser {

/// An object at the top level that libraries have made.
struct LibraryObject
{
    std::string path;
    velStringList lines;
};

struct velInstance
{
    SV *api = nullptr;             ///< owned; null until initVELInstance has succeeded
    SV *message = nullptr;         ///< owned; the message that a caller got last
    velHandle *database = nullptr; ///< not owned; found once, kept until the end
    SV *held = nullptr;            ///< owned; the object that keeps the database

    std::optional<LibraryNames> libraries; ///< of the session; none: those of the environment

    std::vector<LibraryObject> kept{}; ///< by keepLibraries

    /// For tests: the call that fails, and with which message.
    const char *failingCall = nullptr;
    const char *failure = nullptr;
};

/// That of the default session; null before startVELParser.
[[nodiscard]] velInstance *defaultInstance();

/// Makes the record of the default session, unless it exists. Without memory it does
/// nothing.
void makeDefaultInstance();

/// Frees what the instance owns: its Perl object, and the database, unless Perl code
/// still has a reference to it.
void freeInstance(velInstance *instance);

/// Starts the interpreter and calls `API::new`, unless this is done already.
[[nodiscard]] const char *initVELInstance(velInstance *instance);

/// The database of the instance's object (its entry "database"). Makes the object if
/// necessary. Null if there is no database.
[[nodiscard]] velHandle *findLiteHandle(velInstance *instance);

/// The variables that %ENV must have while the object reads its libraries: none if
/// useLibraries has passed the libraries, or if the session has no libraries of its own.
[[nodiscard]] ScriptVariables libraryVariables(const velInstance *instance);

/// Calls a method with texts.
[[nodiscard]] const char *callVELInstanceMethod(velInstance *instance, const char *method,
                                                std::initializer_list<const char *> arguments);

/// The same with Perl values, which are mortal or owned by the caller.
[[nodiscard]] const char *callVELInstanceValues(velInstance *instance, const char *method,
                                                std::span<SV *const> arguments);

/// Calls a method whose result is an integer, and returns its low 32 bits. −1 for any
/// failure; a number in the form of a text is a failure too. If something is wrong with
/// the instance, standard error says so.
[[nodiscard]] int callVELInstanceMethodInt(velInstance *instance, const char *method,
                                           std::initializer_list<const char *> arguments);

/// Calls a method with a path and a reference to `array`, which the method fills. On
/// success the caller still owns the array. On failure the caller's reference to it has
/// been dropped.
[[nodiscard]] const char *getAnyValue(velInstance *instance, const char *method, const char *path,
                                      AV *array);

/// A new reference to a VEL::Parser::Lite object that refers to `handle`; the caller owns
/// it. Null if the package cannot be loaded.
[[nodiscard]] SV *newLiteObject(velHandle *handle);

/// Loads a Perl package, once, within a frame of the caller. Null, or the error with
/// which it died (mortal).
[[nodiscard]] SV *requirePackage(pTHX_ const char *package);

/// Makes `text` the instance's message and returns it.
const char *keepMessage(velInstance *instance, SV *text);

/// The message of functions of the bridge when there is no memory.
inline constexpr const char *outOfMemory = "velparser: out of memory";

/// Does the work of a public function; no exception leaves the bridge.
template <class Result, class Work>
[[nodiscard]] Result guarded(Result failure, Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        return failure;
    }
}

/// As `guarded`, for work with the database of a session. If there is no database, the
/// result is `missing`, which begins with the name of the call.
template <class Work>
[[nodiscard]] const char *withDatabase(Session &session, const char *missing, Work work)
{
    return guarded(outOfMemory, [&]() -> const char * {
        velHandle *handle = findLiteHandle(session);
        if (!handle) {
            return missing;
        }
        const velInstance *instance = session.instance();
        if (instance->failingCall && std::string_view(missing).starts_with(instance->failingCall)) {
            return instance->failure;
        }
        return work(handle);
    });
}

} // namespace velparser
