// Brings paths into normal form, makes them absolute, joins and cuts them.
#include "velapilt/src/velPath.h"

#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velPathParts.h"
#include "velapilt/src/velSpace.h"
#include "velapilt/src/velapilt.h"

#include <array>
#include <cstring>

namespace {

bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

constexpr auto runCharacters = [] {
    std::array<bool, 256> table{};
    for (const unsigned char c : {' ', '\t', '/', ':'}) {
        table[c] = true;
    }
    return table;
}();

bool isRunCharacter(char c)
{
    return runCharacters[static_cast<unsigned char>(c)];
}

/// Replaces each run of spaces, tabs, '/' and ':' by its strongest character.
std::string collapseRuns(std::string_view path)
{
    std::string result;
    result.reserve(path.size());
    for (std::size_t i = 0; i < path.size();) {
        if (!isRunCharacter(path[i])) {
            result += path[i++];
            continue;
        }
        char strongest = ' ';
        for (; i < path.size() && isRunCharacter(path[i]); ++i) {
            if (path[i] == '/' || (path[i] == ':' && strongest == ' ')) {
                strongest = path[i];
            }
        }
        result += strongest;
    }
    return result;
}

/// The length that a component keeps: TYPE:TYPE is reduced to its type.
std::size_t reducedLength(std::string_view component)
{
    const velComponentParts parts = velSplitComponent(component);
    return parts.hasColon && parts.type == parts.name ? parts.type.size() : component.size();
}

/// Whether a path is its own normal form. Most paths are, so this looks at each
/// character once, and only at components that contain a ':'.
bool isNormalForm(std::string_view path)
{
    if (path.size() < 2) {
        return path.empty() || !velIsSpace(path.front());
    }
    if (velIsSpace(path.front()) || velIsSpace(path.back()) || isRunCharacter(path.back())) {
        return false;
    }
    constexpr std::size_t none = std::string_view::npos;
    const auto isReduced = [path](std::size_t start, std::size_t end) {
        return reducedLength(path.substr(start, end - start)) == end - start;
    };
    std::size_t start = 0;
    std::size_t colon = none; // in the component from `start` on
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (!isRunCharacter(path[i])) {
            continue;
        }
        // The last character is not a run character, so another one follows this
        // one.
        if (path[i] == '\t' || isRunCharacter(path[i + 1])) {
            return false;
        }
        if (path[i] == ':') {
            colon = i;
        } else if (path[i] == '/') {
            if (colon != none && !isReduced(start, i)) {
                return false;
            }
            start = i + 1;
            colon = none;
        }
    }
    return colon == none || isReduced(start, path.size());
}

/// Removes the last component of `result`, because a ".." follows it.
void leaveComponent(std::string &result)
{
    std::size_t separator = result.size() - 1;
    while (separator > 0) {
        if (isSeparator(result[--separator])) {
            result.resize(separator);
            return;
        }
    }
}

std::string resolveParents(std::string_view path)
{
    std::string result;
    result.reserve(path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool isParent = path.substr(i, 2) == ".." && !result.empty() &&
                              isSeparator(result.back()) && path.substr(i + 2, 1) != "\\";
        if (isParent) {
            leaveComponent(result);
            ++i;
        } else {
            result += path[i];
        }
    }
    return result;
}

} // namespace

std::string velNormalForm(std::string_view path, velLastComponent last)
{
    std::string text(velTrim(path));
    if (text.size() < 2 || isNormalForm(text)) {
        return text;
    }
    text += '/'; // for the loops below: now a separator ends each component
    text = collapseRuns(text);

    std::string result;
    result.reserve(text.size());
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t slash = text.find('/', start);
        const std::string_view component = std::string_view(text).substr(start, slash - start);
        const bool keep = last == velLastComponent::Keep && slash + 1 == text.size();
        result += component.substr(0, keep ? component.size() : reducedLength(component));
        result += '/';
        start = slash + 1;
    }
    if (result.size() > 1) {
        result.pop_back();
    }
    return result;
}

std::string velAbsolutePath(std::string_view current, std::string_view path)
{
    if (path.starts_with('/')) {
        return resolveParents(path);
    }
    if (path.starts_with("./") || path.starts_with(".\\")) {
        path.remove_prefix(2);
    }
    if (path == ".") {
        path = {};
    }
    std::string absolute(current);
    if (!absolute.ends_with('/') && !path.empty()) {
        absolute += '/';
    }
    absolute += path;
    return resolveParents(absolute);
}

bool velIsCleanPath(const char *path)
{
    return isNormalForm(path);
}

std::string velCleanPath(const char *path)
{
    return velNormalForm(path);
}

std::string velFullPath(velHandle *handle, const char *path)
{
    return velNormalForm(velAbsolutePath(getCurrentPath(handle), path));
}

std::optional<std::string> velParentPath(velHandle *handle, const char *path)
{
    const std::string full = velFullPath(handle, path);
    return full.find('/') == std::string::npos ? std::nullopt
                                               : std::optional(velPathOfParent(full));
}

const char *makeChildPath(const char *parentPath, const char *component, std::string *path)
try {
    *path = velPathOfChild(parentPath, component);
    return nullptr;
} catch (const std::bad_alloc &) {
    return "makeChildPath: memory error";
}
