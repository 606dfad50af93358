// Writers of one tree in several notations.
//
// A generator drives a writer through its events, blocks properly nested; each
// writer turns them into one notation and one file. The notations hold the
// same things: a VEL block `TYPE: Name`, an XML element <TYPE name="Name">, a
// JSON member "TYPE:Name" with an object; a parameter is a VEL assignment, an
// XML element with its name and value as attributes, a JSON member with a
// string.
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

    /// After the last event. False when not everything could be written.
    [[nodiscard]] virtual bool finish() = 0;
};

/// VEL text, indented by two, long lines continued as the editor saves them.
std::unique_ptr<TreeWriter> makeVelWriter(const std::string &file);
/// XML and JSON with the same indentation.
std::unique_ptr<TreeWriter> makeXmlWriter(const std::string &file);
std::unique_ptr<TreeWriter> makeJsonWriter(const std::string &file);
/// The full path of every parameter, one a line, in the order of the tree.
std::unique_ptr<TreeWriter> makePathWriter(const std::string &file);

} // namespace velBench
