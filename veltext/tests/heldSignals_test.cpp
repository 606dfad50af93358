// HeldSignals: a signal that is raised during a change is delivered after it.
#include "veltext/heldSignals.h"

#include <gtest/gtest.h>

#include <csignal>

namespace veltext::test {
namespace {

volatile std::sig_atomic_t arrived = 0;

void note(int signal)
{
    arrived = signal;
}

TEST(HeldSignals, WaitUntilTheChangeIsComplete)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto before = std::signal(signal, note);
        arrived = 0;
        {
            const HeldSignals held;
            {
                const HeldSignals inner;
                raise(signal);
            }
            EXPECT_EQ(arrived, 0);
        }
        EXPECT_EQ(arrived, signal);
        std::signal(signal, before);
    }
}

} // namespace
} // namespace veltext::test
