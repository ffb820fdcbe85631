// Runs a call and gives back what it wrote to standard output and error.
#pragma once

#include <string>

#include <gtest/gtest.h>

struct Captured {
    std::string out, err;
};

template <typename Call>
Captured captureOutput(Call&& call)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    call();
    Captured captured;
    captured.err = testing::internal::GetCapturedStderr();
    captured.out = testing::internal::GetCapturedStdout();
    return captured;
}
