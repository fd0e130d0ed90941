#pragma once

// Whole text files with one byte for each character: byte n is the character U+00nn, and a character above U+00FF is
// written as "?". No encoding mark, no line end is touched. Nothing is logged; the last error says what failed.

#include "diagnostics/text.h"

// False, with `text` untouched, if the file can't be opened or read.
bool ReadTextFile(const WideString& path, WideString& text);

// Replaces the file, or makes it. False only if it can't be opened; the old file then stays as it was, and so it does
// if there is no memory for the bytes, which throws.
bool WriteTextFile(const WideString& path, const WideString& text);
