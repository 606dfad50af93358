// Environment variables for Perl code, for a time.
#pragma once

#include "velparser/api/perl_p.h"
#include "velparser/api/velparser.h"

namespace velparser {

/// Entries of %ENV that are there as long as this. Perl keeps the environment of the
/// process the same, for what Perl code reads through C++ and for programs that it
/// starts. Afterwards %ENV has what it had before.
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
    std::vector<SV *> former_; ///< owned; null where there was none
};

} // namespace velparser
