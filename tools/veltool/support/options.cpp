// Declares the options of a command with CLI11.
#include "tools/veltool/support/options.h"

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>

namespace veltool {

void Options::flag(const char *names, bool &value, const char *help)
{
    app_.add_flag(names, value, help);
}

void Options::text(const char *names, const char *type, std::string &value, const char *help,
                   const char *usual)
{
    CLI::Option *option = app_.add_option(names, value, help)->type_name(type);
    if (usual != nullptr) {
        option->default_str(usual);
    }
}

void Options::texts(const char *names, const char *type, std::vector<std::string> &values,
                    const char *help)
{
    app_.add_option(names, values, help)->type_name(type);
}

void Options::number(const char *names, const char *type, std::int32_t &value, const char *help)
{
    app_.add_option(names, value, help)->type_name(type);
}

void Options::number(const char *names, const char *type, std::int32_t &value, std::int32_t least,
                     std::int32_t most, const char *help)
{
    // The description is empty, because the help already shows the range.
    app_.add_option(names, value, help)
        ->type_name(type)
        ->check(CLI::Range(least, most).description(""));
}

void Options::atMostOneOf(std::initializer_list<const char *> names)
{
    for (auto first = names.begin(); first != names.end(); ++first) {
        for (auto second = first + 1; second != names.end(); ++second) {
            app_.get_option(*first)->excludes(app_.get_option(*second));
        }
    }
}

} // namespace veltool
