// Perl code that is called by the database, and the methods that register it.
//
// A Perl exception must not leave the database. So each call is trapped: the error is
// stored, velInterrupt makes the database stop, and the method that began the operation
// rethrows the error when the database has returned.
#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

constexpr char handlerDied[] = "a handler died";

/// How deep handlers may nest whose changes call handlers again. Each level uses some of
/// the C++ stack.
constexpr int deepestHandler = 200;

/// A scope in which handlers of a record run.
class HandlerScope
{
public:
    HandlerScope(pTHX_ LiteRecord *record) : record_(record), context_(liteContext(aTHX))
    {
        ++record_->running;
        ++context_.running;
    }
    ~HandlerScope()
    {
        --record_->running;
        --context_.running;
    }
    [[nodiscard]] bool isTooDeep() const { return context_.running > deepestHandler; }
    HandlerScope(const HandlerScope &) = delete;
    HandlerScope &operator=(const HandlerScope &) = delete;

private:
    LiteRecord *record_;
    LiteContext &context_;
};

/// The text with the place in the Perl code, as `croak` gives it.
SV *newErrorText(pTHX_ const char *text)
{
    return newSVsv(mess_sv(sv_2mortal(newSVpv(text, 0)), FALSE));
}

/// True if the call succeeded; otherwise the error is stored.
bool checkResult(pTHX_ velHandle *handle, const PerlResult &result, const char *complaint)
{
    if (!result.exited && result.error == nullptr && complaint == nullptr) {
        return true;
    }
    LiteContext &context = liteContext(aTHX);
    SvREFCNT_dec(context.handlerError);
    context.handlerError = nullptr;
    if (result.exited) {
        context.exitPending = true;
    } else {
        context.handlerError =
            result.error != nullptr ? newSVsv(result.error) : newErrorText(aTHX_ complaint);
    }
    velInterrupt(handle, handlerDied);
    return false;
}

int refuseDepth(pTHX_ velHandle *handle)
{
    const PerlFrame frame(aTHX);
    checkResult(aTHX_ handle, PerlResult{}, "Handlers call each other without end");
    return 0;
}

SV *mortalText(pTHX_ const char *text)
{
    return text != nullptr ? sv_2mortal(newSVpv(text, 0)) : &PL_sv_undef;
}

/// Calls one handler. The caller's $@ does not change.
bool callChangeHandler(pTHX_ LiteRecord *record, SV *handler, const char *path, std::int32_t code,
                       const char *newValue, const char *oldValue)
{
    PerlFrame frame(aTHX);
    save_scalar(PL_errgv);
    if (handler == nullptr) {
        return checkResult(aTHX_ record->handle, PerlResult{},
                           "missing array elt in change handlers");
    }
    // A handler may remove itself from the list while it runs.
    sv_2mortal(SvREFCNT_inc_simple_NN(handler));
    const std::array arguments{mortalText(aTHX_ path), sv_2mortal(newSViv(code)),
                               mortalText(aTHX_ newValue), mortalText(aTHX_ oldValue)};
    const PerlResult result = callPerl(aTHX_{nullptr, handler}, arguments, G_SCALAR | G_DISCARD);
    return checkResult(aTHX_ record->handle, result,
                       result.count > 0 ? "Unexpected return value from call_sv on change handler"
                                        : nullptr);
}

/// Returns the number of handlers that were called. A handler that is added meanwhile is
/// called from the next change on.
int callChangeHandlers(const char *path, std::int32_t code, const char *newValue,
                       const char *oldValue, void *userData)
{
    dTHX;
    auto *record = static_cast<LiteRecord *>(userData);
    AV *const list = record->changeHandlers;
    const SSize_t count = AvFILLp(list) + 1;
    if (count == 0) {
        return 0;
    }
    const HandlerScope running(aTHX_ record);
    if (running.isTooDeep()) {
        return refuseDepth(aTHX_ record->handle);
    }
    // A handler may replace the list.
    SvREFCNT_inc_simple_void_NN(list);
    int called = 0;
    while (called < count && list == record->changeHandlers) {
        SV *handler = AvARRAY(list)[called++];
        if (!callChangeHandler(aTHX_ record, handler, path, code, newValue, oldValue)) {
            break;
        }
    }
    SvREFCNT_dec_NN(list);
    return called;
}

std::span<SV *> actionArguments(pTHX_ const char *action, const char *const *arguments)
{
    static const char *const none[] = {"", nullptr};
    if (arguments == nullptr) {
        arguments = none;
    }
    std::size_t count = 0;
    while (arguments[count] != nullptr) {
        ++count;
    }
    const std::span<SV *> values = mortalValues(aTHX_ 1 + count);
    values[0] = mortalText(aTHX_ action);
    for (std::size_t i = 0; i < count; ++i) {
        values[1 + i] = mortalText(aTHX_ arguments[i]);
    }
    return values;
}

const char *actionComplaint(I32 count)
{
    if (count == 0) {
        return "Missing return value from call_sv on action handler";
    }
    if (count > 1) {
        return "Too many return values from call_sv on action handler";
    }
    return nullptr;
}

/// Calls the action handler in list context, to count its values. The value itself does not
/// matter: an action that returns has succeeded.
int runAction(pTHX_ LiteRecord *record, velHandle *handle, const char *action,
              const char *const *arguments)
{
    const HandlerScope running(aTHX_ record);
    if (running.isTooDeep()) {
        return refuseDepth(aTHX_ handle);
    }
    PerlFrame frame(aTHX);
    save_scalar(PL_errgv);
    SV *handler = sv_2mortal(SvREFCNT_inc_simple_NN(record->actionHandler));
    const std::span<SV *> values = actionArguments(aTHX_ action, arguments);
    const PerlResult result = callPerl(aTHX_{nullptr, handler}, values, G_LIST);
    if (checkResult(aTHX_ handle, result, actionComplaint(result.count))) {
        checkResult(aTHX_ handle, tryInteger(aTHX_ result.value), nullptr);
    }
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
    for (SSize_t i = 0; (wrappers != nullptr) && i <= AvFILLp(wrappers); ++i) {
        if (SvIVX(AvARRAY(wrappers)[i]) == PTR2IV(record)) {
            return i;
        }
    }
    return -1;
}

/// The database lasts longer than an object that only refers to it. An action for an
/// object that does not exist any more is refused.
int callWrappersAction(velHandle *handle, const char *action, const char *const *arguments,
                       void *userData)
{
    dTHX;
    auto *record = static_cast<LiteRecord *>(userData);
    if (wrapperIndex(aTHX_ record) < 0 || record->handle != handle) {
        return 0;
    }
    return runAction(aTHX_ record, handle, action, arguments);
}

const char *registerWrapper(pTHX_ LiteRecord *record)
{
    if (wrapperIndex(aTHX_ record) < 0) {
        AV *&wrappers = liteContext(aTHX).wrappers;
        if (wrappers == nullptr) {
            wrappers = newAV();
        }
        av_push(wrappers, newSViv(PTR2IV(record)));
    }
    return addActionHandler(record->handle, callWrappersAction, record);
}

} // namespace

const char *watchChanges(LiteRecord *record)
{
    return addChangeHandler(record->handle, callChangeHandlers, record);
}

void forgetWrapper(pTHX_ const LiteRecord *record)
{
    const SSize_t i = wrapperIndex(aTHX_ record);
    if (i >= 0) {
        sv_setiv(AvARRAY(liteContext(aTHX).wrappers)[i], 0);
    }
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

void dropHandlerError(pTHX)
{
    LiteContext &context = liteContext(aTHX);
    if (context.running > 0) {
        return;
    }
    SvREFCNT_dec(context.handlerError);
    context.handlerError = nullptr;
    context.exitPending = false;
}

SV *liteAddChangeHandler(pTHX_ LiteCall &call)
{
    LiteRecord *record = call.record();
    if (!record->owns) {
        croak("VEL::Parser::Lite::addChangeHandler: the database belongs to another object");
    }
    av_push(record->changeHandlers, newSVsv(call.argument(aTHX_ 1)));
    return nullptr;
}

SV *liteClearChangeHandlers(pTHX_ LiteCall &call)
{
    // Destructors of the old handlers may add handlers: these go into the new list.
    if (AV *&list = call.record()->changeHandlers) {
        sv_2mortal(MUTABLE_SV(std::exchange(list, newAV())));
    }
    return nullptr;
}

SV *liteRegisterActionHandler(pTHX_ LiteCall &call)
{
    LiteRecord *record = call.record();
    SV *handler = newSVsv(call.argument(aTHX_ 1));
    // Mortal, because a destructor of the previous handler may destroy the object.
    sv_2mortal(std::exchange(record->actionHandler, handler));
    return call.message(aTHX_ record->owns
                            ? addActionHandler(record->handle, callOwnersAction, record)
                            : registerWrapper(aTHX_ record));
}

SV *liteInvokeAction(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    // Reading the elements may run code.
    call.guard(aTHX);
    const char *action = call.text(aTHX_ 1);
    AV *array = call.optionalArray(aTHX_ 2, "args");
    const char **arguments =
        array != nullptr ? elementTexts(aTHX_ array, UndefinedElement::Empty).data() : nullptr;
    return call.message(aTHX_ invokeAction(call.handle(), action, arguments));
}

} // namespace velparser
