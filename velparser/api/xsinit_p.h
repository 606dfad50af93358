// The Perl interpreter of the process, which is started once and never ended.
#pragma once

#include "velparser/api/perl_p.h"

#include <locale.h>

namespace velparser {

/// Registers what the interpreter has before it reads the first line: the loader of other
/// extensions, VEL::Parser::Lite::bootstrap, and an `exit` that dies, so that it cannot end
/// the editor and lose its data. From now on Perl code must not exit.
void xsInit(pTHX);

/// The running interpreter; null before startVELParser has succeeded.
[[nodiscard]] PerlInterpreter *velInterpreter();

/// Sets Perl's locale while Perl code runs: numbers have a decimal point in any locale of
/// the process, and a locale that Perl code sets does not affect the process. Objects of
/// this class may nest.
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
