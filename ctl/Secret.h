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
    std::string_view reveal() const { return {bytes_, size_}; }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

private:
    void wipe();

    char* bytes_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace corvelctl
