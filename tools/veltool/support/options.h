// How a command declares its options. Only options.cpp and the command line include
// CLI11, because it compiles slowly.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace veltool {

/// The options of one command. `names` are separated by commas ("--output,-o").
/// The help shows `type` in place of the value, and the explanation `help`. `value`
/// is set when the command line is parsed and must live until then; without the
/// option it does not change.
class Options
{
public:
    /// `app` gets the options; it is not owned.
    explicit Options(CLI::App &app) : app_(app) {}

    void flag(const char *names, bool &value, const char *help);

    /// `usual` is the default that the help shows; null if it shows none.
    void text(const char *names, const char *type, std::string &value, const char *help,
              const char *usual = nullptr);

    /// The option may be repeated; each time it adds a text.
    void texts(const char *names, const char *type, std::vector<std::string> &values,
               const char *help);

    void number(const char *names, const char *type, std::int32_t &value, const char *help);

    /// The number must be from `least` to `most`.
    void number(const char *names, const char *type, std::int32_t &value, std::int32_t least,
                std::int32_t most, const char *help);

    /// Only one of these options may be used; each is given by one of its names.
    void atMostOneOf(std::initializer_list<const char *> names);

private:
    CLI::App &app_;
};

} // namespace veltool
