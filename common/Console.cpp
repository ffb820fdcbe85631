// The system console and the printf-style helpers.
#include "common/Console.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

// Writes exactly the bytes given, as fprintf would have: standard error
// unbuffered, standard output buffered.
class StandardConsole : public Console {
public:
    void trace(std::string_view text) override { std::fwrite(text.data(), 1, text.size(), stderr); }
    void user(std::string_view text) override { std::fwrite(text.data(), 1, text.size(), stdout); }
};

std::string format(const char* format, std::va_list values)
{
    std::va_list copy;
    va_copy(copy, values);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0) return std::string();
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, values);
    text.resize(static_cast<size_t>(length));
    return text;
}

}  // namespace

template <>
Console& Seam<Console>::systemDefault()
{
    static StandardConsole console;
    return console;
}

void traceF(const char* fmt, ...)
{
    std::va_list values;
    va_start(values, fmt);
    const std::string text = format(fmt, values);
    va_end(values);
    Seam<Console>::get().trace(text);
}

void userF(const char* fmt, ...)
{
    std::va_list values;
    va_start(values, fmt);
    const std::string text = format(fmt, values);
    va_end(values);
    Seam<Console>::get().user(text);
}
