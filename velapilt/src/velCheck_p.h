// Which characters a type, a name and a value may have. Each check returns null or the
// message.
#pragma once

#include <string_view>

struct velHandle;

[[nodiscard]] const char *velCheckType(velHandle *handle, std::string_view type);
[[nodiscard]] const char *velCheckObjectName(velHandle *handle, std::string_view name);
[[nodiscard]] const char *velCheckParamName(velHandle *handle, std::string_view name);
[[nodiscard]] const char *velCheckValue(velHandle *handle, std::string_view value);
