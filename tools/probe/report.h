#pragma once

#include <string>

#include "tools/launcher_client/frames.h"

// To standard output: "key: value" lines, or one JSON object on one line. Flushed at once.
void ReportAnswer(const launcher::Answer& answer, bool asJson);

// To standard error, one line each, flushed at once. Bytes that would break the line or the terminal are shown as \xNN.
void ReportEvent(const std::string& text);
void ReportError(const std::string& text);
