#pragma once

// The store file: a small JSON document with the events of this run and, as far as there is room, of earlier ones,
//
//   {"metrics":[{"name":"STEAM_ACTION","data":"\"id\":2,\"as\":false","time":100}]}
//
// without white space, one byte for each character. A save merges the old file's events behind those in the queue and
// replaces the file. Both functions hold g_TelemetryLock throughout, file work included. A lack of memory gives false.

// Appends the file's events to the queue, as far as there is room; those nearest the file's end win. True only if a
// well-formed file with a "metrics" member was read. A file that is no JSON is deleted, with the validator's lines
// logged; entries that can't be used are skipped.
bool LoadEvents() noexcept;

// Merges, writes the whole queue and empties it. The source is published. False, without a line of its own, if there is
// no path for the file or it can't be opened for writing; false too if the text doesn't fit, which the writer logs, and
// then the queue keeps the events that were not yet written and the file isn't touched again. The file is opened for
// writing only when all of its bytes are ready.
bool SaveEvents() noexcept;
