// Makes edits and their inverses.
#include "veltext/edit.h"

#include <algorithm>
#include <utility>

namespace veltext {

namespace {

Edit::Kind inverse(Edit::Kind kind)
{
    switch (kind) {
    case Edit::Kind::AddParameter:
        return Edit::Kind::DeleteParameter;
    case Edit::Kind::DeleteParameter:
        return Edit::Kind::AddParameter;
    case Edit::Kind::AddObject:
        return Edit::Kind::DeleteObject;
    case Edit::Kind::DeleteObject:
        return Edit::Kind::AddObject;
    case Edit::Kind::SetValue:
    case Edit::Kind::ReplaceObject:
        break;
    }
    return kind;
}

bool isAboutParameter(Edit::Kind kind)
{
    return kind == Edit::Kind::SetValue || kind == Edit::Kind::AddParameter ||
           kind == Edit::Kind::DeleteParameter;
}

} // namespace

Edit settingValue(std::string path, std::string value)
{
    return {Edit::Kind::SetValue, std::move(path), {}, std::move(value)};
}

Edit addingParameter(std::string path, std::string value, std::vector<std::string> opening)
{
    return {Edit::Kind::AddParameter, std::move(path), {},
            std::move(value),         Edit::atEnd,     std::move(opening)};
}

Edit deletingParameter(std::string path)
{
    return {Edit::Kind::DeleteParameter, std::move(path), {}, {}};
}

Edit addingObject(std::string path, std::string block)
{
    return {Edit::Kind::AddObject, std::move(path), {}, std::move(block)};
}

Edit deletingObject(std::string path)
{
    return {Edit::Kind::DeleteObject, std::move(path), {}, {}};
}

Edit inverse(const Edit &done)
{
    return {inverse(done.kind), done.path,      done.newText,         done.oldText,
            done.position,      /*opening=*/{}, done.parametersBefore};
}

int positionAmong(const std::vector<bool> &siblings, const Edit &edit)
{
    const auto count = static_cast<int>(siblings.size());
    const int position = std::min(edit.position, count);
    if (edit.parametersBefore == Edit::unknown ||
        std::count(siblings.begin(), siblings.begin() + position, true) == edit.parametersBefore) {
        return position;
    }
    const bool isParameter = isAboutParameter(edit.kind);
    int before = isParameter ? edit.parametersBefore : edit.position - edit.parametersBefore;
    int place = 0;
    for (int i = 0; i < count && before > 0; ++i) {
        if (siblings[static_cast<std::size_t>(i)] == isParameter) {
            place = i + 1;
            --before;
        }
    }
    return place;
}

} // namespace veltext
