#pragma once

// The inside of a JSON string is mostly characters that stand for themselves. Whoever reads or writes one steps over
// them with this, sixteen at a time, and looks closely only at what is left. Of sixteen bytes, bit 0 stands for the
// first.

#include <emmintrin.h>

#include <bit>

#include "telemetry/json/json_tables.h"

inline __m128i Load16(const char* text) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}

inline void Store16(__m128i bytes, char* out) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

// Which of sixteen bytes are `character`.
inline unsigned FindIn16(__m128i bytes, char character) {
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(character))));
}

// Which of sixteen bytes aren't plain.
inline unsigned NotPlain(__m128i bytes) {
    // Bytes from 0x80 on are negative here and so below the blank, like the control characters.
    const __m128i below = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
    const __m128i quote = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
    const __m128i backslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
    const __m128i del = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(0x7F));
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(below, quote), _mm_or_si128(backslash, del))));
}

// The first byte from `text` on that isn't plain, or `end`. Nothing at or behind `end` is read.
inline const char* SkipPlain(const char* text, const char* end) {
    for (; end - text >= 16; text += 16) {
        const unsigned special = NotPlain(Load16(text));
        if (special != 0) return text + std::countr_zero(special);
    }
    while (text != end && HasClass(*text, ClassPlain)) ++text;
    return text;
}

// The same, and what is stepped over is copied to `out`, which has room for all up to `end`. What lies behind it there
// may be overwritten too.
inline const char* CopyPlain(const char* text, const char* end, char* out) {
    for (; end - text >= 16; text += 16, out += 16) {
        const __m128i bytes = Load16(text);
        Store16(bytes, out);
        if (const unsigned special = NotPlain(bytes); special != 0) return text + std::countr_zero(special);
    }
    while (text != end && HasClass(*text, ClassPlain)) *out++ = *text++;
    return text;
}
