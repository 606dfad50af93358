#include "velparser/api/perlCall_p.h"

namespace velparser {

namespace {

I32 callTarget(pTHX_ PerlTarget target, I32 flags)
{
    return target.method ? call_method(target.method, flags) : call_sv(target.code, flags);
}

/// Pushes the arguments, calls, and takes the results off the stack, which is
/// one of its own so that loop controls end at it.
PerlResult callOnOwnStack(pTHX_ PerlTarget target, std::span<SV *const> arguments, I32 context)
{
    {
        dSP;
        PUSHSTACKi(PERLSI_MAGIC);
        PUSHMARK(SP);
        EXTEND(SP, static_cast<SSize_t>(arguments.size()));
        for (SV *argument : arguments)
            PUSHs(argument);
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

/// False when `exit` was called, which jumps to the innermost of Perl's jump
/// environments. Exceptions do not: call_sv and call_method trap them in
/// environments of their own.
bool callTrapped(pTHX_ PerlTarget target, std::span<SV *const> arguments, I32 context,
                 PerlResult &result)
{
    dJMPENV;
    int jumped = 0;
    JMPENV_PUSH(jumped);
    if (jumped == 0)
        result = callOnOwnStack(aTHX_ target, arguments, context);
    JMPENV_POP;
    return jumped == 0;
}

/// Called as Perl code so that what it calls in turn is trapped.
XSPROTO(makeText)
{
    dXSARGS;
    if (items != 1)
        croak_xs_usage(cv, "value");
    const char *text = byteText(aTHX_ ST(0));
    ST(0) = sv_2mortal(newSVpv(text, 0));
    XSRETURN(1);
}

XSPROTO(makeTexts)
{
    dXSARGS;
    if (items != 1)
        croak_xs_usage(cv, "array");
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

/// The value of an unnamed XSUB; null if it died.
SV *callXsub(pTHX_ PerlFrame &frame, XSUBADDR_t xsub, SV *argument)
{
    CV *const code = newXS(nullptr, xsub, __FILE__);
    sv_2mortal(MUTABLE_SV(code));
    const PerlResult result =
        callPerl(aTHX_ frame, {nullptr, MUTABLE_SV(code)}, std::array{argument}, G_SCALAR);
    return result.error ? nullptr : result.value;
}

} // namespace

PerlResult callPerl(pTHX_ PerlFrame &frame, PerlTarget target, std::span<SV *const> arguments,
                    I32 context)
{
    const std::ptrdiff_t mark = PL_markstack_ptr - PL_markstack;
    PerlResult result{0, nullptr, nullptr, true};
    if (callTrapped(aTHX_ target, arguments, context, result))
        return result;
    PL_markstack_ptr = PL_markstack + mark;
    frame.setUnwound();
    return result;
}

void resumeExit(pTHX)
{
    my_exit(static_cast<U32>(STATUS_EXIT));
}

SV *plainValue(pTHX_ PerlFrame &frame, SV *value)
{
    // NOLINTNEXTLINE(misc-redundant-expression): within Perl's macro
    if (!SvGMAGICAL(value) && !(SvROK(value) && SvAMAGIC(value)))
        return value;
    if (SV *text = callXsub(aTHX_ frame, makeText, value))
        return text;
    return sv_2mortal(newSVpvs("(an object whose text cannot be made)"));
}

AV *plainTexts(pTHX_ PerlFrame &frame, AV *values)
{
    SV *reference = sv_2mortal(newRV_inc(MUTABLE_SV(values)));
    SV *texts = callXsub(aTHX_ frame, makeTexts, reference);
    return texts ? MUTABLE_AV(SvRV(texts)) : nullptr;
}

bool isTrue(pTHX_ SV *value)
{
    return SvROK(value) || SvTRUE_nomg(value);
}

const char *makeByteText(pTHX_ SV *value)
{
    SvGETMAGIC(value);
    if (SvPOK(value) && !SvUTF8(value))
        return SvPVX_const(value);
    if (!SvOK(value))
        return "";
    STRLEN length = 0;
    const char *text = SvPV_nomg(value, length);
    if (!SvUTF8(value))
        return text;
    bool wide = true;
    U8 *bytes = bytes_from_utf8(reinterpret_cast<const U8 *>(text), &length, &wide);
    if (wide)
        return text;
    SV *narrow = newSV_type(SVt_PV);
    sv_usepvn_flags(narrow, reinterpret_cast<char *>(bytes), length, SV_HAS_TRAILING_NUL);
    return SvPVX_const(sv_2mortal(narrow));
}

} // namespace velparser
