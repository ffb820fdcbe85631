#include "ctl/Secret.h"

#include <cstring>
#include <utility>

namespace corvelctl {

Secret::Secret(std::string_view bytes) : m_Size(bytes.size())
{
    if (m_Size == 0) return;
    m_Bytes = new char[m_Size];
    std::memcpy(m_Bytes, bytes.data(), m_Size);
}

Secret::~Secret() { wipe(); }

Secret::Secret(Secret&& other) noexcept
    : m_Bytes(std::exchange(other.m_Bytes, nullptr)), m_Size(std::exchange(other.m_Size, 0))
{}

Secret& Secret::operator=(Secret&& other) noexcept
{
    if (this != &other) {
        wipe();
        m_Bytes = std::exchange(other.m_Bytes, nullptr);
        m_Size = std::exchange(other.m_Size, 0);
    }
    return *this;
}

void Secret::wipe()
{
    // explicit_bzero is not optimised away even though the memory is freed next.
    if (m_Bytes != nullptr) explicit_bzero(m_Bytes, m_Size);
    delete[] m_Bytes;
    m_Bytes = nullptr;
    m_Size = 0;
}

}  // namespace corvelctl
