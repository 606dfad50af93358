// A rule library for the programs that a test runs.
#pragma once

#include "tools/veltool/tests/toolRun.h"

#include <cstdlib>
#include <optional>

namespace veltool::test {

/// Sets the library in the environment. The destructor restores the previous
/// settings.
class OwnRules
{
public:
    explicit OwnRules(const std::string &text)
        : folder_(get("ZOT5_VEL_LIBSDIR")), names_(get("ZOT5_VEL_LIBS"))
    {
        rules_.write("rules.vel", text);
        setenv("ZOT5_VEL_LIBSDIR", rules_.path().c_str(), 1);
        setenv("ZOT5_VEL_LIBS", "rules.vel", 1);
    }

    ~OwnRules()
    {
        restore("ZOT5_VEL_LIBSDIR", folder_);
        restore("ZOT5_VEL_LIBS", names_);
    }

    OwnRules(const OwnRules &) = delete;
    OwnRules &operator=(const OwnRules &) = delete;

    [[nodiscard]] std::string path() const { return rules_.path("rules.vel"); }

private:
    using Former = std::optional<std::string>;

    static Former get(const char *name)
    {
        const char *value = std::getenv(name);
        return value != nullptr ? Former(value) : std::nullopt;
    }

    static void restore(const char *name, const Former &value)
    {
        if (value) {
            setenv(name, value->c_str(), 1);
        } else {
            unsetenv(name);
        }
    }

    TemporaryFolder rules_;
    Former folder_;
    Former names_;
};

} // namespace veltool::test
