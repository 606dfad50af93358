// The editor's questions: those about data go straight to the database, those
// about rules to the Perl object.
#include "velparser/api/velparser.h"

#include "velparser/api/Lite_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

/// Runs a database operation that may call handlers written in Perl. Where one
/// died, what it died with is the result.
template <class Operation>
const char *runWithHandlers(Operation operation)
{
    pTHX = velInterpreter();
    const PerlLocale locale;
    dropHandlerError(aTHX);
    const char *error = operation();
    SV *died = takeHandlerError(aTHX);
    if (!died)
        return error;
    const PerlFrame frame(aTHX);
    sv_2mortal(died);
    return keepMessage(defaultInstance(), plainValue(aTHX_ died));
}

/// What the queries for lists of texts say when memory runs out.
struct ListMessages
{
    const char *noText;
    const char *cannotAllocate;
    const char *cannotCopy;
};

constexpr ListMessages valueMessages = {
    "Invalid text array in getAllowedParamStrings\n",
    "getAllowedParamStrings: cannot malloc text",
    "getAllowedParamStrings: cannot malloc (*text)[i]",
};

constexpr ListMessages nameMessages = {
    "Invalid text array in getAllowedParams\n",
    "getAllowedParams: cannot malloc text",
    "getAllowedParams: cannot malloc (*text)[i]",
};

const char *copyTexts(pTHX_ AV *array, const ListMessages &messages, velStringList *list)
{
    const PerlFrame frame(aTHX);
    SV *error = nullptr;
    AV *texts = plainTexts(aTHX_ array, &error);
    if (!texts)
        return error ? keepMessage(defaultInstance(), plainValue(aTHX_ error))
                     : messages.cannotAllocate;
    velArray copies(velArrayKind::Strings);
    for (SSize_t i = 0; i <= AvFILLp(texts); ++i)
        if (!copies.addString({SvPVX_const(AvARRAY(texts)[i]), SvCUR(AvARRAY(texts)[i])}))
            return messages.cannotCopy;
    *list = copies.takeStrings();
    return nullptr;
}

/// Start-up, and what must be right before the Perl array is made.
const char *checkListQuery(const velStringList *list, const ListMessages &messages)
{
    if (const char *error = startVELParser())
        return error;
    if (!defaultInstance())
        return "Invalid (NULL) instance handle";
    if (!defaultInstance()->api)
        return "Invalid (uninitialized) instance handle";
    return list ? nullptr : messages.noText;
}

/// A method that fills an array with texts about one path.
const char *listTexts(const char *method, const char *path, const ListMessages &messages,
                      velStringList *list)
{
    if (const char *error = checkListQuery(list, messages))
        return error;
    pTHX = velInterpreter();
    const PerlLocale locale;
    AV *array = newAV();
    if (const char *error = getAnyValue(defaultInstance(), method, path, array))
        return error;
    const char *error =
        guarded(messages.cannotAllocate, [&] { return copyTexts(aTHX_ array, messages, list); });
    SvREFCNT_dec_NN(MUTABLE_SV(array));
    return error;
}

} // namespace

velHandle *findLiteHandle()
{
    return startVELParser() ? nullptr : findLiteHandle(defaultInstance());
}

const char *getStringValue(const char *path, std::optional<std::string> *value)
{
    return withDatabase("getStringValue: error finding Lite API handle",
                        [&](velHandle *handle) { return ::getStringValue(handle, path, value); });
}

const char *setStringValue(const char *path, const char *value)
{
    return withDatabase("setStringValue: error finding Lite API handle", [&](velHandle *handle) {
        return runWithHandlers([&] { return ::setStringValue(handle, path, value); });
    });
}

const char *deleteParam(const char *path)
{
    return withDatabase("deleteParam: error finding Lite API handle", [&](velHandle *handle) {
        return runWithHandlers([&] { return deleteParamH(handle, path); });
    });
}

const char *deleteObj(const char *path)
{
    return withDatabase("deleteObj: error finding Lite API handle", [&](velHandle *handle) {
        return runWithHandlers([&] { return deleteObjH(handle, path); });
    });
}

const char *getFormattedVEL(const char *path, std::int32_t lineLength, velStringList *lines)
{
    return withDatabase("getFormattedVEL: error finding Lite API handle", [&](velHandle *handle) {
        return ::getFormattedVEL(handle, path, lineLength, lines);
    });
}

const char *pushPathH(const char *path)
{
    return withDatabase("pushPathH: error finding Lite API handle",
                        [&](velHandle *handle) { return pushPath(handle, path); });
}

const char *popPathH()
{
    return withDatabase("popPathH: error finding Lite API handle",
                        [](velHandle *handle) { return popPath(handle); });
}

const char *getChildList(const char *path, std::vector<velChildInfo> *children,
                         std::vector<velGroupInfo> *groups)
{
    return withDatabase("getChildList: error finding Lite API handle", [&](velHandle *handle) {
        return ::getChildList(handle, path, children, groups);
    });
}

const char *setValidationLevelH(unsigned level)
{
    return withDatabase("setValidationLevelH: error finding Lite API handle",
                        [&](velHandle *handle) -> const char * {
                            setValidationLevel(handle, static_cast<std::int32_t>(level));
                            return nullptr;
                        });
}

int isVELLibrary(const char *path)
{
    velHandle *handle = findLiteHandle();
    return handle ? isLibrary(handle, path) : -1;
}

const char *updateSolverVEL()
{
    if (const char *error = startVELParser())
        return error;
    return callVELInstanceMethod(defaultInstance(), "updateSolverVEL", {});
}

int isParamEditable(const char *path)
{
    if (startVELParser())
        return -1;
    return callVELInstanceMethodInt(defaultInstance(), "isParamEditable", {path});
}

int isItemExpert(const char *path)
{
    if (startVELParser())
        return -1;
    return callVELInstanceMethodInt(defaultInstance(), "isItemExpert", {path});
}

const char *getAllowedParamStrings(const char *path, velStringList *values)
{
    return listTexts("getAllowedParamStrings", path, valueMessages, values);
}

const char *getAllowedParams(const char *path, velStringList *names, int flag)
{
    if (const char *error = checkListQuery(names, nameMessages))
        return error;
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    AV *array = newAV();
    const std::array arguments{sv_2mortal(newSVpv(path, 0)),
                               sv_2mortal(newRV_noinc(MUTABLE_SV(array))),
                               sv_2mortal(newSViv(flag))};
    if (const char *error = callVELInstanceValues(defaultInstance(), "getAllowedParams", arguments))
        return error;
    return guarded(nameMessages.cannotAllocate,
                   [&] { return copyTexts(aTHX_ array, nameMessages, names); });
}

} // namespace velparser
