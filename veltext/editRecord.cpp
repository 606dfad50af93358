// Writes and reads the bytes of an edit.
#include "veltext/editRecord.h"

#include "veltext/fields.h"

#include <algorithm>
#include <iterator>

namespace veltext {

namespace {

/// The kinds in the order of their numbers. Kept: journals on the disk depend on
/// it.
constexpr Edit::Kind kinds[] = {
    Edit::Kind::SetValue,  Edit::Kind::AddParameter, Edit::Kind::DeleteParameter,
    Edit::Kind::AddObject, Edit::Kind::DeleteObject, Edit::Kind::ReplaceObject,
};

} // namespace

void putEdit(std::string *to, const Edit &edit)
{
    *to += static_cast<char>(std::find(std::begin(kinds), std::end(kinds), edit.kind) - kinds);
    putNumber(to, static_cast<std::uint32_t>(edit.position));
    putNumber(to, static_cast<std::uint32_t>(edit.parametersBefore));
    putText(to, edit.path);
    putText(to, edit.oldText);
    putText(to, edit.newText);
    putNumber(to, static_cast<std::uint32_t>(edit.opening.size()));
    for (const std::string &line : edit.opening) {
        putText(to, line);
    }
}

Edit takeEdit(FieldReader *from)
{
    Edit edit;
    const std::size_t kind = from->byte();
    if (kind >= std::size(kinds)) {
        from->fail();
        return edit;
    }
    edit.kind = kinds[kind];
    edit.position = static_cast<std::int32_t>(from->number());
    edit.parametersBefore = static_cast<std::int32_t>(from->number());
    edit.path = from->text();
    edit.oldText = from->text();
    edit.newText = from->text();
    for (std::uint32_t left = from->number(); left > 0 && from->isGood(); --left) {
        edit.opening.push_back(from->text());
    }
    return edit;
}

} // namespace veltext
