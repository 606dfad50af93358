// The methods of VEL::Parser::Lite that read and write text.

#include "velparser/api/LiteMethods_p.h"

namespace velparser {

namespace {

using Load = const char *(*)(velHandle *, const char *const *, std::int32_t, const velDigest *,
                             velDigest *);

SV *loadLines(pTHX_ LiteCall &call, Load load)
{
    call.keepAlive(aTHX);
    // Reading the elements may run code.
    call.guard(aTHX);
    AV *array = call.array(aTHX_ 1, "data");
    const std::span<const char *> texts = elementTexts(aTHX_ array, UndefinedElement::Croaks);
    const auto count = static_cast<std::int32_t>(texts.size());
    return call.message(aTHX_ load(call.handle(), texts.data(), count, nullptr, nullptr));
}

/// The properties of a node, with ends that make the texts of different trees different.
void addNode(const velNodeInfo &info, std::string *text)
{
    *text += static_cast<char>('0' + info.kind);
    *text += velComponentOf(info);
    *text += '\n';
    // A value may be any text.
    if (info.value != nullptr) {
        text->append(std::to_string(std::strlen(info.value))).append(":").append(info.value);
    }
    *text += '\n';
}

std::string treeText(const velHandle *handle, const velNode *top)
{
    std::string text;
    std::vector<const velNode *> open{top};
    while (!open.empty()) {
        const velNode *node = open.back();
        open.pop_back();
        if (node == nullptr) {
            text += '.';
            continue;
        }
        addNode(velDescribe(handle, node), &text);
        if (node != top) {
            open.push_back(velNextSibling(node));
        }
        if (const velNode *child = velFirstChild(node)) {
            open.push_back(child);
        }
    }
    return text;
}

} // namespace

SV *liteGetTreeText(pTHX_ LiteCall &call)
{
    const velNode *node = velFindNode(call.handle(), call.text(aTHX_ 1));
    if (node == nullptr) {
        return &PL_sv_undef;
    }
    const std::string text = treeText(call.handle(), node);
    return sv_2mortal(newSVpvn(text.data(), text.size()));
}

SV *liteGetObjectVEL(pTHX_ LiteCall &call)
{
    const char *path = call.text(aTHX_ 1);
    AV *target = call.array(aTHX_ 2, "array");
    const bool includeLibrary = call.flag(aTHX_ 3);
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
    const std::uint32_t flags = call.flag(aTHX_ 2) ? velFlagLibrary : 0;
    return call.message(aTHX_ parseVELLineH(call.handle(), line, flags));
}

SV *liteGetVELState(pTHX_ LiteCall &call)
{
    std::int32_t depth = 0;
    if (const char *error = getVELStateH(call.handle(), &depth)) {
        croak("%s", error);
    }
    return call.number(aTHX_ depth);
}

SV *liteSetVELState(pTHX_ LiteCall &call)
{
    setVELStateH(call.handle(), call.integer(aTHX_ 1));
    return nullptr;
}

SV *liteLoadVELData(pTHX_ LiteCall &call)
{
    return loadLines(aTHX_ call, loadVELData);
}

SV *liteLoadLibraryData(pTHX_ LiteCall &call)
{
    return loadLines(aTHX_ call, loadLibraryData);
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
