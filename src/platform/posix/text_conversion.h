#pragma once

// UTF-8 and UTF-16, with U+FFFD in place of what is neither: one for each unpaired surrogate, and one for each longest
// run of bytes that begins a character but doesn't end it. Any thread.

#include <string>
#include <string_view>

namespace posix_layer {

std::string ToUtf8(std::u16string_view wide);
std::u16string ToWide(std::string_view narrow);

}  // namespace posix_layer
