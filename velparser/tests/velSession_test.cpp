// Sessions with their own rule libraries, one after the other and at the same time, with the
// packages that ship with the programs.
#include "velapilt/src/velapilt.h"
#include "velparser/api/velBench.h"
#include "velparser/api/velparser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include <malloc.h>
#include <unistd.h>

using velparser::Session;

namespace {

std::string said(const char *message)
{
    return message != nullptr ? message : "";
}

/// The libraries of these tests, written once.
class Libraries
{
public:
    Libraries()
    {
        std::string name = (std::filesystem::temp_directory_path() / "velsession-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        write("pipes.vel",
              {"RULES:", "SINGLETON: FLOW", "Parents = /", "Optional Parameters = Length, Extra",
               "Optional Objects = PIPE", "PARAMETER: Length", "Type = Real", "Upper Bound = 10",
               "END", "END", "OBJECT: PIPE", "Parents = FLOW", "Optional Parameters = Length",
               "END", "END"});
        write("tanks.vel",
              {"RULES:", "SINGLETON: FLOW", "Parents = /", "Optional Parameters = Length, Depth",
               "Optional Objects = TANK", "PARAMETER: Length", "Type = Real", "Upper Bound = 1000",
               "END", "END", "OBJECT: TANK", "Parents = FLOW", "Optional Parameters = Depth", "END",
               "END"});
        write("broken.vel", {"RULES:", "SINGLETON: FLOW"});
    }
    ~Libraries()
    {
        if (getpid() == owner_) {
            std::filesystem::remove_all(folder_);
        }
    }
    Libraries(const Libraries &) = delete;
    Libraries &operator=(const Libraries &) = delete;

    [[nodiscard]] const std::string &folder() const { return folder_; }

private:
    void write(const std::string &name, const std::vector<std::string> &lines) const
    {
        std::ofstream file(folder_ + '/' + name);
        for (const std::string &line : lines) {
            file << line << '\n';
        }
    }

    std::string folder_;
    int owner_ = getpid();
};

const Libraries libraries;

Session sessionWith(const std::string &files)
{
    return Session({.libraries = velparser::LibraryNames{libraries.folder(), files}});
}

/// A session that has read its libraries.
Session openSession(const std::string &files)
{
    Session session = sessionWith(files);
    EXPECT_EQ(said(readVELLibraries(session)), "");
    EXPECT_EQ(said(setUnitsChecking(session, 1)), "");
    EXPECT_EQ(said(setBoundsChecking(session, 1)), "");
    return session;
}

void load(Session &session, const std::vector<const char *> &lines)
{
    EXPECT_EQ(said(loadVELData(session, lines.data(), static_cast<std::int32_t>(lines.size()))),
              "");
}

std::string valueOf(Session &session, const char *path)
{
    std::optional<std::string> value;
    EXPECT_EQ(said(getStringValue(session, path, &value)), "");
    return value.value_or("(none)");
}

/// The names that the rules allow in FLOW, which is made if necessary.
std::vector<std::string> namesInFlow(Session &session)
{
    velStringList names;
    const char *flow[] = {"FLOW:", "END"};
    EXPECT_EQ(said(loadVELData(session, flow, 2)), "");
    EXPECT_EQ(said(getAllowedParams(session, "/FLOW", &names, 0)), "");
    std::vector<std::string> result;
    for (const std::string_view name : names) {
        result.emplace_back(name);
    }
    return result;
}

std::string textOf(Session &session)
{
    velStringList lines;
    EXPECT_EQ(said(getFormattedVEL(session, "/", 80, &lines)), "");
    std::string text;
    for (const std::string_view line : lines) {
        text.append(line).append("\n");
    }
    return text;
}

// --- Rules and data of each -----------------------------------------------------

TEST(VelSession, ThePathsOfOneAreUnknownToTheOther)
{
    Session pipes = openSession("pipes.vel");
    Session tanks = openSession("tanks.vel");
    const std::vector<const char *> lines = {"FLOW:", "Length = 50", "PIPE: One", "END", "END"};
    load(pipes, lines);
    load(tanks, lines);
    EXPECT_EQ(namesInFlow(pipes), (std::vector<std::string>{"Length", "Extra"}));
    EXPECT_EQ(namesInFlow(tanks), (std::vector<std::string>{"Length", "Depth"}));
    const std::string inPipes = said(validateVELDataH(pipes));
    const std::string inTanks = said(validateVELDataH(tanks));
    EXPECT_NE(inPipes.find("/FLOW/Length"), std::string::npos) << inPipes;
    EXPECT_EQ(inPipes.find("PIPE"), std::string::npos) << inPipes;
    EXPECT_EQ(inTanks.find("/FLOW/Length"), std::string::npos) << inTanks;
    EXPECT_NE(inTanks.find("PIPE"), std::string::npos) << inTanks;
}

TEST(VelSession, ChangesOfOneAreNotSeenInTheOther)
{
    Session one = openSession("pipes.vel");
    Session other = openSession("pipes.vel");
    load(one, {"FLOW:", "Length = 1", "END"});
    load(other, {"FLOW:", "Length = 2", "PIPE: Only", "END", "END"});
    EXPECT_EQ(said(setStringValue(one, "/FLOW/Length", "3")), "");
    EXPECT_EQ(said(deleteObj(other, "/FLOW/PIPE:Only")), "");
    EXPECT_EQ(said(pushPathH(one, "/FLOW")), "");
    EXPECT_EQ(valueOf(one, "Length"), "3");
    EXPECT_EQ(valueOf(other, "/FLOW/Length"), "2");
    EXPECT_EQ(said(popPathH(one)), "");
    EXPECT_EQ(said(setValidationLevelH(one, 2)), "");
    EXPECT_EQ(isParamEditable(one, "/FLOW/Length"), 0);
    EXPECT_EQ(isParamEditable(other, "/FLOW/Length"), 1);
}

/// Everything that a session has, including its libraries.
std::string allOf(Session &session)
{
    velStringList lines;
    EXPECT_EQ(said(getObjectVELH(findLiteHandle(session), "/", &lines, true)), "");
    std::string text;
    for (const std::string_view line : lines) {
        text.append(line).append("\n");
    }
    return text;
}

TEST(VelSession, ClearDataLeavesTheLibraries)
{
    Session session = openSession("pipes.vel");
    EXPECT_EQ(said(keepLibraries(session)), "");
    const std::string before = allOf(session);
    load(session, {"Loose = 1", "FLOW:", "Length = 50", "PIPE: One", "END", "END"});
    EXPECT_NE(said(validateVELDataH(session)), "");
    EXPECT_EQ(said(clearData(session)), "");
    EXPECT_EQ(allOf(session), before);
    EXPECT_EQ(textOf(session), "");
    load(session, {"FLOW:", "Length = 5", "END"});
    EXPECT_EQ(said(validateVELDataH(session)), "");
    EXPECT_EQ(textOf(session), "FLOW:\n  Length = 5\nEND\n");
}

TEST(VelSession, ClearDataCreatesRulesAgainThatDataHasStated)
{
    Session session = openSession("pipes.vel");
    EXPECT_EQ(said(keepLibraries(session)), "");
    const std::string before = allOf(session);
    const std::vector<std::string> names = namesInFlow(session);
    EXPECT_EQ(said(clearData(session)), "");
    load(session, {"RULES:", "SINGLETON: FLOW", "Optional Parameters = Mine", "END", "END"});
    EXPECT_NE(allOf(session), before);
    EXPECT_EQ(said(clearData(session)), "");
    EXPECT_EQ(allOf(session), before);
    EXPECT_EQ(isVELLibrary(session, "/RULES/SINGLETON:FLOW"), 1);
    EXPECT_EQ(namesInFlow(session), names);
}

TEST(VelSession, ClearDataEndsAStatementThatWasNotFinished)
{
    Session session = openSession("pipes.vel");
    EXPECT_EQ(said(keepLibraries(session)), "");
    load(session, {"A = 1 \\"});
    EXPECT_EQ(said(clearData(session)), "");
    load(session, {"B = 2"});
    EXPECT_EQ(textOf(session), "B = 2\n");
}

TEST(VelSession, ClearDataOfOneLeavesTheOther)
{
    Session one = openSession("pipes.vel");
    Session other = openSession("pipes.vel");
    EXPECT_EQ(said(keepLibraries(one)), "");
    load(one, {"A = 1"});
    load(other, {"A = 2"});
    EXPECT_EQ(said(clearData(one)), "");
    EXPECT_EQ(textOf(one), "");
    EXPECT_EQ(textOf(other), "A = 2\n");
}

TEST(VelSession, OneAfterTheOtherWithOtherLibraries)
{
    for (int i = 0; i < 3; ++i) {
        Session pipes = openSession("pipes.vel");
        EXPECT_EQ(namesInFlow(pipes).back(), "Extra");
        Session tanks = openSession("tanks.vel");
        EXPECT_EQ(namesInFlow(tanks).back(), "Depth");
        pipes = std::move(tanks);
        EXPECT_EQ(namesInFlow(pipes).back(), "Depth");
    }
}

TEST(VelSession, RulesThatDataStatesStayInTheSession)
{
    Session one = openSession("pipes.vel");
    Session other = openSession("pipes.vel");
    EXPECT_EQ(namesInFlow(one), namesInFlow(other));
    load(one, {"FLOW:", "END"});
    const char *more[] = {"RULES:", "SINGLETON: FLOW", "Optional Parameters = New", "END", "END"};
    EXPECT_EQ(said(loadLibraryData(findLiteHandle(one), more, 5)), "");
    EXPECT_EQ(namesInFlow(one).back(), "New");
    EXPECT_EQ(namesInFlow(other).back(), "Extra");
    Session later = openSession("pipes.vel");
    EXPECT_EQ(namesInFlow(later).back(), "Extra");
}

// --- The same history, interleaved and alone ----------------------------------------

/// One step of a random history; `log` gets its message and its result.
class History
{
public:
    History(const std::string &files, unsigned seed) : session_(openSession(files)), random_(seed)
    {
        load(session_, {"FLOW:", "Length = 1", "END"});
    }

    void step()
    {
        static constexpr const char *paths[] = {"/FLOW/Length", "/FLOW/Depth", "/FLOW/Extra",
                                                "/FLOW/PIPE:A/Length", "/FLOW/TANK:A/Depth"};
        const char *path = paths[random_() % std::size(paths)];
        switch (random_() % 6) {
        case 0:
            note(setStringValue(session_, path, std::to_string(random_() % 2000).c_str()));
            break;
        case 1:
            note(deleteParam(session_, path));
            break;
        case 2:
            loadObject();
            break;
        case 3:
            note(deleteObj(session_, random_() % 2 ? "/FLOW/PIPE:A" : "/FLOW/TANK:A"));
            break;
        case 4:
            note(validateVELDataH(session_));
            break;
        default:
            note(validateVELObjectH(session_, "/FLOW"));
            break;
        }
        log_.back() += textOf(session_);
        for (const std::string &name : namesInFlow(session_)) {
            log_.back() += name + ';';
        }
    }

    [[nodiscard]] const std::vector<std::string> &log() const { return log_; }

private:
    void loadObject()
    {
        const char *lines[] = {"FLOW:", random_() % 2 ? "PIPE: A" : "TANK: A", "Depth = 3", "END",
                               "END"};
        note(loadVELData(session_, lines, 5));
    }

    void note(const char *message) { log_.push_back(said(message) + '\n'); }

    Session session_;
    std::minstd_rand random_;
    std::vector<std::string> log_;
};

TEST(VelSession, AHistoryIsTheSameWhateverGoesOnBesideIt)
{
    constexpr int steps = 200;
    History pipes("pipes.vel", 7);
    History tanks("tanks.vel", 11);
    std::minstd_rand turns(3);
    for (int left[] = {steps, steps}; left[0] + left[1] > 0;) {
        const unsigned turn = turns() % 2;
        if (left[turn]-- > 0) {
            (turn ? tanks : pipes).step();
        } else {
            left[turn] = 0;
        }
    }
    for (const auto &[files, seed, together] :
         {std::tuple("pipes.vel", 7U, &pipes), std::tuple("tanks.vel", 11U, &tanks)}) {
        History alone(files, seed);
        for (int i = 0; i < steps; ++i) {
            alone.step();
        }
        for (int i = 0; i < steps; ++i) {
            ASSERT_EQ(together->log()[i], alone.log()[i]) << files << ", step " << i;
        }
    }
}

// --- Messages and failures ------------------------------------------------------------

TEST(VelSession, AMessageOutlivesCallsWithAnotherSession)
{
    Session one = openSession("pipes.vel");
    Session other = openSession("tanks.vel");
    load(one, {"FLOW:", "Length = 50", "END"});
    const char *first = validateVELDataH(one);
    const std::string kept = said(first);
    ASSERT_NE(kept, "");
    const char *text = loadVELFromFile(one, "/nowhere.vel", "vel");
    const std::string keptText = said(text);
    ASSERT_NE(keptText, "");
    EXPECT_NE(said(loadVELFromFile(other, "/elsewhere.vel", "vel")), "");
    EXPECT_NE(said(setStringValue(other, "", "1")), "");
    load(other, {"FLOW:", "Nothing = 50", "END"});
    EXPECT_NE(said(validateVELDataH(other)), "");
    EXPECT_EQ(said(text), keptText);
}

TEST(VelSession, AFailureOfOneLeavesTheOther)
{
    Session sound = openSession("pipes.vel");
    Session broken = sessionWith("broken.vel");
    Session missing = sessionWith("missing.vel");
    EXPECT_NE(said(readVELLibraries(broken)).find("broken.vel: 2 missing END"), std::string::npos)
        << said(readVELLibraries(broken));
    EXPECT_NE(said(readVELLibraries(missing)).find("missing.vel: "), std::string::npos);
    load(sound, {"FLOW:", "Length = 1", "END"});
    EXPECT_EQ(said(validateVELDataH(sound)), "");
    velparser::failCall(broken, "getStringValue", "no room");
    std::optional<std::string> value;
    EXPECT_EQ(said(getStringValue(broken, "/FLOW", &value)), "no room");
    EXPECT_EQ(valueOf(sound, "/FLOW/Length"), "1");
    velparser::failCall(broken, "getStringValue", nullptr);
    EXPECT_NE(said(getStringValue(broken, "/A/B/C", &value)), "no room");
}

TEST(VelSession, AHandlerOfOneNeverRunsForTheOther)
{
    Session one = openSession("pipes.vel");
    Session other = openSession("pipes.vel");
    load(one, {"FLOW:", "Length = 1", "END"});
    load(other, {"FLOW:", "Length = 1", "END"});
    ASSERT_EQ(
        said(velparser::evalPerl("our @heard; our $new = \\&API::new; no warnings;"
                                 "*API::new = sub { my $self = $new->(@_);"
                                 " $self->{database}->addChangeHandler(sub { push @heard, $_[0];"
                                 " die qq{not so\\n} if ($_[2] // '') eq '13' }); $self }; 1",
                                 nullptr)),
        "");
    Session watched = openSession("pipes.vel");
    ASSERT_EQ(said(velparser::evalPerl("no warnings; *API::new = $new; 1", nullptr)), "");
    load(watched, {"FLOW:", "Length = 1", "END"});
    ASSERT_EQ(said(velparser::evalPerl("@heard = (); 1", nullptr)), "");
    EXPECT_EQ(said(setStringValue(one, "/FLOW/Length", "13")), "");
    EXPECT_EQ(said(setStringValue(other, "/FLOW/Length", "13")), "");
    EXPECT_EQ(said(setStringValue(watched, "/FLOW/Length", "13")), "not so\n");
    EXPECT_EQ(said(setStringValue(other, "/FLOW/Length", "14")), "");
    std::string heard;
    EXPECT_EQ(said(velparser::evalPerl("scalar @heard", &heard)), "");
    EXPECT_EQ(heard, "1");
}

// --- The end of a session -----------------------------------------------------------------

/// A session as a program would use it, to its end.
void liveThrough(int i)
{
    Session session = openSession(i % 2 ? "pipes.vel" : "tanks.vel");
    load(session, {"FLOW:", "Length = 5000", "END"});
    EXPECT_NE(said(validateVELDataH(session)), "");
    EXPECT_EQ(said(setStringValue(session, "/FLOW/Length", "1")), "");
    EXPECT_EQ(said(updateSolverVEL(session)), "");
}

/// From now on every new object of these classes is in @live until it is freed.
const char countObjects[] = R"perl(
package API::Count;
no warnings;
use Scalar::Util;
our (@live, %real);
for my $name (qw(API::new VEL::Model::of VEL::Validate::new)) {
    my $make = $real{$name} = \&$name;
    *$name = sub { my $made = $make->(@_); push @live, $made; Scalar::Util::weaken($live[-1]); $made };
}
1;
)perl";

long liveObjects()
{
    std::string count;
    EXPECT_EQ(said(velparser::evalPerl("scalar grep { defined } @API::Count::live", &count)), "");
    return std::stol(count);
}

TEST(VelSession, ItsPerlObjectsGoWithIt)
{
    liveThrough(0);
    ASSERT_EQ(said(velparser::evalPerl(countObjects, nullptr)), "");
    {
        Session session = openSession("pipes.vel");
        load(session, {"FLOW:", "Length = 50", "END"});
        EXPECT_NE(said(validateVELDataH(session)), "");
        EXPECT_GT(liveObjects(), 2);
    }
    EXPECT_EQ(liveObjects(), 0);
    EXPECT_EQ(said(velparser::evalPerl("no strict; no warnings;"
                                       "*$_ = $API::Count::real{$_} for keys %API::Count::real; 1",
                                       nullptr)),
              "");
}

TEST(VelSession, ManySessionsNeedNoMoreMemory)
{
    for (int i = 0; i < 20; ++i) {
        liveThrough(i);
    }
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 200; ++i) {
        liveThrough(i);
    }
    EXPECT_LT(mallinfo2().uordblks, before + 20'000);
}

TEST(VelSession, TheOtherGoesOnAfterTheEnd)
{
    Session stays = openSession("pipes.vel");
    load(stays, {"FLOW:", "Length = 50", "END"});
    {
        Session goes = openSession("pipes.vel");
        load(goes, {"FLOW:", "Length = 50", "END"});
        EXPECT_EQ(said(validateVELDataH(goes)), said(validateVELDataH(stays)));
    }
    EXPECT_NE(said(validateVELDataH(stays)), "");
    EXPECT_EQ(said(setStringValue(stays, "/FLOW/Length", "5")), "");
    EXPECT_EQ(said(validateVELDataH(stays)), "");
}

TEST(VelSession, OneThatWasMovedFromHasNothing)
{
    Session first = openSession("pipes.vel");
    load(first, {"FLOW:", "Length = 5", "END"});
    Session second = std::move(first);
    EXPECT_EQ(valueOf(second, "/FLOW/Length"), "5");
    // NOLINTBEGIN(bugprone-use-after-move): that is what is tested.
    EXPECT_EQ(findLiteHandle(first), nullptr);
    EXPECT_EQ(said(readVELLibraries(first)), "Invalid (NULL) instance handle");
    EXPECT_EQ(said(updateSolverVEL(first)), "Invalid (NULL) instance handle");
    EXPECT_EQ(said(setStringValue(first, "/A", "1")),
              "setStringValue: error finding Lite API handle");
    EXPECT_EQ(isVELLibrary(first, "/FLOW"), -1);
    first = openSession("tanks.vel");
    // NOLINTEND(bugprone-use-after-move)
    EXPECT_EQ(namesInFlow(first).back(), "Depth");
    first = std::move(first);
    EXPECT_EQ(namesInFlow(first).back(), "Depth");
}

TEST(VelSession, OneThatWasNeverUsed)
{
    const Session session = sessionWith("pipes.vel");
    Session asked = sessionWith("pipes.vel");
    EXPECT_EQ(said(updateSolverVEL(asked)), "Invalid (uninitialized) instance handle");
}

// --- The default session ----------------------------------------------------------------------

TEST(VelSession, TheDefaultSessionIsOneOfThem)
{
    EXPECT_EQ(said(velparser::readVELLibraries()), "");
    const velHandle *handle = velparser::findLiteHandle();
    {
        Session pipes = openSession("pipes.vel");
        load(pipes, {"FLOW:", "Length = 50", "END"});
        EXPECT_NE(said(validateVELDataH(pipes)), "");
        EXPECT_NE(findLiteHandle(pipes), handle);
    }
    EXPECT_EQ(velparser::findLiteHandle(), handle);
    EXPECT_EQ(findLiteHandle(velparser::defaultSession()), handle);
    const char *line = "SpecialName = 1";
    EXPECT_EQ(said(velparser::loadVELData(&line, 1)), "");
    EXPECT_EQ(valueOf(velparser::defaultSession(), "/SpecialName"), "1");
    EXPECT_EQ(said(velparser::deleteParam("/SpecialName")), "");
}

/// Destroyed after main, after the interpreter has flushed its output.
Session lasting = sessionWith("tanks.vel");

TEST(VelSession, OneMayEndWithTheProcess)
{
    EXPECT_EQ(said(readVELLibraries(lasting)), "");
    load(lasting, {"FLOW:", "Depth = 1", "END"});
    EXPECT_EQ(said(validateVELDataH(lasting)), "");
}

} // namespace
