// Results as text, the log of changes, and folders and environments of a test.
#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

std::string said(const char *message)
{
    return message == nullptr ? "" : message;
}

std::string asLines(const velStringList &list)
{
    std::string text;
    for (const char *line : list) {
        text += line;
        text += '\n';
    }
    return text;
}

std::string asLines(const velArray &strings)
{
    return asLines(strings.copyStrings());
}

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string parse(const velHandlePtr &handle, std::string_view text, std::uint32_t flags)
{
    velArray lines(velArrayKind::Strings);
    for (const std::string &line : linesOf(text)) {
        lines.addString(line);
    }
    return said(parseVELData(handle.get(), &lines, flags));
}

velHandlePtr parsed(std::string_view text)
{
    velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(parse(handle, text), "");
    return handle;
}

std::string stored(const velHandlePtr &handle, const char *path, bool includeLibrary)
{
    velStringList lines;
    const char *error = getObjectVELH(handle.get(), path, &lines, includeLibrary);
    return error == nullptr ? asLines(lines) : error;
}

std::string saved(const velHandlePtr &handle, const char *path, std::int32_t width)
{
    velStringList lines;
    const char *error = velWrapText(handle.get(), path, width, &lines);
    return error == nullptr ? asLines(lines) : error;
}

std::string valueAt(const velHandlePtr &handle, const char *path)
{
    std::optional<std::string> value;
    const char *error = getStringValue(handle.get(), path, &value);
    return error == nullptr ? value.value_or("(none)") : error;
}

std::string flagsOf(const velHandlePtr &handle)
{
    std::string text;
    const auto add = [&](const auto &again, const velNode *node, const std::string &path) -> void {
        const velNodeInfo info = velDescribe(handle.get(), node);
        std::array<char, 16> flags{};
        std::snprintf(flags.data(), flags.size(), "%#x", info.flags);
        text += path + " " + velKindWord(info.kind) + " " + flags.data() + "\n";
        for (const velNode *child = velFirstChild(node); child != nullptr;
             child = velNextSibling(child)) {
            const velNodeInfo below = velDescribe(handle.get(), child);
            std::string component = below.kind == velParam ? "" : below.type;
            component += below.kind == velObject ? ":" : "";
            component += below.name == nullptr ? "" : below.name;
            again(again, child, (path == "/" ? "" : path) + "/" + component);
        }
    };
    if (const velNode *root = velFindNode(handle.get(), "/")) {
        add(add, root, "/");
    }
    return text;
}

// --- ChangeLog ------------------------------------------------------------------

ChangeLog::ChangeLog(const velHandlePtr &handle)
{
    EXPECT_EQ(said(addChangeHandler(handle.get(), note, this)), "");
}

std::string ChangeLog::take()
{
    return std::exchange(text_, {});
}

int ChangeLog::note(const char *path, std::int32_t code, const char *newValue, const char *oldValue,
                    void *userData)
{
    const auto orDash = [](const char *value) {
        return std::string(value == nullptr ? "-" : value);
    };
    std::string &text = static_cast<ChangeLog *>(userData)->text_;
    text += path;
    switch (code) {
    case velValueChanged:
        text += ": " + orDash(newValue) + " <- " + orDash(oldValue);
        break;
    case velObjectCreated:
        text += ": created";
        break;
    case velObjectDeleted:
        text += ": deleted";
        break;
    default:
        text += ": code " + std::to_string(code);
    }
    if (code != velValueChanged && (newValue != nullptr || oldValue != nullptr)) {
        text += " with a value";
    }
    text += '\n';
    return 1;
}

// --- Environment and folders ------------------------------------------------------

Environment::Environment(const char *name, std::optional<std::string> value) : name_(name)
{
    if (const char *before = std::getenv(name)) {
        before_ = before;
    }
    if (value.has_value()) {
        ::setenv(name, value->c_str(), 1);
    } else {
        ::unsetenv(name);
    }
}

Environment::~Environment()
{
    if (before_.has_value()) {
        ::setenv(name_.c_str(), before_->c_str(), 1);
    } else {
        ::unsetenv(name_.c_str());
    }
}

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "velapilt-XXXXXX").string();
    const char *made = ::mkdtemp(pattern.data());
    EXPECT_NE(made, nullptr);
    folder_ = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string TemporaryFolder::path(std::string_view name) const
{
    return name.empty() ? folder_.string() : (folder_ / name).string();
}

std::string TemporaryFolder::write(std::string_view name, std::string_view content) const
{
    const std::string file = path(name);
    std::ofstream out(file, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    EXPECT_TRUE(out.flush().good());
    return file;
}

// --- Random -----------------------------------------------------------------------

std::string Random::text(std::size_t length, std::string_view alphabet)
{
    std::string result(length, '\0');
    for (char &c : result) {
        c = alphabet[below(alphabet.size())];
    }
    return result;
}

std::string randomSetup(Random &random, std::size_t objects)
{
    static constexpr std::array types = {"DOMAIN", "BOUNDARY", "FLOW", "A.b", "x_{1}"};
    static constexpr std::array names = {"in", "out", "Fluid Domain", "%1", "_z", "DOMAIN"};
    static constexpr std::array params = {"Option", "Mass Flow Rate", "p[1]", "Location", "z|"};
    static constexpr std::string_view characters = "abcXYZ019 ,()[]=:/+-.*%$@~";
    std::string text;
    std::size_t depth = 0;
    for (std::size_t i = 0; i < objects; ++i) {
        while (depth > 0 && random.once(2)) {
            text += "END\n";
            --depth;
        }
        text += random.oneOf(types);
        text += ":";
        text += random.once(4) ? "" : random.oneOf(names);
        text += "\n";
        ++depth;
        for (std::size_t left = random.below(4); left > 0; --left) {
            text += random.oneOf(params);
            text += " = " + random.text(random.below(120), characters) + "\n";
        }
    }
    for (; depth > 0; --depth) {
        text += "END\n";
    }
    return text;
}
