// Tests that docs/container-format.md has every type, and a file that the library writes.
#include "io/Src/Main/element_type.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

/// Sixteen bytes per line: offset, hexadecimal, text.
std::string hex_dump(const std::string &bytes)
{
    std::string out;
    for (std::size_t start = 0; start < bytes.size(); start += 16) {
        char field[32];
        std::snprintf(field, sizeof field, "%04zx ", start);
        out += field;
        std::string text;
        for (std::size_t i = start; i < start + 16; i++) {
            if (i >= bytes.size()) {
                out += "   ";
                continue;
            }
            auto byte = static_cast<unsigned char>(bytes[i]);
            std::snprintf(field, sizeof field, " %02x", byte);
            out += field;
            text += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.';
        }
        out += "  " + text + "\n";
    }
    return out;
}

TEST(FormatDocument, NamesEveryElementType)
{
    const char *root = std::getenv("VEL_SOURCE_DIR");
    if (root == nullptr) {
        GTEST_SKIP() << "VEL_SOURCE_DIR is not set";
    }
    std::ifstream document(std::string(root) + "/docs/container-format.md");
    std::stringstream text;
    text << document.rdbuf();
    for (const element_traits &type : element_table) {
        EXPECT_NE(text.str().find(std::string("`") + type.name + "`"), std::string::npos)
            << type.name;
    }
}

TEST(FormatDocument, TheExampleIsTrue)
{
    const char *root = std::getenv("VEL_SOURCE_DIR");
    if (root == nullptr) {
        GTEST_SKIP() << "VEL_SOURCE_DIR is not set";
    }
    io_memory_env env;
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "example"), IO_OK);
    ASSERT_EQ(client.write_integers("NODES", "ZONE1", 3, {1, 2, 258}, "u"), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    std::ifstream document(std::string(root) + "/docs/container-format.md");
    std::stringstream text;
    text << document.rdbuf();
    EXPECT_NE(text.str().find("```\n" + hex_dump(env["example"]) + "```\n"), std::string::npos)
        << hex_dump(env["example"]);
}

} // namespace
