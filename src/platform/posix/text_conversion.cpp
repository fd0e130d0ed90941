#include "platform/posix/text_conversion.h"

namespace posix_layer {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendUtf8(std::string& narrow, char32_t character) {
    const auto append = [&](char32_t byte) { narrow += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | character >> 6);
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

void AppendUtf16(std::u16string& wide, char32_t character) {
    if (character < 0x10000) {
        wide += static_cast<char16_t>(character);
    } else {
        wide += static_cast<char16_t>(0xD7C0 + (character >> 10));
        wide += static_cast<char16_t>(0xDC00 | (character & 0x3FF));
    }
}

// What may follow a lead byte.
struct Sequence {
    int continuations;
    unsigned char secondMin, secondMax;  // tighter than 80..BF where that keeps out overlong forms and surrogates
};

Sequence SequenceOf(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {1, 0x80, 0xBF};
    if (lead == 0xE0) return {2, 0xA0, 0xBF};
    if (lead == 0xED) return {2, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {2, 0x80, 0xBF};
    if (lead == 0xF0) return {3, 0x90, 0xBF};
    if (lead >= 0xF1 && lead <= 0xF3) return {3, 0x80, 0xBF};
    if (lead == 0xF4) return {3, 0x80, 0x8F};
    return {0, 0, 0};
}

// Reads one character and moves `at` behind it.
char32_t NextCharacter(std::string_view narrow, std::size_t& at) {
    const auto lead = static_cast<unsigned char>(narrow[at++]);
    if (lead < 0x80) return lead;
    const Sequence sequence = SequenceOf(lead);
    if (sequence.continuations == 0) return kReplacement;
    char32_t character = lead & (0x3F >> sequence.continuations);
    for (int i = 0; i < sequence.continuations; ++i) {
        if (at == narrow.size()) return kReplacement;
        const auto byte = static_cast<unsigned char>(narrow[at]);
        const unsigned char least = i == 0 ? sequence.secondMin : 0x80;
        const unsigned char most = i == 0 ? sequence.secondMax : 0xBF;
        if (byte < least || byte > most) return kReplacement;
        character = character << 6 | (byte & 0x3F);
        ++at;
    }
    return character;
}

}  // namespace

std::string ToUtf8(std::u16string_view wide) {
    std::string narrow;
    narrow.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const char32_t unit = wide[i];
        if (IsHighSurrogate(unit) && i + 1 < wide.size() && IsLowSurrogate(wide[i + 1])) {
            AppendUtf8(narrow, 0x10000 + ((unit & 0x3FF) << 10) + (wide[++i] & 0x3FFu));
        } else {
            AppendUtf8(narrow, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
        }
    }
    return narrow;
}

std::u16string ToWide(std::string_view narrow) {
    std::u16string wide;
    wide.reserve(narrow.size());
    for (std::size_t at = 0; at < narrow.size();) AppendUtf16(wide, NextCharacter(narrow, at));
    return wide;
}

}  // namespace posix_layer
