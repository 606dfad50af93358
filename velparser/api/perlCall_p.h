// The one way in which C++ calls Perl code.
//
// A PerlFrame holds what the call leaves behind; callPerl makes the call with
// every exception trapped; the result is read while the frame is open.
#pragma once

#include "velparser/api/perl_p.h"

namespace velparser {

/// A scope and a frame of temporaries. All that was made mortal within it is
/// freed when it ends. Frames nest; they are left by return, never by croak.
class PerlFrame
{
public:
    explicit PerlFrame(pTHX) : perl_(aTHX), scope_(PL_scopestack_ix)
    {
        ENTER;
        SAVETMPS;
    }
    ~PerlFrame()
    {
        pTHX = perl_;
        if (!unwound_)
            FREETMPS;
        while (PL_scopestack_ix > scope_)
            LEAVE;
    }
    PerlFrame(const PerlFrame &) = delete;
    PerlFrame &operator=(const PerlFrame &) = delete;

    /// Perl has been unwound to its outermost level. Temporaries are then no
    /// longer told apart by frame; all stay until the exit goes on.
    void setUnwound() { unwound_ = true; }

private:
    PerlInterpreter *perl_;
    I32 scope_;
    bool unwound_ = false;
};

/// What is called: a method of the first argument, or a code reference.
struct PerlTarget
{
    const char *method = nullptr;
    SV *code = nullptr;
};

/// What a call gave; valid until the frame ends.
struct PerlResult
{
    I32 count;   ///< number of values that came back
    SV *value;   ///< the first of them; null if there is none
    SV *error;   ///< a copy of $@ if the code died, else null
    bool exited; ///< the code ended the process; see callPerl
};

/// Calls `target` with `arguments` (mortal, or owned by the caller) in the
/// `context` G_SCALAR, G_LIST or G_VOID. `last` and `next` cannot leave the
/// called code for a loop outside it.
///
/// `exit` in the called code unwinds all of Perl. It is stopped here, so that
/// the C++ code in between can finish; that code must then call resumeExit
/// before it touches Perl in any other way. Nothing of the kind happens in the
/// embedded interpreter, where `exit` is an exception.
[[nodiscard]] PerlResult callPerl(pTHX_ PerlFrame &frame, PerlTarget target,
                                  std::span<SV *const> arguments, I32 context);

/// Goes on with an `exit` that callPerl has stopped.
[[noreturn]] void resumeExit(pTHX);

/// The value itself, or, for one that makes its text by running code (an
/// object, a tied scalar), that text as a mortal scalar: reading the result
/// never runs code outside of a trap.
[[nodiscard]] SV *plainValue(pTHX_ PerlFrame &frame, SV *value);

/// The byte texts of all elements, as a mortal array of plain scalars. Null
/// when the array or an element is tied to code that died.
[[nodiscard]] AV *plainTexts(pTHX_ PerlFrame &frame, AV *values);

/// True for a reference and by Perl's rule for anything else; never runs code.
[[nodiscard]] bool isTrue(pTHX_ SV *value);

/// The bytes of a text, ended by NUL: each character below 256 a byte, or, if
/// there is one above, the text's UTF-8 form; "" for undef. Valid while `value`
/// and the current temporaries live. May run code, and so croak, for tied and
/// overloaded values.
[[nodiscard]] const char *makeByteText(pTHX_ SV *value);
[[nodiscard]] inline const char *byteText(pTHX_ SV *value)
{
    if (SvPOK(value) && !SvUTF8(value) && !SvGMAGICAL(value))
        return SvPVX_const(value);
    return makeByteText(aTHX_ value);
}

} // namespace velparser
