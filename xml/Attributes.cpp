#include "xml/Attributes.h"

#include <cstring>
#include <iterator>

namespace {

// Zero-fills the buffer and copies as much of `text` as fits with its terminator.
uint32_t copyTruncated(const std::string& text, char* buffer, uint32_t size)
{
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    std::memset(buffer, 0, size);
    const uint32_t count = text.size() < size - 1 ? static_cast<uint32_t>(text.size()) : size - 1;
    std::memcpy(buffer, text.data(), count);
    return count;
}

}  // namespace

void attributes::set(const char* name, const char* value) { m_Pairs[name] = value; }

int attributes::has(const char* name) const { return m_Pairs.count(name) != 0 ? 1 : 0; }

std::string attributes::getValue(const std::string& name) const
{
    const auto found = m_Pairs.find(name);
    return found == m_Pairs.end() ? std::string() : found->second;
}

uint32_t attributes::getValue(const char* name, char* buffer, uint32_t size) const
{
    return copyTruncated(getValue(std::string(name)), buffer, size);
}

uint32_t attributes::getName(uint32_t index, char* buffer, uint32_t size) const
{
    if (index >= m_Pairs.size()) {
        return copyTruncated(std::string(), buffer, size);
    }
    return copyTruncated(std::next(m_Pairs.begin(), index)->first, buffer, size);
}

uint32_t attributes::getValue(uint32_t index, char* buffer, uint32_t size) const
{
    if (index >= m_Pairs.size()) {
        return copyTruncated(std::string(), buffer, size);
    }
    return copyTruncated(std::next(m_Pairs.begin(), index)->second, buffer, size);
}

std::string& attributes::operator[](const std::string& name) { return m_Pairs[name]; }

std::string& attributes::operator[](const char* name) { return m_Pairs[name]; }

void attributes::clear() { m_Pairs.clear(); }

uint32_t attributes::size() const { return static_cast<uint32_t>(m_Pairs.size()); }
