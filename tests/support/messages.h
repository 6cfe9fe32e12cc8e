/// What the tests of the messages have in common.
#pragma once

#include "hcbase/hcbase.h"
#include "tests/support/surroundings.h"
#include "zrlib/zrlib.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace test {

/// Code, text, location and chain flag of the last error; "none" when there is none. Forgets it.
inline std::string TakeError()
{
    HCError error;
    if (HFErrorGet(error) == 0) {
        return "none";
    }
    HFErrorClear();
    return std::to_string(error.code) + " " + static_cast<const char*>(error.text) + " "
        + static_cast<const char*>(error.location) + " " + std::to_string(error.chain);
}

/// A home of its own; messages are on and go nowhere. Everything is off again afterwards.
class Messages : public testing::Test {
protected:
    Messages()
    {
        ZRSetMessagesEnabled(1);
        ZRSetAllFlags(0);
        ZRSetAllEnabled(0);
        HFErrorClear();
    }

    ~Messages() override
    {
        ZRSetMessagesEnabled(0);
        ZRSetAllFlags(0);
        ZRSetAllEnabled(0);
    }

    /// What an action prints on the console.
    template <typename Action> static std::string Console(Action action)
    {
        testing::internal::CaptureStdout();
        action();
        std::fflush(stdout);
        std::string output = testing::internal::GetCapturedStdout();
        std::erase(output, '\r');
        return output;
    }

    Home m_home;
};

} // namespace test
