// Tests the tree and its path table against a plain model: a map from path texts to
// nodes, with each operation written for that map. Handlers change the tree during
// operations, and the model does the same.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>

namespace {

enum class Action { Create, SetValue, Remove, DeleteAll, Validate, Replace };

/// One call of the database. Not every action uses every field.
struct Step
{
    Action action;
    std::string path;
    velKind kind = velParam;
    std::string value;
    bool isLibrary = false;
    std::int32_t level = 0;
    std::vector<std::string> lines; ///< of Replace: a &replace block of the root
};

/// A handler's reaction to a reported change.
struct Reaction
{
    std::string trigger; ///< the change as logged, up to the new value
    Step step;
    int uses; ///< how many times it will still react
};

std::string parentOf(const std::string &path)
{
    return path.rfind('/') == 0 ? "/" : path.substr(0, path.rfind('/'));
}

std::string childOf(const std::string &path, const std::string &component)
{
    return (path == "/" ? "" : path) + "/" + component;
}

/// The log of changes, and the reactions to them.
template <typename Perform>
void react(std::string &log, std::vector<Reaction> &reactions, const std::string &change,
           const std::string &rest, Perform perform)
{
    log += change + rest + "\n";
    for (Reaction &reaction : reactions) {
        if (reaction.trigger == change && reaction.uses > 0) {
            --reaction.uses;
            log += "{\n";
            const std::string message = perform(reaction.step);
            log += "} " + message + "\n";
        }
    }
}

struct ModelNode
{
    velKind kind;
    std::string component;
    std::string value;
    std::uint32_t flags;
    std::vector<ModelNode *> children;
};

class Model
{
public:
    Model() { enter("/", velObject, "/", "", 0); }

    bool has(const std::string &path) const { return table_.count(path) != 0; }
    const std::map<std::string, ModelNode *> &table() const { return table_; }

    int library(const std::string &path) const
    {
        const ModelNode *node = find(path);
        if (node != nullptr && node->kind == velParam) {
            node = find(parentOf(path));
            return node != nullptr && (node->flags & velFlagLibrary) != 0 ? 1 : 0;
        }
        return node == nullptr ? -1 : static_cast<int>(node->flags & velFlagLibrary);
    }

    std::string perform(const Step &step)
    {
        switch (step.action) {
        case Action::Create:
            return create(step);
        case Action::SetValue:
            return setValue(step.path, step.value);
        case Action::Remove:
            return remove(step.path);
        case Action::DeleteAll:
            return find(step.path) == nullptr ? "deleteObjH: unable to find parameter"
                                              : deleteAll(step.path, true);
        case Action::Validate:
            return validate(step.path, step.level);
        case Action::Replace:
            break;
        }
        return replace(step.lines);
    }

    std::string written(const std::string &path, const std::string &indent) const
    {
        std::string text;
        for (const ModelNode *child : table_.at(path)->children) {
            write(*child, indent, text);
        }
        return text;
    }

    void setReactions(const std::vector<Reaction> &reactions) { reactions_ = reactions; }
    std::string takeLog() { return std::exchange(log_, {}); }

private:
    std::string create(const Step &step)
    {
        const bool isParam = step.kind == velParam;
        const std::string parent = parentOf(step.path);
        if (!has(parent)) {
            return isParam ? "velCreateParam: parent object does not exist"
                           : "velCreateObject: parent object does not exist";
        }
        const std::uint32_t word = step.isLibrary && !isParam ? velFlagLibrary : 0;
        if (update(parent, step.path.substr(step.path.rfind('/') + 1), step.kind, step.value,
                   word)) {
            return "";
        }
        return isParam ? "velCreateParam: unable to create param"
                       : "velCreateObject: unable to create object";
    }

    /// Does the work of one line or create call; false if it is refused.
    bool update(const std::string &current, const std::string &component, velKind kind,
                const std::string &value, std::uint32_t word)
    {
        ModelNode *parent = find(current);
        const std::string path = childOf(current, component);
        ModelNode *node = find(path);
        const bool isParam = kind == velParam;
        if (parent == nullptr || parent->kind == velParam ||
            (node != nullptr && (node->kind == velParam) != isParam)) {
            return false;
        }
        if (node == nullptr) {
            parent->children.push_back(enter(path, kind, component, isParam ? value : "", word));
            report(path, isParam ? ": " + value : ": created", isParam ? " <- -" : "");
        } else if (isParam && node->value != value) {
            const std::string old = std::exchange(node->value, value);
            report(path, ": " + value, " <- " + old);
        }
        if (node = find(path); node == nullptr) {
            return true;
        }
        const ModelNode *above = find(parentOf(path));
        node->flags = word | (above == nullptr ? 0 : above->flags & velFlagReplace);
        if (word != velFlagValid && word != velFlagSubtreeValid) {
            invalidate(path);
        }
        return true;
    }

    std::string setValue(const std::string &path, const std::string &value)
    {
        ModelNode *node = find(path);
        if (node == nullptr) {
            return "setStringValue: requested object does not exist";
        }
        if (node->kind != velParam) {
            return "setStringValue: requested object is not a parameter";
        }
        if (node->value != value) {
            const std::string old = std::exchange(node->value, value);
            if ((node->flags & velFlagValid) != 0) {
                invalidate(path);
            }
            report(path, ": " + value, " <- " + old);
        }
        return "";
    }

    std::string validate(const std::string &path, std::int32_t level)
    {
        ModelNode *node = find(path);
        if (node == nullptr) {
            return "setValid: path not found";
        }
        if (level == 1) {
            node->flags |= velFlagValid;
        } else if (level == 2) {
            node->flags |= velFlagSubtreeValid;
        } else {
            invalidate(path);
        }
        return "";
    }

    void invalidate(const std::string &path)
    {
        const ModelNode *node = find(path);
        find(path)->flags &= ~velFlagValid;
        bool onlyParams = node->kind == velParam;
        for (std::string above = path; above != "/";) {
            above = parentOf(above);
            ModelNode *up = find(above);
            if (up != nullptr) {
                up->flags &= ~(onlyParams ? velFlagValid : velFlagSubtreeValid);
            }
            onlyParams = onlyParams && up != nullptr && up->kind == velParam;
        }
    }

    std::string remove(const std::string &path)
    {
        ModelNode *node = find(path);
        if (node == nullptr) {
            return "velRemoveObjectH: entry not found";
        }
        ModelNode *parent = find(parentOf(path));
        if (parent == nullptr) {
            return "velRemoveObjectH: parent not found!";
        }
        if (parent->children.empty()) {
            return "velRemoveObjectH: parent has no child list";
        }
        const auto place = std::find(parent->children.begin(), parent->children.end(), node);
        if (place == parent->children.end()) {
            return "velRemoveObjectH: child not in parent's child list";
        }
        table_.erase(path);
        parent->children.erase(place);
        report(path, node->kind == velParam ? ": -" : ": deleted",
               node->kind == velParam ? " <- " + node->value : "");
        return node->children.empty()
                   ? ""
                   : "velRemoveObjectH: removal of non-empty object, did you mean deleteObj?";
    }

    std::vector<std::string> componentsOf(const std::string &path) const
    {
        std::vector<std::string> components;
        if (const ModelNode *node = find(path)) {
            for (const ModelNode *child : node->children) {
                components.push_back(child->component);
            }
        }
        return components;
    }

    std::string deleteAll(const std::string &path, bool isRequested)
    {
        for (const std::string &component : componentsOf(path)) {
            if (const std::string child = childOf(path, component); has(child)) {
                if (std::string error = deleteAll(child, false); !error.empty()) {
                    return error;
                }
            }
        }
        if (!has(path)) {
            return isRequested ? "velRemoveObjectH: entry not found" : "";
        }
        return path == "/" ? "" : remove(path);
    }

    /// A &replace block of the root, line by line.
    std::string replace(const std::vector<std::string> &lines)
    {
        std::vector<std::pair<std::string, std::uint32_t>> open = {{"/", 0}};
        for (const std::string &line : lines) {
            if (line == "END") {
                end(open);
                continue;
            }
            const bool isReplace = line.starts_with("&replace ");
            const std::string rest = line.substr(isReplace ? 9 : 0);
            const auto [current, word] = open.back();
            if (const std::size_t equals = rest.find(" = "); equals != std::string::npos) {
                if (!update(current, rest.substr(0, equals), velParam, rest.substr(equals + 3),
                            word)) {
                    return "parseVELLineH: velUpdateObject failed";
                }
                continue;
            }
            const std::uint32_t opened = word | (isReplace ? velFlagReplace : 0);
            const bool isSingleton = rest.ends_with(':');
            const std::string component = isSingleton ? rest.substr(0, rest.size() - 1)
                                                      : rest.substr(0, rest.find(':')) + ":" +
                                                            rest.substr(rest.find(':') + 2);
            if (!update(current, component, isSingleton ? velSingleton : velObject, "", opened)) {
                return "parseVELLineH: velUpdateObject failed";
            }
            open.emplace_back(childOf(current, component), opened);
        }
        return "";
    }

    void end(std::vector<std::pair<std::string, std::uint32_t>> &open)
    {
        const auto [path, word] = open.back();
        open.pop_back();
        if ((word & velFlagReplace) == 0 || !has(path)) {
            return;
        }
        for (const bool params : {true, false}) {
            std::vector<std::string> turns;
            for (const std::string &component : componentsOf(path)) {
                if ((find(childOf(path, component))->kind == velParam) == params) {
                    turns.push_back(childOf(path, component));
                }
            }
            for (const std::string &child : turns) {
                ModelNode *node = find(child);
                if (node == nullptr || (params && node->kind != velParam)) {
                    continue;
                }
                if ((node->flags & velFlagReplace) != 0) {
                    node->flags &= ~velFlagReplace;
                } else {
                    static_cast<void>(params ? remove(child) : deleteAll(child, true));
                }
            }
        }
        if ((open.back().second & velFlagReplace) == 0 && has(path)) {
            find(path)->flags &= ~velFlagReplace;
        }
    }

    void report(const std::string &path, const std::string &what, const std::string &rest)
    {
        react(log_, reactions_, path + what, rest,
              [this](const Step &step) { return perform(step); });
    }

    ModelNode *find(const std::string &path) const
    {
        const auto found = table_.find(path);
        return found == table_.end() ? nullptr : found->second;
    }

    ModelNode *enter(const std::string &path, velKind kind, const std::string &component,
                     const std::string &value, std::uint32_t flags)
    {
        nodes_.push_back(std::make_unique<ModelNode>(ModelNode{kind, component, value, flags, {}}));
        return table_[path] = nodes_.back().get();
    }

    static void write(const ModelNode &node, const std::string &indent, std::string &text)
    {
        if (node.kind == velParam) {
            text += indent + node.component + " = " + node.value + "\n";
            return;
        }
        const std::size_t colon = node.component.find(':');
        text += indent + node.component.substr(0, colon) + ":";
        if (colon != std::string::npos) {
            text += " " + node.component.substr(colon + 1);
        }
        text += "\n";
        for (const ModelNode *child : node.children) {
            write(*child, indent + "  ", text);
        }
        text += indent + "END\n";
    }

    std::vector<std::unique_ptr<ModelNode>> nodes_; // removed ones, too: some are still found
    std::map<std::string, ModelNode *> table_;
    std::vector<Reaction> reactions_;
    std::string log_;
};

/// The database, with the same calls.
class Database
{
public:
    Database() : handle_(parsed(""))
    {
        EXPECT_EQ(said(addChangeHandler(handle_.get(), note, this)), "");
    }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    const velHandlePtr &handle() const { return handle_; }
    void setReactions(const std::vector<Reaction> &reactions) { reactions_ = reactions; }
    std::string takeLog() { return std::exchange(log_, {}); }

    std::string perform(const Step &step)
    {
        velHandle *handle = handle_.get();
        const char *path = step.path.c_str();
        switch (step.action) {
        case Action::Create:
            return said(step.kind == velParam ? velCreateParam(handle, path, step.value.c_str())
                                              : velCreateObject(handle, path, step.isLibrary));
        case Action::SetValue:
            return said(setStringValue(handle, path, step.value.c_str()));
        case Action::Remove:
            return said(velRemoveObjectH(handle, path));
        case Action::DeleteAll:
            return said(deleteObjH(handle, path));
        case Action::Validate:
            return said(setValid(handle, path, step.level, true));
        case Action::Replace:
            break;
        }
        std::string message;
        for (std::size_t i = 0; i < step.lines.size() && message.empty(); ++i) {
            message = said(parseVELLineH(handle, step.lines[i].c_str(), 0));
        }
        setVELStateH(handle, 0);
        return message;
    }

private:
    static int note(const char *path, std::int32_t code, const char *newValue, const char *oldValue,
                    void *userData)
    {
        auto *self = static_cast<Database *>(userData);
        const auto perform = [self](const Step &step) { return self->perform(step); };
        if (code == velValueChanged) {
            react(self->log_, self->reactions_,
                  std::string(path) + ": " + (newValue == nullptr ? "-" : newValue),
                  std::string(" <- ") + (oldValue == nullptr ? "-" : oldValue), perform);
        } else {
            react(self->log_, self->reactions_,
                  std::string(path) + (code == velObjectCreated ? ": created" : ": deleted"), "",
                  perform);
        }
        return 1;
    }

    velHandlePtr handle_;
    std::vector<Reaction> reactions_;
    std::string log_;
};

class Pair
{
public:
    /// Returns whether the model has changed. A refused step without a report to a
    /// handler changes nothing.
    bool perform(const Step &step, const std::vector<Reaction> &reactions)
    {
        model_.setReactions(reactions);
        database_.setReactions(reactions);
        const std::string message = model_.perform(step);
        const std::string log = model_.takeLog();
        EXPECT_EQ(database_.perform(step), message);
        EXPECT_EQ(database_.takeLog(), log);
        EXPECT_STREQ(getCurrentPath(handle()), "/");
        return message.empty() || !log.empty();
    }

    void comparePath(const std::string &path)
    {
        EXPECT_EQ(havePath(handle(), path.c_str()), model_.has(path) ? 1 : 0) << path;
        EXPECT_EQ(isLibrary(handle(), path.c_str()), model_.library(path)) << path;
    }

    void compareAll()
    {
        for (const auto &[path, node] : model_.table()) {
            const velNode *found = velFindNode(handle(), path.c_str());
            ASSERT_NE(found, nullptr) << path;
            const velNodeInfo info = velDescribe(handle(), found);
            EXPECT_EQ(info.kind, node->kind) << path;
            EXPECT_EQ(info.value == nullptr ? "" : std::string(info.value), node->value) << path;
            EXPECT_EQ(info.flags, node->flags) << path;
            EXPECT_EQ(velChildCount(found), node->children.size()) << path;
            EXPECT_EQ(isLibrary(handle(), path.c_str()), model_.library(path)) << path;
        }
        EXPECT_EQ(stored(database_.handle()), model_.written("/", ""));
    }

private:
    velHandle *handle() { return database_.handle().get(); }

    Database database_;
    Model model_;
};

struct Play
{
    std::size_t wideness; ///< names of a type below each parent; few, so that paths repeat
    std::size_t steps;
    bool removesNonEmpty;
    std::size_t reactions = 0; ///< of handlers to one step, at most
    std::size_t compares = 1;  ///< every so many steps that change the tree
};

class Player
{
public:
    Player(unsigned seed, const Play &play) : random_(seed), play_(play) {}

    std::string path()
    {
        static constexpr std::array types = {"A", "B", "AB", "C.d"};
        std::string path;
        do {
            const std::string word = types[random_.below(types.size())];
            path += "/" + word;
            path += random_.once(3) ? "" : ":n" + std::to_string(random_.below(play_.wideness));
        } while (random_.once(2));
        return path;
    }

    Step step()
    {
        Step step{Action::Create, path(), velParam, std::to_string(random_.below(3)), {}, 0, {}};
        const std::size_t action = random_.below(24);
        step.kind = step.path.find(':', step.path.rfind('/')) != std::string::npos ? velObject
                    : random_.once(2)                                              ? velParam
                                                                                   : velSingleton;
        step.isLibrary = random_.once(3);
        step.level = static_cast<std::int32_t>(random_.below(3));
        if (action < 12) {
            return step;
        }
        if (action < 14) {
            step.action = Action::SetValue;
        } else if (action < 17) {
            step.action = Action::Validate;
        } else if (action < 19) {
            step.action = play_.removesNonEmpty ? Action::Remove : Action::DeleteAll;
        } else if (action < 22) {
            step.action = Action::DeleteAll;
            step.path = random_.once(100) ? "/" : step.path;
        } else {
            step.action = Action::Replace;
            step.lines = replaceBlock();
        }
        return step;
    }

    std::vector<Reaction> reactions()
    {
        static constexpr std::array changes = {": deleted", ": -", ": created", ": 1"};
        std::vector<Reaction> reactions;
        for (std::size_t n = random_.below(play_.reactions + 1); n > 0; --n) {
            Reaction reaction{path() + random_.oneOf(changes), step(), 1};
            reaction.uses += static_cast<int>(random_.below(2));
            if (reaction.step.action == Action::Replace) {
                continue; // a nested block would close both
            }
            if (random_.once(2)) { // a deleted node is made again
                const std::string &trigger = reaction.trigger;
                const bool isParam = trigger.ends_with(": -");
                reaction.step.action = Action::Create;
                reaction.step.path = trigger.substr(0, trigger.rfind(": "));
                const bool isObject = reaction.step.path.find(':', reaction.step.path.rfind('/')) !=
                                      std::string::npos;
                reaction.step.kind = isParam ? velParam : isObject ? velObject : velSingleton;
            }
            reactions.push_back(reaction);
        }
        return reactions;
    }

private:
    std::vector<std::string> replaceBlock()
    {
        static constexpr std::array headers = {"A:", "B:", "A: n0", "B: n1", "AB: n0"};
        static constexpr std::array params = {"A", "B", "AB", "C.d"};
        std::vector<std::string> lines;
        std::size_t open = 0;
        for (std::size_t left = 2 + random_.below(8); left > 0; --left) {
            if (open == 0 || random_.once(3)) {
                lines.push_back(std::string(random_.once(2) ? "&replace " : "") +
                                random_.oneOf(headers));
                ++open;
            } else if (random_.once(3)) {
                lines.emplace_back("END");
                --open;
            } else {
                lines.push_back(std::string(random_.oneOf(params)) + " = " +
                                std::to_string(random_.below(3)));
            }
        }
        lines.insert(lines.end(), open, "END");
        return lines;
    }

    Random random_;
    Play play_;
};

void play(unsigned seed, const Play &play)
{
    SCOPED_TRACE(seed);
    Player player(seed, play);
    Pair pair;
    std::size_t changes = 0;
    for (std::size_t i = 0; i < play.steps; ++i) {
        const Step step = player.step();
        const bool hasChanged = pair.perform(step, player.reactions());
        pair.comparePath(player.path());
        pair.comparePath(step.path);
        if (hasChanged && ++changes % play.compares == 0) {
            ASSERT_NO_FATAL_FAILURE(pair.compareAll());
        }
        if (testing::Test::HasFailure()) {
            FAIL() << "after step " << i << " at " << step.path;
        }
    }
    EXPECT_GT(changes, play.steps / 10);
    pair.compareAll();
}

TEST(VelTreeModel, NarrowTrees)
{
    for (unsigned seed = 0; seed < 30; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {3, 600, false, 0, 2}));
    }
}

TEST(VelTreeModel, WideTrees)
{
    for (unsigned seed = 0; seed < 5; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {300, 3000, false, 0, 20}));
    }
}

// Removes non-empty nodes, which leaves their descendants in the table.
TEST(VelTreeModel, NarrowTreesWithDetachedParts)
{
    for (unsigned seed = 100; seed < 130; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {2, 600, true, 0, 2}));
    }
}

TEST(VelTreeModel, WideTreesWithDetachedParts)
{
    for (unsigned seed = 200; seed < 205; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {100, 3000, true, 0, 20}));
    }
}

// Handlers delete, make again and mark nodes that the operation is using.
TEST(VelTreeModel, HandlersThatChangeTheTree)
{
    for (unsigned seed = 300; seed < 340; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {2, 400, false, 6}));
    }
}

TEST(VelTreeModel, HandlersThatChangeTreesWithDetachedParts)
{
    for (unsigned seed = 400; seed < 440; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {1, 400, true, 8}));
    }
}

} // namespace
