// Lack of memory in the bridge's own code, at every allocation in turn: no exception leaves
// a public function.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"

#include <cstdlib>
#include <functional>
#include <new>
#include <set>
#include <string>
#include <vector>

namespace {

/// The number of allocations that still succeed; below zero: all.
long allowed = -1;

/// Whether one has failed since this was last reset.
bool ranOut = false;

void *allocate(std::size_t size)
{
    if (allowed == 0) {
        ranOut = true;
        return nullptr;
    }
    if (allowed > 0) {
        --allowed;
    }
    return std::malloc(size ? size : 1);
}

} // namespace

// Inlined into a caller, one of them alone looks like a mismatch to the compiler.
[[gnu::noinline]] void *operator new(std::size_t size)
{
    if (void *memory = allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size);
}

[[gnu::noinline]] void operator delete(void *memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void *memory, std::size_t) noexcept
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
sub getAllowedParamStrings { @{$_[2]} = ('a value that is long enough for the heap') x 8; return }
sub getAllowedParams { @{$_[2]} = ('a name that is long enough for the heap') x 8; return }
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

/// Runs the call with 0, 1, 2, … allowed allocations until none fails. Returns the number of
/// runs in which one failed.
int failures(const std::function<void()> &call)
{
    for (int count = 0;; ++count) {
        ranOut = false;
        allowed = count;
        call();
        allowed = -1;
        if (!ranOut) {
            return count;
        }
    }
}

/// The messages of the call without enough memory, each text once.
std::set<std::string> complaints(const std::function<const char *()> &call)
{
    std::set<std::string> said;
    const char *message = nullptr;
    for (int count = 0;; ++count) {
        ranOut = false;
        allowed = count;
        message = call();
        allowed = -1;
        if (!ranOut) {
            return said;
        }
        said.insert(message != nullptr ? message : "(null)");
    }
}

/// The call without any memory.
template <class Call>
auto withNothing(Call call)
{
    allowed = 0;
    auto result = call();
    allowed = -1;
    return result;
}

// This must be the first test: before all others there is an instance already.
TEST(VelMemoryFirst, AnInterpreterWithoutAnInstance)
{
    const char *error = nullptr;
    int count = 0;
    do {
        allowed = count++;
        error = velparser::startVELParser();
        allowed = -1;
    } while (error != nullptr);
    ASSERT_EQ(velparser::defaultInstance(), nullptr);

    velStringList list;
    const char *const line = "A = 1";
    for (const std::function<const char *()> &call : std::vector<std::function<const char *()>>{
             [] { return velparser::updateSolverVEL(); },
             [] { return velparser::readVELLibraries(); },
             [] { return velparser::loadVELFromFile("x", "vel"); },
             [&] { return velparser::loadVELData(&line, 1); },
             [&] { return velparser::getAllowedParamStrings("/A", &list); },
             [&] { return velparser::getAllowedParams("/A", &list, 0); },
         }) {
        EXPECT_STREQ(withNothing(call), "Invalid (NULL) instance handle");
    }
    EXPECT_STREQ(withNothing([] { return velparser::setStringValue("/A", "1"); }),
                 "setStringValue: error finding Lite API handle");
    testing::internal::CaptureStderr();
    EXPECT_EQ(withNothing([] { return velparser::isItemExpert("/A"); }), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "VEL API error: Invalid (NULL) instance handle\n");
    EXPECT_STREQ(velparser::startVELParser(), nullptr);
    EXPECT_NE(velparser::defaultInstance(), nullptr);
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
    EXPECT_GT(
        failures([&] { static_cast<void>(velparser::getStringValue(parameter.c_str(), &value)); }),
        0);
    failures([] { static_cast<void>(velparser::setStringValue(parameter.c_str(), name.c_str())); });
    failures([&] { static_cast<void>(velparser::getFormattedVEL("/", 20, &list)); });
    failures([] { static_cast<void>(velparser::pushPathH(object.c_str())); });
    for (int i = 0; i < 100; ++i) {
        failures([] { static_cast<void>(velparser::popPathH()); });
    }
    failures([] { static_cast<void>(velparser::isVELLibrary(object.c_str())); });
    EXPECT_EQ(complaints([&] { return velparser::getAllowedParamStrings("/A", &list); }),
              (std::set<std::string>{"getAllowedParamStrings: cannot malloc text",
                                     "getAllowedParamStrings: cannot malloc (*text)[i]"}));
    EXPECT_EQ(list.size(), 8u);
    EXPECT_EQ(complaints([&] { return velparser::getAllowedParams("/A", &list, 0); }),
              (std::set<std::string>{"getAllowedParams: cannot malloc text",
                                     "getAllowedParams: cannot malloc (*text)[i]"}));
    EXPECT_EQ(list.size(), 8u);
    std::vector<velChildInfo> children;
    std::vector<velGroupInfo> groups;
    failures(
        [&] { static_cast<void>(velparser::getChildList(object.c_str(), &children, &groups)); });
    EXPECT_EQ(children.size(), 1u);
    failures([] { static_cast<void>(velparser::deleteParam(parameter.c_str())); });
    failures([] { static_cast<void>(velparser::deleteObj(object.c_str())); });
}

TEST_F(VelMemory, AMethodThatIsCalledFromPerl)
{
    EXPECT_GT(failures([] { static_cast<void>(velparser::isParamEditable(parameter.c_str())); }),
              0);
    EXPECT_EQ(velparser::isParamEditable(parameter.c_str()), 1);
}

TEST_F(VelMemory, Loading)
{
    const std::string line = "Parameter " + name + " = " + name;
    const char *lines[] = {line.c_str()};
    EXPECT_GT(failures([&] { static_cast<void>(velparser::loadVELData(lines, 1)); }), 0);
    EXPECT_STREQ(velparser::loadVELData(lines, 1), nullptr);
}

TEST_F(VelMemory, Validation)
{
    const std::set<std::string> said = complaints([] { return velparser::validateVELDataH(); });
    EXPECT_EQ(said.count("initValidationData: memory error"), 1u);
    EXPECT_EQ(said.count("velValidationDriver: memory error"), 1u);
    EXPECT_EQ(said.count("(null)"), 0u);
    EXPECT_GT(failures([] { static_cast<void>(velparser::validateVELObjectH(object.c_str())); }),
              0);
    EXPECT_GT(failures([] { static_cast<void>(velparser::validateParameter(parameter.c_str())); }),
              0);
    EXPECT_STREQ(velparser::validateParameter(parameter.c_str()),
                 "a finding that is long enough for the heap");
}

TEST_F(VelMemory, AScript)
{
    const std::string script = parser.write("script.pl", "our $ran++;\n");
    const std::vector<std::string> words{name};
    EXPECT_GT(
        failures([&] { static_cast<void>(velparser::runPerlScript(script, words, nullptr)); }), 0);
    EXPECT_NE(perl("$main::ran"), "0");
}

} // namespace
