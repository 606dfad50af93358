// The C++ side of VEL::Parser::Lite: one record per Perl object, one row per method.
//
// The same sources are linked into the program, which registers
// VEL::Parser::Lite::bootstrap with its interpreter, and built as a module that
// an ordinary perl loads. They call only functions of libperl that a perl program
// exports, and only perlCall_p.h of the bridge.
//
// How a method runs. `callMethod` (Lite.cpp) is the only entry: it checks the
// number of arguments and the object, and calls the body of the method's row.
// The body takes its arguments from a LiteCall, calls one function of the
// database, and returns the result, which the LiteCall makes too. Code that can croak
// runs only while no C++ object with a destructor exists.
#pragma once

#include "velapilt/src/velapilt.h"
#include "velparser/api/perlCall_p.h"

namespace velparser {

/// The C++ data of a VEL::Parser::Lite object, allocated by Perl. The object is a
/// reference to a scalar that contains the address of the record, and owns it.
struct LiteRecord
{
    velHandle *handle;    ///< owned if `owns`; never null
    std::int32_t owns;    ///< 1: made by NEW, 0: wraps a database of the program
    std::int16_t running; ///< number of handlers of this record that are running
    std::int16_t guards;  ///< see LiteCall::guard and holdObject
    AV *changeHandlers;   ///< owned; code references; null unless `owns`
    SV *actionHandler;    ///< owned; code reference or null
};
static_assert(sizeof(LiteRecord) == 4 * sizeof(void *));

/// A record in use must not be freed.
[[nodiscard]] inline bool isInUse(const LiteRecord *record)
{
    return record->running > 0 || record->guards > 0;
}

/// What the module keeps for each interpreter.
struct LiteContext
{
    HV *package;      ///< of VEL::Parser::Lite; one reference is owned
    SV *handlerError; ///< owned; the error of a handler that died, until it is rethrown
    bool exitPending; ///< a handler called `exit`, which continues later
    AV *wrappers;     ///< owned; addresses of wrapping records with an action handler
    int running;      ///< number of handlers of all records that are running
};

/// The index of the context in Perl's table of module contexts, the same in every
/// interpreter; −1 until an interpreter has loaded the package.
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
    /// Returns a mortal or immortal scalar, or null for a method without a result.
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
/// The same, for methods of the package itself, which run only after it is loaded.
[[nodiscard]] inline LiteRecord *liteRecord(pTHX_ SV *object)
{
    // The usual case: an object of the package itself, without other magic.
    if (SvROK(object) && SvOBJECT(SvRV(object)) &&
        SvSTASH(SvRV(object)) == liteContext(aTHX).package) {
        const MAGIC *magic = SvMAGIC(SvRV(object));
        if (magic != nullptr && magic->mg_virtual == &liteRecordMagic) {
            return reinterpret_cast<LiteRecord *>(magic->mg_ptr);
        }
    }
    return findLiteRecord(aTHX_ object);
}

/// Frees the record of an object. After that the object does not belong to the package.
/// Null on success and for an object that is already empty. If the record is in use, it
/// stays, and the result is a message.
[[nodiscard]] const char *emptyObject(pTHX_ SV *object);

/// Keeps an object and its database alive until releaseObject, even if Perl code drops all
/// its references. Pass the result to releaseObject.
[[nodiscard]] SV *holdObject(pTHX_ SV *object);
void releaseObject(pTHX_ SV *held);

/// Whether DESTROY has already emptied the object.
[[nodiscard]] bool isEmptied(pTHX_ SV *object);

// --- One call of a method (LiteCall.cpp) -----------------------------------------

/// The arguments and the result of one call. Has no destructor: croak may jump
/// over it. Argument 0 is the object, if the method has one.
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

    /// Keeps the object, its record, and all texts that are taken after this alive until
    /// the end of the method, even if Perl code drops them.
    void guard(pTHX);
    /// Like guard, also for the arguments themselves.
    void guardArguments(pTHX);
    /// A method that may run handlers calls this first. If there are handlers, it does
    /// what guard does. It also drops the error of a handler that is left from an
    /// operation of the program itself.
    void keepAlive(pTHX);

    [[nodiscard]] const char *text(pTHX_ int i) const
    {
        const char *text = byteText(aTHX_ argument(aTHX_ i));
        return copyTexts_ ? SvPVX_const(sv_2mortal(newSVpv(text, 0))) : text;
    }
    /// A number outside of the range of 32 bits becomes the nearest one in it.
    [[nodiscard]] std::int32_t integer(pTHX_ int i) const;
    /// A flag is a number; true if it is not 0.
    [[nodiscard]] bool flag(pTHX_ int i) const { return integer(aTHX_ i) != 0; }
    /// The array that a reference points to, kept alive until the method's end; croaks
    /// "NAME is not an array reference".
    [[nodiscard]] AV *array(pTHX_ int i, const char *name) const;
    /// Like array, but null for undef.
    [[nodiscard]] AV *optionalArray(pTHX_ int i, const char *name) const;
    /// The scalar that a reference points to, for a result. Croaks "METHOD: value is not
    /// a reference", also for a reference to anything except a scalar.
    [[nodiscard]] SV *output(pTHX_ int i) const;

    /// The message as a result, undef for null. If the method may run handlers, this
    /// rethrows the error of a handler that died during the operation.
    [[nodiscard]] SV *message(pTHX_ const char *text) const
    {
        if (mayRunHandlers_) {
            rethrow(aTHX);
        }
        return text != nullptr ? sv_2mortal(newSVpv(text, 0)) : &PL_sv_undef;
    }
    [[nodiscard]] SV *number(pTHX_ IV value) const;
    /// Uses the scalar of the calling operation, so the result is valid until this
    /// operation runs again.
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

/// Runs a query that fills a List, and fills the Perl array with the result. After a
/// failure the array is empty. Returns the method's result.
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
    // The old elements of the array may run code when they are freed, and that code may
    // change the error text of the database.
    SV *message = call.message(aTHX_ error);
    replaceElements(aTHX_ target, values);
    return message;
}

/// How elementTexts treats an undefined or missing element.
enum class UndefinedElement {
    Empty,  ///< the empty text
    Croaks, ///< "Undefined element in array or fetch error"
};

/// The byte texts of all elements, in a mortal buffer, with a null after the
/// last. Valid until the array is changed.
[[nodiscard]] std::span<const char *> elementTexts(pTHX_ AV *array, UndefinedElement undefined);

// --- Handlers (LiteHandlers.cpp) -----------------------------------------------

/// Makes the database call the record's change handlers for every change.
[[nodiscard]] const char *watchChanges(LiteRecord *record);

/// Removes a record from the database before the record is freed.
void forgetWrapper(pTHX_ const LiteRecord *record);

/// The error of a handler that died since the last call of this function; the caller
/// owns it. Null if none died. Call it after every operation that may run handlers. If a
/// handler called `exit` while outer Perl code was running, the exit continues here.
[[nodiscard]] SV *takeHandlerError(pTHX);

/// Drops such an error, unless its operation is still running.
void dropHandlerError(pTHX);

} // namespace velparser

/// Registers the methods; the name that perl's loader looks for.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) void boot_VEL__Parser__Lite(pTHX_ CV *cv);
