// veltool explain: what the rules say of an object or parameter.
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
        (void)rules.reportRuleFaults();
        const std::vector<velparser::RuleField> fields = rules.explain(text, file, path);
        if (fields.empty())
            throw Refusal(file + ": " + path + ": no rule describes this");
        if (json_)
            printJson(path, fields);
        else
            printText(fields);
        return statusGood;
    }

private:
    static void printText(const std::vector<velparser::RuleField> &fields)
    {
        for (const velparser::RuleField &field : fields)
            out() << field.name << " = " << field.text << '\n';
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
    .purpose = "Show what the rules say of an object or parameter",
    .details = "Every field on a line as a rule writes it, and in \"Presence\" whether the item "
               "is required or optional, and why. There need not be anything at PATH yet; what "
               "is in FILE decides which cases of the rules hold. Status 1 if no rule describes "
               "PATH.",
    .make = makeTask<ExplainTask>,
};

} // namespace veltool
