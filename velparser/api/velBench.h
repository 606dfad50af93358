// What a benchmark of the bridge needs beyond the bridge itself.
//
// The programs do not use it: code that is evaluated here runs in their interpreter.
#pragma once

#include "velparser/api/velSession.h"

#include <string>

namespace velparser {

/// Evaluates Perl text in the embedded interpreter, and starts the interpreter if
/// necessary. `result` (may be null) gets the value as text. Null, or the text of the
/// error.
[[nodiscard]] const char *evalPerl(const std::string &code, std::string *result);

/// Calls a method of the default session's `API` object with one text, in the same way as
/// all calls into Perl. Null if the method gives undef or an empty text.
[[nodiscard]] const char *callPerlMethod(const char *method, const char *argument);

/// Registers `VEL::Bench::echo`, the smallest method in C that takes a text:
/// `VEL::Bench::echo($object, $text)` gives a copy of the text.
[[nodiscard]] const char *registerEchoMethod();

/// From now on the call of the database with the name `call` fails with `message`, as if
/// there were no memory. Both texts must stay valid. A null message lets the call work
/// again. The session must have been used before.
void failCall(Session &session, const char *call, const char *message);

} // namespace velparser
