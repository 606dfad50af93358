// Generates a set-up from tables of block kinds and names.
#include "bench/generate/sampleSetup.h"

#include <array>
#include <span>

namespace velBench {

namespace {

constexpr std::size_t shortestValue = 5;
constexpr std::size_t longestValue = 60;

/// A fixed sequence of pseudo-random numbers (splitmix64), because the trees must
/// not depend on the standard library.
class Sequence
{
public:
    explicit Sequence(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next()
    {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    std::uint64_t below(std::uint64_t bound) { return next() % bound; }
    std::uint64_t between(std::uint64_t low, std::uint64_t high)
    {
        return low + below(high - low + 1);
    }

private:
    std::uint64_t state_;
};

using Words = std::span<const char *const>;

constexpr std::array<const char *, 8> flowParameters = {
    "Description",     "Flow Kind", "Start Time", "End Time",
    "Reference Point", "Gravity",   "Buoyancy",   "Scenario"};
constexpr std::array<const char *, 6> unitParameters = {
    "Length Unit", "Mass Unit", "Time Unit", "Temperature Unit", "Angle Unit", "Amount Unit"};
constexpr std::array<const char *, 12> controlParameters = {
    "Maximum Iterations", "Minimum Iterations",
    "Length Scale",       "Relaxation",
    "Convection Scheme",  "Time Scheme",
    "Residual Kind",      "Residual Target",
    "Balance Target",     "Limiter",
    "Step Size",          "Step Control"};
constexpr std::array<const char *, 7> outputParameters = {
    "Interval", "Variables", "Output Kind", "File Name", "Compression", "Start After", "Frequency"};
constexpr std::array<const char *, 10> domainParameters = {
    "Location",      "Domain Kind",     "Reference Pressure", "Substances",
    "Rotation Axis", "Rotation Speed",  "Moving Grid",        "Frame",
    "Porosity",      "Coordinate Frame"};
constexpr std::array<const char *, 9> modelParameters = {
    "Turbulence Model", "Wall Treatment", "Heat Model",     "Radiation Model", "Turbulence Level",
    "Prandtl Number",   "Combustion",     "Wall Roughness", "Production Limit"};
constexpr std::array<const char *, 6> boundaryParameters = {
    "Kind", "Location", "Moving Frame", "Colour", "Interface Side", "Profile"};
constexpr std::array<const char *, 11> conditionParameters = {
    "Mass Flow Rate",   "Velocity",      "Direction", "Static Pressure",
    "Total Pressure",   "Temperature",   "Heat Flux", "Heat Transfer",
    "Turbulence Scale", "Wall Velocity", "Slip"};
constexpr std::array<const char *, 5> scalarParameters = {"Mass Fraction", "Flux", "Diffusivity",
                                                          "Option", "Source Term"};
constexpr std::array<const char *, 5> probeParameters = {"Position", "Variables", "Interval",
                                                         "Frame", "Probe Kind"};

constexpr std::array<const char *, 8> boundaryNames = {
    "Inlet", "Outlet", "Wall", "Symmetry", "Open Side", "Blade", "Casing", "Interface"};
constexpr std::array<const char *, 4> domainNames = {"Duct", "Rotor", "Shell Side", "Tube Side"};
constexpr std::array<const char *, 6> scalarNames = {"Oxygen",  "Nitrogen", "Water Vapour",
                                                     "Methane", "Smoke",    "Tracer"};
constexpr std::array<const char *, 3> probeNames = {"Probe", "Thermocouple", "Pressure Tap"};
constexpr std::array<const char *, 3> outputNames = {"Transient Results", "Backup", "Monitor"};

/// One kind of block, and how often it occurs in its parent.
struct BlockKind
{
    const char *type;
    Words names; ///< empty for a singleton
    Words parameters;
    unsigned fewest, most; ///< number of these blocks below one parent
    std::span<const BlockKind> children;
};

const std::array<BlockKind, 1> conditionChildren = {
    {{"SCALAR", scalarNames, scalarParameters, 0, 4, {}}}};
const std::array<BlockKind, 1> boundaryChildren = {
    {{"CONDITIONS", {}, conditionParameters, 1, 1, conditionChildren}}};
const std::array<BlockKind, 1> modelChildren = {
    {{"SCALAR MODEL", scalarNames, scalarParameters, 1, 4, {}}}};
const std::array<BlockKind, 3> domainChildren = {
    {{"MODELS", {}, modelParameters, 1, 1, modelChildren},
     {"BOUNDARY", boundaryNames, boundaryParameters, 6, 40, boundaryChildren},
     {"PROBE", probeNames, probeParameters, 0, 12, {}}}};
const std::array<BlockKind, 4> flowChildren = {
    {{"UNITS", {}, unitParameters, 1, 1, {}},
     {"CONTROL", {}, controlParameters, 1, 1, {}},
     {"OUTPUT", outputNames, outputParameters, 1, 3, {}},
     {"DOMAIN", domainNames, domainParameters, 2, 6, domainChildren}}};
const BlockKind flowKind = {"FLOW", {}, flowParameters, 1, 1, flowChildren};

constexpr std::array<const char *, 12> options = {
    "Upwind",        "Blended",      "Sticking",     "As Substance",  "Mean Value",
    "Isothermal",    "Second Order", "Along Normal", "Flux Balanced", "Enthalpy Transport",
    "Zero Gradient", "Steady"};
constexpr std::array<const char *, 8> units = {"[kg s^-1]", "[m s^-1]",  "[Pa]",           "[K]",
                                               "[W m^-2]",  "[kg m^-3]", "[kg m^-1 s^-1]", "[s]"};
constexpr std::array<const char *, 10> sentenceWords = {
    "taken", "from", "the", "measured", "case", "of", "north", "side", "after", "repair"};

/// Makes the texts, and walks through the kinds of blocks.
class Generator
{
public:
    Generator(std::uint64_t parameters, TreeWriter &writer) : left_(parameters), writer_(writer) {}

    void run()
    {
        for (std::uint64_t i = 1; left_ > 0; ++i) {
            block(flowKind, "Run " + std::to_string(i));
        }
    }

private:
    template <typename List>
    const char *pick(const List &list)
    {
        return list[sequence_.below(list.size())];
    }

    void block(const BlockKind &kind, const std::string &name)
    {
        writer_.open(kind.type, name);
        parameters(kind.parameters);
        for (const BlockKind &child : kind.children) {
            blocks(child);
        }
        writer_.close();
    }

    void blocks(const BlockKind &kind)
    {
        const std::uint64_t count = sequence_.between(kind.fewest, kind.most);
        for (std::uint64_t i = 1; i <= count && left_ > 0; ++i) {
            std::string name;
            if (!kind.names.empty()) {
                name = std::string(pick(kind.names)) + ' ' + std::to_string(i);
            }
            block(kind, name);
        }
    }

    /// Writes between half and all of the names, in their order.
    void parameters(Words names)
    {
        const std::size_t first = sequence_.below(names.size() / 2 + 1);
        for (std::size_t i = first; i < names.size() && left_ > 0; ++i, --left_) {
            writer_.parameter(names[i], value());
        }
    }

    std::string value()
    {
        std::string text = anyValue();
        while (text.size() < shortestValue) {
            text += " [1]";
        }
        if (text.size() > longestValue) {
            text.resize(longestValue);
            while (text.back() == ' ' || text.back() == ',') {
                text.pop_back();
            }
        }
        return text;
    }

    std::string anyValue()
    {
        switch (sequence_.below(10)) {
        case 0:
        case 1:
        case 2:
            return pick(options);
        case 3:
        case 4:
        case 5:
            return number() + ' ' + pick(units);
        case 6:
            return number() + ", " + number() + ", " + number();
        case 7:
            return locations();
        case 8:
            return expression();
        default:
            return sentence();
        }
    }

    std::string number()
    {
        std::string digits = std::to_string(sequence_.below(100000));
        switch (sequence_.below(4)) {
        case 0:
            return digits;
        case 1:
            return "0." + digits;
        case 2:
            return '-' + digits + ".5";
        default:
            return "1." + digits + "e-" + std::to_string(sequence_.between(1, 9));
        }
    }

    std::string locations()
    {
        std::string text;
        for (std::uint64_t i = sequence_.between(2, 6); i > 0; --i) {
            text += "Surface " + std::to_string(sequence_.below(900)) + (i > 1 ? ", " : "");
        }
        return text;
    }

    std::string expression()
    {
        return "max(" + number() + ", " + number() + ") * Inlet Speed / (1 + sin(t))";
    }

    std::string sentence()
    {
        std::string text = pick(sentenceWords);
        for (std::uint64_t i = sequence_.between(2, 8); i > 0; --i) {
            text.append(" ").append(pick(sentenceWords));
        }
        return text;
    }

    std::uint64_t left_;
    TreeWriter &writer_;
    Sequence sequence_{20};
};

} // namespace

void generateSetup(std::uint64_t parameters, TreeWriter &writer)
{
    Generator(parameters, writer).run();
}

} // namespace velBench
