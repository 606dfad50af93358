// Inside of VEL::Parser::Lite: one record per Perl object, one row per method.
//
// The same sources are linked into the program, which registers
// VEL::Parser::Lite::bootstrap with its interpreter, and built as a module that
// an ordinary perl loads. They call no function of libperl that a perl program
// does not export, and nothing else of the bridge than perlCall_p.h.
//
// How a method runs. `callMethod` (Lite.cpp) is the only entry: it checks the
// number of arguments and the object, and calls the body of the method's row.
// The body takes its arguments from a LiteCall, calls one function of the
// database, and gives the result, made by the LiteCall too. Whatever can croak
// comes before or after the life of any C++ object with a destructor.
#pragma once

#include "velapilt/src/velapilt.h"
#include "velparser/api/perlCall_p.h"

namespace velparser {

/// The C++ data of a VEL::Parser::Lite object, allocated by Perl. The object is a
/// reference to a scalar that contains the address of the record, and owns it.
struct LiteRecord
{
    velHandle *handle;    ///< owned if `owns`; null is never met
    std::int32_t owns;    ///< 1: made by NEW, 0: wraps a database of the program's
    std::int16_t running; ///< handlers of this record that run at this moment
    std::int16_t guards;  ///< see LiteCall::guard and holdObject
    AV *changeHandlers;   ///< owned; code references; null unless `owns`
    SV *actionHandler;    ///< owned; code reference or null
};
static_assert(sizeof(LiteRecord) == 4 * sizeof(void *));

/// While it is, it must not be freed.
[[nodiscard]] inline bool isInUse(const LiteRecord *record)
{
    return record->running > 0 || record->guards > 0;
}

/// What the module keeps for each interpreter.
struct LiteContext
{
    HV *package;      ///< of VEL::Parser::Lite; one reference is held
    SV *handlerError; ///< owned; with what a handler died, until it is rethrown
    bool exitPending; ///< a handler called `exit`, which goes on likewise
    AV *wrappers;     ///< owned; addresses of wrapping records with an action handler
    int running;      ///< handlers of all records that run at this moment
};

/// Its place among the contexts of all modules, the same in every interpreter;
/// −1 while none has loaded the package.
extern int liteContextIndex;

[[nodiscard]] inline LiteContext &liteContext(pTHX)
{
    return *static_cast<LiteContext *>(PL_my_cxt_list[liteContextIndex]);
}

class LiteCall;

/// A row of the method table. The number of arguments is that of `usage`.
struct LiteMethod
{
    const char *name;
    /// Gives a mortal or immortal scalar, or null for a method without result.
    SV *(*body)(pTHX_ LiteCall &call);
    const char *usage;
};

// --- Objects (LiteObject.cpp) -------------------------------------------------

/// A new reference, blessed into VEL::Parser::Lite, to a record that owns or
/// wraps `handle`. The caller owns the reference.
[[nodiscard]] SV *newLiteReference(pTHX_ velHandle *handle, bool owns);

/// Marks the scalars of objects. Its address cannot be forged; the number in a scalar
/// could be.
extern MGVTBL liteRecordMagic;

/// The record of an object of VEL::Parser::Lite or of a class derived from it. Null for
/// anything else, for an object that DESTROY has emptied, and if the package was never
/// loaded.
[[nodiscard]] LiteRecord *findLiteRecord(pTHX_ SV *object);
/// The same for the package's own methods, which only run once it is loaded.
[[nodiscard]] inline LiteRecord *liteRecord(pTHX_ SV *object)
{
    // Nearly always: an object of the package itself, with no other mark.
    if (SvROK(object) && SvOBJECT(SvRV(object)) &&
        SvSTASH(SvRV(object)) == liteContext(aTHX).package) {
        const MAGIC *magic = SvMAGIC(SvRV(object));
        if (magic && magic->mg_virtual == &liteRecordMagic)
            return reinterpret_cast<LiteRecord *>(magic->mg_ptr);
    }
    return findLiteRecord(aTHX_ object);
}

/// Frees the record of an object. After that the object does not belong to the package.
/// If the record is in use, it is kept and the result is a message. Null on success and
/// for an object that is already empty.
[[nodiscard]] const char *emptyObject(pTHX_ SV *object);

/// Keeps an object, and with it its database, until releaseObject, whatever Perl
/// code does with its own references. What it gives is for releaseObject.
[[nodiscard]] SV *holdObject(pTHX_ SV *object);
void releaseObject(pTHX_ SV *held);

/// Whether DESTROY has emptied the object before.
[[nodiscard]] bool isEmptied(pTHX_ SV *object);

// --- One call of a method (LiteCall.cpp) -----------------------------------------

/// The arguments and the result of one call. Has no destructor: croak may jump
/// over it. Argument 0 is the object, where the method has one.
class LiteCall
{
public:
    LiteCall(const LiteMethod &method, I32 firstArgument, I32 count, LiteRecord *record)
        : method_(method), first_(firstArgument), count_(count), record_(record)
    {
    }

    [[nodiscard]] LiteRecord *record() const { return record_; }
    [[nodiscard]] velHandle *handle() const { return record_->handle; }
    [[nodiscard]] SV *argument(pTHX_ int i) const { return PL_stack_base[first_ + i]; }

    /// Keeps the object, its record, and the texts taken after this alive until
    /// the method's end, whatever Perl code runs meanwhile.
    void guard(pTHX);
    /// guard, for the arguments themselves too.
    void guardArguments(pTHX);
    /// To be called first by a method that may run handlers: a guard where there
    /// are any. What handlers died with in an operation that the program began by
    /// itself, and never asked for, is dropped.
    void keepAlive(pTHX);

    [[nodiscard]] const char *text(pTHX_ int i) const
    {
        const char *text = byteText(aTHX_ argument(aTHX_ i));
        return copyTexts_ ? SvPVX_const(sv_2mortal(newSVpv(text, 0))) : text;
    }
    /// Clamped to 32 bits.
    [[nodiscard]] std::int32_t integer(pTHX_ int i) const;
    /// A flag is a number: whether it is another one than 0.
    [[nodiscard]] bool flag(pTHX_ int i) const { return integer(aTHX_ i) != 0; }
    /// The array that a reference points to, kept alive until the method's end; croaks
    /// "NAME is not an array reference".
    [[nodiscard]] AV *array(pTHX_ int i, const char *name) const;
    /// As array, but null for undef.
    [[nodiscard]] AV *optionalArray(pTHX_ int i, const char *name) const;
    /// The scalar that a reference points to, to be set; croaks "METHOD: value is not
    /// a reference", also for a reference to anything but a scalar.
    [[nodiscard]] SV *output(pTHX_ int i) const;

    /// The message as a result, undef for null. Where the method may run
    /// handlers, rethrows the error of one that died during the operation.
    [[nodiscard]] SV *message(pTHX_ const char *text) const
    {
        if (mayRunHandlers_)
            rethrow(aTHX);
        return text ? sv_2mortal(newSVpv(text, 0)) : &PL_sv_undef;
    }
    [[nodiscard]] SV *number(pTHX_ IV value) const;
    /// Uses the calling operation's own scalar: valid until it runs again.
    [[nodiscard]] SV *string(pTHX_ std::string_view text) const;

private:
    static void rethrow(pTHX);

    const LiteMethod &method_;
    I32 first_;
    I32 count_;
    LiteRecord *record_;
    bool mayRunHandlers_ = false;
    bool copyTexts_ = false;
};

/// Empties `target` and fills it with the elements of `values` (mortal, plain),
/// which are shared, not copied.
void replaceElements(pTHX_ AV *target, AV *values);

/// A mortal array with copies of the texts, undef for null.
[[nodiscard]] AV *newArray(pTHX_ const velStringList &texts);
[[nodiscard]] AV *newArray(pTHX_ const std::vector<std::int32_t> &numbers);

/// Runs a query that fills a List, and fills the Perl array with the result;
/// also on failure, then with nothing. Gives the method's result.
template <class List, class Query>
[[nodiscard]] SV *fillArray(pTHX_ const LiteCall &call, AV *target, Query query)
{
    const char *error = nullptr;
    AV *values = nullptr;
    {
        List list;
        error = query(&list);
        values = newArray(aTHX_ list);
    }
    // The array's old elements may run code when they go, and the error text of
    // the database with it.
    SV *message = call.message(aTHX_ error);
    replaceElements(aTHX_ target, values);
    return message;
}

/// What an element that is undefined or missing means to elementTexts.
enum class UndefinedElement {
    Empty,  ///< the empty text
    Croaks, ///< "Undefined element in array or fetch error"
};

/// The byte texts of all elements, in a mortal buffer, with a null after the
/// last. Valid until the array is changed.
[[nodiscard]] std::span<const char *> elementTexts(pTHX_ AV *array, UndefinedElement undefined);

// --- Handlers (LiteHandlers.cpp) -----------------------------------------------

/// Has the record's change handlers called for every change of its database.
[[nodiscard]] const char *watchChanges(LiteRecord *record);

/// Takes a record that is about to be freed out of reach of the database.
void forgetWrapper(pTHX_ const LiteRecord *record);

/// The error with which a handler died since this was last asked; the caller
/// owns it. Null if none did. To be asked after every operation that may run
/// handlers. Where a handler called `exit` and other Perl code is running below,
/// this is where the exit goes on.
[[nodiscard]] SV *takeHandlerError(pTHX);

/// Forgets such an error, unless it is that of an operation still at work.
void dropHandlerError(pTHX);

} // namespace velparser

/// Registers the methods; the name that perl's loader looks for.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) void boot_VEL__Parser__Lite(pTHX_ CV *cv);
