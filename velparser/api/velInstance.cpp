// Instances of the Perl classes API and VEL::Validate, and the calls of their methods.

#include "velparser/api/velInstance_p.h"

#include "velparser/api/Lite_p.h"
#include "velparser/api/environment_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

const char *checkInstance(const velInstance *instance)
{
    if (instance == nullptr) {
        return "Invalid (NULL) instance handle";
    }
    if (instance->api == nullptr) {
        return "Invalid (uninitialized) instance handle";
    }
    return nullptr;
}

/// The texts end with a null pointer.
std::span<SV *> mortalTexts(pTHX_ std::initializer_list<const char *> texts)
{
    const auto count = static_cast<std::size_t>(std::ranges::find(texts, nullptr) - texts.begin());
    const std::span<SV *> values = mortalValues(aTHX_ count);
    std::ranges::transform(texts.begin(), texts.begin() + count, values.begin(),
                           [&](const char *text) { return sv_2mortal(newSVpv(text, 0)); });
    return values;
}

/// Calls a method of the instance's object in scalar context.
PerlResult callObject(pTHX_ const velInstance *instance, const char *method,
                      std::span<SV *const> arguments)
{
    const std::span<SV *> all = mortalValues(aTHX_ 1 + arguments.size());
    all[0] = instance->api;
    std::ranges::copy(arguments, all.begin() + 1);
    return callPerl(aTHX_{method, nullptr}, all, G_SCALAR);
}

/// The rule for methods that give a text.
const char *callForText(velInstance *instance, const char *method, std::span<SV *const> arguments)
{
    pTHX = velInterpreter();
    const PerlResult result = callObject(aTHX_ instance, method, arguments);
    if (result.count != 1) {
        return "Unexpected return value (not 1) from perl_call_method in callVELInstanceMethod";
    }
    if (result.error != nullptr) {
        return keepMessage(instance, plainValue(aTHX_ result.error));
    }
    if (!SvOK(result.value)) {
        return nullptr;
    }
    const char *text = keepMessage(instance, plainValue(aTHX_ result.value));
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
    const PerlResult result = callPerl(aTHX_{nullptr, constructor}, arguments, G_SCALAR);
    if (result.count != 1) {
        return "Unexpected return value from perl_call_argv in initVELInstance";
    }
    if (result.error != nullptr) {
        return keepMessage(instance, plainValue(aTHX_ result.error));
    }
    if (!SvOK(result.value)) {
        return "Error creating new API object in initVELInstance";
    }
    instance->api = newSVsv(result.value);
    return nullptr;
}

bool offersMethod(SV *object, const char *method)
{
    pTHX = velInterpreter();
    return sv_isobject(object) && gv_fetchmethod(SvSTASH(SvRV(object)), method);
}

/// Passes the names of the libraries to a new object. An object without the method
/// useLibraries finds them in %ENV while it reads.
const char *nameLibraries(velInstance *instance)
{
    if (!instance->libraries || !offersMethod(instance->api, "useLibraries")) {
        return nullptr;
    }
    const auto &[folder, files] = *instance->libraries;
    const char *error = callVELInstanceMethod(
        instance, "useLibraries", {files.c_str(), folder.empty() ? "." : folder.c_str()});
    // The next call must try again, and report the failure again.
    if (error != nullptr) {
        pTHX = velInterpreter();
        SvREFCNT_dec(std::exchange(instance->api, nullptr));
    }
    return error;
}

/// If `exit` ended the loading of a file, Perl treats the file as loaded.
void forgetFile(pTHX_ const char *package)
{
    SV *code = sv_2mortal(newSVpvf("delete $INC{'%s.pm' =~ s{::}{/}gr};", package));
    static_cast<void>(evalPerlText(aTHX_ code, G_VOID));
}

/// The entry "database" of the object, if that is a hash.
SV *databaseEntry(pTHX_ SV *api)
{
    if (!SvROK(api) || SvTYPE(SvRV(api)) != SVt_PVHV) {
        return nullptr;
    }
    SV **entry = hv_fetchs(MUTABLE_HV(SvRV(api)), "database", 0);
    return entry != nullptr ? *entry : nullptr;
}

} // namespace

const char *keepMessage(velInstance *instance, SV *text)
{
    pTHX = velInterpreter();
    const char *bytes = byteText(aTHX_ text);
    if (instance->message == nullptr) {
        instance->message = newSVpvs("");
    }
    if (instance->message != text) {
        sv_setpv(instance->message, bytes);
    }
    return SvPVX_const(instance->message);
}

SV *requirePackage(pTHX_ const char *package)
{
    SV *text = sv_2mortal(newSVpvf("require %s;", package));
    SV *error = evalPerlText(aTHX_ text, G_VOID).error;
    if (error != nullptr) {
        forgetFile(aTHX_ package);
    }
    return error;
}

const char *initVELInstance(velInstance *instance)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (instance == nullptr) {
        return "Invalid (NULL) instance handle";
    }
    if (instance->api != nullptr) {
        return nullptr;
    }
    const char *error = createObject(instance);
    return error != nullptr ? error : nameLibraries(instance);
}

velHandle *findLiteHandle(velInstance *instance)
{
    if (instance != nullptr && instance->database != nullptr) {
        return instance->database;
    }
    if (initVELInstance(instance) != nullptr) {
        return nullptr;
    }
    pTHX = velInterpreter();
    SV *entry = databaseEntry(aTHX_ instance->api);
    const LiteRecord *record = entry != nullptr ? findLiteRecord(aTHX_ entry) : nullptr;
    if (record == nullptr) {
        return nullptr;
    }
    instance->held = holdObject(aTHX_ entry);
    instance->database = record->handle;
    return instance->database;
}

ScriptVariables libraryVariables(const velInstance *instance)
{
    if (!instance->libraries || offersMethod(instance->api, "useLibraries")) {
        return {};
    }
    const auto &[folder, files] = *instance->libraries;
    return {{libraryFolderVariable, folder.empty() ? "." : folder}, {libraryListVariable, files}};
}

void freeInstance(velInstance *instance)
{
    if (velInterpreter() == nullptr) {
        return;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    // The validator and the database refer to each other.
    if (instance->database != nullptr) {
        velSetUserData(instance->database, nullptr, nullptr);
    }
    instance->database = nullptr;
    SvREFCNT_dec(std::exchange(instance->api, nullptr));
    if (SV *held = std::exchange(instance->held, nullptr)) {
        releaseObject(aTHX_ held);
    }
    SvREFCNT_dec(std::exchange(instance->message, nullptr));
}

const char *callVELInstanceMethod(velInstance *instance, const char *method,
                                  std::initializer_list<const char *> arguments)
{
    if (const char *error = checkInstance(instance)) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    return callForText(instance, method, mortalTexts(aTHX_ arguments));
}

const char *callVELInstanceValues(velInstance *instance, const char *method,
                                  std::span<SV *const> arguments)
{
    if (const char *error = checkInstance(instance)) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    return callForText(instance, method, arguments);
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
    const PerlResult result = callObject(aTHX_ instance, method, mortalTexts(aTHX_ arguments));
    if (result.count != 1) {
        return printUnexpectedCount(result.count);
    }
    if (result.error != nullptr) {
        keepMessage(instance, plainValue(aTHX_ result.error));
        return -1;
    }
    if (SvIOK(result.value)) {
        return static_cast<int>(static_cast<std::uint32_t>(SvIV(result.value)));
    }
    if (SvOK(result.value)) {
        keepMessage(instance, plainValue(aTHX_ result.value));
    }
    return -1;
}

const char *getAnyValue(velInstance *instance, const char *method, const char *path, AV *array)
{
    pTHX = velInterpreter();
    const char *error = checkInstance(instance);
    if (error == nullptr && path == nullptr) {
        error = "Invalid path in getAnyValue";
    }
    if (error == nullptr) {
        const PerlLocale locale;
        PerlFrame frame(aTHX);
        const std::array arguments{sv_2mortal(newSVpv(path, 0)),
                                   sv_2mortal(newRV_inc(MUTABLE_SV(array)))};
        error = callForText(instance, method, arguments);
    }
    if (error != nullptr) {
        SvREFCNT_dec(MUTABLE_SV(array));
    }
    return error;
}

SV *newLiteObject(velHandle *handle)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    PerlFrame frame(aTHX);
    if (requirePackage(aTHX_ "VEL::Parser::Lite") != nullptr) {
        return nullptr;
    }
    return newLiteReference(aTHX_ handle, false);
}

} // namespace velparser
