// Compares veltool merge with a simple model (values by path) on random versions of
// random files.
#include "tools/veltool/tests/toolRun.h"
#include "veltext/tests/randomText.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <string_view>

namespace veltool::test {
namespace {

using veltext::test::RandomText;

/// Parameters and objects of one object.
struct Model
{
    std::map<std::string, std::string> params;
    std::map<std::string, Model> objects; ///< by their headers
};

/// The value at each path; an object has no value.
using Paths = std::map<std::string, std::optional<std::string>>;

/// Concatenates texts.
std::string joined(std::initializer_list<std::string_view> parts)
{
    std::string all;
    for (const std::string_view part : parts) {
        all += part;
    }
    return all;
}

void flatten(const Model &model, const std::string &path, Paths *paths)
{
    for (const auto &[name, value] : model.params) {
        (*paths)[joined({path, "/", name})] = value;
    }
    for (const auto &[header, object] : model.objects) {
        std::string component = header;
        component.erase(std::remove(component.begin(), component.end(), ' '), component.end());
        if (component.ends_with(':')) {
            component.pop_back();
        }
        const std::string below = joined({path, "/", component});
        (*paths)[below] = std::nullopt;
        flatten(object, below, paths);
    }
}

Paths pathsOf(const Model &model)
{
    Paths paths;
    flatten(model, "", &paths);
    return paths;
}

class RandomCase
{
public:
    explicit RandomCase(std::uint32_t seed) : random_(seed) {}

    Model model(int depth = 0)
    {
        Model made;
        for (std::size_t i = below(5); i > 0; --i) {
            made.params[name()] = value();
        }
        for (std::size_t i = depth < 3 ? below(4) : 0; i > 0; --i) {
            made.objects[header()] = model(depth + 1);
        }
        return made;
    }

    void edit(Model *model)
    {
        if (!model->objects.empty() && !oneIn(3)) {
            edit(&any(model->objects));
            return;
        }
        switch (below(6)) {
        case 0:
            model->objects[header()] = this->model(2);
            break;
        case 1:
            if (!model->objects.empty()) {
                model->objects.erase(model->objects.begin());
            }
            break;
        case 2:
            if (!model->params.empty()) {
                model->params.erase(model->params.begin());
            }
            break;
        default:
            model->params[name()] = value();
        }
    }

    /// The model as text, in any order and style.
    std::string text(const Model &model, int depth = 0)
    {
        std::vector<std::string> parts;
        const std::string indent(2 * static_cast<std::size_t>(depth), ' ');
        for (const auto &[name, value] : model.params) {
            parts.push_back(assignment(indent, name, value));
        }
        for (const auto &[header, object] : model.objects) {
            std::string block =
                joined({indent, header, "\n", text(object, depth + 1), indent, "END\n"});
            // Opens the block a second time, without contents.
            if (oneIn(6)) {
                block += joined({indent, header, " # once more\n", indent, "END\n"});
            }
            parts.push_back(std::move(block));
        }
        std::shuffle(parts.begin(), parts.end(), random_);
        std::string all;
        for (const std::string &part : parts) {
            all += joined({oneIn(5) ? indent + "# comment 1\n" : "", oneIn(8) ? "\n" : "", part});
        }
        return all;
    }

    bool oneIn(std::size_t n) { return below(n) == 0; }
    std::size_t below(std::size_t bound) { return random_() % bound; }

private:
    std::string assignment(const std::string &indent, const std::string &name,
                           const std::string &value)
    {
        std::string line = indent;
        if (oneIn(6)) {
            line += name + " = former\n" + indent;
        }
        line += name + (oneIn(3) ? "=" : " = ");
        const std::size_t comma = value.find(", ");
        if (comma != std::string::npos && oneIn(2)) {
            line += value.substr(0, comma + 2) + "\\\n" + indent + "  " + value.substr(comma + 2);
        } else {
            line += value;
        }
        return line + (oneIn(4) ? " # " + std::to_string(below(100)) : "") + '\n';
    }

    Model &any(std::map<std::string, Model> &objects)
    {
        auto chosen = objects.begin();
        std::advance(chosen, below(objects.size()));
        return chosen->second;
    }

    std::string name() { return std::string("p") + static_cast<char>('a' + below(5)); }

    /// In rare cases a singleton has the name of a parameter.
    std::string header()
    {
        const std::string type =
            oneIn(20) ? name() : std::string(1, static_cast<char>('A' + below(3)));
        return oneIn(3) ? type + ':' : type + ": " + static_cast<char>('u' + below(4));
    }

    std::string value()
    {
        const std::string word = "v" + std::to_string(below(30));
        return oneIn(3) ? word + ", w, x" : word;
    }

    std::mt19937 random_;
};

/// Whether no parameter and singleton have the same path, which a file cannot have.
bool isPossible(const Model &model)
{
    return std::all_of(model.objects.begin(), model.objects.end(), [&](const auto &object) {
        std::string type = object.first;
        const bool clashes =
            type.ends_with(':') && model.params.contains(type.substr(0, type.size() - 1));
        return !clashes && isPossible(object.second);
    });
}

using State = std::optional<std::optional<std::string>>;

State at(const Paths &paths, const std::string &path)
{
    const auto found = paths.find(path);
    return found == paths.end() ? State() : State(found->second);
}

Paths allPaths(const Paths &a, const Paths &b, const Paths &c)
{
    Paths all = a;
    all.insert(b.begin(), b.end());
    all.insert(c.begin(), c.end());
    return all;
}

bool hasOrphan(const Paths &paths)
{
    return std::any_of(paths.begin(), paths.end(), [&](const auto &item) {
        const std::string parent = item.first.substr(0, item.first.rfind('/'));
        return !parent.empty() && (!paths.contains(parent) || paths.at(parent).has_value());
    });
}

/// The merge as defined; nothing if there is a conflict.
std::optional<Paths> merged(const Paths &base, const Paths &ours, const Paths &theirs)
{
    Paths result;
    for (const auto &[path, unused] : allPaths(base, ours, theirs)) {
        const State b = at(base, path);
        const State o = at(ours, path);
        const State t = at(theirs, path);
        if (o != t && b != o && b != t) {
            return std::nullopt;
        }
        const State taken = b == o ? t : o;
        if (taken) {
            result[path] = *taken;
        }
    }
    if (hasOrphan(result)) {
        return std::nullopt;
    }
    return result;
}

/// The paths and values that veltool reads from a text.
Paths readPaths(const TemporaryFolder &folder, const std::string &text)
{
    const ToolRun run =
        runTool({"diff", "--json", folder.write("empty", ""), folder.write("read", text)});
    EXPECT_LT(run.status, 2) << run.err << text;
    Paths paths;
    if (run.status > 1) {
        return paths;
    }
    for (const auto &item : nlohmann::json::parse(run.out)) {
        paths[item["path"]] = item["new"].is_null()
                                  ? std::nullopt
                                  : std::optional<std::string>(item["new"].get<std::string>());
    }
    return paths;
}

/// The text with one side of each conflict.
std::string resolved(const std::string &text, bool takeOurs)
{
    std::istringstream lines(text);
    std::string result;
    int side = 0; ///< 0: both, 1: ours, 2: theirs
    for (std::string line; std::getline(lines, line);) {
        if (line == "<<<<<<< ours") {
            side = 1;
        } else if (line == "=======") {
            side = 2;
        } else if (line == ">>>>>>> theirs") {
            side = 0;
        } else if (side == 0 || (side == 1) == takeOurs) {
            result += line + '\n';
        }
    }
    return result;
}

class MergeProperty : public ::testing::TestWithParam<std::uint32_t>
{
protected:
    ToolRun merge(const std::string &base, const std::string &ours, const std::string &theirs)
    {
        return runTool({"merge", folder_.write("base", base), folder_.write("ours", ours),
                        folder_.write("theirs", theirs)});
    }

    TemporaryFolder folder_;
};

TEST_P(MergeProperty, IsTrueForRandomEdits)
{
    int clean = 0;
    int conflicting = 0;
    for (std::uint32_t round = 0; round < 6; ++round) {
        RandomCase random(GetParam() * 1000 + round);
        const Model baseModel = random.model();
        Model oursModel = baseModel;
        Model theirsModel = baseModel;
        for (std::size_t i = 1 + random.below(4); i > 0; --i) {
            random.edit(&oursModel);
            random.edit(&theirsModel);
        }
        if (!isPossible(baseModel) || !isPossible(oursModel) || !isPossible(theirsModel)) {
            continue;
        }
        const std::string base = random.text(baseModel);
        const std::string ours = random.text(oursModel);
        const std::string theirs = random.text(theirsModel);
        SCOPED_TRACE(joined({"base\n", base, "ours\n", ours, "theirs\n", theirs}));

        const Paths b = pathsOf(baseModel);
        const Paths o = pathsOf(oursModel);
        const Paths t = pathsOf(theirsModel);
        const std::optional<Paths> wanted = merged(b, o, t);
        const ToolRun run = merge(base, ours, theirs);
        ASSERT_EQ(run.status, wanted ? 0 : 1) << run.out << run.err;
        if (wanted) {
            ++clean;
            EXPECT_EQ(readPaths(folder_, run.out), *wanted) << run.out;
        } else {
            ++conflicting;
            const Paths left = readPaths(folder_, resolved(run.out, true));
            const Paths right = readPaths(folder_, resolved(run.out, false));
            for (const auto &[path, unused] : allPaths(b, o, t)) {
                const bool isConflict = at(b, path) != at(o, path) && at(b, path) != at(t, path);
                if (isConflict || at(b, path) == at(t, path)) {
                    EXPECT_EQ(at(left, path), at(o, path)) << path << '\n' << run.out;
                }
                if (isConflict || at(b, path) == at(o, path)) {
                    EXPECT_EQ(at(right, path), at(t, path)) << path << '\n' << run.out;
                }
            }
        }
        EXPECT_EQ(merge(base, ours, base).out, ours);
        EXPECT_EQ(merge(base, base, theirs).out, theirs);
        EXPECT_EQ(merge(base, ours, ours).out, ours);
    }
    EXPECT_GT(clean + conflicting, 2);
}

/// The text with some lines removed, repeated or changed.
std::string shuffled(const std::string &text, RandomCase *random)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line + '\n');
    }
    for (std::size_t i = random->below(4); i > 0 && !lines.empty(); --i) {
        const auto at = lines.begin() + static_cast<std::ptrdiff_t>(random->below(lines.size()));
        const std::string line = *at;
        if (random->oneIn(2)) {
            lines.erase(at);
        } else if (line.find('=') != std::string::npos) {
            *at = line.substr(0, line.find('=')) + "= v" + std::to_string(random->below(9)) + '\n';
        } else {
            lines.insert(at, line);
        }
    }
    std::string result;
    for (const std::string &line : lines) {
        result += line;
    }
    return result;
}

bool isReadable(const TemporaryFolder &folder, const std::string &text)
{
    return runTool({"tree", folder.write("tried", text)}).status == 0;
}

// Uses every style of the language: &replace, blocks that are opened again, lines
// that are continued inside words. A file that cannot be edited safely may become
// one conflict.
TEST_P(MergeProperty, IsTrueInEveryStyle)
{
    RandomText texts(GetParam());
    RandomCase random(GetParam());
    int clean = 0;
    for (int round = 0; round < 12; ++round) {
        const std::string base = texts.next();
        const std::string ours = shuffled(base, &random);
        const std::string theirs = shuffled(base, &random);
        if (!isReadable(folder_, base) || !isReadable(folder_, ours) ||
            !isReadable(folder_, theirs)) {
            continue;
        }
        SCOPED_TRACE(joined({"base\n", base, "\nours\n", ours, "\ntheirs\n", theirs}));
        const std::optional<Paths> wanted =
            merged(readPaths(folder_, base), readPaths(folder_, ours), readPaths(folder_, theirs));
        const ToolRun run = merge(base, ours, theirs);
        if (wanted && run.status == 0) {
            ++clean;
            EXPECT_EQ(readPaths(folder_, run.out), *wanted) << run.out;
        } else {
            EXPECT_EQ(run.status, 1) << run.err;
        }
        if (wanted && run.status == 1) {
            EXPECT_NE(run.err.find("cannot be merged statement by statement"), std::string::npos)
                << run.out << run.err;
        }
    }
    EXPECT_GT(clean, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, MergeProperty, ::testing::Range(1U, 6U));

} // namespace
} // namespace veltool::test
