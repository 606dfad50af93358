// Writes nodes as lines.
//
// There are two writers. The plain one keeps the stored order and writes
// everything. The other writes user data as a saved file: parameters first,
// objects by the priorities that the rules give their types, long lines wrapped.
#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velHandle_p.h"
#include "velapilt/src/velNumber.h"
#include "velapilt/src/velResolve_p.h"
#include "velapilt/src/velWalk_p.h"
#include "velapilt/src/velWrap.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <unordered_map>

namespace {

constexpr std::size_t indentStep = 2;

bool isLeftOut(const velNode *node, std::uint32_t include, std::uint32_t exclude)
{
    return (include != 0 && (node->flags & include) == 0) ||
           (exclude != 0 && (node->flags & exclude) != 0);
}

/// Writes lines of two or three parts, in place where they need no wrapping.
class LineWriter
{
public:
    /// `margin` comes before every line, before its own indentation.
    LineWriter(const velHandle *handle, velArray *lines, std::int32_t width,
               std::string_view margin = {})
        : words_(handle->words), lines_(lines), width_(width), margin_(margin)
    {
    }

    const char *param(std::size_t indent, const velNode *node)
    {
        const std::string_view value(node->value.text, node->value.length);
        if (value.empty() || (value.back() > ' ' && value.back() != '\\')) {
            return write(indent, words_.view(node->name), " = ", value);
        }
        return endedParam(indent, node, value);
    }

    const char *header(std::size_t indent, const velNode *node)
    {
        return node->name == velWords::none
                   ? write(indent, words_.view(node->type), ":", {})
                   : write(indent, words_.view(node->type), ": ", words_.view(node->name));
    }

    const char *end(std::size_t indent) { return write(indent, "END", {}, {}); }

private:
    /// Writes a parameter whose value may need an end of the line. It is a
    /// function of its own because few values need that.
    [[gnu::noinline]] const char *endedParam(std::size_t indent, const velNode *node,
                                             std::string_view value)
    {
        std::string ended(value);
        ended += velLineEnd(value);
        return write(indent, words_.view(node->name), " = ", ended);
    }

    const char *write(std::size_t indent, std::string_view first, std::string_view middle,
                      std::string_view last)
    {
        const std::size_t length =
            margin_.size() + indent + first.size() + middle.size() + last.size();
        const bool fits = width_ == 0 || (width_ > 2 && length <= static_cast<std::size_t>(width_));
        if (!fits) {
            scratch_.resize(length);
        }
        char *next = fits ? lines_->addUninitialised(length) : scratch_.data();
        if (!margin_.empty()) {
            std::memcpy(next, margin_.data(), margin_.size());
            next += margin_.size();
        }
        std::memset(next, ' ', indent);
        next += indent;
        for (const std::string_view part : {first, middle, last}) {
            if (!part.empty()) {
                std::memcpy(next, part.data(), part.size());
                next += part.size();
            }
        }
        return fits ? nullptr : velWrap(scratch_, width_, lines_);
    }

    const velWords &words_;
    velArray *lines_;
    std::int32_t width_;
    std::string_view margin_;
    std::string scratch_;
};

// --- Order ----------------------------------------------------------------------

/// The output priority of an object type, from the rules; found once for each
/// type.
class Priorities
{
public:
    /// `rules` contains the rules, and `words` contains the types.
    Priorities(velHandle *rules, const velWords &words) : rules_(rules), words_(words) {}

    std::int32_t ofType(std::string_view type) const
    {
        for (const char *kind : {"OBJECT", "SINGLETON", "PARAMETER"}) {
            std::string path = "/RULES/";
            velAppendComponent(&path, kind, type);
            path += "/Output Ordering Priority";
            // Resolved, because the rule of a type OBJECT is the singleton
            // /RULES/OBJECT.
            if (const velNode *rule = velResolve(rules_, path.c_str())) {
                const bool hasValue = rule->isParam() && rule->value.text != nullptr;
                return hasValue ? velRoundValue(velReadNumber(rule->value.text)) : 0;
            }
        }
        return 0;
    }

    std::int32_t ofWord(std::uint32_t type)
    {
        const auto [entry, isNew] = known_.try_emplace(type, 0);
        if (isNew) {
            entry->second = ofType(words_.view(type));
        }
        return entry->second;
    }

private:
    velHandle *rules_;
    const velWords &words_;
    std::unordered_map<std::uint32_t, std::int32_t> known_;
};

std::string entryText(const velWords &words, const velNode *node)
{
    return velJoinComponent(words.view(node->type), words.view(node->name));
}

struct OrderedNode
{
    const velNode *node;
    std::int32_t priority;
};

/// Higher priority first, then by the bytes of "TYPE:Name" or "TYPE".
void sortForOutput(const velWords &words, std::vector<OrderedNode> &nodes)
{
    const auto isBefore = [&words](const OrderedNode &a, const OrderedNode &b) {
        if (a.priority != b.priority) {
            return a.priority > b.priority;
        }
        if (a.node->type == b.node->type) {
            return words.view(a.node->name) < words.view(b.node->name);
        }
        return entryText(words, a.node) < entryText(words, b.node);
    };
    std::sort(nodes.begin(), nodes.end(), isBefore);
}

// --- Saved form -------------------------------------------------------------------

class SavedFormWriter
{
public:
    SavedFormWriter(velHandle *handle, velHandle *rules, velArray *lines, std::int32_t width)
        : words_(handle->words), priorities_(rules, handle->words), writer_(handle, lines, width)
    {
    }

    const char *write(const velNode *top)
    {
        if (const char *error = open(top)) {
            return error;
        }
        while (walk_.depth() > 0) {
            if (const char *error = step()) {
                return error;
            }
        }
        return nullptr;
    }

private:
    std::size_t indent() const { return indentStep * (walk_.depth() - 1); }

    /// Writes the parameters of an object and puts its child objects next in the
    /// order.
    const char *open(const velNode *node)
    {
        const std::size_t indentHere = indentStep * walk_.depth();
        bool hasObjects = false;
        for (const velNode *child = node->firstChild(); child != nullptr; child = child->next) {
            if (!child->isParam()) {
                hasObjects = true;
                continue;
            }
            if (child->value.text == nullptr) {
                return "Unreported error reading value";
            }
            if (const char *error = writer_.param(indentHere, child)) {
                return error;
            }
        }
        walk_.enter(node);
        if (hasObjects) {
            list(node);
        }
        return nullptr;
    }

    void list(const velNode *node)
    {
        std::vector<OrderedNode> objects;
        for (const velNode *child = node->firstChild(); child != nullptr; child = child->next) {
            if (!child->isParam() && (child->flags & velFlagLibrary) == 0) {
                objects.push_back({child, priorities_.ofWord(child->type)});
            }
        }
        sortForOutput(words_, objects);
        for (const OrderedNode &object : objects) {
            walk_.add(object.node);
        }
    }

    const char *step()
    {
        if (const velNode *object = walk_.next()) {
            if (const char *error = writer_.header(indent(), object)) {
                return error;
            }
            return open(object);
        }
        walk_.leave();
        return walk_.depth() == 0 ? nullptr : writer_.end(indent());
    }

    const velWords &words_;
    Priorities priorities_;
    LineWriter writer_;
    velListWalk<const velNode> walk_;
};

/// An empty list of lines; null without memory.
std::unique_ptr<velArray> makeList()
try {
    return std::make_unique<velArray>(velArrayKind::Strings);
} catch (const std::bad_alloc &) {
    return nullptr;
}

// --- Stored form --------------------------------------------------------------------

const char *writeStored(LineWriter &writer, const velNode *top, std::uint32_t include,
                        std::uint32_t exclude)
{
    std::size_t indent = 0;
    for (velWalk walk(top); !walk.isDone();) {
        const velNode *node = walk.node();
        const char *error = nullptr;
        if (node == nullptr) {
            indent -= indentStep;
            error = writer.end(indent);
            walk.up();
        } else if (node->isParam()) {
            error = writer.param(indent, node);
            walk.over();
        } else if (isLeftOut(node, include, exclude)) {
            walk.over();
        } else {
            error = writer.header(indent, node);
            indent += indentStep;
            walk.down();
        }
        if (error != nullptr) {
            return error;
        }
    }
    return nullptr;
}

} // namespace

const char *getPartialVELH(velHandle *handle, const char *path, const char *indent, velArray *lines,
                           std::uint32_t include, std::uint32_t exclude)
try {
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "getPartialVELH: object does not exist";
    }
    LineWriter writer(handle, lines, 0, indent);
    return writeStored(writer, node, include, exclude);
} catch (const std::bad_alloc &) {
    return "getPartialVELH: memory error";
}

const char *getObjectVELH(velHandle *handle, const char *path, velStringList *lines,
                          bool includeLibrary)
try {
    if (handle->root == nullptr) {
        return nullptr;
    }
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "getObjectVELH: path not found";
    }
    if (node->isParam()) { // a parameter has no header
        return "getObjectVEL: path not found";
    }
    std::unique_ptr<velArray> array = makeList();
    if (array == nullptr) {
        return "getExpandedVELH: error allocating return array";
    }
    LineWriter writer(handle, array.get(), 0);
    const char *error = node->isRoot() ? nullptr : writer.header(0, node);
    if (error == nullptr) {
        // Kept: the first level has the indentation of the header.
        error = writeStored(writer, node, 0, includeLibrary ? 0 : velFlagLibrary);
    }
    if (error == nullptr && !node->isRoot()) {
        error = writer.end(0);
    }
    if (error == nullptr) {
        *lines = array->takeStrings();
    }
    return error;
} catch (const std::bad_alloc &) {
    return "getPartialVELH: memory error";
}

const char *velWrapTextByRules(velHandle *handle, velHandle *rules, const char *path,
                               std::int32_t width, velStringList *lines)
try {
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        velStringList none;
        return getChildParamList(handle, path, &none); // for its message
    }
    std::unique_ptr<velArray> array = makeList();
    if (array == nullptr) {
        return "velWrapText: failed to allocate array";
    }
    if (const char *error = SavedFormWriter(handle, rules, array.get(), width).write(node)) {
        return error;
    }
    *lines = array->takeStrings();
    return nullptr;
} catch (const std::bad_alloc &) {
    return "memory error";
}

const char *velWrapText(velHandle *handle, const char *path, std::int32_t width,
                        velStringList *lines)
{
    return velWrapTextByRules(handle, handle, path, width, lines);
}

const char *getFormattedVEL(velHandle *handle, const char *path, std::int32_t width,
                            velStringList *lines)
{
    return velWrapText(handle, path, width, lines);
}

const char *velOrderObjectsForOutput(velHandle *handle, std::vector<std::string> *entries)
try {
    struct Entry
    {
        std::int32_t priority;
        std::string text;
    };
    const Priorities priorities(handle, handle->words);
    std::vector<Entry> ordered;
    ordered.reserve(entries->size());
    for (const std::string &text : *entries) {
        ordered.push_back({priorities.ofType(velSplitComponent(text).type), text});
    }
    std::sort(ordered.begin(), ordered.end(), [](const Entry &a, const Entry &b) {
        return a.priority != b.priority ? a.priority > b.priority : a.text < b.text;
    });
    for (std::size_t i = 0; i < ordered.size(); ++i) {
        (*entries)[i].swap(ordered[i].text);
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "velOrderObjectsForOutput: memory error";
}
