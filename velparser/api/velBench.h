// What a benchmark of the bridge needs beyond the bridge itself.
//
// Not for the programs: the interpreter is theirs, and code evaluated here runs
// in it.
#pragma once

#include "velparser/api/velSession.h"

#include <string>

namespace velparser {

/// Evaluates Perl text in the embedded interpreter, which is started if need
/// be. The value, as text, goes to `result` (may be null). Null, or the text of
/// the error.
[[nodiscard]] const char *evalPerl(const std::string &code, std::string *result);

/// Calls a method of the default instance's object with one text, as all calls
/// into Perl are made. Null where the method gives undef or an empty text.
[[nodiscard]] const char *callPerlMethod(const char *method, const char *argument);

/// Registers `VEL::Bench::echo`, the least that a method written in C can do
/// with a text: `VEL::Bench::echo($object, $text)` gives a copy of the text.
[[nodiscard]] const char *registerEchoMethod();

/// From now on a call that asks the database fails with `message`, as if memory
/// had run out there: `call` is its name. Both are kept as they are, and a null
/// message lets the call work again. The session must have been used.
void failCall(Session &session, const char *call, const char *message);

} // namespace velparser
