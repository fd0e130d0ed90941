#pragma once

// The document that readers and writers are measured with: a store of events as the helper writes it, about 200 bytes
// an event.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct SampleEvent {
    std::string m_Name;
    std::string m_Data;  // members of a JSON object, so with quotation marks that have to be escaped
    std::uint64_t m_Time;
};

std::vector<SampleEvent> SampleEvents(std::size_t count);

std::string SampleStore(std::size_t count);
