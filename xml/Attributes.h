// The name/value pairs of one start tag, as the parser hands them to a handler.
#pragma once

#include <cstdint>
#include <map>
#include <string>

class attributes {
public:
    attributes() = default;
    attributes(const attributes& other) = default;
    attributes& operator=(const attributes& other) = default;
    attributes(attributes&& other) noexcept = default;
    attributes& operator=(attributes&& other) noexcept = default;
    virtual ~attributes() = default;

    // Adds the pair, or replaces the value of a name already present.
    void set(const char* name, const char* value);
    // 1 if the name is present, else 0.
    int has(const char* name) const;
    // The value of `name`; an empty string when absent.
    std::string getValue(const std::string& name) const;

    // Buffer forms: the whole buffer is zero-filled, then the text is copied
    // truncated to size - 1 bytes; the result is the number of bytes copied.
    // A size of 0 writes nothing and gives 0.
    uint32_t getValue(const char* name, char* buffer, uint32_t size) const;
    // Indexes are positions in name order (bytewise ascending); out of range gives 0.
    uint32_t getName(uint32_t index, char* buffer, uint32_t size) const;
    uint32_t getValue(uint32_t index, char* buffer, uint32_t size) const;

    // A modifiable reference to the value; an absent name is added with an empty value.
    std::string& operator[](const std::string& name);
    std::string& operator[](const char* name);

    void clear();
    uint32_t size() const;

private:
    std::map<std::string, std::string> m_Pairs;
};
