#include "ctl/Failure.h"

#include "ctl/Json.h"

#include <cerrno>
#include <cstring>

namespace corvelctl {

int reportFailure(const Failure& failure, bool json, std::FILE* out, std::FILE* err)
{
    std::fprintf(err, "corvelctl: %s\n", failure.message().c_str());
    std::fflush(err);
    if (json) {
        JsonWriter writer;
        writer.beginObject();
        writer.key("error");
        writer.string(failure.message());
        writer.key("exit");
        writer.integer(exitCode(failure.status()));
        writer.endObject();
        std::fprintf(out, "%s\n", writer.text().c_str());
    }
    return exitCode(failure.status());
}

std::optional<Failure> finishOutput(std::FILE* out)
{
    // errno from a failed putc is lost by now; the flush and close give a fresh one.
    const bool hadError = std::ferror(out) != 0;
    errno = 0;
    const bool flushed = std::fflush(out) == 0;
    const int flushError = errno;
    errno = 0;
    const bool closed = std::fclose(out) == 0;
    const int closeError = errno;
    if (!hadError && flushed && closed) return std::nullopt;
    const int reason = !flushed ? flushError : closeError;
    std::string message = "cannot write standard output";
    if (reason != 0) message += std::string(": ") + std::strerror(reason);
    return Failure(ExitStatus::IoError, message);
}

}  // namespace corvelctl
