// How a command declares its options. The library behind them, CLI11, is slow to
// compile, so only options.cpp and the command line include it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace veltool {

/// The options of one command. `names` are separated by commas ("--output,-o"),
/// `type` is the word that the help shows for the value, and `help` is its
/// explanation. A value is written when the command line is read, so it must
/// live until then; without the option it keeps what it has.
class Options
{
public:
    /// Adds to `app`, which is not owned.
    explicit Options(CLI::App &app) : app_(app) {}

    void flag(const char *names, bool &value, const char *help);

    /// `usual` is what the help shows as the default, if it shows one.
    void text(const char *names, const char *type, std::string &value, const char *help,
              const char *usual = nullptr);

    /// May be repeated; each occurrence adds one text.
    void texts(const char *names, const char *type, std::vector<std::string> &values,
               const char *help);

    void number(const char *names, const char *type, std::int32_t &value, const char *help);

    /// From `least` to `most`.
    void number(const char *names, const char *type, std::int32_t &value, std::int32_t least,
                std::int32_t most, const char *help);

    /// At most one of these options, each given by one of its names, may be used.
    void atMostOneOf(std::initializer_list<const char *> names);

private:
    CLI::App &app_;
};

} // namespace veltool
