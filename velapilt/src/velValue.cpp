// Reads values as texts, numbers, logicals and lists.
#include "velapilt/src/velError_p.h"
#include "velapilt/src/velNumber.h"
#include "velapilt/src/velResolve_p.h"
#include "velapilt/src/velSpace.h"
#include "velapilt/src/velSplit.h"
#include "velapilt/src/velapilt.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>

namespace {

constexpr std::array<std::string_view, 5> yesWords = {"yes", "y", "true", "t", "on"};
constexpr std::array<std::string_view, 5> noWords = {"no", "n", "false", "f", "off"};

bool contains(const std::array<std::string_view, 5> &words, std::string_view word)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::string_view firstWord(std::string_view text)
{
    std::size_t length = 0;
    while (length < text.size() && !velIsSpace(text[length])) {
        ++length;
    }
    return text.substr(0, length);
}

/// The value that a query for a list or a number reads; empty if there is none.
const char *valueOf(velHandle *handle, const char *path, const char *unknown,
                    std::string_view *value)
{
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return unknown;
    }
    *value = {};
    if (node->isParam() && node->value.text != nullptr) {
        *value = {node->value.text, node->value.length};
    }
    return nullptr;
}

/// An empty array; null without memory.
std::unique_ptr<velArray> makeArray(velArrayKind kind)
try {
    return std::make_unique<velArray>(kind);
} catch (const std::bad_alloc &) {
    return nullptr;
}

/// Joins the messages of all elements that are not logicals into one message.
const char *joinFailures(const velArray &errors, std::string *failures)
try {
    *failures = "splitLogicalString: not all entries were logicals:\n";
    for (std::int32_t i = 0; i < errors.count(); ++i) {
        *failures += errors.string(i);
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "splitLogicalString: unable to allocate error message.\n";
}

/// Reads the elements as logicals. If elements are not logicals, `failures`
/// receives the joined message.
const char *readLogicals(std::string_view text, std::vector<std::int32_t> *values,
                         std::string *failures)
try {
    const auto elements = makeArray(velArrayKind::Strings);
    if (elements == nullptr) {
        return "splitLogicalString: Unable to allocate strings array\n";
    }
    const auto errors = makeArray(velArrayKind::Strings);
    if (errors == nullptr) {
        return "splitLogicalString: Unable to allocate errors array\n";
    }
    const auto logicals = makeArray(velArrayKind::Integers);
    if (logicals == nullptr) {
        return "splitLogicalString: Unable to allocate integers array\n";
    }
    std::int32_t count = 0;
    if (const char *error = splitString(elements.get(), text, &count)) {
        return error;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        std::int32_t value = 1; // the value of an element that fails
        std::string failure;
        const char *error = isLogicalValue(elements->string(i), &value, &failure);
        if (error != nullptr && errors->addString(error) == 0) {
            return "splitLogicalString: unable to allocate error message.\n";
        }
        if (logicals->addInteger(value) == 0) {
            return "splitLogicalString: unable to store logical value\n";
        }
    }
    if (errors->count() > 0) {
        return joinFailures(*errors, failures);
    }
    *values = logicals->integers();
    return nullptr;
} catch (const std::bad_alloc &) {
    return "splitLogicalString: unable to store logical value\n";
}

constexpr const char *listUnknown = "getStringList: unable to find value";

} // namespace

// --- Splitting ----------------------------------------------------------------

const char *splitString(velArray *array, std::string_view text, std::int32_t *count)
{
    std::int64_t nesting = 0; // below zero, no comma splits until it is 0 again
    std::size_t start = 0;
    std::int32_t pieces = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size()) {
            nesting += text[i] == '(' ? 1 : 0;
            nesting -= text[i] == ')' ? 1 : 0;
            if (text[i] != ',' || nesting != 0) {
                continue;
            }
        }
        if (array->addString(velTrim(text.substr(start, i - start))) == 0) {
            return "splitString: failure to store string.\n";
        }
        ++pieces;
        start = i + 1;
    }
    *count = pieces;
    return nullptr;
}

const char *splitStringString(std::string_view text, velStringList *list)
try {
    velArray array(velArrayKind::Strings);
    std::int32_t count = 0;
    if (const char *error = splitString(&array, text, &count)) {
        return error;
    }
    *list = array.takeStrings();
    return nullptr;
} catch (const std::bad_alloc &) {
    return "splitStringString: unable to create string array";
}

const char *splitLogicalString(std::string_view text, std::vector<std::int32_t> *values,
                               std::string *message)
{
    std::string failures;
    if (const char *error = readLogicals(text, values, &failures)) {
        return error;
    }
    if (failures.empty()) {
        return nullptr;
    }
    *message = std::move(failures);
    return message->c_str();
}

const char *isLogicalValue(const char *text, std::int32_t *value, std::string *message)
try {
    const std::string_view all(text);
    std::string_view rest = all;
    while (!rest.empty() && velIsSpace(rest.front())) {
        rest.remove_prefix(1);
    }
    if (rest.empty()) {
        return "isLogicalValue: value is whitespace only\n";
    }
    std::string word(firstWord(rest));
    for (char &c : word) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    if (word[0] >= '0' && word[0] <= '9') {
        *value = velRoundElement(velReadNumber(word));
    } else if (contains(yesWords, word)) {
        *value = -1;
    } else if (contains(noWords, word)) {
        *value = 0;
    } else {
        *message = "isLogicalValue: value is not a logical: " + std::string(all) + "\n";
        return message->c_str();
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "isLogicalValue: unable to allocate error string\n";
}

// --- Values -------------------------------------------------------------------

const char *velFindValue(velHandle *handle, const char *path)
{
    const velNode *node = velFindNode(handle, path);
    return node != nullptr && node->isParam() ? node->value.text : nullptr;
}

const char *getStringValue(velHandle *handle, const char *path, std::optional<std::string> *value)
try {
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return velSetError(handle, "getStringValue: value \"%s\" does not exist",
                           path == nullptr ? "" : velFullPath(handle, path).c_str());
    }
    if (node->isParam() && node->value.text != nullptr) {
        value->emplace(node->value.text, node->value.length);
    } else {
        value->reset();
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "getStringValue: memory error";
}

const char *getIntegerValue(velHandle *handle, const char *path, std::int32_t *value)
try {
    std::string_view text;
    if (const char *error = valueOf(handle, path, "getIntegerValue: unable to find value", &text)) {
        return error;
    }
    *value = velRoundValue(velReadNumber(text));
    return nullptr;
} catch (const std::bad_alloc &) {
    return "getIntegerValue: unable to find value";
}

const char *getLogicalValue(velHandle *handle, const char *path, std::int32_t *value)
try {
    std::string_view text;
    if (const char *error = valueOf(handle, path, "getLogicalValue: unable to find value", &text)) {
        return error;
    }
    std::string message;
    const char *error = isLogicalValue(std::string(text).c_str(), value, &message);
    return message.empty() ? error : velRecordError(handle, message);
} catch (const std::bad_alloc &) {
    return "getLogicalValue: unable to find value";
}

const char *getStringList(velHandle *handle, const char *path, velStringList *list)
try {
    std::string_view text;
    if (const char *error = valueOf(handle, path, listUnknown, &text)) {
        return error;
    }
    return splitStringString(text, list);
} catch (const std::bad_alloc &) {
    return listUnknown;
}

const char *getIntegerList(velHandle *handle, const char *path, std::vector<std::int32_t> *list)
try {
    velStringList elements;
    if (const char *error = getStringList(handle, path, &elements)) {
        return error;
    }
    std::vector<std::int32_t> result;
    result.reserve(elements.size());
    for (const char *element : elements) {
        result.push_back(velRoundElement(velReadNumber(element)));
    }
    *list = std::move(result);
    return nullptr;
} catch (const std::bad_alloc &) {
    return listUnknown;
}

const char *getLogicalList(velHandle *handle, const char *path, std::vector<std::int32_t> *list)
try {
    std::string_view text;
    if (const char *error = valueOf(handle, path, listUnknown, &text)) {
        return error;
    }
    std::string failures;
    if (const char *error = readLogicals(text, list, &failures)) {
        return error;
    }
    return failures.empty() ? nullptr : velRecordError(handle, failures);
} catch (const std::bad_alloc &) {
    return listUnknown;
}
