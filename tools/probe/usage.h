#pragma once

// What `probe --help` prints: the options, and the protocol for whoever wants to write a launcher.
extern const char kUsage[];
