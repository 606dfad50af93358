#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

/// The lines are copied before the first is parsed, as a handler may change
/// the caller's array.
const char *parseCopy(velHandle *handle, std::span<const char *const> texts, std::uint32_t flags)
{
    velArray lines(velArrayKind::Strings);
    for (const char *text : texts)
        if (!lines.addString(text))
            return flags & velFlagLibrary ? "loadLibraryData: failed to store string"
                                          : "loadVELData: failed to store string";
    return parseVELData(handle, &lines, flags);
}

SV *parseLines(pTHX_ LiteCall &call, std::uint32_t flags)
{
    call.keepAlive(aTHX);
    // Reading the elements may run code.
    call.guard(aTHX);
    AV *array = call.array(aTHX_ 1, "data");
    const std::span<const char *> texts = elementTexts(aTHX_ array, UndefinedElement::Croaks);
    return call.message(aTHX_ parseCopy(call.handle(), texts, flags));
}

} // namespace

SV *liteGetObjectVEL(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    const bool includeLibrary = call.truth(aTHX_ 3);
    return fillArray<velStringList>(aTHX_ call, target, [&](velStringList *lines) {
        return getObjectVELH(call.handle(), path, lines, includeLibrary);
    });
}

SV *liteGetFormattedVEL(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    const std::int32_t width = call.integer(aTHX_ 2);
    AV *target = call.array(aTHX_ 3, "array");
    return fillArray<velStringList>(aTHX_ call, target, [&](velStringList *lines) {
        return getFormattedVEL(call.handle(), path, width, lines);
    });
}

SV *liteLoadVELLine(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    const char *line = call.text(aTHX_ 1);
    const std::uint32_t flags = call.truth(aTHX_ 2) ? velFlagLibrary : 0;
    return call.message(aTHX_ parseVELLineH(call.handle(), line, flags));
}

SV *liteGetVELState(pTHX_ LiteCall &call)
{
    std::int32_t depth = 0;
    if (const char *error = getVELStateH(call.handle(), &depth))
        croak("%s", error);
    return call.number(aTHX_ depth);
}

SV *liteSetVELState(pTHX_ LiteCall &call)
{
    setVELStateH(call.handle(), call.integer(aTHX_ 1));
    return nullptr;
}

SV *liteLoadVELData(pTHX_ LiteCall &call)
{
    return parseLines(aTHX_ call, 0);
}

SV *liteLoadLibraryData(pTHX_ LiteCall &call)
{
    return parseLines(aTHX_ call, velFlagLibrary);
}

SV *liteLoadVELFile(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    return call.message(aTHX_ loadVELFile(call.handle(), call.text(aTHX_ 1), "vel"));
}

SV *liteReadLibraries(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    return call.message(aTHX_ readLibraries(call.handle()));
}

SV *liteReadNamedLibraries(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    const char *list = call.text(aTHX_ 1);
    const char *directory = call.text(aTHX_ 2);
    return call.message(aTHX_ readNamedLibraries(call.handle(), list, directory));
}

} // namespace velparser
