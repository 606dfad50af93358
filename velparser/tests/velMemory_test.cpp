// Memory that runs out in the bridge's own code, at every allocation in turn:
// no exception leaves a public function.
#include "velparser/tests/fakeParser.h"

#include "velparser/api/velparser.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <string>

namespace {

/// Allocations that still succeed; below zero: all.
long allowed = -1;

void *allocate(std::size_t size)
{
    if (allowed == 0)
        return nullptr;
    if (allowed > 0)
        --allowed;
    return std::malloc(size ? size : 1);
}

} // namespace

void *operator new(std::size_t size)
{
    if (void *memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use VEL::Parser::Lite;
our $object;
sub new { return $object = bless { database => VEL::Parser::Lite::NEW() }, shift }
sub readLibraries {
    my $name = 'a' x 40;
    return $_[0]{database}->loadVELData([ "FLOW: $name", "Parameter $name = $name", 'END' ]);
}
sub parseVELData { return $_[0]{database}->loadVELData($_[1]) }
sub getAllowedParamStrings { @{$_[2]} = ('a value that is long enough for the heap') x 5; return }
sub getAllowedParams { @{$_[2]} = ('a name that is long enough for the heap') x 5; return }
sub isParamEditable { VEL::Parser::Lite::cleanPath("/A / " . $_[1]); return 1 }
1;
)perl";

const char validator[] = R"perl(
package VEL::Validate;
sub new { return bless { database => $_[1] } }
sub validateObject { return 'a finding that is long enough for the heap' }
sub validateParam { return 'a finding that is long enough for the heap' }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}, {"VEL/Validate.pm", validator}});

const std::string name(40, 'a');
const std::string object = "/FLOW:" + name;
const std::string parameter = object + "/Parameter " + name;

/// Runs the call with 0, 1, 2, … allocations allowed until it no longer runs
/// out. Gives how often it did.
int failures(const std::function<void()> &call)
{
    for (int count = 0;; ++count) {
        allowed = count;
        call();
        const bool ranOut = allowed == 0;
        allowed = -1;
        if (!ranOut)
            return count;
    }
}

class VelMemory : public testing::Test
{
protected:
    void SetUp() override { ASSERT_STREQ(velparser::readVELLibraries(), nullptr); }
};

TEST_F(VelMemory, QuestionsAndChanges)
{
    std::optional<std::string> value;
    velStringList list;
    EXPECT_GT(failures([&] { (void)velparser::getStringValue(parameter.c_str(), &value); }), 0);
    failures([] { (void)velparser::setStringValue(parameter.c_str(), name.c_str()); });
    failures([&] { (void)velparser::getFormattedVEL("/", 20, &list); });
    failures([] { (void)velparser::pushPathH(object.c_str()); });
    for (int i = 0; i < 100; ++i)
        failures([] { (void)velparser::popPathH(); });
    failures([] { (void)velparser::isVELLibrary(object.c_str()); });
    EXPECT_GT(failures([&] { (void)velparser::getAllowedParamStrings("/A", &list); }), 0);
    EXPECT_GT(failures([&] { (void)velparser::getAllowedParams("/A", &list, 0); }), 0);
    EXPECT_EQ(list.size(), 5u);
    std::vector<velChildInfo> children;
    std::vector<velGroupInfo> groups;
    failures([&] { (void)velparser::getChildList(object.c_str(), &children, &groups); });
    EXPECT_EQ(children.size(), 1u);
    failures([] { (void)velparser::deleteParam(parameter.c_str()); });
    failures([] { (void)velparser::deleteObj(object.c_str()); });
}

TEST_F(VelMemory, AMethodThatIsCalledFromPerl)
{
    EXPECT_GT(failures([] { (void)velparser::isParamEditable(parameter.c_str()); }), 0);
    EXPECT_EQ(velparser::isParamEditable(parameter.c_str()), 1);
}

TEST_F(VelMemory, Loading)
{
    const std::string line = "Parameter " + name + " = " + name;
    const char *lines[] = {line.c_str()};
    EXPECT_GT(failures([&] { (void)velparser::loadVELData(lines, 1); }), 0);
    EXPECT_STREQ(velparser::loadVELData(lines, 1), nullptr);
}

TEST_F(VelMemory, Validation)
{
    EXPECT_GT(failures([] { (void)velparser::validateVELDataH(); }), 0);
    EXPECT_GT(failures([] { (void)velparser::validateVELObjectH(object.c_str()); }), 0);
    EXPECT_GT(failures([] { (void)velparser::validateParameter(parameter.c_str()); }), 0);
    EXPECT_STREQ(velparser::validateParameter(parameter.c_str()),
                 "a finding that is long enough for the heap");
}

TEST_F(VelMemory, AScript)
{
    const std::string script = parser.write("script.pl", "our $ran++;\n");
    const std::vector<std::string> words{name};
    EXPECT_GT(failures([&] { (void)velparser::runPerlScript(script, words, nullptr); }), 0);
    EXPECT_NE(perl("$main::ran"), "0");
}

} // namespace
