// One look at a line: what in it needs more than the plain way.
#pragma once

#include <cstdint>
#include <string_view>

struct velLineTraits
{
    bool needsRewriting; ///< a '#', white space other than single blanks
    bool hasControl;     ///< a control character that is no white space
};

[[nodiscard]] velLineTraits velScanLine(std::string_view line);
