// The editor's questions: the database answers those about data, the Perl object those
// about rules.
#include "velparser/api/velparser.h"

#include "velparser/api/velHandlers_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/xsinit_p.h"

namespace velparser {

namespace {

/// The message of queries for lists of texts when there is no memory.
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

const char *copyTexts(pTHX_ Session &session, AV *array, const ListMessages &messages,
                      velStringList *list)
{
    const PerlFrame frame(aTHX);
    SV *error = nullptr;
    AV *texts = plainTexts(aTHX_ array, &error);
    if (texts == nullptr) {
        return error != nullptr ? keepMessage(session.instance(), plainValue(aTHX_ error))
                                : messages.cannotAllocate;
    }
    velArray copies(velArrayKind::Strings);
    for (SSize_t i = 0; i <= AvFILLp(texts); ++i) {
        if (!copies.addString({SvPVX_const(AvARRAY(texts)[i]), SvCUR(AvARRAY(texts)[i])})) {
            return messages.cannotCopy;
        }
    }
    *list = copies.takeStrings();
    return nullptr;
}

/// Starts the interpreter, and checks what must be correct before the Perl array is made.
const char *checkListQuery(const Session &session, const velStringList *list,
                           const ListMessages &messages)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    if (session.instance() == nullptr) {
        return "Invalid (NULL) instance handle";
    }
    if (session.instance()->api == nullptr) {
        return "Invalid (uninitialized) instance handle";
    }
    return list != nullptr ? nullptr : messages.noText;
}

/// A method that fills an array with texts about one path.
const char *listTexts(Session &session, const char *method, const char *path,
                      const ListMessages &messages, velStringList *list)
{
    if (const char *error = checkListQuery(session, list, messages)) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    AV *array = newAV();
    if (const char *error = getAnyValue(session.instance(), method, path, array)) {
        return error;
    }
    const char *error = guarded(messages.cannotAllocate,
                                [&] { return copyTexts(aTHX_ session, array, messages, list); });
    SvREFCNT_dec_NN(MUTABLE_SV(array));
    return error;
}

} // namespace

velHandle *findLiteHandle(Session &session)
{
    return startVELParser() != nullptr ? nullptr : findLiteHandle(session.instance());
}

const char *getStringValue(Session &session, const char *path, std::optional<std::string> *value)
{
    return withDatabase(session, "getStringValue: error finding Lite API handle",
                        [&](velHandle *handle) { return ::getStringValue(handle, path, value); });
}

const char *setStringValue(Session &session, const char *path, const char *value)
{
    return withDatabase(
        session, "setStringValue: error finding Lite API handle", [&](velHandle *handle) {
            return runWithHandlers(session, [&] { return ::setStringValue(handle, path, value); });
        });
}

const char *deleteParam(Session &session, const char *path)
{
    return withDatabase(
        session, "deleteParam: error finding Lite API handle", [&](velHandle *handle) {
            return runWithHandlers(session, [&] { return deleteParamH(handle, path); });
        });
}

const char *deleteObj(Session &session, const char *path)
{
    return withDatabase(
        session, "deleteObj: error finding Lite API handle", [&](velHandle *handle) {
            return runWithHandlers(session, [&] { return deleteObjH(handle, path); });
        });
}

const char *createObject(Session &session, const char *path)
{
    return withDatabase(
        session, "createObject: error finding Lite API handle", [&](velHandle *handle) {
            return runWithHandlers(session, [&] { return velCreateObject(handle, path, false); });
        });
}

const char *createParam(Session &session, const char *path, const char *value)
{
    return withDatabase(
        session, "createParam: error finding Lite API handle", [&](velHandle *handle) {
            return runWithHandlers(session, [&] { return velCreateParam(handle, path, value); });
        });
}

const char *placeChild(Session &session, const char *path, std::uint32_t position)
{
    return withDatabase(session, "placeChild: error finding Lite API handle",
                        [&](velHandle *handle) { return velPlaceChild(handle, path, position); });
}

const char *getFormattedVEL(Session &session, const char *path, std::int32_t lineLength,
                            velStringList *lines)
{
    return withDatabase(
        session, "getFormattedVEL: error finding Lite API handle",
        [&](velHandle *handle) { return ::getFormattedVEL(handle, path, lineLength, lines); });
}

const char *pushPathH(Session &session, const char *path)
{
    return withDatabase(session, "pushPathH: error finding Lite API handle",
                        [&](velHandle *handle) { return pushPath(handle, path); });
}

const char *popPathH(Session &session)
{
    return withDatabase(session, "popPathH: error finding Lite API handle",
                        [](velHandle *handle) { return popPath(handle); });
}

const char *getChildList(Session &session, const char *path, std::vector<velChildInfo> *children,
                         std::vector<velGroupInfo> *groups)
{
    return withDatabase(
        session, "getChildList: error finding Lite API handle",
        [&](velHandle *handle) { return ::getChildList(handle, path, children, groups); });
}

const char *setValidationLevelH(Session &session, unsigned level)
{
    return withDatabase(session, "setValidationLevelH: error finding Lite API handle",
                        [&](velHandle *handle) -> const char * {
                            setValidationLevel(handle, static_cast<std::int32_t>(level));
                            return nullptr;
                        });
}

int isVELLibrary(Session &session, const char *path)
{
    velHandle *handle = findLiteHandle(session);
    return handle != nullptr ? isLibrary(handle, path) : -1;
}

const char *updateSolverVEL(Session &session)
{
    if (const char *error = startVELParser()) {
        return error;
    }
    return callVELInstanceMethod(session.instance(), "updateSolverVEL", {});
}

int isParamEditable(Session &session, const char *path)
{
    if (startVELParser() != nullptr) {
        return -1;
    }
    return callVELInstanceMethodInt(session.instance(), "isParamEditable", {path});
}

int isItemExpert(Session &session, const char *path)
{
    if (startVELParser() != nullptr) {
        return -1;
    }
    return callVELInstanceMethodInt(session.instance(), "isItemExpert", {path});
}

const char *getAllowedParamStrings(Session &session, const char *path, velStringList *values)
{
    return listTexts(session, "getAllowedParamStrings", path, valueMessages, values);
}

const char *getAllowedParams(Session &session, const char *path, velStringList *names, int flag)
{
    if (const char *error = checkListQuery(session, names, nameMessages)) {
        return error;
    }
    pTHX = velInterpreter();
    const PerlLocale locale;
    const PerlFrame frame(aTHX);
    AV *array = newAV();
    const std::array arguments{sv_2mortal(newSVpv(path, 0)),
                               sv_2mortal(newRV_noinc(MUTABLE_SV(array))),
                               sv_2mortal(newSViv(flag))};
    if (const char *error =
            callVELInstanceValues(session.instance(), "getAllowedParams", arguments)) {
        return error;
    }
    return guarded(nameMessages.cannotAllocate,
                   [&] { return copyTexts(aTHX_ session, array, nameMessages, names); });
}

} // namespace velparser
