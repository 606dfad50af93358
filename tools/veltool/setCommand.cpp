// veltool set: a new value for a parameter, in the file as its author wrote it.
//
// 1. The database is asked: the parameter exists, its value would change.
// 2. The value can stand in a file.
// 3. The text of the parameter's last statement is edited, nothing else.
// 4. The edited text, read anew, gives the tree with that one value changed.
// 5. The rules find nothing in it that they did not find before.
// 6. The file is replaced.
#include "tools/veltool/command.h"
#include "tools/veltool/commandData.h"
#include "tools/veltool/output.h"
#include "tools/veltool/replaceFile.h"
#include "tools/veltool/ruleCheck.h"
#include "tools/veltool/statementIndex.h"
#include "tools/veltool/valueEdit.h"

#include <CLI/App.hpp>

#include <algorithm>
#include <cstring>

namespace veltool {

namespace {

/// Everything that a tree holds, as text in stored order.
velStringList wholeTree(velHandle *handle)
{
    velStringList lines;
    require(getObjectVELH(handle, "/", &lines, true));
    return lines;
}

bool isSameTree(velHandle *a, velHandle *b)
{
    const velStringList left = wholeTree(a);
    const velStringList right = wholeTree(b);
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const char *x, const char *y) { return std::strcmp(x, y) == 0; });
}

/// The line of what a finding is about, or of the nearest object above it that
/// the text states; 0 where there is none.
std::size_t lineOfPath(const StatementIndex &index, velHandle *handle, std::string path)
{
    while (!path.empty()) {
        if (const velNode *node = velFindNode(handle, path.c_str()))
            return index.lineOf(node);
        path.resize(path.rfind('/') == std::string::npos ? 0 : path.rfind('/'));
    }
    return 0;
}

class SetTask : public Task
{
public:
    void addOptions(CLI::App &app) override
    {
        app.add_flag("--force", force_, "Write in spite of new findings");
    }

    int run(const Words &words) override
    {
        file_ = words[0];
        const std::string &path = words[1];
        const std::string &value = words[2];
        const EditedFile edited(file_);
        const SourceText text = readTextToEdit();
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file_);

        const char *former = velFindValue(handle.get(), path.c_str());
        if (former && value == former)
            return statusGood;
        if (const char *message = setStringValue(handle.get(), path.c_str(), value.c_str()))
            throw Refusal(file_ + ": " + message);
        requireStorable(value);

        const SourceText changed(editedBytes(text, handle.get(), path, value));
        const velHandlePtr reread = newHandle();
        parseText(reread.get(), changed, file_);
        if (!isSameTree(handle.get(), reread.get()))
            throw Failure(file_ + ": " + path +
                          ": the edited text would not read back as wanted; "
                          "nothing was written");
        if (isRefused(text, changed, reread.get()))
            return statusFindings;
        edited.replace(changed.bytes());
        return statusGood;
    }

private:
    SourceText readTextToEdit() const
    {
        std::string bytes = readBytes(file_);
        if (kindOf(bytes) == FileKind::Container)
            throw containerRefusal(file_);
        return SourceText(std::move(bytes));
    }

    std::string editedBytes(const SourceText &text, velHandle *handle, const std::string &path,
                            const std::string &value) const
    {
        const StatementIndex index(text, handle);
        const LineRange *lines = index.find(velFindNode(handle, path.c_str()));
        if (!lines)
            throw Failure(file_ + ": " + path + ": no line of the file states this parameter");
        return replaceValue(text, *lines, value);
    }

    /// Prints the findings that the change would bring.
    bool isRefused(const SourceText &before, const SourceText &after, velHandle *handle) const
    {
        RuleCheck rules;
        std::vector<Finding> fresh = rules.findings(after);
        if (!fresh.empty())
            fresh = newFindings(rules.findings(before), fresh);
        const StatementIndex index(after, handle);
        for (const Finding &finding : fresh) {
            out() << file_ << ':' << std::to_string(lineOfPath(index, handle, finding.path)) << ": "
                  << finding.path << ": " << finding.message << '\n';
        }
        return !fresh.empty() && !force_;
    }

    std::string file_;
    bool force_ = false;
};

} // namespace

const Command setCommand = {
    .name = "set",
    .words = "FILE PATH VALUE",
    .fewest = 3,
    .most = 3,
    .passesOn = false,
    .purpose = "Give a parameter a new value",
    .details = "Changes the lines of the parameter's last statement and no other; the former file "
               "stays as FILE.bak. Refused with status 1, nothing written, when the rules would "
               "find something new, for what is no parameter, and for a value that no file holds.",
    .make = makeTask<SetTask>,
};

} // namespace veltool
