#include "veltext/libraryFaults.h"

#include "velapilt/src/velapilt.h"
#include "veltext/textFault.h"

#include <filesystem>
#include <optional>
#include <sstream>

namespace veltext {

namespace {

constexpr std::string_view rulesPath = "/RULES";

/// The place, for the end of a message that names the library.
std::string inParentheses(const TextFault &fault)
{
    std::string text = fault.line ? " (line " + std::to_string(fault.line) + ')' : "";
    if (fault.isExplained)
        text += "; " + fault.message;
    return text;
}

bool hasColonInName(const std::string &file)
{
    return std::filesystem::path(file).filename().string().find(':') != std::string::npos;
}

/// What to add to a message about a library that cannot be read: the first one
/// that cannot is at fault.
std::string placeOfRefusal()
{
    const velHandlePtr handle(velCreateHandle());
    for (const std::string &file : velLibraryFiles()) {
        std::error_code error;
        if (!std::filesystem::exists(file, error) && hasColonInName(file))
            return "; separate the names in ZOT5_VEL_LIBS by ';', not by ':'";
        const std::optional<SourceText> text = readSource(file);
        if (!handle || !text)
            return {};
        if (const std::optional<TextFault> fault = findFault(*text, handle.get()))
            return inParentheses(*fault);
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
            if (const StatementTree::Stated *stated = trees_[i].lastOf(path))
                return {files_[i], stated->lines.first + 1};
        }
    }
    return {files_.empty() ? std::string() : files_.back(), 0};
}

LibraryTexts readLibraryTexts()
{
    LibraryTexts texts;
    for (const std::string &file : velLibraryFiles()) {
        if (const std::optional<SourceText> text = readSource(file))
            texts.add(file, *text);
    }
    return texts;
}

std::string placedLibraryErrors(const std::string &errors)
{
    std::string result;
    std::optional<LibraryTexts> texts; // made for the first mistake in a rule
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
        if (!result.empty())
            result += '\n';
        if (line.starts_with(rulesPath)) {
            if (!texts)
                texts = readLibraryTexts();
            const auto [file, number] = texts->placeOf(line.substr(0, line.find(": ")));
            result += file + ':' + std::to_string(number) + ": " + line;
        } else {
            result += line;
            if (line.starts_with("Error reading library file "))
                result += placeOfRefusal();
        }
    }
    if (errors.ends_with('\n'))
        result += '\n';
    return result;
}

} // namespace veltext
