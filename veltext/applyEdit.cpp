// The changes of a database for an edit, one function for each kind of edit.
#include "veltext/applyEdit.h"

#include "velapilt/src/velapilt.h"
#include "veltext/error.h"
#include "veltext/objectBlock.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace veltext {

namespace {

std::string parentOf(const std::string &path)
{
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// Which children of an object are parameters, in stored order.
std::vector<bool> areParameters(velHandle *handle, const velNode *object)
{
    std::vector<bool> are;
    for (const velNode *child = object != nullptr ? velFirstChild(object) : nullptr;
         child != nullptr; child = velNextSibling(child)) {
        are.push_back(velDescribe(handle, child).kind == velParam);
    }
    return are;
}

void place(velHandle *handle, const std::string &path, int position)
{
    require(velPlaceChild(handle, path.c_str(), static_cast<std::uint32_t>(position)), path);
}

/// The place that a new item gets among its siblings.
int placeOfNew(velHandle *handle, const Edit &edit)
{
    const velNode *parent = velFindFullPath(handle, parentOf(edit.path).c_str());
    return positionAmong(areParameters(handle, parent), edit);
}

int placeOfObject(velHandle *handle, const std::string &path)
{
    const velNode *object = velFindFullPath(handle, path.c_str());
    const velNode *parent = velFindFullPath(handle, parentOf(path).c_str());
    int position = 0;
    for (const velNode *child = parent != nullptr ? velFirstChild(parent) : nullptr;
         child != nullptr && child != object; child = velNextSibling(child)) {
        ++position;
    }
    return position;
}

void putParameter(velHandle *handle, const Edit &edit)
{
    const int position = placeOfNew(handle, edit);
    require(velCreateParam(handle, edit.path.c_str(), edit.newText.c_str()), edit.path);
    place(handle, edit.path, position);
}

void putObject(velHandle *handle, const Edit &edit, int position)
{
    readBlock(parentOf(edit.path), edit.newText, [handle](const BlockStatement &statement) {
        const char *path = statement.path.c_str();
        require(statement.isParameter ? velCreateParam(handle, path, statement.value.c_str())
                                      : velCreateObject(handle, path, false),
                statement.path);
        return true;
    });
    place(handle, edit.path, position);
}

void replaceObject(velHandle *handle, const Edit &edit)
{
    const int position = placeOfObject(handle, edit.path);
    require(deleteObjH(handle, edit.path.c_str()), edit.path);
    putObject(handle, edit, position);
}

} // namespace

void applyEdit(velHandle *handle, const Edit &edit)
{
    const char *path = edit.path.c_str();
    switch (edit.kind) {
    case Edit::Kind::SetValue:
        return require(setStringValue(handle, path, edit.newText.c_str()), edit.path);
    case Edit::Kind::AddParameter:
        return putParameter(handle, edit);
    case Edit::Kind::DeleteParameter:
        return require(deleteParamH(handle, path), edit.path);
    case Edit::Kind::AddObject:
        return putObject(handle, edit, placeOfNew(handle, edit));
    case Edit::Kind::DeleteObject:
        return require(deleteObjH(handle, path), edit.path);
    case Edit::Kind::ReplaceObject:
        return replaceObject(handle, edit);
    }
}

} // namespace veltext
