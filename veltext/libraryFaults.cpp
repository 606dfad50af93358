// Finds file and line of the mistakes in rule libraries.
#include "veltext/libraryFaults.h"

#include "velapilt/src/velapilt.h"
#include "veltext/error.h"
#include "veltext/textFault.h"

#include <filesystem>
#include <optional>

namespace veltext {

namespace {

/// The line, for the end of a message that names the library already.
std::string inParentheses(const TextFault &fault)
{
    std::string text = fault.line ? " (line " + std::to_string(fault.line) + ')' : "";
    if (fault.isExplained) {
        text += "; " + fault.message;
    }
    return text;
}

bool hasColonInName(const std::string &file)
{
    return std::filesystem::path(file).filename().string().find(':') != std::string::npos;
}

/// The text to add to the message about a library that cannot be read. The
/// message is about the first such library.
std::string placeOfRefusal(const std::vector<std::string> &files)
{
    const velHandlePtr handle(velCreateHandle());
    for (const std::string &file : files) {
        std::error_code error;
        if (!std::filesystem::exists(file, error) && hasColonInName(file)) {
            return "; separate the names in ZOT5_VEL_LIBS by ';', not by ':'";
        }
        const std::optional<SourceText> text = readSource(file);
        if (!handle || !text) {
            return {};
        }
        if (const std::optional<TextFault> fault = findFault(*text, handle.get())) {
            return inParentheses(*fault);
        }
    }
    return {};
}

} // namespace

void LibraryTexts::add(const std::string &file, const SourceText &text)
{
    files_.push_back(file);
    trees_.emplace_back(text);
}

std::pair<std::string, std::size_t> LibraryTexts::placeOf(std::string path) const
{
    for (; !path.empty(); path.resize(path.rfind('/'))) {
        for (std::size_t i = trees_.size(); i-- > 0;) {
            if (const StatementTree::Stated *stated = trees_[i].lastOf(path)) {
                return {files_[i], stated->lines.first + 1};
            }
        }
    }
    return {files_.empty() ? std::string() : files_.back(), 0};
}

std::string LibraryTexts::placed(const RuleFault &fault) const
{
    const auto [file, line] = placeOf(fault.path);
    return findingPlace(file, line) + fault.line;
}

LibraryTexts readLibraryTexts(const std::vector<std::string> &files)
{
    LibraryTexts texts;
    for (const std::string &file : files) {
        if (const std::optional<SourceText> text = readSource(file)) {
            texts.add(file, *text);
        }
    }
    return texts;
}

std::string placedLibraryErrors(const char *failure, const std::vector<RuleFault> &faults,
                                const std::vector<std::string> &files)
{
    std::string result;
    if (failure != nullptr) {
        const std::string_view text = failure;
        const bool isEnded = text.ends_with('\n');
        result = text.substr(0, text.size() - isEnded);
        result += placeOfRefusal(files) + (isEnded ? "\n" : "");
    }
    const LibraryTexts texts = faults.empty() ? LibraryTexts() : readLibraryTexts(files);
    for (const RuleFault &fault : faults) {
        if (!result.empty()) {
            result += '\n';
        }
        result += texts.placed(fault);
    }
    return result;
}

std::string placedLibraryErrors(const char *failure, const std::vector<RuleFault> &faults)
{
    return placedLibraryErrors(failure, faults,
                               failure != nullptr || !faults.empty() ? velLibraryFiles()
                                                                     : std::vector<std::string>());
}

} // namespace veltext
