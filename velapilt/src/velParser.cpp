// Turns lines into nodes.
//
// A line goes through these steps:
//  1. trim it, join it to what is pending, keep it pending if it ends in '\'
//  2. remove the comment and make every run of white space one space
//  3. remove "&replace " from its start
//  4. pass it to the function of its kind: END, action, parameter, header
#include "common/takeLine.h"
#include "velapilt/src/velCheck_p.h"
#include "velapilt/src/velError_p.h"
#include "velapilt/src/velFile_p.h"
#include "velapilt/src/velHandlers_p.h"
#include "velapilt/src/velOperation_p.h"
#include "velapilt/src/velPathStack_p.h"
#include "velapilt/src/velRemove_p.h"
#include "velapilt/src/velScan.h"
#include "velapilt/src/velSpace.h"
#include "velapilt/src/velTree_p.h"

#include <algorithm>
#include <cstring>
#include <md5.h>
#include <memory>
#include <new>

namespace {

constexpr std::string_view replaceWord = "&replace ";

int lengthOf(std::string_view text)
{
    return static_cast<int>(text.size());
}

std::string_view withoutComment(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '#' && (i == 0 || text[i - 1] != '\\')) {
            return text.substr(0, i);
        }
    }
    return text;
}

std::string withSingleBlanks(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (!velIsSpace(c)) {
            result += c;
        } else if (!result.empty() && result.back() != ' ') {
            result += ' ';
        }
    }
    if (result.ends_with(' ')) {
        result.pop_back();
    }
    return result;
}

/// The text before or after a separator. Each run of white space in it is one
/// space already.
std::string_view partBefore(std::string_view text, std::size_t separator)
{
    const bool hasBlank = separator > 0 && text[separator - 1] == ' ';
    return text.substr(0, separator - (hasBlank ? 1 : 0));
}

std::string_view partBehind(std::string_view text, std::size_t separator)
{
    const bool hasBlank = separator + 1 < text.size() && text[separator + 1] == ' ';
    return text.substr(separator + (hasBlank ? 2 : 1));
}

/// The number of the word, which is entered if it is new. Each word is checked
/// only once. `known` is the result of a look-up.
template <typename Check>
const char *checkedWord(velHandle *handle, std::string_view text, Check check, std::uint32_t known,
                        std::uint32_t *word)
{
    *word = known;
    if (known != velWords::none && handle->words.isChecked(known)) {
        return nullptr;
    }
    if (const char *error = check(handle, text)) {
        return error;
    }
    *word = handle->words.intern(text);
    handle->words.setChecked(*word);
    return nullptr;
}

/// Makes room for ten more words; false without memory.
bool growFlagStack(velHandle *handle)
try {
    handle->flagStack.resize(handle->flagStack.size() + 10);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

class LineParser
{
public:
    LineParser(velHandle *handle, std::uint32_t flags) : handle_(handle), flags_(flags) {}

    const char *parse(std::string_view line);
    const char *parse(const velScannedLine &line);

private:
    const char *parseJoined(std::string_view text);
    const char *parseWhole(std::string_view text);
    // `equals` is the place of the first '=' in the text, npos without one.
    const char *parseStatement(std::string_view text, std::size_t equals);
    const char *parseRest(std::string_view text, std::size_t equals);
    const char *parseEnd();
    const char *parseParam(std::string_view text, std::size_t equals);
    const char *parseHeader(std::string_view text, std::size_t colon);
    const char *openBlock(const velStatement &statement);
    const char *sweep(velNode *object);
    const char *sweepChildren(const std::vector<velNode *> &children, bool params);
    std::uint32_t &word() { return handle_->flagStack[static_cast<std::size_t>(handle_->depth)]; }

    velHandle *handle_;
    std::uint32_t flags_;
    bool isReplace_ = false;
    bool isPlain_ = true;
    std::uint32_t lastName_ = velWords::none; // of the last parameter
};

const char *LineParser::parse(const velScannedLine &line)
{
    if (!line.isPlain || handle_->hasPendingLine || line.text.ends_with('\\')) {
        return parse(line.text.substr(0, line.text.find('\0')));
    }
    isReplace_ = false;
    isPlain_ = true;
    return parseStatement(line.text, line.equals);
}

const char *LineParser::parse(std::string_view line)
{
    const std::string_view text = velTrim(line);
    isReplace_ = false;
    if (handle_->hasPendingLine) {
        return parseJoined(text);
    }
    if (text.ends_with('\\')) {
        handle_->pendingLine = text.substr(0, text.size() - 1);
        handle_->hasPendingLine = true;
        return nullptr;
    }
    return parseWhole(text);
}

/// Takes the pending text out of the handle first: it must be cleared in any
/// case, and a handler may parse other lines.
const char *LineParser::parseJoined(std::string_view text)
{
    std::string joined;
    joined.swap(handle_->pendingLine);
    handle_->hasPendingLine = false;
    joined += text;
    if (joined.ends_with('\\')) {
        joined.pop_back();
        handle_->pendingLine.swap(joined);
        handle_->hasPendingLine = true;
        return nullptr;
    }
    return parseWhole(joined);
}

const char *LineParser::parseWhole(std::string_view text)
{
    const velScannedLine line = velScanLineSlowly(text);
    isPlain_ = line.isPlain;
    if (isPlain_) {
        return parseStatement(line.text, line.equals);
    }
    const std::string rewritten = withSingleBlanks(withoutComment(text));
    return parseStatement(rewritten, rewritten.find('='));
}

const char *LineParser::parseStatement(std::string_view text, std::size_t equals)
{
    if (text.empty()) {
        return nullptr;
    }
    if (text[0] == '!') {
        return "parseVELData: unable to handle power syntax with this version of the parser";
    }
    if (text[0] != '&') {
        return parseRest(text, equals);
    }
    if (!text.starts_with(replaceWord)) {
        return velSetError(handle_, "parseVELLineH: unknown directive near \"%.*s\"",
                           lengthOf(text), text.data());
    }
    isReplace_ = true;
    text.remove_prefix(replaceWord.size());
    return parseRest(text, text.find('='));
}

const char *LineParser::parseRest(std::string_view text, std::size_t equals)
{
    if (handle_->flagStack.empty() && !growFlagStack(handle_)) {
        return "parseVELLineH: Memory error initialising flag stack";
    }
    if (handle_->depth == 0) {
        handle_->flagStack[0] = flags_;
    }
    if (text == "END") {
        return parseEnd();
    }
    if (text[0] == '>') {
        return velRunActionLine(handle_, std::string(text).c_str());
    }
    const char *error = nullptr;
    if (equals != std::string_view::npos) {
        error = parseParam(text, equals);
    } else if (const std::size_t colon = text.find(':'); colon != std::string_view::npos) {
        error = parseHeader(text, colon);
    } else {
        error = velSetError(handle_, "parseVELLineH: syntax error near \"%.*s\"", lengthOf(text),
                            text.data());
    }
    if (error == nullptr && isReplace_) {
        velReportReplace(handle_);
    }
    return error;
}

const char *LineParser::parseParam(std::string_view text, std::size_t equals)
{
    velStatement statement{{}, partBehind(text, equals), word()};
    const std::string_view name = partBefore(text, equals);
    const std::uint32_t known = handle_->words.findBehind(lastName_, name);
    if (const char *error =
            checkedWord(handle_, name, velCheckParamName, known, &statement.component.name)) {
        return error;
    }
    lastName_ = statement.component.name;
    if (!isPlain_) {
        if (const char *error = velCheckValue(handle_, statement.value)) {
            return error;
        }
    }
    return velUpdateObject(handle_, statement) == nullptr ? "parseVELLineH: velUpdateObject failed"
                                                          : nullptr;
}

const char *LineParser::parseHeader(std::string_view text, std::size_t colon)
{
    const std::string_view type = partBefore(text, colon);
    const std::string_view name = partBehind(text, colon);
    velStatement statement{{}, {}, 0};
    if (const char *error = checkedWord(handle_, type, velCheckType, handle_->words.find(type),
                                        &statement.component.type)) {
        return error;
    }
    if (!name.empty() && name != type) {
        if (const char *error = checkedWord(handle_, name, velCheckObjectName,
                                            handle_->words.find(name), &statement.component.name)) {
            return error;
        }
    }
    statement.flags = word() | (isReplace_ ? velFlagReplace : 0);
    const bool isFull = static_cast<std::size_t>(handle_->depth) + 1 == handle_->flagStack.size();
    if (isFull && !growFlagStack(handle_)) {
        return "parseVELLineH: memory error extending flag stack";
    }
    return openBlock(statement);
}

/// Opens the block before its object is made, so that a handler sees an open
/// block.
const char *LineParser::openBlock(const velStatement &statement)
{
    const std::int32_t opened = ++handle_->depth;
    handle_->deepest = std::max(handle_->deepest, opened);
    word() = statement.flags;
    try {
        if (velUpdateObject(handle_, statement) == nullptr) {
            --handle_->depth;
            return "parseVELLineH: velUpdateObject failed";
        }
    } catch (const std::bad_alloc &) { // its path was not pushed
        handle_->depth = std::min(handle_->depth, opened - 1);
        throw;
    }
    if (handle_->depth < opened) {
        velPop(handle_); // a handler has closed the block already
    }
    return nullptr;
}

const char *LineParser::parseEnd()
{
    if (handle_->depth == 0) {
        return "parseVELLineH: unmatched END";
    }
    velNode *object = velCurrentNode(handle_);
    if (object != nullptr && (word() & velFlagReplace) != 0) {
        const std::int32_t closing = handle_->depth;
        const bool isNested =
            (handle_->flagStack[static_cast<std::size_t>(closing) - 1] & velFlagReplace) != 0;
        const char *error = sweep(object);
        if (velNode *swept = isNested ? nullptr : velNodeNow(handle_, object)) {
            swept->flags &= ~velFlagReplace;
        }
        if (error != nullptr || handle_->depth < closing) {
            return error; // or a handler has closed the block already
        }
    }
    --handle_->depth;
    velPop(handle_);
    return nullptr;
}

/// Ends a &replace block: deletes what the block did not contain, parameters
/// first. Each child that the object has at the start of a pass is visited once,
/// and the node that is at its path then is deleted or kept. Only an interruption
/// by a handler is an error; a refused deletion is ignored.
const char *LineParser::sweep(velNode *object)
{
    for (const bool params : {true, false}) {
        std::vector<velNode *> children;
        const velNode *swept = velNodeNow(handle_, object);
        for (velNode *child = swept == nullptr ? nullptr : swept->firstChild(); child != nullptr;
             child = child->next) {
            children.push_back(child);
        }
        if (const char *interrupt = sweepChildren(children, params)) {
            return interrupt;
        }
    }
    return nullptr;
}

const char *LineParser::sweepChildren(const std::vector<velNode *> &children, bool params)
{
    velNode *kept = nullptr; // the last kept child before the present one
    for (velNode *child : children) {
        velNode *node = velNodeNow(handle_, child);
        if (node == nullptr) {
            continue;
        }
        if (child->isParam() != params || (params && !node->isParam())) {
            kept = node;
            continue;
        }
        if ((node->flags & velFlagReplace) != 0) {
            node->flags &= ~velFlagReplace;
            kept = node;
            continue;
        }
        static_cast<void>(params ? velRemoveNode(handle_, node, kept)
                                 : velDeleteNode(handle_, node));
        if (handle_->interrupted != nullptr) {
            return velTakeInterrupt(handle_);
        }
    }
    return nullptr;
}

// --- Whole texts --------------------------------------------------------------

/// The lines of a file, each ended by a line feed or the end.
class FileLines
{
public:
    explicit FileLines(const velFileBytes &bytes) : text_(bytes.view()) {}

    [[nodiscard]] std::int64_t count() const
    {
        const auto ends = static_cast<std::int64_t>(velCountLineFeeds(text_));
        return ends + (text_.empty() || text_.back() == '\n' ? 0 : 1);
    }

    template <typename Visit>
    const char *each(Visit visit) const
    {
        const char *const end = text_.data() + text_.size();
        for (const char *next = text_.data(); next < end;) {
            const velScannedLine line = velScanLine(next, end);
            if (const char *error = visit(line)) {
                return error;
            }
            next = line.next;
        }
        return nullptr;
    }

    template <typename Visit>
    void eachText(Visit visit) const
    {
        std::string_view rest = text_;
        while (!rest.empty()) {
            const std::string_view line = velEditor::takeLine(&rest);
            visit(line.substr(0, line.find('\0')));
        }
    }

private:
    std::string_view text_;
};

/// The lines of a list that a caller gives.
class ListLines
{
public:
    ListLines(const char *const *lines, std::int32_t count) : lines_(lines), count_(count) {}

    [[nodiscard]] std::int64_t count() const { return count_; }

    template <typename Visit>
    const char *each(Visit visit) const
    {
        for (std::int32_t i = 0; i < count_; ++i) {
            if (const char *error = visit(lineAt(i))) {
                return error;
            }
        }
        return nullptr;
    }

    template <typename Visit>
    void eachText(Visit visit) const
    {
        for (std::int32_t i = 0; i < count_; ++i) {
            visit(lineAt(i));
        }
    }

private:
    [[nodiscard]] std::string_view lineAt(std::int32_t i) const
    {
        return lines_[i] == nullptr ? std::string_view() : lines_[i];
    }

    const char *const *lines_;
    std::int32_t count_;
};

template <typename Lines>
velDigest digestOf(const Lines &lines)
{
    MD5_CTX context;
    MD5Init(&context);
    lines.eachText([&context](std::string_view line) {
        MD5Update(&context, reinterpret_cast<const std::uint8_t *>(line.data()), line.size());
    });
    velDigest digest;
    MD5Final(digest.bytes, &context);
    return digest;
}

constexpr const char *noMemory = "parseVELLineH: Memory allocation error";

template <typename Lines>
const char *parseEach(velHandle *handle, const Lines &lines, std::uint32_t flags)
try {
    velMakeRoot(handle);
    handle->table.presize(lines.count() / 2);
    LineParser parser(handle, flags);
    return lines.each([handle, &parser](const auto &line) -> const char * {
        if (const char *failed = parser.parse(line)) {
            return failed;
        }
        return handle->interrupted == nullptr ? nullptr : velTakeInterrupt(handle);
    });
} catch (const std::bad_alloc &) {
    return noMemory;
}

template <typename Lines>
const char *parseLines(velHandle *handle, const Lines &lines, std::uint32_t flags,
                       const velDigest *expected, velDigest *digest)
{
    const velOperation operation(handle);
    if (expected != nullptr || digest != nullptr) {
        const velDigest found = digestOf(lines);
        if (expected != nullptr &&
            std::memcmp(found.bytes, expected->bytes, sizeof found.bytes) == 0) {
            flags |= velFlagValid | velFlagSubtreeValid; // data that the caller has seen before
        }
        if (digest != nullptr) {
            *digest = found;
        }
    }
    const std::int32_t before = handle->depth;
    const char *error = parseEach(handle, lines, flags);
    if (error != nullptr) {
        setVELStateH(handle, before);
        return error;
    }
    if (handle->depth > before) {
        const std::int32_t missing = handle->depth - before;
        setVELStateH(handle, before);
        return velSetError(handle, "%d missing END statement(s) in input", missing);
    }
    if (handle->depth < before) {
        return velSetError(handle, "%d too many END statement(s) in input", before - handle->depth);
    }
    return nullptr;
}

/// A list that a caller gives.
struct LineList
{
    const char *const *lines;
    std::int32_t count;
};

struct LoadMessages
{
    const char *noLines;
    const char *noArray;
    const char *notStored;
};

/// An array for the copies of a caller's lines; null without memory.
std::unique_ptr<velArray> makeLineArray()
try {
    return std::make_unique<velArray>(velArrayKind::Strings);
} catch (const std::bad_alloc &) {
    return nullptr;
}

/// Copies the lines first, because a handler may change the caller's list.
const char *loadLines(velHandle *handle, const LineList &list, const LoadMessages &messages,
                      std::uint32_t flags, const velDigest *expected, velDigest *digest)
{
    if (list.lines == nullptr) {
        return messages.noLines;
    }
    const std::unique_ptr<velArray> copy = makeLineArray();
    if (copy == nullptr) {
        return messages.noArray;
    }
    for (std::int32_t i = 0; i < list.count; ++i) {
        const char *line = list.lines[i];
        if (copy->addString(line == nullptr ? "" : line) == 0) {
            return messages.notStored;
        }
    }
    return parseLines(handle, ListLines(copy->strings(), copy->count()), flags, expected, digest);
}

} // namespace

const char *velParseFile(velHandle *handle, const velFileBytes &bytes, std::uint32_t flags,
                         const velDigest *expected, velDigest *digest)
{
    return parseLines(handle, FileLines(bytes), flags, expected, digest);
}

const char *parseVELData(velHandle *handle, const velArray *lines, std::uint32_t flags,
                         const velDigest *expected, velDigest *digest)
{
    if (lines == nullptr) {
        return "parseVELData: Invalid arguments";
    }
    return parseLines(handle, ListLines(lines->strings(), lines->count()), flags, expected, digest);
}

const char *loadVELData(velHandle *handle, const char *const *lines, std::int32_t count,
                        const velDigest *expected, velDigest *digest)
{
    static constexpr LoadMessages messages = {"loadVELData: Invalid arguments",
                                              "loadVELData: failed to allocate array",
                                              "loadVELData: failed to store string"};
    return loadLines(handle, {lines, count}, messages, 0, expected, digest);
}

const char *loadLibraryData(velHandle *handle, const char *const *lines, std::int32_t count,
                            const velDigest *expected, velDigest *digest)
{
    static constexpr LoadMessages messages = {"loadLibraryData: Invalid arguments",
                                              "loadLibraryData: failed to allocate array",
                                              "loadLibraryData: failed to store string"};
    return loadLines(handle, {lines, count}, messages, velFlagLibrary, expected, digest);
}

const char *parseVELLineH(velHandle *handle, const char *line, std::uint32_t flags)
try {
    const velOperation operation(handle);
    const char *error = LineParser(handle, flags).parse(line);
    const char *interrupt = velTakeInterrupt(handle);
    return error != nullptr ? error : interrupt;
} catch (const std::bad_alloc &) {
    return noMemory;
}
