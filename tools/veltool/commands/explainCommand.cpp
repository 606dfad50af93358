// veltool explain: shows the rule fields of an object or parameter.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/ruleCheck.h"

namespace veltool {

namespace {

class ExplainTask : public Task
{
public:
    void addOptions(Options &options) override { options.flag("--json", json_, "Print an object"); }

    int run(const Words &words) override
    {
        const std::string &file = words[0];
        const veltext::SourceText text = readText(file);
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        requireShallow(handle.get(), file);
        const std::string path = velFullPath(handle.get(), words[1].c_str());
        RuleCheck rules;
        static_cast<void>(rules.reportRuleFaults());
        const std::vector<velparser::RuleField> fields = rules.explain(text, file, path);
        if (fields.empty()) {
            throw Refusal(file + ": " + path + ": no rule describes this path");
        }
        if (json_) {
            printJson(path, fields);
        } else {
            printText(fields);
        }
        return statusGood;
    }

private:
    static void printText(const std::vector<velparser::RuleField> &fields)
    {
        for (const velparser::RuleField &field : fields) {
            out() << field.name << " = " << field.text << '\n';
        }
    }

    static void printJson(const std::string &path, const std::vector<velparser::RuleField> &fields)
    {
        out() << '{' << jsonMember("path", path) << ",\"fields\":{";
        bool first = true;
        for (const velparser::RuleField &field : fields) {
            out() << (first ? "" : ",") << jsonMember(field.name, field.text);
            first = false;
        }
        out() << "}}\n";
    }

    bool json_ = false;
};

} // namespace

const Command explainCommand = {
    .name = "explain",
    .words = "FILE PATH",
    .fewest = 2,
    .most = 2,
    .passesOn = false,
    .purpose = "Show the rules for an object or parameter",
    .details = "Prints each field as the rule states it, and in \"Presence\" whether the object or "
               "parameter is required or optional, and why. PATH need not exist yet; the data in "
               "FILE decides which cases of the rules apply. Status 1 if no rule describes PATH.",
    .make = makeTask<ExplainTask>,
};

} // namespace veltool
