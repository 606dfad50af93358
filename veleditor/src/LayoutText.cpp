// Collects the data of the window, and edits the text towards it.
#include "veleditor/src/LayoutText.h"

#include "veleditor/src/CommandData.h"
#include "velparser/api/velparser.h"
#include "veltext/error.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace velEditor {

namespace {

using velparser::ChangeKind;
using velparser::UpgradeChange;

/// An object whose children are being collected.
struct Level
{
    std::string path;
    std::vector<CommandData::Child> children;
    std::size_t next = 0;
};

/// What a save writes: all but the objects of libraries. Throws a veltext::Error if
/// objects nest too deeply.
veltext::TreeData savedData(const CommandData &data)
{
    veltext::TreeData saved;
    std::vector<Level> levels{{"/", data.children("/")}};
    while (!levels.empty()) {
        Level &level = levels.back();
        if (level.next == level.children.size()) {
            levels.pop_back();
            continue;
        }
        const CommandData::Child &child = level.children[level.next++];
        const std::string path = childPath(level.path, child.component);
        if (child.isParameter) {
            saved.add({path, data.value(path).value_or("")});
        } else if (!child.isLibrary) {
            if (levels.size() > veltext::deepestKept) {
                throw veltext::Error("objects nest too deeply");
            }
            saved.add({path, std::nullopt});
            levels.push_back({path, data.children(path)});
        }
    }
    return saved;
}

bool isOfLibrary(const std::string &path)
{
    return velparser::isVELLibrary(path.c_str()) == 1;
}

} // namespace

std::vector<veltext::PathChange> upgradePaths(const std::string &text)
{
    velparser::Session session;
    std::vector<velparser::Finding> faults;
    std::vector<UpgradeChange> changes;
    const velStringList lines = veltext::SourceText(text).parsedLines().takeStrings();
    // What the libraries lack, the first upgrade lacked too, and has been reported.
    static_cast<void>(velparser::readLibraries(session, &faults));
    if (velparser::loadVELData(session, lines.data(), static_cast<std::int32_t>(lines.size())) !=
            nullptr ||
        velparser::upgrade(session, &changes) != nullptr) {
        return {};
    }
    using Kind = veltext::PathChange::Kind;
    std::vector<veltext::PathChange> paths;
    for (const UpgradeChange &change : changes) {
        if (change.kind == ChangeKind::RenamedParameter ||
            change.kind == ChangeKind::RenamedObject) {
            paths.push_back({Kind::Renamed, change.path, change.newPath});
        } else if (change.kind == ChangeKind::MovedParameter) {
            paths.push_back({Kind::Moved, change.path, change.newPath});
        }
    }
    return paths;
}

std::string layoutText(const std::string &former, const CommandData &data,
                       const std::vector<veltext::PathChange> &paths)
{
    return veltext::keepLayout(veltext::SourceText(former), savedData(data), paths, isOfLibrary);
}

} // namespace velEditor
