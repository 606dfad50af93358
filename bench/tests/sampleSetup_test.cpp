// Tests the generated set-up: its size, its shape, and that the writers agree.
#include "bench/generate/sampleSetup.h"

#include "velapilt/src/velapilt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace velBench {
namespace {

constexpr std::uint64_t parameters = 3000;

/// Records the events.
class Listing : public TreeWriter
{
public:
    void open(std::string_view type, std::string_view name) override
    {
        text.append(type).append(":").append(name).append("\n");
        ++depth_;
    }
    void parameter(std::string_view name, std::string_view value) override
    {
        text.append(name).append("=").append(value).append("\n");
        ++count;
        shallowest = std::min(shallowest, depth_ + 1);
        deepest = std::max(deepest, depth_ + 1);
        shortest = std::min(shortest, value.size());
        longest = std::max(longest, value.size());
    }
    void close() override { --depth_; }
    bool finish() override { return depth_ == 0; }

    std::string text;
    std::uint64_t count = 0;
    std::size_t shallowest = 100;
    std::size_t deepest = 0;
    std::size_t shortest = 100;
    std::size_t longest = 0;

private:
    std::size_t depth_ = 0;
};

TEST(GenerateSetup, StaysInItsLimits)
{
    Listing listing;
    generateSetup(parameters, listing);
    EXPECT_TRUE(listing.finish());
    EXPECT_EQ(listing.count, parameters);
    EXPECT_EQ(listing.shallowest, 2U);
    EXPECT_EQ(listing.deepest, 6U);
    EXPECT_GE(listing.shortest, 5U);
    EXPECT_LE(listing.longest, 60U);
    EXPECT_GT(listing.longest, 50U);
}

TEST(GenerateSetup, IsAlwaysTheSame)
{
    Listing first;
    Listing second;
    generateSetup(parameters, first);
    generateSetup(parameters, second);
    EXPECT_EQ(first.text, second.text);
    EXPECT_EQ(first.text.substr(0, 11), "FLOW:Run 1\n");
}

std::string readFile(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(TreeWriters, ContainTheSameTree)
{
    const std::string stem = (std::filesystem::temp_directory_path() / "velbench-test").string();
    for (const auto &writer : {makeVelWriter(stem + ".vel"), makePathWriter(stem + ".paths")}) {
        generateSetup(parameters, *writer);
        ASSERT_TRUE(writer->finish());
    }
    const velHandlePtr handle(velCreateHandle());
    ASSERT_EQ(loadVELFile(handle.get(), (stem + ".vel").c_str(), "vel"), nullptr);
    std::istringstream paths(readFile(stem + ".paths"));
    std::uint64_t found = 0;
    for (std::string path; std::getline(paths, path); ++found) {
        ASSERT_NE(velFindValue(handle.get(), path.c_str()), nullptr) << path;
    }
    EXPECT_EQ(found, parameters);

    std::istringstream text(readFile(stem + ".vel"));
    std::size_t widest = 0;
    std::size_t wrapped = 0;
    for (std::string line; std::getline(text, line);) {
        widest = std::max(widest, line.size());
        wrapped += line.ends_with('\\') ? 1 : 0;
    }
    EXPECT_LE(widest, 79U);
    EXPECT_GT(wrapped, 0U);
    std::filesystem::remove(stem + ".vel");
    std::filesystem::remove(stem + ".paths");
}

TEST(TreeWriters, WriteXmlAndJson)
{
    const std::string file =
        (std::filesystem::temp_directory_path() / "velbench-test.tree").string();
    const auto write = [&](TreeWriter &writer) {
        writer.open("A B", "n<1>");
        writer.parameter("x", "say \"a\" & b\\c");
        writer.open("C", "");
        writer.close();
        writer.close();
        EXPECT_TRUE(writer.finish());
    };
    write(*makeXmlWriter(file));
    EXPECT_EQ(readFile(file), "<?xml version=\"1.0\"?>\n"
                              "<tree>\n"
                              "  <A_B name=\"n&lt;1&gt;\">\n"
                              "    <param name=\"x\" value=\"say &quot;a&quot; &amp; b\\c\"/>\n"
                              "    <C>\n"
                              "    </C>\n"
                              "  </A_B>\n"
                              "</tree>\n");
    write(*makeJsonWriter(file));
    EXPECT_EQ(readFile(file), "{\n"
                              "  \"A B:n<1>\": {\n"
                              "    \"x\": \"say \\\"a\\\" & b\\\\c\",\n"
                              "    \"C\": {\n"
                              "    }\n"
                              "  }\n"
                              "}\n");
    std::filesystem::remove(file);
}

TEST(TreeWriters, ReportAShortWrite)
{
    const auto writer = makeVelWriter("/dev/full");
    generateSetup(parameters, *writer);
    EXPECT_FALSE(writer->finish());
}

} // namespace
} // namespace velBench
