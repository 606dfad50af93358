// The words that open an object, on its row and in command text: "TYPE : Name" for
// the component "TYPE:Name", "TYPE :" for the singleton "TYPE".
#pragma once

#include "velapilt/src/velComponentText.h"

#include <string>
#include <string_view>

namespace velEditor {

/// The label of an object or singleton. A name keeps the colons in it.
[[nodiscard]] inline std::string labelOf(std::string_view component)
{
    const velComponentParts parts = velSplitComponent(component);
    std::string label(parts.type);
    label += parts.hasColon ? " : " : " :";
    return label.append(parts.name);
}

/// The component of what a label opens: `labelOf` the other way round.
[[nodiscard]] inline std::string componentOfLabel(std::string_view label)
{
    const std::size_t end = label.find(" :");
    std::string component(label.substr(0, end));
    if (end != std::string_view::npos && end + 2 < label.size()) {
        component.append(":").append(label.substr(end + 3));
    }
    return component;
}

} // namespace velEditor
