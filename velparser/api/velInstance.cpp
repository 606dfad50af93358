#include "velparser/api/velInstance_p.h"

#include "velparser/api/Lite_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

const char *checkInstance(const velInstance *instance)
{
    if (!instance)
        return "Invalid (NULL) instance handle";
    if (!instance->api)
        return "Invalid (uninitialized) instance handle";
    return nullptr;
}

/// The object, and behind it the arguments.
std::vector<SV *> withObject(SV *object, std::span<SV *const> arguments)
{
    std::vector<SV *> all{object};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

/// A null ends the texts.
std::vector<SV *> mortalTexts(pTHX_ std::initializer_list<const char *> texts)
{
    std::vector<SV *> values;
    for (const char *text : texts) {
        if (!text)
            break;
        values.push_back(sv_2mortal(newSVpv(text, 0)));
    }
    return values;
}

/// Calls a method of the instance's object in scalar context.
PerlResult callObject(pTHX_ PerlFrame &frame, const velInstance *instance, const char *method,
                      std::span<SV *const> arguments)
{
    return callPerl(aTHX_ frame, {method, nullptr}, withObject(instance->api, arguments), G_SCALAR);
}

/// The rule for methods that give a text.
const char *callForText(velInstance *instance, const char *method, std::span<SV *const> arguments,
                        PerlFrame &frame)
{
    pTHX = velInterpreter();
    const PerlResult result = callObject(aTHX_ frame, instance, method, arguments);
    if (result.count != 1)
        return "Unexpected return value (not 1) from perl_call_method in callVELInstanceMethod";
    if (result.error)
        return keepMessage(instance, plainValue(aTHX_ frame, result.error));
    if (!SvOK(result.value))
        return nullptr;
    const char *text = keepMessage(instance, plainValue(aTHX_ frame, result.value));
    return *text ? text : nullptr;
}

int printUnexpectedCount(I32 count)
{
    std::fprintf(stderr,
                 "Unexpected return value %d (not 1) from perl_call_method in "
                 "callVELInstanceMethodInt\n",
                 static_cast<int>(count));
    return -1;
}

/// `API::new`, called as a class method.
const char *createObject(velInstance *instance)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    const std::array arguments{sv_2mortal(newSVpvs("API"))};
    SV *constructor = sv_2mortal(newSVpvs("API::new"));
    const PerlResult result = callPerl(aTHX_ frame, {nullptr, constructor}, arguments, G_SCALAR);
    if (result.count != 1)
        return "Unexpected return value from perl_call_argv in initVELInstance";
    if (result.error)
        return keepMessage(instance, plainValue(aTHX_ frame, result.error));
    if (!SvOK(result.value))
        return "Error creating new API object in initVELInstance";
    instance->api = newSVsv(result.value);
    return nullptr;
}

/// The entry "database" of the object, if that is a hash.
SV *databaseEntry(pTHX_ SV *api)
{
    if (!SvROK(api) || SvTYPE(SvRV(api)) != SVt_PVHV)
        return nullptr;
    SV **entry = hv_fetchs(MUTABLE_HV(SvRV(api)), "database", 0);
    return entry ? *entry : nullptr;
}

} // namespace

const char *keepMessage(velInstance *instance, SV *text)
{
    pTHX = velInterpreter();
    const char *bytes = byteText(aTHX_ text);
    if (!instance->message)
        instance->message = newSVpvs("");
    if (instance->message != text)
        sv_setpv(instance->message, bytes);
    return SvPVX_const(instance->message);
}

const char *initVELInstance(velInstance *instance)
{
    if (const char *error = startVELParser())
        return error;
    if (!instance)
        return "Invalid (NULL) instance handle";
    return instance->api ? nullptr : createObject(instance);
}

velHandle *findLiteHandle(velInstance *instance)
{
    if (instance && instance->database)
        return instance->database;
    if (initVELInstance(instance))
        return nullptr;
    pTHX = velInterpreter();
    SV *entry = databaseEntry(aTHX_ instance->api);
    const LiteRecord *record = entry ? liteRecord(aTHX_ entry) : nullptr;
    if (record)
        instance->database = record->handle;
    return instance->database;
}

const char *callVELInstanceMethod(velInstance *instance, const char *method,
                                  std::initializer_list<const char *> arguments)
{
    if (const char *error = checkInstance(instance))
        return error;
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    return callForText(instance, method, mortalTexts(aTHX_ arguments), frame);
}

const char *callVELInstanceValues(velInstance *instance, const char *method,
                                  std::span<SV *const> arguments)
{
    if (const char *error = checkInstance(instance))
        return error;
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    return callForText(instance, method, arguments, frame);
}

int callVELInstanceMethodInt(velInstance *instance, const char *method,
                             std::initializer_list<const char *> arguments)
{
    if (const char *error = checkInstance(instance)) {
        std::fprintf(stderr, "VEL API error: %s\n", error);
        return -1;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    const PerlResult result =
        callObject(aTHX_ frame, instance, method, mortalTexts(aTHX_ arguments));
    if (result.count != 1)
        return printUnexpectedCount(result.count);
    if (result.error) {
        keepMessage(instance, plainValue(aTHX_ frame, result.error));
        return -1;
    }
    if (SvIOK(result.value))
        return static_cast<int>(static_cast<std::uint32_t>(SvIV(result.value)));
    if (SvOK(result.value))
        keepMessage(instance, plainValue(aTHX_ frame, result.value));
    return -1;
}

const char *getAnyValue(velInstance *instance, const char *method, const char *path, AV *array)
{
    pTHX = velInterpreter();
    const char *error = checkInstance(instance);
    if (!error && !path)
        error = "Invalid path in getAnyValue";
    if (!error) {
        const PerlLocale locale;
        PerlFrame frame(aTHX);
        const std::array arguments{sv_2mortal(newSVpv(path, 0)),
                                   sv_2mortal(newRV_inc(MUTABLE_SV(array)))};
        error = callForText(instance, method, arguments, frame);
    }
    if (error)
        SvREFCNT_dec(MUTABLE_SV(array));
    return error;
}

SV *newLiteObject(velHandle *handle)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    eval_pv("require VEL::Parser::Lite;", FALSE);
    if (isTrue(aTHX_ ERRSV))
        return nullptr;
    return newLiteReference(aTHX_ handle, false);
}

} // namespace velparser
