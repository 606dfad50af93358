// Makes the changes of an upgrade one after the other, as their records say.
#include "tools/veltool/support/changeSelection.h"

#include "tools/veltool/support/failure.h"
#include "veltext/treeWalk.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace veltool {

namespace {

using velparser::ChangeKind;
using velparser::UpgradeChange;

std::string parentOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

bool isAtOrBelow(const std::string &path, const std::string &object)
{
    return path.starts_with(object) && (path.size() == object.size() || path[object.size()] == '/');
}

/// Makes changes of one kind one after the other. Each function has the name of a
/// change. It returns the path at which the data does not allow the change;
/// nothing if the change was made.
class ChangeMaker
{
public:
    using Obstacle = std::optional<std::string>;

    explicit ChangeMaker(velHandle *data) : data_(data) {}

    Obstacle make(const UpgradeChange &change)
    {
        switch (change.kind) {
        case ChangeKind::RenamedParameter:
        case ChangeKind::MovedParameter:
            return moveParameter(change);
        case ChangeKind::RemovedParameter:
            return removeParameter(change);
        case ChangeKind::AddedParameter:
            return addParameter(change);
        case ChangeKind::ChangedValue:
            return changeValue(change);
        case ChangeKind::RenamedObject:
            return renameObject(change);
        case ChangeKind::RemovedObject:
            return removeObject(change);
        case ChangeKind::SetVersion:
            return setVersion(change);
        case ChangeKind::Unknown:
            break;
        }
        throw Failure("the Perl packages do not say what their changes do; none can be left out");
    }

private:
    [[nodiscard]] bool have(const std::string &path) const
    {
        return havePath(data_, path.c_str()) != 0;
    }
    [[nodiscard]] bool haveObject(const std::string &path) const
    {
        return path == "/" || isObject(data_, path.c_str()) != 0;
    }
    [[nodiscard]] bool haveParameter(const std::string &path) const
    {
        return have(path) && !haveObject(path);
    }
    [[nodiscard]] std::string value(const std::string &path) const
    {
        const char *text = velFindValue(data_, path.c_str());
        return text != nullptr ? text : "";
    }

    void create(const std::string &path, const std::string &value)
    {
        require(velCreateParam(data_, path.c_str(), value.c_str()));
    }
    void createObject(const std::string &path)
    {
        require(velCreateObject(data_, path.c_str(), false));
    }

    Obstacle moveParameter(const UpgradeChange &change)
    {
        const std::string target = parentOf(change.newPath);
        if (!haveParameter(change.path)) {
            return change.path;
        }
        if (have(change.newPath)) {
            return change.newPath;
        }
        if (!haveObject(target)) {
            if (have(target) || !haveObject(parentOf(target))) {
                return target;
            }
            createObject(target);
        }
        create(change.newPath, value(change.path));
        require(deleteParamH(data_, change.path.c_str()));
        return std::nullopt;
    }

    Obstacle removeParameter(const UpgradeChange &change)
    {
        if (!haveParameter(change.path) || value(change.path) != change.oldValue) {
            return change.path;
        }
        require(deleteParamH(data_, change.path.c_str()));
        return std::nullopt;
    }

    Obstacle addParameter(const UpgradeChange &change)
    {
        if (!haveObject(parentOf(change.path))) {
            return parentOf(change.path);
        }
        if (have(change.path)) {
            return change.path;
        }
        create(change.path, change.newValue);
        return std::nullopt;
    }

    Obstacle changeValue(const UpgradeChange &change)
    {
        if (!haveParameter(change.path) || value(change.path) != change.oldValue) {
            return change.path;
        }
        require(setStringValue(data_, change.path.c_str(), change.newValue.c_str()));
        return std::nullopt;
    }

    Obstacle removeObject(const UpgradeChange &change)
    {
        if (!haveObject(change.path)) {
            return change.path;
        }
        require(deleteObjH(data_, change.path.c_str()));
        return std::nullopt;
    }

    /// The type is part of the path, so a new object is made and filled.
    Obstacle renameObject(const UpgradeChange &change)
    {
        if (!haveObject(change.path)) {
            return change.path;
        }
        if (have(change.newPath)) {
            return change.newPath;
        }
        std::vector<std::pair<std::string, std::optional<std::string>>> content;
        const velNode *object = velFindNode(data_, change.path.c_str());
        for (veltext::TreeWalk walk(data_, object, change.path); walk.node() != nullptr;
             walk.step()) {
            const velNodeInfo &info = walk.info();
            const char *text = info.value != nullptr ? info.value : "";
            content.emplace_back(change.newPath + walk.path().substr(change.path.size()),
                                 info.kind == velParam ? std::optional<std::string>(text)
                                                       : std::nullopt);
        }
        for (const auto &[path, value] : content) {
            if (value) {
                create(path, *value);
            } else {
                createObject(path);
            }
        }
        require(deleteObjH(data_, change.path.c_str()));
        return std::nullopt;
    }

    Obstacle setVersion(const UpgradeChange &change)
    {
        const std::string object = parentOf(change.path);
        if (!have(object)) {
            createObject(object);
        }
        if (!haveObject(object) || value(change.path) != change.oldValue) {
            return change.path;
        }
        create(change.path, change.newValue);
        return std::nullopt;
    }

    velHandle *data_;
};

/// The changes that are left out, and the paths on which they would have had an
/// effect.
class LeftOut
{
public:
    void add(std::size_t number, const UpgradeChange &change)
    {
        changes_.push_back({number, {change.path}});
        if (!change.newPath.empty()) {
            changes_.back().paths.push_back(change.newPath);
        }
    }

    /// Another change gave an object or parameter a new name.
    void rename(const std::string &from, const std::string &to)
    {
        for (Entry &entry : changes_) {
            for (std::string &path : entry.paths) {
                if (isAtOrBelow(path, from)) {
                    path.replace(0, from.size(), to);
                }
            }
        }
    }

    /// The last change that concerns the path or an object around it. Otherwise
    /// the first change that concerns something in it, because that change would
    /// have made it. Otherwise the last change of all; nothing if there is none.
    [[nodiscard]] std::optional<std::size_t> find(const std::string &path) const
    {
        const auto isAround = [&](const Entry &entry) {
            return std::ranges::any_of(
                entry.paths, [&](const std::string &own) { return isAtOrBelow(path, own); });
        };
        const auto isInside = [&](const Entry &entry) {
            return std::ranges::any_of(
                entry.paths, [&](const std::string &own) { return isAtOrBelow(own, path); });
        };
        const auto around = std::find_if(changes_.rbegin(), changes_.rend(), isAround);
        if (around != changes_.rend()) {
            return around->number;
        }
        const auto inside = std::ranges::find_if(changes_, isInside);
        if (inside != changes_.end()) {
            return inside->number;
        }
        return changes_.empty() ? std::nullopt : std::optional(changes_.back().number);
    }

private:
    struct Entry
    {
        std::size_t number;
        std::vector<std::string> paths;
    };

    std::vector<Entry> changes_;
};

} // namespace

ChangeSelection makeChanges(velHandle *data, const std::vector<UpgradeChange> &changes,
                            const std::set<std::size_t> &except)
{
    ChangeSelection selection;
    ChangeMaker maker(data);
    LeftOut leftOut;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const UpgradeChange &change = changes[i];
        const std::size_t number = i + 1;
        if (except.contains(number)) {
            leftOut.add(number, change);
            continue;
        }
        const std::optional<std::string> obstacle = maker.make(change);
        if (!obstacle) {
            selection.made.push_back(number);
            if (!change.newPath.empty()) {
                leftOut.rename(change.path, change.newPath);
            }
            continue;
        }
        const std::optional<std::size_t> needed = leftOut.find(*obstacle);
        if (!needed) {
            throw Failure(*obstacle + ": change " + std::to_string(number) +
                          " does not fit the data");
        }
        selection.dependent.push_back({number, *needed});
        leftOut.add(number, change);
    }
    return selection;
}

} // namespace veltool
