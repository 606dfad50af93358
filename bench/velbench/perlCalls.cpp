// Measures calls of the embedded Perl interpreter.
#include "bench/velbench/calls.h"

#include "velparser/api/velBench.h"

namespace velBench {

namespace {

constexpr std::uint64_t calls = 200000;

constexpr const char *setting = R"(
    package VEL::Bench;
    sub API::benchCall { return }
    our $path = '/FLOW/DOMAIN:Duct/Option';
    our $text;
    sub callMethod { for (1 .. 200_000) { $text = VEL::Parser::Lite::cleanPath($path) } }
    1;
)";

void start()
{
    require(velparser::evalPerl(setting, nullptr));
}

Result measure(const char *name, const std::function<void()> &work)
{
    Result result{.name = name, .params = calls};
    start();
    work();
    const std::int64_t before = residentBytes();
    result.seconds = bestOf([] {}, work);
    result.rss = residentBytes() - before;
    return result;
}

} // namespace

Result perlCall(const Arguments &)
{
    return measure("perl.call", [] {
        for (std::uint64_t i = 0; i < calls; ++i) {
            require(velparser::callPerlMethod("benchCall", "/FLOW"));
        }
    });
}

Result perlMethod(const Arguments &)
{
    return measure("perl.method",
                   [] { require(velparser::evalPerl("VEL::Bench::callMethod()", nullptr)); });
}

} // namespace velBench
