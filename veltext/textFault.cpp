// Parses a text line by line to find the first line that the database refuses.
#include "veltext/textFault.h"

#include "velapilt/src/velSpace.h"
#include "velapilt/src/velapilt.h"
#include "veltext/error.h"
#include "veltext/mergeText.h"
#include "veltext/statement.h"

#include <vector>

namespace veltext {

namespace {

/// Seven or more equal characters at the start, followed by a space or nothing.
bool isConflictMarker(std::string_view line)
{
    if (line.empty() || std::string_view("<|=>").find(line[0]) == std::string_view::npos) {
        return false;
    }
    const std::size_t size = std::min(line.find_first_not_of(line[0]), line.size());
    return size >= usualMarkerSize && (size == line.size() || velIsSpace(line[size]));
}

/// A sentence for a line that is not meant as a statement, otherwise empty.
std::string explanation(const SourceText &text, std::size_t line)
{
    if (isConflictMarker(text.parsedLine(line))) {
        return "a conflict marker of a merge; keep one of the two sides and delete the marker "
               "lines";
    }
    return {};
}

/// The open blocks while a text is parsed, and the first END with a smaller
/// indent than the header of the block that it closes.
class BlockLines
{
public:
    explicit BlockLines(const SourceText &text) : text_(text) {}

    void follow(std::size_t line, std::size_t depth)
    {
        for (; open_.size() > depth; open_.pop_back()) {
            noteEnd(line);
        }
        while (open_.size() < depth) {
            open_.push_back(line);
        }
    }

    [[nodiscard]] TextFault missingEnd() const
    {
        TextFault fault{.line = open_.back() + 1,
                        .message =
                            std::to_string(open_.size()) + " missing END statement(s) in input"};
        if (suspectEnd_ > 0) {
            fault.message += "; the END in line " + std::to_string(suspectEnd_ + 1) +
                             " closes the block of line " + std::to_string(suspectHeader_ + 1) +
                             ", but is indented differently";
        }
        return fault;
    }

    [[nodiscard]] bool isEmpty() const { return open_.empty(); }

private:
    void noteEnd(std::size_t line)
    {
        if (suspectEnd_ > 0 || leadingBlanks(text_.line(line)).size() >=
                                   leadingBlanks(text_.line(open_.back())).size()) {
            return;
        }
        suspectHeader_ = open_.back();
        suspectEnd_ = line;
    }

    const SourceText &text_;
    std::vector<std::size_t> open_; ///< lines of the headers
    std::size_t suspectHeader_ = 0;
    std::size_t suspectEnd_ = 0; ///< 0 if there is none: a text cannot begin with an END
};

velHandlePtr handleWithLibraries()
{
    velHandlePtr handle(velCreateHandle());
    if (handle) {
        static_cast<void>(readLibraries(handle.get()));
    }
    return handle;
}

} // namespace

std::optional<TextFault> findFault(const SourceText &text, velHandle *handle)
{
    if (isContainer(text.bytes())) {
        return TextFault{.message = "this is a def or res file where a text is expected; take its "
                                    "command data out with veltool extract",
                         .isExplained = true};
    }
    BlockLines blocks(text);
    for (std::size_t i = 0; i < text.lineCount(); ++i) {
        const std::string line(text.parsedLine(i));
        if (const char *message = parseVELLineH(handle, line.c_str(), 0)) {
            const std::string sentence = explanation(text, i);
            return TextFault{i + 1, sentence.empty() ? message : sentence, !sentence.empty()};
        }
        std::int32_t depth = 0;
        static_cast<void>(getVELStateH(handle, &depth));
        blocks.follow(i, static_cast<std::size_t>(depth));
    }
    return blocks.isEmpty() ? std::nullopt : std::optional(blocks.missingEnd());
}

std::string placed(const std::string &file, const TextFault &fault)
{
    return placeText(file, fault.line) + fault.message;
}

std::string explainRefusal(const std::string &file, const std::string &message)
{
    const std::optional<SourceText> text = readSource(file);
    const velHandlePtr handle = handleWithLibraries();
    if (!text || !handle) {
        return message;
    }
    const std::optional<TextFault> fault = findFault(*text, handle.get());
    if (!fault) {
        return message;
    }
    if (fault->isExplained) {
        return message + '\n' + placed(file, *fault);
    }
    return fault->message + " (" + file + ':' + std::to_string(fault->line) + ')';
}

} // namespace veltext
