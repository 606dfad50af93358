// Reads the data out of a session, or out of a database without one.
#include "veleditor/tests/DataText.h"

#include "velapilt/src/velapilt.h"
#include "velparser/api/velparser.h"

#include <QString>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>

namespace velEditor {

namespace {

/// What children a path has, what value, and whether it is library data.
struct Reader
{
    std::function<std::vector<velChildInfo>(const std::string &path)> children;
    std::function<std::string(const std::string &path)> value;
    std::function<bool(const std::string &path)> isLibrary;
};

Node readNode(const Reader &reader, const std::string &path, const std::string &component)
{
    Node node{component, std::nullopt, {}};
    for (const velChildInfo &child : reader.children(path)) {
        const std::string kind = child.className;
        const std::string below = kind == "Object" ? child.type + ":" + child.name : child.name;
        const std::string belowPath = (path == "/" ? "" : path) + "/" + below;
        if (kind == "Param") {
            node.children.push_back({below, reader.value(belowPath), {}});
        } else if (!reader.isLibrary(belowPath)) {
            node.children.push_back(readNode(reader, belowPath, below));
        }
    }
    return node;
}

std::vector<const char *> pointersTo(const std::vector<std::string> &lines)
{
    std::vector<const char *> texts;
    texts.reserve(lines.size() + 1);
    for (const std::string &line : lines) {
        texts.push_back(line.c_str());
    }
    texts.push_back(""); // a text without any line would be refused
    return texts;
}

void stopOn(const char *failure)
{
    if (failure != nullptr) {
        qFatal("%s", failure);
    }
}

void collectPaths(const Node &node, const std::string &path, bool parameters,
                  std::vector<std::string> &found)
{
    for (const Node &child : node.children) {
        const std::string below = path + "/" + child.component;
        if (child.value.has_value() == parameters) {
            found.push_back(below);
        }
        collectPaths(child, below, parameters, found);
    }
}

} // namespace

std::vector<std::string> pathsBelow(const Node &node, bool parameters)
{
    std::vector<std::string> found;
    collectPaths(node, {}, parameters, found);
    return found;
}

std::vector<std::string> storedPaths(bool parameters)
{
    return pathsBelow(storedData(), parameters);
}

std::string dump(const Node &node, const std::string &indent)
{
    std::string text;
    for (const Node &child : node.children) {
        text += indent + child.component;
        text += child.value ? " = " + *child.value + "\n" : "\n" + dump(child, indent + "  ");
    }
    return text;
}

Node storedData(velparser::Session &session)
{
    const Reader reader{
        [&](const std::string &path) {
            std::vector<velChildInfo> children;
            static_cast<void>(velparser::getChildList(session, path.c_str(), &children, nullptr));
            return children;
        },
        [&](const std::string &path) {
            std::optional<std::string> value;
            static_cast<void>(velparser::getStringValue(session, path.c_str(), &value));
            return value.value_or("no value");
        },
        [&](const std::string &path) {
            return velparser::isVELLibrary(session, path.c_str()) == 1;
        }};
    return readNode(reader, "/", {});
}

std::vector<std::string> writtenLines(velparser::Session &session)
{
    velStringList lines;
    stopOn(velparser::getFormattedVEL(session, "/", 79, &lines));
    return {lines.begin(), lines.end()};
}

Node savedData()
{
    const velHandlePtr fresh(velCreateHandle());
    const std::vector<std::string> lines = writtenLines();
    const std::vector<const char *> texts = pointersTo(lines);
    stopOn(loadVELData(fresh.get(), texts.data(), static_cast<std::int32_t>(texts.size())));
    const Reader reader{[&](const std::string &path) {
                            std::vector<velChildInfo> children;
                            static_cast<void>(
                                getChildList(fresh.get(), path.c_str(), &children, nullptr));
                            return children;
                        },
                        [&](const std::string &path) {
                            const char *value = velFindValue(fresh.get(), path.c_str());
                            return std::string(value != nullptr ? value : "no value");
                        },
                        [](const std::string &) { return false; }};
    return readNode(reader, "/", {});
}

velparser::Session freshLoad(const std::vector<std::string> &lines)
{
    velparser::Session session;
    const std::vector<const char *> texts = pointersTo(lines);
    stopOn(velparser::readVELLibraries(session));
    stopOn(velparser::loadVELData(session, texts.data(), static_cast<std::int32_t>(texts.size())));
    return session;
}

Node asSaved(Node node)
{
    std::stable_sort(node.children.begin(), node.children.end(),
                     [](const Node &one, const Node &other) {
                         if (one.value.has_value() != other.value.has_value()) {
                             return one.value.has_value();
                         }
                         return !one.value && one.component < other.component;
                     });
    for (Node &child : node.children) {
        if (child.value) {
            child.value = QString::fromStdString(*child.value).simplified().toStdString();
        }
        child = asSaved(std::move(child));
    }
    return node;
}

void forgetData()
{
    for (const Node &child : storedData().children) {
        const std::string path = "/" + child.component;
        static_cast<void>(velparser::deleteObj(path.c_str()));
    }
}

} // namespace velEditor
