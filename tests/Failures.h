// Failures as tests look at them: by code and message.
#pragma once

#include "foundation/Status.h"

#include <gtest/gtest.h>

#include <string>

namespace Tesk::checks {

/// Ignores failures where they happen.
class IgnoringFailures : public ::testing::Test
{
protected:
    void SetUp() override { Status::ErrorBehavior(IgnoreIt); }
    void TearDown() override { Status::Shallow = false; }
};

/// That of the latest failure.
inline std::wstring Message()
{
    return Status::UnicodeError();
}

} // namespace Tesk::checks
