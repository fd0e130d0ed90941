#pragma once

#include <string>

#include "clients/cpp/tollmere_launcher_client.h"

// Bytes that would break a line or the terminal are shown as \xNN, except in JSON.

// To standard output: "key: value" lines, or one JSON object on one line. Flushed at once.
void ReportAnswer(const launcher::Answer& answer, bool asJson);

// To standard output, one line.
void ReportLine(const std::string& text);

// To standard output, one line that is JSON already.
void ReportJson(const std::string& json);

// To standard error, one line each, flushed at once.
void ReportEvent(const std::string& text);
void ReportError(const std::string& text);
