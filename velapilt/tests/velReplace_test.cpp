// Tests &replace in random nestings against a plain model of its marks.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace {

struct Node
{
    std::string component; ///< "TYPE:Name", "TYPE", or the name of a parameter
    bool isParam = false;
    std::string value;
    bool isMarked = false;
    std::vector<std::unique_ptr<Node>> children;
};

class Model
{
public:
    void open(const std::string &component, bool isReplace)
    {
        const bool isReplacing = levels_.back().isReplacing || isReplace;
        levels_.push_back({touch(component, false, isReplacing), isReplacing});
    }

    void set(const std::string &name, const std::string &value)
    {
        touch(name, true, levels_.back().isReplacing)->value = value;
    }

    void end()
    {
        const Level level = levels_.back();
        levels_.pop_back();
        if (!level.isReplacing) {
            return;
        }
        std::vector<std::unique_ptr<Node>> kept;
        for (std::unique_ptr<Node> &child : level.node->children) {
            if (child->isMarked) {
                child->isMarked = false;
                kept.push_back(std::move(child));
            }
        }
        level.node->children = std::move(kept);
        if (!levels_.back().isReplacing) {
            level.node->isMarked = false;
        }
    }

    std::size_t depth() const { return levels_.size() - 1; }

    std::string written() const
    {
        std::string text;
        for (const std::unique_ptr<Node> &child : root_.children) {
            write(*child, "", text);
        }
        return text;
    }

private:
    struct Level
    {
        Node *node;
        bool isReplacing;
    };

    Node *touch(const std::string &component, bool isParam, bool isReplacing)
    {
        Node *parent = levels_.back().node;
        Node *node = nullptr;
        for (const std::unique_ptr<Node> &child : parent->children) {
            if (child->component == component) {
                node = child.get();
            }
        }
        if (node == nullptr) {
            parent->children.push_back(std::make_unique<Node>());
            node = parent->children.back().get();
            node->component = component;
            node->isParam = isParam;
        }
        node->isMarked = isReplacing || parent->isMarked;
        return node;
    }

    static void write(const Node &node, const std::string &indent, std::string &text)
    {
        if (node.isParam) {
            text += indent + node.component + " = " + node.value + "\n";
            return;
        }
        const std::size_t colon = node.component.find(':');
        text += indent + node.component.substr(0, colon) + ":";
        text += colon == std::string::npos ? "" : " " + node.component.substr(colon + 1);
        text += "\n";
        for (const std::unique_ptr<Node> &child : node.children) {
            write(*child, indent + "  ", text);
        }
        text += indent + "END\n";
    }

    Node root_;
    std::vector<Level> levels_ = {{&root_, false}};
};

TEST(VelReplace, RandomNestings)
{
    static constexpr std::array components = {"A", "A:a", "B:a", "B:b"};
    static constexpr std::array params = {"x", "y", "z"};
    for (unsigned seed = 0; seed < 2000; ++seed) {
        Random random(seed);
        Model model;
        std::string text;
        for (std::size_t left = 20 + random.below(80); left > 0; --left) {
            const std::size_t kind = random.below(5);
            if (kind < 2) {
                const char *component = random.oneOf(components);
                const bool isReplace = random.once(3);
                model.open(component, isReplace);
                text += std::string(isReplace ? "&replace " : "") + component;
                text += std::string_view(component).size() == 1 ? ":\n" : "\n";
            } else if (kind < 4 || model.depth() == 0) {
                const char *name = random.oneOf(params);
                const std::string value = std::to_string(random.below(3));
                model.set(name, value);
                text += std::string(name) + " = " + value + "\n";
            } else {
                model.end();
                text += "END\n";
            }
        }
        while (model.depth() > 0) {
            model.end();
            text += "END\n";
        }
        const velHandlePtr handle = parsed(text);
        ASSERT_EQ(stored(handle), model.written()) << "seed " << seed << "\n" << text;
        ASSERT_EQ(flagsOf(handle).find("0x2"), std::string::npos) << "a mark is left\n" << text;
    }
}

TEST(VelReplace, NodesCreatedMeanwhileAreKept)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nEND\n");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "&replace A:", 0)), "");
    EXPECT_EQ(said(velCreateParam(handle.get(), "/A/y", "2")), "");
    EXPECT_EQ(said(velCreateObject(handle.get(), "/A/B:b", false)), "");
    EXPECT_EQ(said(parseVELLineH(handle.get(), "END", 0)), "");
    EXPECT_EQ(stored(handle), "A:\n  y = 2\n  B: b\n  END\nEND\n");
    EXPECT_EQ(flagsOf(handle).find("0x2"), std::string::npos);
}

TEST(VelReplace, NodesDeletedMeanwhile)
{
    const velHandlePtr handle = parsed("A:\nx = 1\nB:\ny = 2\nEND\nz = 3\nEND\n");
    // A handler deletes the other nodes while the first one is being swept.
    struct Data
    {
        velHandle *handle;
        int calls;
    } data{handle.get(), 0};
    const auto clear = [](const char *path, std::int32_t, const char *, const char *,
                          void *userData) {
        auto *seen = static_cast<Data *>(userData);
        if (std::string_view(path) == "/A/x" && seen->calls++ == 0) {
            EXPECT_EQ(said(deleteParamH(seen->handle, "/A/z")), "");
            EXPECT_EQ(said(deleteObjH(seen->handle, "/A/B")), "");
        }
        return 1;
    };
    EXPECT_EQ(said(addChangeHandler(handle.get(), clear, &data)), "");
    EXPECT_EQ(parse(handle, "&replace A:\nnew = 1\nEND\n"), "");
    EXPECT_EQ(stored(handle), "A:\n  new = 1\nEND\n");
    EXPECT_EQ(data.calls, 1);
}

} // namespace
