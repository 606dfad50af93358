// The process's Perl interpreter: started once, never ended.
#pragma once

#include "velparser/api/perl_p.h"

#include <locale.h>

namespace velparser {

/// Registers what the interpreter has before it reads the first line: the
/// loader of other extensions, VEL::Parser::Lite::bootstrap, and an `exit` that
/// dies instead of taking the editor and its data down. Exit is not allowed
/// from here on.
void xsInit(pTHX);

/// The running interpreter; null before startVELParser has succeeded.
[[nodiscard]] PerlInterpreter *velInterpreter();

/// Perl's locale, for as long as C++ code is in Perl: numbers with a point
/// whatever the process has chosen, and what Perl code chooses for itself stays
/// in Perl. They may be nested.
class PerlLocale
{
public:
    PerlLocale();
    ~PerlLocale();
    PerlLocale(const PerlLocale &) = delete;
    PerlLocale &operator=(const PerlLocale &) = delete;

private:
    locale_t outer_; ///< null in a nested one
};

} // namespace velparser
