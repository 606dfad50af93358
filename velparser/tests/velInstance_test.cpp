// Instances that the test makes, each with its own Perl object.
#include "velparser/tests/fakeParser.h"

#include <gtest/gtest.h>

#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"
#include "velparser/api/xsinit_p.h"

#include <string>

namespace {

const char fakeApi[] = R"perl(
package API;
use strict;
use VEL::Parser::Lite;
our $new = sub { return bless { database => VEL::Parser::Lite::NEW() }, shift };
our @calls;
sub new { push @calls, "new(@_)"; return $new->(@_) }
sub give { return $_[1] }
sub giveBytes { return pack 'H*', $_[1] }
sub giveNothing { return }
sub giveUndef { return undef }
sub giveList { return (7, 8, 9) }
sub giveNumber { return 0 + $_[1] }
sub isYes { return $_[1] eq 'yes' }
sub join { my $self = shift; return ref($self) . ':' . CORE::join('|', @_) }
sub dies { die $_[1] }
sub diesWithObject { die Text->new($_[1]) }
sub giveObject { return Text->new($_[1]) }
sub fill { my ($self, $path, $array) = @_; @$array = ($path, 2); return }
sub fillAndFail { my ($self, $path, $array) = @_; @$array = ($path, 2); return 'failed' }
sub leaveLoop { no warnings; last; return 'not left' }

package Text;
use overload '""' => sub { die "no text\n" if $_[0]{text} eq 'broken'; return $_[0]{text} },
    'bool' => sub { die "no truth\n" };
sub new { return bless { text => $_[1] }, $_[0] }
1;
)perl";

const FakeParser parser({{"API.pm", fakeApi}});

class VelInstance : public testing::Test
{
protected:
    void SetUp() override { ASSERT_STREQ(velparser::startVELParser(), nullptr); }

    void TearDown() override
    {
        pTHX = velparser::velInterpreter();
        SvREFCNT_dec(instance_.api);
        SvREFCNT_dec(instance_.message);
    }

    velparser::velInstance *ready()
    {
        EXPECT_STREQ(velparser::initVELInstance(&instance_), nullptr);
        return &instance_;
    }

    std::string call(const char *method, std::initializer_list<const char *> arguments)
    {
        return shown(velparser::callVELInstanceMethod(ready(), method, arguments));
    }

    int callInt(const char *method, std::initializer_list<const char *> arguments)
    {
        return velparser::callVELInstanceMethodInt(ready(), method, arguments);
    }

    std::string message()
    {
        pTHX = velparser::velInterpreter();
        return instance_.message != nullptr ? SvPV_nolen(instance_.message) : "(none)";
    }

    /// An instance whose API::new is this code.
    std::string initWith(const std::string &code)
    {
        EXPECT_EQ(perl("$API::kept = $API::new; $API::new = sub {" + code + "}; 1"), "1");
        std::string result = shown(velparser::initVELInstance(&instance_));
        EXPECT_EQ(perl("$API::new = $API::kept; 1"), "1");
        return result;
    }

    velparser::velInstance instance_;
};

// --- Making the object ------------------------------------------------------

TEST_F(VelInstance, NewIsCalledAsAClassMethodAndOnce)
{
    EXPECT_EQ(perl("@API::calls = (); 1"), "1");
    EXPECT_STREQ(velparser::initVELInstance(&instance_), nullptr);
    EXPECT_STREQ(velparser::initVELInstance(&instance_), nullptr);
    EXPECT_EQ(perl("CORE::join(' ', @API::calls)"), "new(API)");
}

TEST_F(VelInstance, NewDies)
{
    EXPECT_EQ(initWith("die qq{no object\\n}"), "no object\n");
    EXPECT_EQ(instance_.api, nullptr);
    EXPECT_EQ(initWith("bless {}"), "(null)");
}

TEST_F(VelInstance, NewGivesUndef)
{
    EXPECT_EQ(initWith("undef"), "Error creating new API object in initVELInstance");
    EXPECT_EQ(initWith("return"), "Error creating new API object in initVELInstance");
    EXPECT_EQ(velparser::findLiteHandle(&instance_) != nullptr, true);
}

TEST_F(VelInstance, NewIsNotThere)
{
    EXPECT_EQ(perl("@API::kept = (\\&API::new, \\$API::new); delete $API::{new}; 1"), "1");
    EXPECT_EQ(shown(velparser::initVELInstance(&instance_)).substr(0, 37),
              "Undefined subroutine &API::new called");
    EXPECT_EQ(perl("*API::new = $_ for @API::kept; 1"), "1");
}

TEST_F(VelInstance, NewIsCalledInScalarContext)
{
    EXPECT_EQ(initWith("wantarray ? die : bless {}"), "(null)");
}

TEST_F(VelInstance, NoInstance)
{
    EXPECT_STREQ(velparser::initVELInstance(nullptr), "Invalid (NULL) instance handle");
    EXPECT_EQ(velparser::findLiteHandle(nullptr), nullptr);
    EXPECT_STREQ(velparser::callVELInstanceMethod(nullptr, "give", {}),
                 "Invalid (NULL) instance handle");
    EXPECT_STREQ(velparser::callVELInstanceMethod(&instance_, "give", {}),
                 "Invalid (uninitialized) instance handle");
}

TEST_F(VelInstance, NoInstanceForAnInteger)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(velparser::callVELInstanceMethodInt(nullptr, "give", {}), -1);
    EXPECT_EQ(velparser::callVELInstanceMethodInt(&instance_, "give", {}), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "VEL API error: Invalid (NULL) instance handle\n"
              "VEL API error: Invalid (uninitialized) instance handle\n");
}

// --- Results that are texts ---------------------------------------------------

TEST_F(VelInstance, TextsThatMeanSuccess)
{
    EXPECT_EQ(call("giveUndef", {}), "(null)");
    EXPECT_EQ(call("giveNothing", {}), "(null)");
    EXPECT_EQ(call("give", {""}), "(null)");
}

TEST_F(VelInstance, TextsThatMeanFailure)
{
    EXPECT_EQ(call("give", {"a message"}), "a message");
    EXPECT_EQ(call("giveNumber", {"0"}), "0");
    EXPECT_EQ(call("giveList", {}), "9");
}

TEST_F(VelInstance, ArgumentsEndAtNull)
{
    EXPECT_EQ(call("join", {"a", "", "b c", nullptr, "d"}), "API:a||b c");
    EXPECT_EQ(call("join", {}), "API:");
}

TEST_F(VelInstance, DyingIsAFailure)
{
    EXPECT_EQ(call("dies", {"with a text\n"}), "with a text\n");
    EXPECT_EQ(call("diesWithObject", {"a text of its own"}), "a text of its own");
    EXPECT_EQ(call("diesWithObject", {"broken"}), "(an object whose text cannot be made)");
    EXPECT_EQ(call("noSuchMethod", {}).substr(0, 41),
              "Can't locate object method \"noSuchMethod\"");
}

TEST_F(VelInstance, ObjectsAreTakenAsTheirText)
{
    EXPECT_EQ(call("giveObject", {"the text"}), "the text");
    EXPECT_EQ(call("giveObject", {""}), "(null)");
    EXPECT_EQ(call("giveObject", {"broken"}), "(an object whose text cannot be made)");
}

TEST_F(VelInstance, TextsAreBytes)
{
    EXPECT_EQ(call("give", {"Stra\xc3\x9f"
                            "e"}),
              "Stra\xc3\x9f"
              "e");
    EXPECT_EQ(perl("\"\\x{e4}\""), "\xe4");
    EXPECT_EQ(perl("my $t = \"\\x{e4}\"; utf8::upgrade($t); $t"), "\xe4");
    EXPECT_EQ(perl("\"\\x{e4}\\x{20ac}\""), "\xc3\xa4\xe2\x82\xac");
}

TEST_F(VelInstance, TextsEndAtTheirFirstNul)
{
    EXPECT_EQ(call("giveBytes", {"410042"}), "A");
    EXPECT_EQ(call("giveBytes", {"0041"}), "(null)") << "a result that begins with one is empty";
    EXPECT_EQ(call("giveBytes", {"00"}), "(null)");
}

TEST_F(VelInstance, TheMessageLivesUntilTheNextCall)
{
    const char *first = velparser::callVELInstanceMethod(ready(), "give", {"first"});
    EXPECT_STREQ(first, "first");
    EXPECT_EQ(message(), "first");
    EXPECT_EQ(call("giveUndef", {}), "(null)");
    EXPECT_EQ(message(), "first");
    EXPECT_EQ(call("give", {"second"}), "second");
    EXPECT_EQ(message(), "second");
}

TEST_F(VelInstance, LoopControlsEndAtTheCall)
{
    EXPECT_EQ(call("leaveLoop", {}).substr(0, 36), "Can't \"last\" outside a loop block at");
}

// --- Results that are integers --------------------------------------------------

TEST_F(VelInstance, IntegersOnly)
{
    EXPECT_EQ(callInt("giveNumber", {"1"}), 1);
    EXPECT_EQ(callInt("giveNumber", {"-5"}), -5);
    EXPECT_EQ(callInt("give", {"1"}), -1);
    EXPECT_EQ(message(), "1");
    EXPECT_EQ(callInt("giveNumber", {"0.5"}), -1);
    EXPECT_EQ(callInt("isYes", {"yes"}), 1);
    EXPECT_EQ(callInt("isYes", {"no"}), 0);
    EXPECT_EQ(callInt("giveUndef", {}), -1);
    EXPECT_EQ(callInt("giveNothing", {}), -1);
}

TEST_F(VelInstance, TheLow32BitsOfAnInteger)
{
    EXPECT_EQ(callInt("giveNumber", {"4294967297"}), 1);
    EXPECT_EQ(callInt("giveNumber", {"2147483648"}), -2147483647 - 1);
    EXPECT_EQ(callInt("giveNumber", {"18446744073709551614"}), -2);
}

TEST_F(VelInstance, DyingInsteadOfAnInteger)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(callInt("dies", {"why\n"}), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(message(), "why\n");
    EXPECT_EQ(callInt("giveObject", {"broken"}), -1);
}

// --- Arrays ------------------------------------------------------------------------

TEST_F(VelInstance, AnArrayStaysTheCallersOnSuccess)
{
    velparser::velInstance *instance = ready();
    pTHX = velparser::velInterpreter();
    AV *array = newAV();
    EXPECT_STREQ(velparser::getAnyValue(instance, "fill", "/a/path", array), nullptr);
    EXPECT_EQ(SvREFCNT(array), 1u);
    ASSERT_EQ(av_count(array), 2u);
    EXPECT_STREQ(SvPV_nolen(*av_fetch(array, 0, 0)), "/a/path");
    SvREFCNT_dec_NN(MUTABLE_SV(array));
}

TEST_F(VelInstance, AnArrayIsGivenUpOnFailure)
{
    velparser::velInstance empty;
    velparser::velInstance *instance = ready();
    pTHX = velparser::velInterpreter();
    AV *array = newAV();
    SvREFCNT_inc_simple_void_NN(MUTABLE_SV(array));
    SvREFCNT_inc_simple_void_NN(MUTABLE_SV(array));
    SvREFCNT_inc_simple_void_NN(MUTABLE_SV(array));
    SvREFCNT_inc_simple_void_NN(MUTABLE_SV(array));
    EXPECT_STREQ(velparser::getAnyValue(instance, "fillAndFail", "/a", array), "failed");
    EXPECT_EQ(SvREFCNT(array), 4u);
    EXPECT_STREQ(velparser::getAnyValue(instance, "fill", nullptr, array),
                 "Invalid path in getAnyValue");
    EXPECT_EQ(SvREFCNT(array), 3u);
    EXPECT_STREQ(velparser::getAnyValue(nullptr, "fill", "/a", array),
                 "Invalid (NULL) instance handle");
    EXPECT_STREQ(velparser::getAnyValue(&empty, "fill", "/a", array),
                 "Invalid (uninitialized) instance handle");
    EXPECT_EQ(SvREFCNT(array), 1u);
    SvREFCNT_dec_NN(MUTABLE_SV(array));
}

// --- The database of the object -------------------------------------------------------

TEST_F(VelInstance, TheDatabaseIsFoundOnceAndKept)
{
    velHandle *first = velparser::findLiteHandle(ready());
    ASSERT_NE(first, nullptr);
    pTHX = velparser::velInterpreter();
    HV *object = MUTABLE_HV(SvRV(instance_.api));
    hv_stores(object, "database", newSVpvs("replaced"));
    EXPECT_EQ(velparser::findLiteHandle(&instance_), first);
    // Now only the instance has it.
    EXPECT_STREQ(velCreateParam(first, "/A", "1"), nullptr);
    EXPECT_EQ(havePath(first, "/A"), 1);
}

TEST_F(VelInstance, TheDatabaseCannotBeTakenAway)
{
    ASSERT_EQ(initWith("bless { database => $API::taken = VEL::Parser::Lite::NEW() }"), "(null)");
    velHandle *handle = velparser::findLiteHandle(&instance_);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(perl("$API::taken->DESTROY"), "DESTROY: the object is in use");
    EXPECT_EQ(perl("undef $API::taken; 'dropped'"), "dropped");
    EXPECT_STREQ(velCreateParam(handle, "/A", "1"), nullptr);
}

TEST_F(VelInstance, ObjectsWithoutADatabase)
{
    for (const char *code :
         {"bless []", "bless \\my $x", "bless {}", "'a text'", "bless { database => 1 }",
          "bless { database => [] }", "bless { database => bless {}, 'Other' }",
          "bless { database => bless \\(my $x = 1), 'VEL::Parser::Lite' }",
          "bless { database => 'VEL::Parser::Lite' }", "bless { database => undef }"}) {
        ASSERT_EQ(initWith(code), "(null)") << code;
        EXPECT_EQ(velparser::findLiteHandle(&instance_), nullptr) << code;
        pTHX = velparser::velInterpreter();
        SvREFCNT_dec(instance_.api);
        instance_.api = nullptr;
    }
}

TEST_F(VelInstance, ADatabaseOfADerivedClass)
{
    ASSERT_EQ(initWith("@Derived::ISA = 'VEL::Parser::Lite';"
                       "bless { database => bless VEL::Parser::Lite::NEW(), 'Derived' }"),
              "(null)");
    EXPECT_NE(velparser::findLiteHandle(&instance_), nullptr);
}

TEST_F(VelInstance, ADatabaseThatHasBeenDestroyed)
{
    ASSERT_EQ(initWith("my $d = VEL::Parser::Lite::NEW(); $d->DESTROY; bless { database => $d }"),
              "(null)");
    EXPECT_EQ(velparser::findLiteHandle(&instance_), nullptr);
}

// --- A database of the program's as an object --------------------------------------------

TEST_F(VelInstance, AWrappedDatabaseIsNotDestroyed)
{
    const velHandlePtr handle(velCreateHandle());
    ASSERT_STREQ(parseVELLineH(handle.get(), "A = 1", 0), nullptr);
    pTHX = velparser::velInterpreter();
    SV *object = velparser::newLiteObject(handle.get());
    ASSERT_NE(object, nullptr);
    sv_setsv(get_sv("API::wrapped", GV_ADD), object);
    SvREFCNT_dec_NN(object);
    EXPECT_EQ(perl("ref($API::wrapped) . ' ' . $API::wrapped->havePath('/A')"),
              "VEL::Parser::Lite 1");
    EXPECT_EQ(perl("eval { $API::wrapped->addChangeHandler(sub {}) }; $@").substr(0, 80),
              "VEL::Parser::Lite::addChangeHandler: the database belongs to another object at (");
    EXPECT_EQ(perl("$API::wrapped->clearChangeHandlers; 'nothing to clear'"), "nothing to clear");
    EXPECT_EQ(perl("undef $API::wrapped; 1"), "1");
    EXPECT_EQ(havePath(handle.get(), "/A"), 1);
}

TEST_F(VelInstance, ObjectsThatWrapOneDatabaseAreToldApartFromOthers)
{
    velHandle *handle = velparser::findLiteHandle(ready());
    pTHX = velparser::velInterpreter();
    for (const char *name : {"API::wrapped", "API::again"}) {
        SV *wrapper = velparser::newLiteObject(handle);
        sv_setsv(get_sv(name, GV_ADD), wrapper);
        SvREFCNT_dec_NN(wrapper);
    }
    sv_setsv(get_sv("API::owner", GV_ADD),
             *hv_fetchs(MUTABLE_HV(SvRV(instance_.api)), "database", 0));
    EXPECT_EQ(perl("$API::wrapped->isSameDatabase($API::again)"), "1");
    EXPECT_EQ(perl("$API::wrapped->isSameDatabase($API::owner)"), "1");
    EXPECT_EQ(perl("$API::owner->isSameDatabase($API::wrapped)"), "1");
    EXPECT_EQ(perl("$API::wrapped->isSameDatabase(VEL::Parser::Lite::NEW())"), "0");
    EXPECT_EQ(perl("undef $_ for $API::wrapped, $API::again, $API::owner; 1"), "1");
}

TEST_F(VelInstance, ActionsOfAWrappingObjectEndWithIt)
{
    const velHandlePtr handle(velCreateHandle());
    pTHX = velparser::velInterpreter();
    SV *object = velparser::newLiteObject(handle.get());
    sv_setsv(get_sv("API::wrapped", GV_ADD), object);
    SvREFCNT_dec_NN(object);
    EXPECT_EQ(perl("$API::wrapped->registerActionHandler(sub { $API::seen = \"@_\" }); 1"), "1");
    EXPECT_STREQ(parseVELLineH(handle.get(), ">save  a file", 0), nullptr);
    EXPECT_EQ(perl("$API::seen"), "save a file");
    EXPECT_EQ(perl("undef $API::wrapped; 1"), "1");
    EXPECT_STREQ(parseVELLineH(handle.get(), ">save", 0),
                 "action invocation returned with error status");
}

TEST_F(VelInstance, AnActionOfAWrappingObjectChangesWhatItsOwnerWasGiven)
{
    velHandle *handle = velparser::findLiteHandle(ready());
    pTHX = velparser::velInterpreter();
    SV *wrapper = velparser::newLiteObject(handle);
    sv_setsv(get_sv("API::wrapped", GV_ADD), wrapper);
    SvREFCNT_dec_NN(wrapper);
    sv_setsv(get_sv("API::owner", GV_ADD),
             *hv_fetchs(MUTABLE_HV(SvRV(instance_.api)), "database", 0));
    EXPECT_EQ(perl("my $line = CORE::join '', '>save ', ('x') x 200;"
                   "$API::wrapped->registerActionHandler("
                   "    sub { $line = 'y' x 5000; undef $API::owner; $API::seen = $_[1]; 1 });"
                   "$API::owner->loadVELLine($line, 0) // length $API::seen"),
              "200");
    EXPECT_EQ(perl("undef $API::wrapped; 1"), "1");
}

TEST_F(VelInstance, NoObjectWithoutThePackage)
{
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(perl("$API::kept = delete $INC{'VEL/Parser/Lite.pm'};"
                   "unshift @INC, sub { die qq{gone\\n} if $_[1] eq 'VEL/Parser/Lite.pm' }; 1"),
              "1");
    EXPECT_EQ(velparser::newLiteObject(handle.get()), nullptr);
    EXPECT_EQ(perl("shift @INC; $INC{'VEL/Parser/Lite.pm'} = $API::kept; 1"), "1");
}

} // namespace
