#include "tools/steam_stand_in/record.h"

#include "support/system.h"

void Record(const std::string& line) {
    const std::optional<std::string> path = support::Variable("STEAM_STAND_IN_RECORD");
    if (path && !path->empty()) support::AppendToFile(*path, line + "\n");
}

void RecordError(const std::string& what) {
    std::string line = "ERROR ";
    Record(line.append(what));
}
