#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/no_destructor.h"
#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t';
}

// Splits as Windows does. Backslashes count only in front of a quote: each pair stands for one, and one that is left
// over makes the quote a plain character. Of quotes in a row, the third is a plain character that also ends the
// quoting.
class Splitter {
  public:
    explicit Splitter(LPCWSTR text) : m_At(text) {}

    std::vector<std::u16string> Split() {
        std::vector<std::u16string> arguments = {ProgramName()};
        for (SkipBlanks(); *m_At != 0; SkipBlanks()) arguments.push_back(Argument());
        return arguments;
    }

  private:
    void SkipBlanks() {
        while (IsBlank(*m_At)) ++m_At;
    }

    // In the program's name, which is a path, backslashes protect nothing.
    std::u16string ProgramName() {
        const bool quoted = *m_At == u'"';
        if (quoted) ++m_At;
        const LPCWSTR start = m_At;
        while (*m_At != 0 && (quoted ? *m_At != u'"' : !IsBlank(*m_At))) ++m_At;
        std::u16string name(start, m_At);
        if (quoted && *m_At != 0) ++m_At;
        return name;
    }

    std::u16string Argument() {
        std::u16string argument;
        int quotes = 0;  // 1 inside a quoted part
        while (*m_At != 0 && (quotes != 0 || !IsBlank(*m_At))) {
            std::size_t backslashes = 0;
            for (; *m_At == u'\\'; ++m_At) ++backslashes;
            if (*m_At != u'"') {
                argument.append(backslashes, u'\\');
                if (backslashes == 0) argument += *m_At++;
                continue;
            }
            argument.append(backslashes / 2, u'\\');
            if (backslashes % 2 != 0) {
                argument += u'"';
                ++m_At;
            }
            for (; *m_At == u'"'; ++m_At) {
                if (++quotes < 3) continue;
                argument += u'"';
                quotes = 0;
            }
            if (quotes == 2) quotes = 0;
        }
        return argument;
    }

    LPCWSTR m_At;
};

std::u16string Quote(const std::u16string& argument) {
    if (!argument.empty() && argument.find_first_of(u" \t\"") == std::u16string::npos) return argument;
    std::u16string quoted = u"\"";
    std::size_t backslashes = 0;
    for (const char16_t c : argument) {
        if (c == u'"') quoted.append(backslashes + 1, u'\\');
        backslashes = c == u'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, u'\\') + u'"';
}

// The line that splits into what this process was started with. A quote in the program's own name has no form.
std::u16string OwnCommandLine() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string all((std::istreambuf_iterator<char>(file)), {});
    std::u16string line;
    for (std::size_t start = 0; start < all.size();) {
        const std::size_t end = std::min(all.find('\0', start), all.size());
        const std::u16string argument = ToWide(std::string_view(all).substr(start, end - start));
        if (start != 0) {
            line += u' ' + Quote(argument);
        } else {
            line = argument.find_first_of(u" \t") == std::u16string::npos ? argument : u'"' + argument + u'"';
        }
        start = end + 1;
    }
    return line;
}

}  // namespace

LPWSTR GetCommandLineW() {
    const SystemAllocations scope;
    static NoDestructor<std::u16string> line(OwnCommandLine());
    return line->data();
}

// One block: the pointers, a null behind them, then the texts.
LPWSTR* CommandLineToArgvW(LPCWSTR commandLine, int* count) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return nullptr;
    const std::vector<std::u16string> arguments =
        *commandLine != 0 ? Splitter(commandLine).Split() : std::vector{ToWide(ReadLink("/proc/self/exe"))};
    std::size_t characters = 0;
    for (const std::u16string& argument : arguments) characters += argument.size() + 1;
    const std::size_t pointers = (arguments.size() + 1) * sizeof(LPWSTR);
    void* const block = std::malloc(pointers + characters * sizeof(WCHAR));
    if (block == nullptr) return WithLastError(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    auto* const result = static_cast<LPWSTR*>(block);
    auto* next = reinterpret_cast<LPWSTR>(static_cast<char*>(block) + pointers);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        result[i] = next;
        next = std::copy_n(arguments[i].c_str(), arguments[i].size() + 1, next);
    }
    result[arguments.size()] = nullptr;
    *count = static_cast<int>(arguments.size());
    return result;
}
