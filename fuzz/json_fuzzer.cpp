// Any text through the validator, the reader and a parser that nobody here wrote.

#include <memory>

#include "fuzz/input.h"
#include "fuzz/other_parser.h"
#include "platform/posix/text_conversion.h"
#include "telemetry/json/json_token.h"
#include "telemetry/json/json_validator.h"

namespace {

// All tokens, their strings decoded, as far as `left` goes. The reader is given what no validator has seen, too: where
// a bracket passes for a bare word ("0=]"), the tokens behind it belong to several containers, and the walk is without
// end.
void Walk(const JsonToken& parent, int depth, int& left) {
    if (depth > 100) return;
    JsonToken token;
    for (bool more = FirstChild(parent, token); more && left > 0; more = NextToken(token, token)) {
        --left;
        // What is asked for, so that a byte more is noticed.
        const std::size_t size = static_cast<std::size_t>(token.m_ValueLength) + 1;
        const auto text = std::make_unique<char[]>(size);
        Require(GetString(token, text.get(), size, nullptr), "a value fits in its length and one");
        Walk(token, depth + 1, left);
    }
    FindMember(parent, "metrics", token);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // As large as the text and its terminator, so that a look beyond it is noticed.
    const auto text = std::make_unique<char[]>(size + 1);
    std::copy_n(data, size, text.get());
    ValidateDocument(text.get(), size);
    JsonToken token;
    int left = 300;
    if (ParseToken(token, text.get(), static_cast<std::uint32_t>(size))) Walk(token, 0, left);

    // The other parser judges the encoding too; ours takes it for granted that the conversions have made it
    // well-formed.
    std::string utf8 = posix_layer::ToUtf8(posix_layer::ToWide({text.get(), size}));
    if (WeAccept(utf8) && TheyAccept(utf8)) Require(AreWalkedAlike(utf8), "both see the same tokens");
    RemoveDifferences(utf8);
    Require(WeAccept(utf8) == TheyAccept(utf8), "both judge alike, but for what is known");
    return 0;
}
