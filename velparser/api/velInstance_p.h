// The bridge's record of one Perl `API` object, and the ways to call it.
//
// A session owns one. Tests make their own, with a Perl object of theirs in it.
//
// A method reports success by returning undef or an empty text; any other text
// is a failure's message, and an exception counts as its text. Messages are
// texts of the instance's message holder, valid until its next call, or
// constants.
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
    SV *message = nullptr;         ///< owned; the text last handed to a caller
    velHandle *database = nullptr; ///< not owned; found once, kept until the end
    SV *held = nullptr;            ///< owned; the object that keeps the database

    std::optional<LibraryNames> libraries; ///< of the session; none: the environment's

    std::vector<LibraryObject> kept{}; ///< by keepLibraries

    /// For tests: the call that fails, and with which message.
    const char *failingCall = nullptr;
    const char *failure = nullptr;
};

/// That of the default session; null before startVELParser.
[[nodiscard]] velInstance *defaultInstance();

/// Makes the record of the default session, unless it is there or memory has run
/// out.
void makeDefaultInstance();

/// Frees what the instance owns: its Perl object, and the database, unless Perl
/// code has kept it.
void freeInstance(velInstance *instance);

/// Starts the interpreter and calls `API::new`, unless that has been done.
[[nodiscard]] const char *initVELInstance(velInstance *instance);

/// The database of the instance's object (its entry "database"), which is made
/// if need be. Null when there is none.
[[nodiscard]] velHandle *findLiteHandle(velInstance *instance);

/// What %ENV must contain while the object reads its libraries: nothing if useLibraries
/// passed them, or if the session has none of its own.
[[nodiscard]] ScriptVariables libraryVariables(const velInstance *instance);

/// Calls a method with texts.
[[nodiscard]] const char *callVELInstanceMethod(velInstance *instance, const char *method,
                                                std::initializer_list<const char *> arguments);

/// The same with Perl values, mortal or the caller's own.
[[nodiscard]] const char *callVELInstanceValues(velInstance *instance, const char *method,
                                                std::span<SV *const> arguments);

/// Calls a method whose result is an integer, of which the low 32 bits count.
/// −1 for any failure; a number in the form of a text is one. What is wrong
/// with the instance is said on standard error.
[[nodiscard]] int callVELInstanceMethodInt(velInstance *instance, const char *method,
                                           std::initializer_list<const char *> arguments);

/// Calls a method with a path and a reference to `array`, for it to fill. On
/// failure the caller's reference to the array has been dropped; on success
/// the array is still the caller's.
[[nodiscard]] const char *getAnyValue(velInstance *instance, const char *method, const char *path,
                                      AV *array);

/// A new reference to a VEL::Parser::Lite object that wraps `handle`; the
/// caller owns it. Null when the package cannot be loaded.
[[nodiscard]] SV *newLiteObject(velHandle *handle);

/// Loads a Perl package, once, within a frame of the caller's. Null, or what it
/// died with (mortal).
[[nodiscard]] SV *requirePackage(pTHX_ const char *package);

/// Makes `text` the instance's message and returns it.
const char *keepMessage(velInstance *instance, SV *text);

/// What functions of the bridge give when memory runs out.
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

/// guarded, for work with the database of a session; `missing` where there is
/// none. It begins with the name of the call.
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
