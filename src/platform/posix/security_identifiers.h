#pragma once

#include <cstdint>

namespace posix_layer {

inline constexpr std::size_t kMaxSubAuthorities = 8;

// A SID as Windows lays it out in memory; only the first `count` of the sub-authorities are there.
struct SecurityIdentifier {
    std::uint8_t revision;
    std::uint8_t count;
    std::uint8_t authority[6];
    std::uint32_t subAuthorities[kMaxSubAuthorities];
};

constexpr std::size_t SizeOfSid(std::size_t count) {
    return 8 + 4 * count;
}
static_assert(sizeof(SecurityIdentifier) == SizeOfSid(kMaxSubAuthorities));

}  // namespace posix_layer
