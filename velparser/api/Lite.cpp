// The table of the methods of VEL::Parser::Lite, and how Perl loads them.

#include "velparser/api/LiteMethods_p.h"
#include "velparser/api/Lite_p.h"

namespace velparser {

namespace {

constexpr LiteMethod methods[] = {
    {"NEW", liteNew, ""},
    {"DESTROY", liteDestroy, "self"},
    {"isSameDatabase", liteIsSameDatabase, "self, other"},

    {"getObjectVEL", liteGetObjectVEL, "self, path, array, includeLibrary"},
    {"getTreeText", liteGetTreeText, "self, path"},
    {"getFormattedVEL", liteGetFormattedVEL, "self, path, lineLength, array"},

    {"getChildObjectList", liteGetChildObjectList, "self, path, array"},
    {"getChildParamList", liteGetChildParamList, "self, path, array"},
    {"getObjectsByName", liteGetObjectsByName, "self, name, array"},
    {"getObjectsByType", liteGetObjectsByType, "self, type, array"},

    {"isLibrary", liteIsLibrary, "self, path"},
    {"isValid", liteIsValid, "self, path"},
    {"setValid", liteSetValid, "self, path, valid"},
    {"setValidEx", liteSetValidEx, "self, path, valid, propagate"},
    {"getValidationLevel", liteGetValidationLevel, "self"},
    {"setValidationLevel", liteSetValidationLevel, "self, value"},
    {"isObject", liteIsObject, "self, path"},
    {"havePath", liteHavePath, "self, path"},

    {"registerActionHandler", liteRegisterActionHandler, "self, handler"},
    {"invokeAction", liteInvokeAction, "self, action, args"},

    {"createObject", liteCreateObject, "self, path, isLibrary"},
    {"createParam", liteCreateParam, "self, path, value"},
    {"deleteObj", liteDeleteObj, "self, path"},
    {"deleteParam", liteDeleteParam, "self, path"},

    {"getStringValue", liteGetStringValue, "self, path, value"},
    {"setStringValue", liteSetStringValue, "self, path, value"},
    {"getStringList", liteGetStringList, "self, path, array"},
    {"getIntegerValue", liteGetIntegerValue, "self, path, value"},
    {"getIntegerList", liteGetIntegerList, "self, path, array"},
    {"getLogicalValue", liteGetLogicalValue, "self, path, value"},
    {"getLogicalList", liteGetLogicalList, "self, path, array"},

    {"getCurrentPath", liteGetCurrentPath, "self"},
    {"popPath", litePopPath, "self"},
    {"pushPath", litePushPath, "self, path"},
    {"changePath", liteChangePath, "self, path"},

    {"loadVELLine", liteLoadVELLine, "self, line, isLibrary"},
    {"getVELState", liteGetVELState, "self"},
    {"setVELState", liteSetVELState, "self, level"},
    {"loadVELData", liteLoadVELData, "self, data"},
    {"loadLibraryData", liteLoadLibraryData, "self, data"},
    {"loadVELFile", liteLoadVELFile, "self, file"},
    {"readLibraries", liteReadLibraries, "self"},
    {"readNamedLibraries", liteReadNamedLibraries, "self, libList, defDir"},

    {"getChildList", liteGetChildList, "self, path, childInfo, groupInfo"},

    {"addChangeHandler", liteAddChangeHandler, "self, rsub"},
    {"clearChangeHandlers", liteClearChangeHandlers, "self"},

    {"cleanPath", liteCleanPath, "path"},
};

constexpr int argumentCount(std::string_view usage)
{
    return usage.empty() ? 0 : 1 + static_cast<int>(std::ranges::count(usage, ','));
}

constexpr bool takesObject(std::string_view usage)
{
    return usage.starts_with("self");
}

/// What a method needs at each call, computed once.
struct Entry
{
    const LiteMethod *method;
    int arguments;
    bool object;
};

constexpr auto entries = [] {
    std::array<Entry, std::size(methods)> all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = {&methods[i], argumentCount(methods[i].usage), takesObject(methods[i].usage)};
    }
    return all;
}();

/// The object itself is not included, because no method uses its overloaded operators.
bool argumentsRunCode(pTHX_ SV *const *begin, SV *const *end)
{
    return std::any_of(begin, end, [&](SV *argument) { return runsCode(aTHX_ argument); });
}

/// No exception may leave through Perl's own functions.
SV *runBody(pTHX_ const LiteMethod &method, LiteCall &call)
{
    try {
        return method.body(aTHX_ call);
    } catch (const std::bad_alloc &) {
    }
    croak("VEL::Parser::Lite::%s: out of memory", method.name);
}

/// The one entry for all methods; the XSUB has the address of its Entry.
XSPROTO(callMethod)
{
    dXSARGS;
    PERL_UNUSED_VAR(sp);
    const auto &entry = *static_cast<const Entry *>(XSANY.any_ptr);
    if (items != entry.arguments) {
        croak_xs_usage(cv, entry.method->usage);
    }
    LiteRecord *record = nullptr;
    if (entry.object) {
        record = liteRecord(aTHX_ ST(0));
        if (record == nullptr && !(entry.method->body == liteDestroy && isEmptied(aTHX_ ST(0)))) {
            croak("self is not of type VEL::Parser::Lite");
        }
    }
    LiteCall call(*entry.method, ax, items, record);
    if (argumentsRunCode(aTHX_ & ST(entry.object), &ST(items))) {
        call.guardArguments(aTHX);
    }
    SV *result = runBody(aTHX_ * entry.method, call);
    if (result == nullptr) {
        XSRETURN_EMPTY;
    }
    ST(0) = result;
    XSRETURN(1);
}

void fillContext(pTHX_ LiteContext *context)
{
    *context = LiteContext{};
    context->package = gv_stashpvs("VEL::Parser::Lite", GV_ADD);
    SvREFCNT_inc_simple_void_NN(context->package);
}

void startContext(pTHX)
{
    fillContext(aTHX_ static_cast<LiteContext *>(
        Perl_my_cxt_init(aTHX_ & liteContextIndex, sizeof(LiteContext))));
}

/// Perl calls this in each new thread. The thread starts with the context of the thread
/// that made it, and gets its own context here.
XSPROTO(cloneContext)
{
    dXSARGS;
    PERL_UNUSED_VAR(cv);
    PERL_UNUSED_VAR(sp);
    PERL_UNUSED_VAR(items);
    // Freed with the interpreter, like the one that Perl_my_cxt_init allocates.
    SV *room = newSV(sizeof(LiteContext));
    auto *context = reinterpret_cast<LiteContext *>(SvPVX(room));
    PL_my_cxt_list[liteContextIndex] = context;
    fillContext(aTHX_ context);
    XSRETURN_EMPTY;
}

void registerMethods(pTHX)
{
    for (const Entry &entry : entries) {
        const char *name = form("VEL::Parser::Lite::%s", entry.method->name);
        CV *method = newXS(name, callMethod, __FILE__);
        CvXSUBANY(method).any_ptr = const_cast<Entry *>(&entry);
    }
    newXS("VEL::Parser::Lite::CLONE", cloneContext, __FILE__);
}

} // namespace

int liteContextIndex = -1;

} // namespace velparser

XS_EXTERNAL(boot_VEL__Parser__Lite)
{
    dXSBOOTARGSAPIVERCHK;
    PERL_UNUSED_VAR(cv);
    PERL_UNUSED_VAR(mark);
    PERL_UNUSED_VAR(sp);
    PERL_UNUSED_VAR(items);
    if (!get_cv("VEL::Parser::Lite::NEW", 0)) {
        velparser::startContext(aTHX);
        velparser::registerMethods(aTHX);
    }
    Perl_xs_boot_epilog(aTHX_ ax);
}
