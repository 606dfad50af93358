// Compares calls of Perl methods with the cheapest possible call.
#include "bench/compare/comparisons.h"

#include "bench/compare/side.h"
#include "bench/velbench/measure.h"
#include "velparser/api/velBench.h"

namespace velBench {

namespace {

constexpr const char *setting = R"(
    package VEL::Bench;
    our $lite = VEL::Parser::Lite::NEW();
    our $path = '/FLOW/DOMAIN:Duct/Option';
    $lite->createObject('/FLOW', 0);
    $lite->createObject('/FLOW/DOMAIN:Duct', 0);
    $lite->createParam($path, 'Fluid Dependent');
    our $text;
    sub lookUp { for (1 .. 200_000) { $lite->getStringValue($path, \$text) } }
    sub clean { for (1 .. 200_000) { $text = VEL::Parser::Lite::cleanPath($path) } }
    sub barest { for (1 .. 200_000) { $text = $lite->VEL::Bench::echo($path) } }
    1;
)";

Side perlSide(const char *call)
{
    return {[] {}, [call] { require(velparser::evalPerl(call, nullptr)); }};
}

} // namespace

void comparePerl()
{
    require(velparser::registerEchoMethod());
    require(velparser::evalPerl(setting, nullptr));
    Side lookUp = perlSide("VEL::Bench::lookUp()");
    Side clean = perlSide("VEL::Bench::clean()");
    Side barest = perlSide("VEL::Bench::barest()");
    compare({&lookUp, &clean, &barest});
    report("Lite getStringValue", lookUp, "barest XS method", barest, 1.5);
    report("Lite cleanPath", clean, "barest XS method", barest, 1.5);
}

} // namespace velBench
