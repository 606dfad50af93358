// Writes a tree as VEL, XML, JSON, or a list of paths.
#include "bench/generate/treeWriter.h"

#include "velapilt/src/velComponentText.h"

namespace velBench {

namespace {

/// The common base of the writers: the file, and the indent of the open blocks.
class FileWriter : public TreeWriter
{
public:
    explicit FileWriter(const std::string &file) : out_(file, std::ios::binary | std::ios::trunc) {}

    bool finish() override
    {
        out_.close();
        return !out_.fail();
    }

protected:
    void put(std::string_view text)
    {
        out_.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    void putLine(std::string_view text)
    {
        put(text);
        out_.put('\n');
    }
    [[nodiscard]] std::string indent() const { return std::string(2 * depth_, ' '); }

    std::size_t depth_ = 0;

private:
    std::ofstream out_;
};

class VelWriter : public FileWriter
{
public:
    using FileWriter::FileWriter;

    void open(std::string_view type, std::string_view name) override
    {
        std::string line = indent().append(type).append(":");
        if (!name.empty()) {
            line.append(" ").append(name);
        }
        putLine(line);
        ++depth_;
    }

    void parameter(std::string_view name, std::string_view value) override
    {
        putWrapped(indent().append(name).append(" = ").append(value));
    }

    void close() override
    {
        --depth_;
        putLine(indent().append("END"));
    }

private:
    /// Breaks the line after the last space that leaves room for the backslash.
    void putWrapped(std::string line)
    {
        const std::string continuation = indent() + "  ";
        while (line.size() > velUsualWidth) {
            const std::size_t blank = line.rfind(' ', velUsualWidth - 2);
            if (blank == std::string::npos || blank < continuation.size()) {
                break;
            }
            putLine(line.substr(0, blank + 1) + '\\');
            line.replace(0, blank + 1, continuation);
        }
        putLine(line);
    }
};

std::string escapeXml(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

class XmlWriter : public FileWriter
{
public:
    explicit XmlWriter(const std::string &file) : FileWriter(file)
    {
        putLine("<?xml version=\"1.0\"?>");
        putLine("<tree>");
        depth_ = 1;
    }

    void open(std::string_view type, std::string_view name) override
    {
        std::string line = indent().append("<").append(element(type));
        if (!name.empty()) {
            line.append(" name=\"").append(escapeXml(name)).append("\"");
        }
        putLine(line.append(">"));
        types_.emplace_back(element(type));
        ++depth_;
    }

    void parameter(std::string_view name, std::string_view value) override
    {
        putLine(indent()
                    .append("<param name=\"")
                    .append(escapeXml(name))
                    .append("\" value=\"")
                    .append(escapeXml(value))
                    .append("\"/>"));
    }

    void close() override
    {
        --depth_;
        putLine(indent().append("</").append(types_.back()).append(">"));
        types_.pop_back();
    }

    bool finish() override
    {
        putLine("</tree>");
        return FileWriter::finish();
    }

private:
    /// XML element names cannot contain spaces.
    static std::string element(std::string_view type)
    {
        std::string name(type);
        for (char &c : name) {
            if (c == ' ') {
                c = '_';
            }
        }
        return name;
    }

    std::vector<std::string> types_;
};

class JsonWriter : public FileWriter
{
public:
    explicit JsonWriter(const std::string &file) : FileWriter(file)
    {
        put("{");
        depth_ = 1;
    }

    void open(std::string_view type, std::string_view name) override
    {
        startMember(velJoinComponent(type, name));
        put("{");
        ++depth_;
        first_ = true;
    }

    void parameter(std::string_view name, std::string_view value) override
    {
        startMember(name);
        put(quote(value));
    }

    void close() override
    {
        --depth_;
        put("\n");
        put(indent().append("}"));
        first_ = false;
    }

    bool finish() override
    {
        close();
        put("\n");
        return FileWriter::finish();
    }

private:
    void startMember(std::string_view name)
    {
        put(first_ ? "\n" : ",\n");
        first_ = false;
        put(indent().append(quote(name)).append(": "));
    }

    static std::string quote(std::string_view text)
    {
        std::string quoted = "\"";
        for (const char c : text) {
            if (c == '"' || c == '\\') {
                quoted += '\\';
            }
            quoted += c;
        }
        return quoted + '"';
    }

    bool first_ = true;
};

class PathWriter : public FileWriter
{
public:
    using FileWriter::FileWriter;

    void open(std::string_view type, std::string_view name) override
    {
        ends_.push_back(path_.size());
        path_.append("/").append(velJoinComponent(type, name));
    }

    void parameter(std::string_view name, std::string_view) override
    {
        put(path_);
        put("/");
        putLine(name);
    }

    void close() override
    {
        path_.resize(ends_.back());
        ends_.pop_back();
    }

private:
    std::string path_;
    std::vector<std::size_t> ends_; ///< length of the path of each open block's parent
};

} // namespace

std::unique_ptr<TreeWriter> makeVelWriter(const std::string &file)
{
    return std::make_unique<VelWriter>(file);
}

std::unique_ptr<TreeWriter> makeXmlWriter(const std::string &file)
{
    return std::make_unique<XmlWriter>(file);
}

std::unique_ptr<TreeWriter> makeJsonWriter(const std::string &file)
{
    return std::make_unique<JsonWriter>(file);
}

std::unique_ptr<TreeWriter> makePathWriter(const std::string &file)
{
    return std::make_unique<PathWriter>(file);
}

} // namespace velBench
