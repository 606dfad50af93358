// veltool tree: shows the objects and parameters of a file, in stored order.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "veltext/treeWalk.h"

namespace veltool {

namespace {

class TreeTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print nested JSON objects");
        options.flag("--library", library_, "Read the rule libraries too and show their data");
    }

    int run(const Words &words) override
    {
        const velHandlePtr handle =
            loadFile(words[0], library_ ? Libraries::Read : Libraries::Skip);
        requireShallow(handle.get(), words[0]);
        const std::string path =
            velFullPath(handle.get(), words.size() > 1 ? words[1].c_str() : "/");
        const velNode *start = velFindNode(handle.get(), path.c_str());
        if (start == nullptr) {
            throw Failure(words[0] + ": " + path +
                          ": there is no such object or parameter; veltool find searches for it");
        }
        veltext::TreeWalk walk(handle.get(), start, path);
        if (json_) {
            printJson(walk);
        } else {
            printText(walk);
        }
        return statusGood;
    }

private:
    [[nodiscard]] bool isHidden(const veltext::TreeWalk &walk) const
    {
        const velNodeInfo &info = walk.info();
        return !library_ && walk.depth() > 0 && info.kind != velParam &&
               (info.flags & velFlagLibrary) != 0;
    }

    void printText(veltext::TreeWalk &walk) const
    {
        // The root has no line; its children have no indent.
        const std::size_t root = walk.path() == "/" ? 1 : 0;
        if (root) {
            walk.step();
        }
        while (walk.node() != nullptr) {
            if (isHidden(walk)) {
                walk.skipChildren();
                continue;
            }
            out() << std::string(2 * (walk.depth() - root), ' ')
                  << veltext::statementOf(walk.info()) << '\n';
            walk.step();
        }
    }

    void printJson(veltext::TreeWalk &walk) const
    {
        std::size_t open = 0; ///< elements whose list of children has begun
        bool first = true;    ///< nothing is in the innermost list yet
        while (walk.node() != nullptr) {
            if (isHidden(walk)) {
                walk.skipChildren();
                continue;
            }
            for (; open > walk.depth(); --open) {
                out() << "]}";
                first = false;
            }
            if (!first) {
                out() << ",\n";
            }
            printElement(walk);
            ++open;
            first = true;
            walk.step();
        }
        for (; open > 0; --open) {
            out() << "]}";
        }
        out() << '\n';
    }

    /// Prints the element up to the beginning of its list of children.
    static void printElement(const veltext::TreeWalk &walk)
    {
        const velNodeInfo &info = walk.info();
        out() << '{' << jsonMember("path", walk.path()) << ','
              << jsonMember("kind", velKindWord(info.kind)) << ',' << jsonMember("type", info.type)
              << ',' << jsonMember("name", info.name) << ',' << jsonMember("value", info.value)
              << ",\"children\":[";
    }

    bool json_ = false;
    bool library_ = false;
};

} // namespace

const Command treeCommand = {
    .name = "tree",
    .words = "FILE [PATH]",
    .fewest = 1,
    .most = 2,
    .passesOn = false,
    .purpose = "Show objects and parameters",
    .details = "Prints all of FILE, or PATH and everything below it, in the order of the file.",
    .make = makeTask<TreeTask>,
};

} // namespace veltool
