#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

/// Pointers to the texts of all elements, in a mortal buffer, so that what
/// croaks has done so before anything is copied.
const char **lineTexts(pTHX_ AV *array, SSize_t count)
{
    SV *buffer = sv_2mortal(newSV((static_cast<STRLEN>(count) + 1) * sizeof(char *)));
    auto **texts = reinterpret_cast<const char **>(SvPVX(buffer));
    for (SSize_t i = 0; i < count; ++i) {
        SV **element = av_fetch(array, i, 0);
        if (element)
            SvGETMAGIC(*element);
        if (!element || !SvOK(*element))
            croak("Undefined element in array or fetch error");
        // An element that makes its text anew each time would let an earlier
        // one go.
        texts[i] = SvPOK(*element) ? byteText(aTHX_ * element)
                                   : SvPVX_const(sv_2mortal(newSVpv(byteText(aTHX_ * element), 0)));
    }
    return texts;
}

/// The lines are copied before the first is parsed, as a handler may change
/// the caller's array.
const char *parseCopy(velHandle *handle, const char *const *texts, SSize_t count,
                      std::uint32_t flags)
{
    velArray lines(velArrayKind::Strings);
    for (SSize_t i = 0; i < count; ++i)
        if (!lines.addString(texts[i]))
            return flags & velFlagLibrary ? "loadLibraryData: failed to store string"
                                          : "loadVELData: failed to store string";
    return parseVELData(handle, &lines, flags);
}

SV *parseLines(pTHX_ LiteCall &call, std::uint32_t flags)
{
    call.keepAlive(aTHX);
    AV *array = call.array(aTHX_ 1, "data");
    const SSize_t count = av_count(array);
    const char **texts = lineTexts(aTHX_ array, count);
    return call.message(aTHX_ parseCopy(call.handle(), texts, count, flags));
}

} // namespace

SV *liteGetObjectVEL(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    const bool includeLibrary = call.truth(aTHX_ 3);
    const char *error = nullptr;
    AV *values = nullptr;
    {
        velStringList lines;
        error = getObjectVELH(call.handle(), path, &lines, includeLibrary);
        values = newTextArray(aTHX_ lines);
    }
    replaceElements(aTHX_ target, values);
    return call.message(aTHX_ error);
}

SV *liteGetFormattedVEL(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    const std::int32_t width = call.integer(aTHX_ 2);
    AV *target = call.array(aTHX_ 3, "array");
    const char *error = nullptr;
    AV *values = nullptr;
    {
        velStringList lines;
        error = getFormattedVEL(call.handle(), path, width, &lines);
        values = newTextArray(aTHX_ lines);
    }
    replaceElements(aTHX_ target, values);
    return call.message(aTHX_ error);
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
