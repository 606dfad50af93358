// The tree and its path table against a plain model: a map from path texts to
// nodes, and the procedures written out over it.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>

namespace {

struct ModelNode
{
    velKind kind;
    std::string component;
    std::string value;
    std::vector<ModelNode *> children;
};

class Model
{
public:
    Model() { enter("/", velObject, "/", ""); }

    bool has(const std::string &path) const { return table_.count(path) != 0; }
    const std::map<std::string, ModelNode *> &table() const { return table_; }

    std::string create(const std::string &path, velKind kind, const std::string &value)
    {
        const bool isParam = kind == velParam;
        ModelNode *parent = find(parentOf(path));
        if (parent == nullptr) {
            return isParam ? "velCreateParam: parent object does not exist"
                           : "velCreateObject: parent object does not exist";
        }
        ModelNode *node = find(path);
        if (parent->kind == velParam || (node != nullptr && (node->kind == velParam) != isParam)) {
            return isParam ? "velCreateParam: unable to create param"
                           : "velCreateObject: unable to create object";
        }
        if (node != nullptr) {
            if (isParam && node->value != value) {
                log_ += path + ": " + value + " <- " + node->value + "\n";
                node->value = value;
            }
            return "";
        }
        parent->children.push_back(enter(path, kind, path.substr(path.rfind('/') + 1), value));
        log_ += path + (isParam ? ": " + value + " <- -" : ": created") + "\n";
        return "";
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
        log_ += path + (node->kind == velParam ? ": - <- " + node->value : ": deleted") + "\n";
        return node->children.empty()
                   ? ""
                   : "velRemoveObjectH: removal of non-empty object, did you mean deleteObj?";
    }

    std::string deleteAll(const std::string &path)
    {
        ModelNode *node = find(path);
        if (node == nullptr) {
            return "deleteObjH: unable to find parameter";
        }
        const std::string prefix = path == "/" ? "" : path;
        for (const ModelNode *child : std::vector<ModelNode *>(node->children)) {
            if (std::string error = deleteAll(prefix + "/" + child->component); !error.empty()) {
                return error;
            }
        }
        return path == "/" ? "" : remove(path);
    }

    std::string written(const std::string &path, const std::string &indent) const
    {
        std::string text;
        for (const ModelNode *child : table_.at(path)->children) {
            write(*child, indent, text);
        }
        return text;
    }

    std::string takeLog() { return std::exchange(log_, {}); }

private:
    static std::string parentOf(const std::string &path)
    {
        return path.rfind('/') == 0 ? "/" : path.substr(0, path.rfind('/'));
    }

    ModelNode *find(const std::string &path) const
    {
        const auto found = table_.find(path);
        return found == table_.end() ? nullptr : found->second;
    }

    ModelNode *enter(const std::string &path, velKind kind, const std::string &component,
                     const std::string &value)
    {
        nodes_.push_back(std::make_unique<ModelNode>(ModelNode{kind, component, value, {}}));
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

    std::vector<std::unique_ptr<ModelNode>> nodes_; // removed ones too: some still answer
    std::map<std::string, ModelNode *> table_;
    std::string log_;
};

class Pair
{
public:
    Pair() : handle_(parsed("")), log_(handle_) {}

    void create(const std::string &path, velKind kind, const std::string &value)
    {
        const std::string expected = model_.create(path, kind, value);
        if (kind == velParam) {
            EXPECT_EQ(said(velCreateParam(handle_.get(), path.c_str(), value.c_str())), expected);
        } else {
            EXPECT_EQ(said(velCreateObject(handle_.get(), path.c_str(), false)), expected);
        }
    }

    void remove(const std::string &path)
    {
        EXPECT_EQ(said(velRemoveObjectH(handle_.get(), path.c_str())), model_.remove(path));
    }

    void deleteAll(const std::string &path)
    {
        EXPECT_EQ(said(deleteObjH(handle_.get(), path.c_str())), model_.deleteAll(path));
    }

    void compareChanges() { EXPECT_EQ(log_.take(), model_.takeLog()); }

    void comparePath(const std::string &path)
    {
        EXPECT_EQ(havePath(handle_.get(), path.c_str()), model_.has(path) ? 1 : 0) << path;
    }

    void compareAll()
    {
        for (const auto &[path, node] : model_.table()) {
            EXPECT_EQ(velKindOf(handle_.get(), path.c_str()), node->kind) << path;
            EXPECT_EQ(valueAt(handle_, path.c_str()),
                      node->kind == velParam ? node->value : "(none)")
                << path;
        }
        EXPECT_EQ(stored(handle_), model_.written("/", ""));
    }

private:
    velHandlePtr handle_;
    Model model_;
    ChangeLog log_;
};

velKind kindOf(const std::string &component, Random &random)
{
    if (component.find(':') != std::string::npos) {
        return velObject;
    }
    return random.once(2) ? velParam : velSingleton;
}

/// `wideness` names below each parent, so that paths are met again.
std::string randomPath(Random &random, std::size_t wideness)
{
    static constexpr std::array types = {"A", "B", "AB", "C.d"};
    std::string path;
    do {
        const std::string word = types[random.below(types.size())];
        path += "/" + word;
        path += random.once(3) ? "" : ":n" + std::to_string(random.below(wideness));
    } while (random.once(2));
    return path;
}

struct Play
{
    std::size_t wideness;
    std::size_t steps;
    bool removesNonEmpty;
};

void play(unsigned seed, const Play &play)
{
    SCOPED_TRACE(seed);
    Random random(seed);
    Pair pair;
    for (std::size_t i = 0; i < play.steps; ++i) {
        const std::string path = randomPath(random, play.wideness);
        const std::size_t action = random.below(20);
        if (action < 14) {
            const std::string component = path.substr(path.rfind('/') + 1);
            pair.create(path, kindOf(component, random), std::to_string(random.below(3)));
        } else if (action < 17 && play.removesNonEmpty) {
            pair.remove(path);
        } else if (action < 18) {
            pair.deleteAll(random.once(100) ? "/" : path);
        }
        pair.comparePath(randomPath(random, play.wideness));
        pair.comparePath(path);
        pair.compareChanges();
        if (i % 50 == 0) {
            pair.compareAll();
        }
        if (testing::Test::HasFailure()) {
            FAIL() << "after step " << i << " at " << path;
        }
    }
    pair.compareAll();
}

TEST(VelTreeModel, NarrowTrees)
{
    for (unsigned seed = 0; seed < 30; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {3, 600, false}));
    }
}

TEST(VelTreeModel, WideTrees)
{
    for (unsigned seed = 0; seed < 5; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {300, 3000, false}));
    }
}

// Non-empty nodes are taken out, which leaves their descendants in the table.
TEST(VelTreeModel, NarrowTreesWithDetachedParts)
{
    for (unsigned seed = 100; seed < 130; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {2, 600, true}));
    }
}

TEST(VelTreeModel, WideTreesWithDetachedParts)
{
    for (unsigned seed = 200; seed < 205; ++seed) {
        ASSERT_NO_FATAL_FAILURE(play(seed, {100, 3000, true}));
    }
}

} // namespace
