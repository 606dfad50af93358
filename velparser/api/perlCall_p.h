// The one way in which C++ calls Perl code.
//
// A PerlFrame owns the temporary values of a call. callPerl makes the call and traps every
// exception. The result is read while the frame is open.
#pragma once

#include "velparser/api/perl_p.h"

namespace velparser {

/// A scope and a frame of temporaries. Mortal values that are made in it are freed when it
/// ends. Frames nest. A frame ends by return, never by croak.
///
/// The frame itself stores where its temporaries begin, instead of SAVETMPS: an `exit`
/// empties Perl's own stack of saved values, and outer frames would lose values that they
/// use.
class PerlFrame
{
public:
    explicit PerlFrame(pTHX)
        : perl_(aTHX), scope_(PL_scopestack_ix), floor_(PL_tmps_floor), base_(PL_tmps_ix)
    {
        ENTER;
        PL_tmps_floor = base_;
    }
    ~PerlFrame()
    {
        pTHX = perl_;
        PL_tmps_floor = base_;
        FREETMPS;
        while (PL_scopestack_ix > scope_) {
            LEAVE;
        }
        PL_tmps_floor = floor_;
    }
    PerlFrame(const PerlFrame &) = delete;
    PerlFrame &operator=(const PerlFrame &) = delete;

private:
    PerlInterpreter *perl_;
    I32 scope_;
    SSize_t floor_;
    SSize_t base_;
};

/// What is called: a method of the first argument, or a code reference.
struct PerlTarget
{
    const char *method = nullptr;
    SV *code = nullptr;
};

/// The result of a call; valid until the frame ends.
struct PerlResult
{
    I32 count;   ///< number of returned values
    SV *value;   ///< the first of them; null if there is none
    SV *error;   ///< a copy of $@ if the code died, otherwise null
    bool exited; ///< the code called `exit`; see callPerl
};

/// Calls `target` with `arguments` (mortal, or owned by the caller) in the
/// `context` G_SCALAR, G_LIST or G_VOID, within a PerlFrame of the caller's.
/// `last` and `next` cannot leave the called code for a loop outside it.
///
/// `exit` unwinds all Perl code that is running, down to the first call from C++.
/// callPerl stops the `exit`, so that the C++ code between the calls can finish.
/// - If outer Perl code is running, `exited` is set. After that, only resumeExit may be
///   called, which continues to unwind.
/// - At the first call `exited` is set too if exit is allowed; otherwise the result is
///   the error "exit(N) called" (see allowPerlExit). A child that Perl code has forked
///   ends here with that status.
[[nodiscard]] PerlResult callPerl(pTHX_ PerlTarget target, std::span<SV *const> arguments,
                                  I32 context);

/// Calls C++ code as callPerl calls Perl code: if this code calls Perl code that dies, the
/// exception is trapped.
[[nodiscard]] PerlResult callXsub(pTHX_ XSUBADDR_t xsub, std::span<SV *const> arguments,
                                  I32 context);

/// Evaluates Perl text as callPerl calls code.
[[nodiscard]] PerlResult evalPerlText(pTHX_ SV *text, I32 context);

/// Whether `exit` may end the process: true at first, as in an ordinary perl.
/// The embedded interpreter allows it to scripts, and to children that were
/// forked after the first call of allowPerlExit.
void allowPerlExit(bool allow);
[[nodiscard]] bool isPerlExitAllowed();

/// Continues an `exit` that callPerl has stopped.
[[noreturn]] void resumeExit(pTHX);

/// Room for the arguments of a call, freed with the frame.
[[nodiscard]] std::span<SV *> mortalValues(pTHX_ std::size_t count);

/// Whether reading the value runs Perl code: an object that overloads operators,
/// or a scalar with magic.
[[nodiscard]] inline bool runsCode(pTHX_ SV *value)
{
    // NOLINTNEXTLINE(misc-redundant-expression): within Perl's macro
    return SvGMAGICAL(value) || (SvROK(value) && SvAMAGIC(value));
}

/// The value itself, or, if its text is made by running code (an object, a tied scalar),
/// that text as a mortal scalar. Reading the result never runs code outside of a trap.
[[nodiscard]] SV *plainValue(pTHX_ SV *value);

/// The byte texts of all elements, as a mortal array of plain scalars. Null if the array or
/// an element is tied to code that died; `error` is then its error.
[[nodiscard]] AV *plainTexts(pTHX_ AV *values, SV **error);

/// Converts the value to an integer if that runs code (objects, tied scalars). Any other
/// value is returned unchanged.
[[nodiscard]] PerlResult tryInteger(pTHX_ SV *value);

/// True for a reference and by Perl's rule for anything else; never runs code.
[[nodiscard]] bool isTrue(pTHX_ SV *value);

/// The bytes of a text, ended by NUL: one byte for each character below 256, or the text's
/// UTF-8 form if it has a larger character; "" for undef. Valid while `value` and the
/// current temporaries live. May run code, and so croak, for tied and overloaded values.
[[nodiscard]] const char *makeByteText(pTHX_ SV *value);
[[nodiscard]] inline const char *byteText(pTHX_ SV *value)
{
    if (SvPOK(value) && !SvUTF8(value) && !SvGMAGICAL(value)) {
        return SvPVX_const(value);
    }
    return makeByteText(aTHX_ value);
}

} // namespace velparser
