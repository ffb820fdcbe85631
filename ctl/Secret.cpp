#include "ctl/Secret.h"

#include <cstring>
#include <utility>

namespace corvelctl {

Secret::Secret(std::string_view bytes) : size_(bytes.size())
{
    if (size_ == 0) return;
    bytes_ = new char[size_];
    std::memcpy(bytes_, bytes.data(), size_);
}

Secret::~Secret() { wipe(); }

Secret::Secret(Secret&& other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)), size_(std::exchange(other.size_, 0))
{}

Secret& Secret::operator=(Secret&& other) noexcept
{
    if (this != &other) {
        wipe();
        bytes_ = std::exchange(other.bytes_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

void Secret::wipe()
{
    // explicit_bzero is not optimised away even though the memory is freed next.
    if (bytes_ != nullptr) explicit_bzero(bytes_, size_);
    delete[] bytes_;
    bytes_ = nullptr;
    size_ = 0;
}

}  // namespace corvelctl
