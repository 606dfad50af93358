// The calls that only benchmarks and tests need: evaluation of Perl text in the
// interpreter, a minimal C method, and failures on purpose.

#include "velparser/api/velBench.h"

#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

XSPROTO(echo)
{
    dXSARGS;
    dXSTARG;
    if (items != 2) {
        croak_xs_usage(cv, "self, text");
    }
    PERL_UNUSED_VAR(sp);
    STRLEN length = 0;
    const char *text = SvPV(ST(1), length);
    sv_setpvn(TARG, text, length);
    ST(0) = TARG;
    XSRETURN(1);
}

} // namespace

const char *evalPerl(const std::string &code, std::string *result)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    SV *text = sv_2mortal(newSVpvn(code.data(), code.size()));
    const PerlResult value = evalPerlText(aTHX_ text, G_SCALAR);
    if (value.error != nullptr) {
        return keepMessage(defaultInstance(), plainValue(aTHX_ value.error));
    }
    if (result != nullptr) {
        *result = byteText(aTHX_ plainValue(aTHX_ value.value));
    }
    return nullptr;
}

const char *callPerlMethod(const char *method, const char *argument)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (const char *error = initVELInstance(defaultInstance())) {
        return error;
    }
    return callVELInstanceMethod(defaultInstance(), method, {argument});
}

const char *registerEchoMethod()
{
    if (const char *error = startVELParser()) {
        return error;
    }
    pTHX = velInterpreter();
    newXS("VEL::Bench::echo", echo, __FILE__);
    return nullptr;
}

void failCall(Session &session, const char *call, const char *message)
{
    session.instance()->failingCall = message != nullptr ? call : nullptr;
    session.instance()->failure = message;
}

} // namespace velparser
