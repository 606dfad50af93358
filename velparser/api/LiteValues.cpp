// The methods of VEL::Parser::Lite that read and set values.

#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

using IntegerQuery = const char *(*)(velHandle *, const char *, std::int32_t *);
using IntegerListQuery = const char *(*)(velHandle *, const char *, std::vector<std::int32_t> *);

/// Without a value the scalar becomes undef.
const char *setToValue(pTHX_ LiteCall &call, const char *path, SV *target)
{
    // In place, because nearly always there is a value.
    if (const char *value = velFindValue(call.handle(), path)) {
        sv_setpv(target, value);
        SvUTF8_off(target);
        return nullptr;
    }
    std::optional<std::string> none;
    if (const char *error = getStringValue(call.handle(), path, &none)) {
        return error;
    }
    sv_set_undef(target);
    return nullptr;
}

SV *integerValue(pTHX_ LiteCall &call, IntegerQuery query)
{
    const char *path = call.text(aTHX_ 1);
    SV *target = call.output(aTHX_ 2);
    std::int32_t value = 0;
    const char *error = query(call.handle(), path, &value);
    if (error == nullptr) {
        sv_setiv_mg(target, value);
    }
    return call.message(aTHX_ error);
}

SV *integerList(pTHX_ LiteCall &call, IntegerListQuery query)
{
    const char *path = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    return fillArray<std::vector<std::int32_t>>(
        aTHX_ call, target,
        [&](std::vector<std::int32_t> *list) { return query(call.handle(), path, list); });
}

} // namespace

SV *liteGetStringValue(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    SV *target = call.output(aTHX_ 2);
    const char *error = setToValue(aTHX_ call, path, target);
    if (error == nullptr) {
        SvSETMAGIC(target);
    }
    return call.message(aTHX_ error);
}

SV *liteSetStringValue(pTHX_ LiteCall &call)
{
    call.keepAlive(aTHX);
    const char *path = call.text(aTHX_ 1);
    const char *value = call.text(aTHX_ 2);
    return call.message(aTHX_ setStringValue(call.handle(), path, value));
}

SV *liteGetStringList(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    return fillArray<velStringList>(aTHX_ call, target, [&](velStringList *list) {
        return getStringList(call.handle(), path, list);
    });
}

SV *liteGetIntegerValue(pTHX_ LiteCall &call)
{
    return integerValue(aTHX_ call, getIntegerValue);
}

SV *liteGetIntegerList(pTHX_ LiteCall &call)
{
    return integerList(aTHX_ call, getIntegerList);
}

SV *liteGetLogicalValue(pTHX_ LiteCall &call)
{
    return integerValue(aTHX_ call, getLogicalValue);
}

SV *liteGetLogicalList(pTHX_ LiteCall &call)
{
    return integerList(aTHX_ call, getLogicalList);
}

} // namespace velparser
