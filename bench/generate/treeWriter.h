// Writes one tree in several notations.
//
// A generator calls the writer with a sequence of nested events. Each writer
// turns them into one file in one notation:
//
// | tree      | VEL            | XML                              | JSON             |
// |-----------|----------------|----------------------------------|------------------|
// | block     | `TYPE: Name`   | <TYPE name="Name">               | "TYPE:Name": {…} |
// | parameter | `Name = Value` | <param name="Name" value="…"/>   | "Name": "Value"  |
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velBench {

/// Receives the events of one tree.
class TreeWriter
{
public:
    virtual ~TreeWriter() = default;

    /// Opens a block; an empty name makes a singleton.
    virtual void open(std::string_view type, std::string_view name) = 0;
    virtual void parameter(std::string_view name, std::string_view value) = 0;
    virtual void close() = 0;

    /// Ends the file after the last event. False if not everything was written.
    [[nodiscard]] virtual bool finish() = 0;
};

/// Writes VEL, indented by two, with long lines continued as the editor does.
std::unique_ptr<TreeWriter> makeVelWriter(const std::string &file);
/// Write XML and JSON with the same indentation.
std::unique_ptr<TreeWriter> makeXmlWriter(const std::string &file);
std::unique_ptr<TreeWriter> makeJsonWriter(const std::string &file);
/// Writes the full path of every parameter, one per line, in the tree's order.
std::unique_ptr<TreeWriter> makePathWriter(const std::string &file);

} // namespace velBench
