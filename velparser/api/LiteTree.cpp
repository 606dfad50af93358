// The methods of VEL::Parser::Lite that create, delete, mark and find nodes of the tree.

#include "velparser/api/LiteMethods_p.h"

namespace velparser {

SV *liteIsLibrary(pTHX_ LiteCall &call)
{
    return call.number(aTHX_ isLibrary(call.handle(), call.text(aTHX_ 1)));
}

SV *liteIsValid(pTHX_ LiteCall &call)
{
    return call.number(aTHX_ isValid(call.handle(), call.text(aTHX_ 1)));
}

SV *liteSetValid(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    const std::int32_t level = call.integer(aTHX_ 2);
    return call.message(aTHX_ setValid(call.handle(), path, level));
}

SV *liteSetValidEx(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    const std::int32_t level = call.integer(aTHX_ 2);
    const bool propagate = call.flag(aTHX_ 3);
    return call.message(aTHX_ setValid(call.handle(), path, level, propagate));
}

SV *liteGetValidationLevel(pTHX_ LiteCall &call)
{
    return call.number(aTHX_ getValidationLevel(call.handle()));
}

SV *liteSetValidationLevel(pTHX_ LiteCall &call)
{
    setValidationLevel(call.handle(), call.integer(aTHX_ 1));
    return call.message(aTHX_ nullptr);
}

SV *liteIsObject(pTHX_ LiteCall &call)
{
    return call.number(aTHX_ isObject(call.handle(), call.text(aTHX_ 1)));
}

SV *liteHavePath(pTHX_ LiteCall &call)
{
    return call.number(aTHX_ havePath(call.handle(), call.text(aTHX_ 1)));
}

SV *liteCreateObject(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    const char *path = call.text(aTHX_ 1);
    const bool library = call.flag(aTHX_ 2);
    return call.message(aTHX_ velCreateObject(call.handle(), path, library));
}

SV *liteCreateParam(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    const char *path = call.text(aTHX_ 1);
    const char *value = call.text(aTHX_ 2);
    return call.message(aTHX_ velCreateParam(call.handle(), path, value));
}

SV *liteDeleteObj(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    return call.message(aTHX_ deleteObjH(call.handle(), call.text(aTHX_ 1)));
}

SV *liteDeleteParam(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    return call.message(aTHX_ deleteParamH(call.handle(), call.text(aTHX_ 1)));
}

SV *liteGetCurrentPath(pTHX_ LiteCall &call)
{
    return call.string(aTHX_ getCurrentPath(call.handle()));
}

SV *litePopPath(pTHX_ LiteCall &call)
{
    return call.message(aTHX_ popPath(call.handle()));
}

SV *litePushPath(pTHX_ LiteCall &call)
{
    return call.message(aTHX_ pushPath(call.handle(), call.text(aTHX_ 1)));
}

SV *liteChangePath(pTHX_ LiteCall &call)
{
    return call.message(aTHX_ changePath(call.handle(), call.text(aTHX_ 1)));
}

/// The only function of the package that has no object as argument.
SV *liteCleanPath(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 0);
    if (velIsCleanPath(path)) {
        return call.string(aTHX_ path);
    }
    return call.string(aTHX_ velCleanPath(path));
}

} // namespace velparser
