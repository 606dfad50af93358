// The methods of VEL::Parser::Lite that list names of children and search objects.

#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

using Search = const char *(*)(velHandle *, const char *, const char *, std::uint32_t,
                               std::uint32_t, velStringList *);
using ListQuery = const char *(*)(velHandle *, const char *, velStringList *);

SV *childNames(pTHX_ LiteCall &call, ListQuery query)
{
    const char *path = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    return fillArray<velStringList>(
        aTHX_ call, target, [&](velStringList *list) { return query(call.handle(), path, list); });
}

/// The whole tree, library data included.
SV *searchTree(pTHX_ LiteCall &call, Search search)
{
    const char *text = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    return fillArray<velStringList>(aTHX_ call, target, [&](velStringList *list) {
        return search(call.handle(), "/", text, 0, 0, list);
    });
}

SV *newText(pTHX_ std::string_view text)
{
    return newSVpvn(text.data(), text.size());
}

SV *newReference(pTHX_ HV *hash)
{
    return newRV_noinc(MUTABLE_SV(hash));
}

SV *newChildEntry(pTHX_ const velChildInfo &child)
{
    HV *entry = newHV();
    hv_stores(entry, "name", newText(aTHX_ child.name));
    hv_stores(entry, "className", newText(aTHX_ child.className));
    hv_stores(entry, "type", newText(aTHX_ child.type));
    return newReference(aTHX_ entry);
}

SV *newGroupEntry(pTHX_ const velGroupInfo &group)
{
    AV *indices = newArray(aTHX_ group.indices);
    HV *entry = newHV();
    hv_stores(entry, "className", newText(aTHX_ group.className));
    hv_stores(entry, "type", newText(aTHX_ group.type));
    hv_stores(entry, "indices", newRV_inc(MUTABLE_SV(indices)));
    hv_stores(entry, "count", newSViv(static_cast<IV>(group.indices.size())));
    return newReference(aTHX_ entry);
}

template <class Info>
AV *newEntries(pTHX_ const std::vector<Info> &infos, SV *(*newEntry)(pTHX_ const Info &))
{
    AV *entries = newAV();
    sv_2mortal(MUTABLE_SV(entries));
    for (const Info &info : infos) {
        av_push(entries, newEntry(aTHX_ info));
    }
    return entries;
}

/// Both lists as Perl arrays; each only if the caller wants it.
const char *childEntries(pTHX_ velHandle *handle, const char *path, AV **children, AV **groups)
{
    std::vector<velChildInfo> childInfos;
    std::vector<velGroupInfo> groupInfos;
    const char *error = getChildList(handle, path, children != nullptr ? &childInfos : nullptr,
                                     groups != nullptr ? &groupInfos : nullptr);
    if (children != nullptr) {
        *children = newEntries(aTHX_ childInfos, newChildEntry);
    }
    if (groups != nullptr) {
        *groups = newEntries(aTHX_ groupInfos, newGroupEntry);
    }
    return error;
}

} // namespace

SV *liteGetChildObjectList(pTHX_ LiteCall &call)
{
    return childNames(aTHX_ call, getChildObjectList);
}

SV *liteGetChildParamList(pTHX_ LiteCall &call)
{
    return childNames(aTHX_ call, getChildParamList);
}

SV *liteGetObjectsByName(pTHX_ LiteCall &call)
{
    return searchTree(aTHX_ call, getObjectsByNameH);
}

SV *liteGetObjectsByType(pTHX_ LiteCall &call)
{
    return searchTree(aTHX_ call, getObjectsByTypeH);
}

SV *liteGetChildList(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    AV *childTarget = call.optionalArray(aTHX_ 2, "childInfo");
    AV *groupTarget = call.optionalArray(aTHX_ 3, "groupInfo");
    AV *children = nullptr;
    AV *groups = nullptr;
    const char *error =
        childEntries(aTHX_ call.handle(), path, childTarget != nullptr ? &children : nullptr,
                     groupTarget != nullptr ? &groups : nullptr);
    SV *message = call.message(aTHX_ error);
    if (childTarget != nullptr) {
        replaceElements(aTHX_ childTarget, children);
    }
    if (groupTarget != nullptr) {
        replaceElements(aTHX_ groupTarget, groups);
    }
    return message;
}

} // namespace velparser
