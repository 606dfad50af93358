// Lets each system call fail once, or it and all later ones. Tests that the library
// returns a code, that earlier datasets stay readable, and that no lock remains.
#include "io/testing/io_failing_env.h"
#include "io/tests/io_client.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

void expect_code(int code, int call)
{
    EXPECT_TRUE(code >= 0 && code < IO_CODE_COUNT) << "call " << call << ": " << code;
}

void make_files(io_env &env)
{
    io_client client(env);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "f"), IO_OK);
    ASSERT_EQ(client.write_integers("A", "P", 1, {1, 2, 3}), IO_OK);
    ASSERT_EQ(client.write_strings("B", "P", 2, {"one", "two"}, "F"), IO_OK);
    ASSERT_EQ(client.write_doubles("C", "P", 3, std::vector<double>(300, 1.5)), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
    ASSERT_EQ(client.request(IO_OPEN_PRIMARY_WRITE, "g"), IO_OK);
    ASSERT_EQ(client.write_integers("Z", "P", 1, {26}), IO_OK);
    ASSERT_EQ(client.request(IO_CLOSE_PRIMARY), IO_OK);
}

/// Sends every request and closes both files at the end. Checks only that the codes
/// are known ones, because any request may fail.
void use_everything(io_client &client, int call)
{
    expect_code(client.request(IO_OPEN_PRIMARY_WRITE, "f"), call);
    client.read("A", "P", 1);
    expect_code(client.write_integers("N", "P", 1, std::vector<std::int32_t>(50, 7), "F"), call);
    expect_code(client.write_doubles("N", "P", 2, std::vector<double>(500, 7)), call);
    expect_code(client.remove("B", "P", 2), call);
    expect_code(client.request(IO_OPEN_SECONDARY, "g"), call);
    expect_code(client.request(IO_COPY_ALLVALID_DS), call);
    expect_code(client.request(IO_CLOSE_SECONDARY), call);
    expect_code(client.request(IO_CLOSE_PRIMARY), call);
    expect_code(client.request(IO_OPEN_PRIMARY, "f"), call);
    client.read("C", "P", 3);
    expect_code(client.request(IO_CLOSE_PRIMARY), call);
}

int count_calls()
{
    io_memory_env memory;
    make_files(memory);
    io_failing_env env(memory);
    env.fail(0, 0, false);
    io_client client(env);
    use_everything(client, 0);
    return env.calls();
}

class FailingCalls : public ::testing::TestWithParam<bool>
{
};

TEST_P(FailingCalls, NoFailureLosesData)
{
    bool for_good = GetParam();
    int calls = count_calls();
    ASSERT_GT(calls, 50);
    for (int call = 1; call <= calls; call++) {
        io_memory_env memory;
        make_files(memory);
        io_failing_env env(memory);
        {
            io_client client(env);
            env.fail(call, call % 2 == 0 ? ENOSPC : EIO, for_good);
            use_everything(client, call);
        }
        env.fail(0, 0, false);
        if (for_good) {
            // No file could be removed any more, as after the end of a killed
            // process.
            memory.files.erase("f.lck");
            memory.files.erase("g.lck");
        }
        take_messages();
        io_client client(memory);
        // A lock file may remain only if the failed call was its removal.
        if (memory.exists("f.lck") || memory.exists("g.lck")) {
            EXPECT_NE(client.request(IO_OPEN_PRIMARY_WRITE, memory.exists("f.lck") ? "f" : "g"),
                      IO_OK);
            memory.files.erase("f.lck");
            memory.files.erase("g.lck");
        }
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK) << call << take_messages();
        EXPECT_EQ(client.read("A", "P", 1), "1 2 3") << call;
        EXPECT_EQ(client.read("C", "P", 3).substr(0, 7), "1.5 1.5") << call;
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "g"), IO_OK) << call << take_messages();
        EXPECT_EQ(client.read("Z", "P", 1), "26") << call;
    }
}

/// 20 bits of noise in 32 bits: compressed, it has more bytes than one write
/// accepts.
std::vector<std::int32_t> long_array()
{
    std::vector<std::int32_t> values(150000);
    std::uint32_t state = 1;
    for (std::int32_t &value : values) {
        state = state * 1664525U + 1013904223U;
        value = static_cast<std::int32_t>(state >> 12);
    }
    return values;
}

TEST_P(FailingCalls, ALongStreamIsCompleteOrMissing)
{
    const std::vector<std::int32_t> values = long_array();
    auto write_long = [&](io_client &client) {
        int code = client.request(IO_OPEN_PRIMARY_WRITE, "f");
        code = code == IO_OK ? client.write_integers("L", "P", 1, values) : code;
        int closed = client.request(IO_CLOSE_PRIMARY);
        return code == IO_OK ? closed : code;
    };
    std::string text;
    int calls = 0;
    {
        io_memory_env memory;
        io_failing_env env(memory);
        env.fail(0, 0, false);
        io_client client(env);
        ASSERT_EQ(write_long(client), IO_OK);
        calls = env.calls();
        ASSERT_GT(memory["f"].size(), 300000U);
        ASSERT_LT(memory["f"].size(), 500000U);
        client.request(IO_OPEN_PRIMARY, "f");
        text = client.read("L", "P", 1);
        ASSERT_GT(text.size(), values.size());
    }
    int failed = 0;
    for (int call = 1; call <= calls; call++) {
        io_memory_env memory;
        make_files(memory);
        io_failing_env env(memory);
        int code = IO_OK;
        {
            io_client client(env);
            env.fail(call, call % 2 == 0 ? ENOSPC : EIO, GetParam());
            code = write_long(client);
        }
        expect_code(code, call);
        failed += code == IO_OK ? 0 : 1;
        memory.files.erase("f.lck");
        take_messages();
        io_client client(memory);
        ASSERT_EQ(client.request(IO_OPEN_PRIMARY, "f"), IO_OK) << call << take_messages();
        EXPECT_EQ(client.read("A", "P", 1), "1 2 3") << call;
        const std::string back = client.read("L", "P", 1);
        EXPECT_TRUE(back == text || (code != IO_OK && back.rfind("code ", 0) == 0)) << call;
    }
    EXPECT_GT(failed, 5);
}

INSTANTIATE_TEST_SUITE_P(Once, FailingCalls, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ForGood, FailingCalls, ::testing::Values(true));

} // namespace
