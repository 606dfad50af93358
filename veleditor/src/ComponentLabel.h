// The words that open an object, on its row and in command text: "TYPE : Name" for
// the component "TYPE:Name", "TYPE :" for the singleton "TYPE".
#pragma once

#include "velapilt/src/velComponentText.h"
#include "veltext/objectBlock.h"

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

using veltext::componentOfLabel;

} // namespace velEditor
