// Calls of Perl code from C++: errors, results, and `exit` in Perl code.

#include "velparser/api/perlCall_p.h"

#include <unistd.h>

namespace velparser {

namespace {

bool exitAllowed = true;

/// The process that has called allowPerlExit; 0 for none.
pid_t exitOwner = 0;

I32 callTarget(pTHX_ PerlTarget target, I32 flags)
{
    return target.method != nullptr ? call_method(target.method, flags)
                                    : call_sv(target.code, flags);
}

/// Pushes the arguments, calls, and takes the results off the stack. It is a separate
/// stack, so that loop controls cannot leave it.
PerlResult callOnOwnStack(pTHX_ PerlTarget target, std::span<SV *const> arguments, I32 context)
{
    {
        dSP;
        PUSHSTACKi(PERLSI_MAGIC);
        PUSHMARK(SP);
        EXTEND(SP, static_cast<SSize_t>(arguments.size()));
        for (SV *argument : arguments) {
            PUSHs(argument);
        }
        PUTBACK;
    }

    const I32 count = callTarget(aTHX_ target, context | G_EVAL);

    dSP;
    SV *const value = count > 0 ? SP[1 - count] : nullptr;
    SP -= count;
    PUTBACK;
    POPSTACK;
    SV *const error = isTrue(aTHX_ ERRSV) ? sv_mortalcopy(ERRSV) : nullptr;
    return {count, value, error, false};
}

/// False if `exit` was called, which jumps to the innermost of Perl's jump environments.
/// Exceptions do not, because call_sv and call_method trap them in their own environments.
bool callTrapped(pTHX_ PerlTarget target, std::span<SV *const> arguments, I32 context,
                 PerlResult &result)
{
    dJMPENV;
    int jumped = 0;
    JMPENV_PUSH(jumped);
    if (jumped == 0) {
        result = callOnOwnStack(aTHX_ target, arguments, context);
    }
    JMPENV_POP;
    return jumped == 0;
}

/// Called as Perl code, so that exceptions of the code that it calls are trapped.
XSPROTO(makeText)
{
    dXSARGS;
    if (items != 1) {
        croak_xs_usage(cv, "value");
    }
    const char *text = byteText(aTHX_ ST(0));
    ST(0) = sv_2mortal(newSVpv(text, 0));
    XSRETURN(1);
}

XSPROTO(makeTexts)
{
    dXSARGS;
    if (items != 1) {
        croak_xs_usage(cv, "array");
    }
    AV *values = MUTABLE_AV(SvRV(ST(0)));
    AV *texts = newAV();
    SV *reference = sv_2mortal(newRV_noinc(MUTABLE_SV(texts)));
    const SSize_t count = av_count(values);
    for (SSize_t i = 0; i < count; ++i) {
        SV **element = av_fetch(values, i, 0);
        av_push(texts, newSVpv(element ? byteText(aTHX_ * element) : "", 0));
    }
    ST(0) = reference;
    XSRETURN(1);
}

XSPROTO(makeInteger)
{
    dXSARGS;
    if (items != 1) {
        croak_xs_usage(cv, "value");
    }
    ST(0) = sv_2mortal(newSViv(SvIV(ST(0))));
    XSRETURN(1);
}

/// Dies with the error of the evaluated text.
XSPROTO(evaluate)
{
    dXSARGS;
    if (items != 1) {
        croak_xs_usage(cv, "text");
    }
    SV *text = ST(0);
    SP -= items;
    PUTBACK;
    eval_sv(text, GIMME_V | G_RETHROW);
}

bool isForkedChild()
{
    return exitOwner != 0 && exitOwner != getpid();
}

/// Ends a forked child. The program continues only in the parent, which also writes the
/// buffered output of the program.
[[noreturn]] void endChild(pTHX)
{
    PerlIO_flush(nullptr);
    _exit(STATUS_EXIT);
}

/// Whether no outer Perl code is running, so that an `exit` has nothing more to unwind.
bool isFirstCall(pTHX)
{
    return !PL_top_env->je_prev;
}

} // namespace

PerlResult callPerl(pTHX_ PerlTarget target, std::span<SV *const> arguments, I32 context)
{
    const std::ptrdiff_t mark = PL_markstack_ptr - PL_markstack;
    const SSize_t floor = PL_tmps_floor;
    const I32 status = PL_statusvalue;
    PerlResult result{0, nullptr, nullptr, true};
    if (callTrapped(aTHX_ target, arguments, context, result)) {
        return result;
    }
    PL_markstack_ptr = PL_markstack + mark;
    PL_tmps_floor = floor;
    if (exitAllowed || !isFirstCall(aTHX)) {
        return result;
    }
    if (isForkedChild()) {
        endChild(aTHX);
    }
    SV *error = sv_2mortal(newSVpvf("exit(%d) called", static_cast<int>(STATUS_EXIT)));
    PL_statusvalue = status;
    return {context == G_SCALAR ? 1 : 0, &PL_sv_undef, error, false};
}

PerlResult callXsub(pTHX_ XSUBADDR_t xsub, std::span<SV *const> arguments, I32 context)
{
    CV *const code = newXS(nullptr, xsub, __FILE__);
    sv_2mortal(MUTABLE_SV(code));
    return callPerl(aTHX_{nullptr, MUTABLE_SV(code)}, arguments, context);
}

PerlResult evalPerlText(pTHX_ SV *text, I32 context)
{
    return callXsub(aTHX_ evaluate, std::array{text}, context);
}

void allowPerlExit(bool allow)
{
    exitAllowed = allow;
    if (exitOwner == 0) {
        exitOwner = getpid();
    }
}

bool isPerlExitAllowed()
{
    return exitAllowed || isForkedChild();
}

void resumeExit(pTHX)
{
    my_exit(static_cast<U32>(STATUS_EXIT));
}

std::span<SV *> mortalValues(pTHX_ std::size_t count)
{
    SV *room = sv_2mortal(newSV(count * sizeof(SV *) + 1));
    return {reinterpret_cast<SV **>(SvPVX(room)), count};
}

SV *plainValue(pTHX_ SV *value)
{
    if (!runsCode(aTHX_ value)) {
        return value;
    }
    const PerlResult result = callXsub(aTHX_ makeText, std::array{value}, G_SCALAR);
    return result.error != nullptr || result.exited
               ? sv_2mortal(newSVpvs("(an object whose text cannot be made)"))
               : result.value;
}

AV *plainTexts(pTHX_ AV *values, SV **error)
{
    SV *reference = sv_2mortal(newRV_inc(MUTABLE_SV(values)));
    const PerlResult result = callXsub(aTHX_ makeTexts, std::array{reference}, G_SCALAR);
    *error = result.error;
    return result.error != nullptr || result.exited ? nullptr : MUTABLE_AV(SvRV(result.value));
}

PerlResult tryInteger(pTHX_ SV *value)
{
    if (!runsCode(aTHX_ value)) {
        return {1, value, nullptr, false};
    }
    return callXsub(aTHX_ makeInteger, std::array{value}, G_SCALAR);
}

bool isTrue(pTHX_ SV *value)
{
    return SvROK(value) || SvTRUE_nomg(value);
}

const char *makeByteText(pTHX_ SV *value)
{
    SvGETMAGIC(value);
    if (SvPOK(value) && !SvUTF8(value)) {
        return SvPVX_const(value);
    }
    if (!SvOK(value)) {
        return "";
    }
    STRLEN length = 0;
    const char *text = SvPV_nomg(value, length);
    if (!SvUTF8(value)) {
        return text;
    }
    bool wide = true;
    U8 *bytes = bytes_from_utf8(reinterpret_cast<const U8 *>(text), &length, &wide);
    if (wide) {
        return text;
    }
    SV *narrow = newSV_type(SVt_PV);
    sv_usepvn_flags(narrow, reinterpret_cast<char *>(bytes), length, SV_HAS_TRAILING_NUL);
    return SvPVX_const(sv_2mortal(narrow));
}

} // namespace velparser
