// Perl code that is called by the database, and the methods that register it.
//
// The database must not be left by a Perl exception. So each call is trapped:
// the error is put aside, velInterrupt makes the database stop, and the method
// that began the operation rethrows the error when the database has returned.
#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

constexpr char handlerDied[] = "a handler died";

/// A scope in which handlers of a record run.
class HandlerScope
{
public:
    explicit HandlerScope(LiteRecord *record) : record_(record) { ++record_->running; }
    ~HandlerScope() { --record_->running; }
    HandlerScope(const HandlerScope &) = delete;
    HandlerScope &operator=(const HandlerScope &) = delete;

private:
    LiteRecord *record_;
};

/// The text as `croak` would give it: with the place in the Perl code.
SV *newErrorText(pTHX_ const char *text)
{
    return newSVsv(mess_sv(sv_2mortal(newSVpv(text, 0)), FALSE));
}

/// True if the call went well; else what went wrong is put aside.
bool checkResult(pTHX_ velHandle *handle, const PerlResult &result, const char *complaint)
{
    if (!result.exited && !result.error && !complaint)
        return true;
    LiteContext &context = liteContext(aTHX);
    SvREFCNT_dec(context.handlerError);
    context.handlerError = nullptr;
    if (result.exited)
        context.exitPending = true;
    else
        context.handlerError = result.error ? newSVsv(result.error) : newErrorText(aTHX_ complaint);
    velInterrupt(handle, handlerDied);
    return false;
}

SV *mortalText(pTHX_ const char *text)
{
    return text ? sv_2mortal(newSVpv(text, 0)) : &PL_sv_undef;
}

/// One handler; the caller's $@ is kept.
bool callChangeHandler(pTHX_ LiteRecord *record, SV *handler, const char *path, std::int32_t code,
                       const char *newValue, const char *oldValue)
{
    PerlFrame frame(aTHX);
    save_scalar(PL_errgv);
    if (!handler)
        return checkResult(aTHX_ record->handle, PerlResult{},
                           "missing array elt in change handlers");
    // A handler may take itself off the list while it runs.
    sv_2mortal(SvREFCNT_inc_simple_NN(handler));
    const std::array arguments{mortalText(aTHX_ path), sv_2mortal(newSViv(code)),
                               mortalText(aTHX_ newValue), mortalText(aTHX_ oldValue)};
    const PerlResult result =
        callPerl(aTHX_ frame, {nullptr, handler}, arguments, G_SCALAR | G_DISCARD);
    return checkResult(aTHX_ record->handle, result,
                       result.count > 0 ? "Unexpected return value from call_sv on change handler"
                                        : nullptr);
}

/// Gives the number of handlers called. One that is added meanwhile is called
/// from the next change on.
int callChangeHandlers(const char *path, std::int32_t code, const char *newValue,
                       const char *oldValue, void *userData)
{
    dTHX;
    auto *record = static_cast<LiteRecord *>(userData);
    AV *const list = record->changeHandlers;
    const SSize_t count = AvFILLp(list) + 1;
    if (count == 0)
        return 0;
    const HandlerScope running(record);
    int called = 0;
    while (called < count && called <= AvFILLp(list)) {
        SV *handler = AvARRAY(list)[called++];
        if (!callChangeHandler(aTHX_ record, handler, path, code, newValue, oldValue))
            break;
    }
    return called;
}

std::vector<SV *> actionArguments(pTHX_ const char *action, const char *const *arguments)
{
    std::vector<SV *> values{mortalText(aTHX_ action)};
    if (!arguments)
        values.push_back(mortalText(aTHX_ ""));
    else
        for (; *arguments; ++arguments)
            values.push_back(mortalText(aTHX_ * arguments));
    return values;
}

const char *actionComplaint(I32 count)
{
    if (count == 0)
        return "Missing return value from call_sv on action handler";
    if (count > 1)
        return "Too many return values from call_sv on action handler";
    return nullptr;
}

/// Calls the action handler so that it can tell how many values it gives; what
/// the one value is does not matter: an action that returns has succeeded.
int runAction(pTHX_ LiteRecord *record, velHandle *handle, const char *action,
              const char *const *arguments)
{
    const HandlerScope running(record);
    PerlFrame frame(aTHX);
    save_scalar(PL_errgv);
    SV *handler = sv_2mortal(SvREFCNT_inc_simple_NN(record->actionHandler));
    const std::vector<SV *> values = actionArguments(aTHX_ action, arguments);
    const PerlResult result = callPerl(aTHX_ frame, {nullptr, handler}, values, G_LIST);
    checkResult(aTHX_ handle, result, actionComplaint(result.count));
    return 1;
}

int callOwnersAction(velHandle *handle, const char *action, const char *const *arguments,
                     void *userData)
{
    dTHX;
    return runAction(aTHX_ static_cast<LiteRecord *>(userData), handle, action, arguments);
}

SSize_t wrapperIndex(pTHX_ const LiteRecord *record)
{
    AV *wrappers = liteContext(aTHX).wrappers;
    for (SSize_t i = 0; wrappers && i <= AvFILLp(wrappers); ++i)
        if (SvIVX(AvARRAY(wrappers)[i]) == PTR2IV(record))
            return i;
    return -1;
}

/// The database outlives an object that wraps it; an action for an object that
/// is gone is refused.
int callWrappersAction(velHandle *handle, const char *action, const char *const *arguments,
                       void *userData)
{
    dTHX;
    auto *record = static_cast<LiteRecord *>(userData);
    if (wrapperIndex(aTHX_ record) < 0 || record->handle != handle)
        return 0;
    return runAction(aTHX_ record, handle, action, arguments);
}

const char *registerWrapper(pTHX_ LiteRecord *record)
{
    if (wrapperIndex(aTHX_ record) < 0) {
        AV *&wrappers = liteContext(aTHX).wrappers;
        if (!wrappers)
            wrappers = newAV();
        av_push(wrappers, newSViv(PTR2IV(record)));
    }
    return addActionHandler(record->handle, callWrappersAction, record);
}

/// Pointers to the texts of the array, ended by null, in a mortal buffer.
const char **actionTexts(pTHX_ AV *array)
{
    const SSize_t count = av_count(array);
    SV *buffer = sv_2mortal(newSV((static_cast<STRLEN>(count) + 1) * sizeof(char *)));
    auto **texts = reinterpret_cast<const char **>(SvPVX(buffer));
    for (SSize_t i = 0; i < count; ++i) {
        SV **element = av_fetch(array, i, 0);
        const char *text = element ? byteText(aTHX_ * element) : "";
        texts[i] = SvPVX_const(sv_2mortal(newSVpv(text, 0)));
    }
    texts[count] = nullptr;
    return texts;
}

} // namespace

const char *watchChanges(LiteRecord *record)
{
    return addChangeHandler(record->handle, callChangeHandlers, record);
}

void forgetWrapper(pTHX_ const LiteRecord *record)
{
    const SSize_t i = wrapperIndex(aTHX_ record);
    if (i >= 0)
        sv_setiv(AvARRAY(liteContext(aTHX).wrappers)[i], 0);
}

SV *takeHandlerError(pTHX)
{
    LiteContext &context = liteContext(aTHX);
    if (context.exitPending) {
        context.exitPending = false;
        resumeExit(aTHX);
    }
    return std::exchange(context.handlerError, nullptr);
}

SV *liteAddChangeHandler(pTHX_ LiteCall &call)
{
    LiteRecord *record = call.record();
    if (!record->owns)
        croak("VEL::Parser::Lite::addChangeHandler: the database belongs to another object");
    av_push(record->changeHandlers, newSVsv(call.argument(aTHX_ 1)));
    return nullptr;
}

SV *liteClearChangeHandlers(pTHX_ LiteCall &call)
{
    if (AV *list = call.record()->changeHandlers)
        av_clear(list);
    return nullptr;
}

SV *liteRegisterActionHandler(pTHX_ LiteCall &call)
{
    LiteRecord *record = call.record();
    SV *former = record->actionHandler;
    record->actionHandler = newSVsv(call.argument(aTHX_ 1));
    SvREFCNT_dec(former);
    return call.message(aTHX_ record->owns
                            ? addActionHandler(record->handle, callOwnersAction, record)
                            : registerWrapper(aTHX_ record));
}

SV *liteInvokeAction(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    const char *action = call.text(aTHX_ 1);
    AV *array = call.optionalArray(aTHX_ 2, "args");
    const char **arguments = array ? actionTexts(aTHX_ array) : nullptr;
    return call.message(aTHX_ invokeAction(call.handle(), action, arguments));
}

} // namespace velparser
