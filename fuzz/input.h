#pragma once

// One fuzzer's input, taken apart from its front.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : m_Next(data), m_End(data + size) {}

    bool IsEmpty() const { return m_Next == m_End; }

    // A number below `limit`; 0 at the end.
    std::uint32_t Below(std::uint32_t limit) {
        std::uint32_t value = 0;
        for (std::uint32_t rest = limit - 1; rest != 0; rest >>= 8) value = value << 8 | Byte();
        return value % limit;
    }
    // At most so many bytes.
    std::string Bytes(std::size_t most) {
        const std::size_t size = std::min(most, static_cast<std::size_t>(m_End - m_Next));
        const std::string bytes(m_Next, m_Next + size);
        m_Next += size;
        return bytes;
    }
    std::string Rest() { return Bytes(static_cast<std::size_t>(m_End - m_Next)); }

  private:
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *m_Next++; }

    const std::uint8_t* m_Next;
    const std::uint8_t* m_End;
};

// Ends the program if what must hold doesn't.
inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "fuzzer: not so: %s\n", what);
    std::abort();
}
