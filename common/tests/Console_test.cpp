// The console: the system's writes the formatted bytes unchanged, the trace to
// standard error and the user's text to standard output; an installed console
// receives them instead.
#include <gtest/gtest.h>

#include <string>

#include "common/Console.h"

namespace {

struct RecordingConsole : Console {
    void trace(std::string_view text) override { traced += text; }
    void user(std::string_view text) override { shown += text; }
    std::string traced, shown;
};

TEST(Console, SystemConsoleWritesTheFormattedBytesToTheirStreams)
{
    const std::string longText(5000, 'x');  // past any small formatting buffer
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    traceF("D [CVL] %d %s\n", -7, "ok");
    userF("char '%c' and %s|\n", 0, longText.c_str());
    traceF("%s", "");
    const std::string err = testing::internal::GetCapturedStderr();
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(err, "D [CVL] -7 ok\n");
    EXPECT_EQ(out, std::string("char '\0' and ", 13) + longText + "|\n");
}

TEST(Console, InstalledConsoleReceivesEverythingAndTheStreamsNothing)
{
    RecordingConsole recording;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        Seam<Console>::Override installed(recording);
        traceF("trace %02X\n", 0xA5);
        userF("user %u\n", 3u);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(recording.traced, "trace A5\n");
    EXPECT_EQ(recording.shown, "user 3\n");
}

}  // namespace
