// A secret (passphrase, WEP keys, 802.1x password) held in memory of its own
// that is wiped when the secret goes. It has no stream operator and no
// conversion, so it cannot end up in a message or a trace by accident.
#pragma once

#include <cstddef>
#include <string_view>

namespace corvelctl {

class Secret {
public:
    Secret() = default;
    explicit Secret(std::string_view bytes);
    ~Secret();
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;

    // The bytes, for the one place that sends them to the printer.
    std::string_view reveal() const { return {m_Bytes, m_Size}; }
    std::size_t size() const { return m_Size; }
    bool empty() const { return m_Size == 0; }

private:
    void wipe();

    char* m_Bytes = nullptr;
    std::size_t m_Size = 0;
};

}  // namespace corvelctl
