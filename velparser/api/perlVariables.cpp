// Sets environment variables for Perl code, and restores them.
#include "velparser/api/perlVariables_p.h"

#include "velparser/api/perlCall_p.h"

namespace velparser {

namespace {

void setEntry(pTHX_ const std::string &name, SV *value)
{
    SV **entry = hv_fetch(GvHVn(PL_envgv), name.data(), static_cast<I32>(name.size()), 1);
    if (entry != nullptr) {
        sv_setsv_mg(*entry, value);
    }
}

/// A copy, owned by the caller; null if there is no value.
SV *copyOfEntry(pTHX_ const std::string &name)
{
    SV **entry = hv_fetch(GvHVn(PL_envgv), name.data(), static_cast<I32>(name.size()), 0);
    return entry != nullptr ? newSVsv(*entry) : nullptr;
}

} // namespace

PerlVariables::PerlVariables(pTHX_ ScriptVariables variables)
    : perl_(aTHX), variables_(std::move(variables)), former_(variables_.size(), nullptr)
{
    const PerlFrame frame(aTHX);
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        const auto &[name, value] = variables_[i];
        former_[i] = copyOfEntry(aTHX_ name);
        setEntry(aTHX_ name, sv_2mortal(newSVpvn(value.data(), value.size())));
    }
}

PerlVariables::~PerlVariables()
{
    pTHX = perl_;
    const PerlFrame frame(aTHX);
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        const std::string &name = variables_[i].first;
        if (former_[i] != nullptr) {
            setEntry(aTHX_ name, sv_2mortal(former_[i]));
        } else {
            hv_delete(GvHVn(PL_envgv), name.data(), static_cast<I32>(name.size()), G_DISCARD);
        }
    }
}

} // namespace velparser
