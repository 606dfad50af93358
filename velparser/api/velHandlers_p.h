// Changes of the database that may call handlers written in Perl.
#pragma once

#include "velparser/api/Lite_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

/// Runs a database operation that may call handlers written in Perl. If a handler died,
/// the result is its error.
template <class Operation>
const char *runWithHandlers(Session &session, Operation operation)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    dropHandlerError(aTHX);
    const char *error = operation();
    SV *died = takeHandlerError(aTHX);
    if (!died) {
        return error;
    }
    const PerlFrame frame(aTHX);
    sv_2mortal(died);
    return keepMessage(session.instance(), plainValue(aTHX_ died));
}

} // namespace velparser
