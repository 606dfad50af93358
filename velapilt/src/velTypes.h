// The plain records that the database gives to its callers, and they to their callers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The number of columns to which a command file is wrapped by default. The documents state
/// the number too.
inline constexpr std::int32_t velUsualWidth = 79;

/// What a node is.
enum velKind : std::uint32_t {
    velNone = 0,
    velParam = 1,     ///< a name and a value
    velObject = 2,    ///< a type and a name
    velSingleton = 3, ///< only a type; at most one of each type in a parent
};

/// A child in a list of children.
struct velChildInfo
{
    std::string name;      ///< of a Singleton its type
    const char *className; ///< "Param", "Object" or "Singleton"
    std::string type;      ///< "String" for a Parameter
};

/// The children that share kind and type.
struct velGroupInfo
{
    const char *className; ///< "Parameter", "Object" or "Singleton"
    std::string type;
    std::vector<std::int32_t> indices; ///< positions among the children, descending
};
