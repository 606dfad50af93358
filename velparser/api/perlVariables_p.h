// Sets environment variables for Perl code, and restores them.
#pragma once

#include "velparser/api/perl_p.h"
#include "velparser/api/velparser.h"

namespace velparser {

/// Sets entries of %ENV; the destructor restores the previous ones. Perl gives the
/// environment of the process the same values, for code that Perl code calls in C++ and
/// for programs that it starts.
class PerlVariables
{
public:
    PerlVariables(pTHX_ ScriptVariables variables);
    ~PerlVariables();
    PerlVariables(const PerlVariables &) = delete;
    PerlVariables &operator=(const PerlVariables &) = delete;

private:
    PerlInterpreter *perl_;
    ScriptVariables variables_;
    std::vector<SV *> former_; ///< owned; null if there was no value
};

} // namespace velparser
