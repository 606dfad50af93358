// The text that identifies a child in its parent: "TYPE:Name" for an object, "TYPE" for a
// singleton, "Name" for a parameter. Only this file makes such a text and splits it.
#pragma once

#include "velapilt/src/velTypes.h"

#include <string>
#include <string_view>

/// A component, split at its first ':'. The views are parts of its text.
struct velComponentParts
{
    std::string_view type; ///< the text before the ':'; all of it if there is none
    std::string_view name; ///< the text after it
    bool hasColon;
};

[[nodiscard]] constexpr velComponentParts velSplitComponent(std::string_view component)
{
    const std::size_t colon = component.find(':');
    if (colon == std::string_view::npos) {
        return {component, {}, false};
    }
    return {component.substr(0, colon), component.substr(colon + 1), true};
}

/// Appends the component of these words; either may be empty. Throws bad_alloc.
inline void velAppendComponent(std::string *text, std::string_view type, std::string_view name)
{
    *text += type;
    if (!type.empty() && !name.empty()) {
        *text += ':';
    }
    *text += name;
}

/// The component of these words as a text of its own. Throws bad_alloc.
[[nodiscard]] inline std::string velJoinComponent(std::string_view type, std::string_view name)
{
    std::string text;
    velAppendComponent(&text, type, name);
    return text;
}

/// The component of a child that a query gave. Throws bad_alloc.
[[nodiscard]] inline std::string velComponentOf(const velChildInfo &child)
{
    const bool isNamedObject = std::string_view(child.className) == "Object";
    return isNamedObject ? velJoinComponent(child.type, child.name) : child.name;
}
