#include "tools/probe/doctor/pe_file.h"

#include <cstdint>
#include <cstdio>

namespace {

// All values are unsigned, least significant byte first. An RVA is an address counted from where the file is loaded.
constexpr std::uint64_t kNewHeaderAt = 0x3C;  // 4 bytes: where the signature is, counted from the file's begin
constexpr std::string_view kSignature("PE\0\0", 4);
// Counted from the signature.
constexpr std::uint64_t kMachine = 4;              // 2 bytes
constexpr std::uint64_t kSectionCount = 6;         // 2 bytes
constexpr std::uint64_t kOptionalHeaderSize = 20;  // 2 bytes
constexpr std::uint64_t kOptionalHeader = 24;
// Counted from the optional header.
constexpr std::uint64_t kMagic = 0;             // 2 bytes
constexpr std::uint64_t kDirectoryCount = 108;  // 4 bytes
constexpr std::uint64_t kDirectories = 112;     // each an RVA and a size, 4 bytes each: exports, imports, ...
constexpr std::uint64_t kDirectorySize = 8;
// A section: its size in memory, its RVA, its size in the file and its place there, 4 bytes each.
constexpr std::uint64_t kSectionSize = 40;
constexpr std::uint64_t kSectionRva = 12;
constexpr std::uint64_t kSectionBytes = 16;
constexpr std::uint64_t kSectionPlace = 20;
// The export directory, 4 bytes each: two counts, and the RVAs of addresses (4 bytes), names (4) and the names' places
// among the addresses (2).
constexpr std::uint64_t kFunctionCount = 20;
constexpr std::uint64_t kNameCount = 24;
constexpr std::uint64_t kFunctions = 28;
constexpr std::uint64_t kNames = 32;
constexpr std::uint64_t kOrdinals = 36;
// An import descriptor; the last one has no name.
constexpr std::uint64_t kImportSize = 20;
constexpr std::uint64_t kImportName = 12;

constexpr std::uint64_t kMachineX64 = 0x8664;
constexpr std::uint64_t kMagic64 = 0x20B;
// What goes beyond is no library that anybody makes, but would take long to read.
constexpr std::size_t kLongestName = 512;  // bytes
constexpr std::uint64_t kMostSections = 96;
constexpr std::uint64_t kMostNames = 65536;

class Reader {
  public:
    explicit Reader(std::string_view bytes) : m_Bytes(bytes) {}

    std::string Read(PeFile& file) {
        if (!m_Bytes.starts_with("MZ")) return "it is no program or library for Windows";
        m_Header = Number(kNewHeaderAt, 4);
        if (!Holds(m_Header, kSignature.size()) || m_Bytes.substr(m_Header, kSignature.size()) != kSignature) {
            return "it is no program or library for Windows, or is damaged";
        }
        const std::uint64_t machine = Number(m_Header + kMachine, 2);
        const std::uint64_t magic = Number(m_Header + kOptionalHeader + kMagic, 2);
        if (m_IsGood && (machine != kMachineX64 || magic != kMagic64)) return NotFor64Bits(machine);
        ReadSections();
        ReadExports(Directory(0), file.m_Exports);
        ReadImports(Directory(1), file.m_Imports);
        return m_IsGood ? "" : "it is damaged: it speaks of something that isn't in it";
    }

  private:
    struct Section {
        std::uint64_t m_Rva;
        std::uint64_t m_Size;  // in the file
        std::uint64_t m_Place;
    };

    static std::string NotFor64Bits(std::uint64_t machine) {
        char text[80];
        std::snprintf(text, sizeof text, "it isn't for 64 bits (machine 0x%04X)", static_cast<unsigned>(machine));
        return text;
    }

    bool Holds(std::uint64_t offset, std::uint64_t size) const {
        return offset <= m_Bytes.size() && size <= m_Bytes.size() - offset;
    }

    // 0, and the file isn't good, if the bytes aren't there. The sums that make offsets can't overflow: every part
    // comes from at most 4 bytes.
    std::uint64_t Number(std::uint64_t offset, unsigned size) {
        m_IsGood = m_IsGood && Holds(offset, size);
        std::uint64_t value = 0;
        for (unsigned i = 0; m_IsGood && i < size; ++i) {
            value |= std::uint64_t{static_cast<unsigned char>(m_Bytes[offset + i])} << 8 * i;
        }
        return value;
    }

    // The RVA of a table; 0 if there is none.
    std::uint64_t Directory(unsigned index) {
        const std::uint64_t optional = m_Header + kOptionalHeader;
        return index < Number(optional + kDirectoryCount, 4)
                   ? Number(optional + kDirectories + index * kDirectorySize, 4)
                   : 0;
    }

    // A file that was cut lacks bytes of a section, even if none of ours.
    void ReadSections() {
        const std::uint64_t first = m_Header + kOptionalHeader + Number(m_Header + kOptionalHeaderSize, 2);
        const std::uint64_t count = Number(m_Header + kSectionCount, 2);
        m_IsGood = m_IsGood && count <= kMostSections;
        for (std::uint64_t at = first; m_IsGood && at < first + count * kSectionSize; at += kSectionSize) {
            const Section section = {Number(at + kSectionRva, 4), Number(at + kSectionBytes, 4),
                                     Number(at + kSectionPlace, 4)};
            m_IsGood = m_IsGood && (section.m_Size == 0 || Holds(section.m_Place, section.m_Size));
            m_Sections.push_back(section);
        }
    }

    // The place in the file; one behind its end if the RVA is in no section.
    std::uint64_t Place(std::uint64_t rva) const {
        for (const Section& section : m_Sections) {
            const bool isInside = rva >= section.m_Rva && rva - section.m_Rva < section.m_Size;
            if (isInside) return section.m_Place + (rva - section.m_Rva);
        }
        return m_Bytes.size() + 1;
    }

    std::uint64_t NumberAt(std::uint64_t rva, unsigned size) { return Number(Place(rva), size); }

    std::string NameAt(std::uint64_t rva) {
        const std::uint64_t place = Place(rva);
        m_IsGood = m_IsGood && Holds(place, 1);
        if (!m_IsGood) return {};
        const std::string_view rest = m_Bytes.substr(place, kLongestName);
        const std::size_t length = rest.find('\0');
        m_IsGood = length != std::string_view::npos;
        return std::string(rest.substr(0, m_IsGood ? length : 0));
    }

    // Both end at the latest where the file does, whatever count or end it claims.
    void ReadExports(std::uint64_t table, std::vector<std::string>& exports) {
        if (table == 0) return;
        const std::uint64_t functionCount = NumberAt(table + kFunctionCount, 4);
        const std::uint64_t nameCount = NumberAt(table + kNameCount, 4);
        const std::uint64_t functions = NumberAt(table + kFunctions, 4);
        const std::uint64_t names = NumberAt(table + kNames, 4);
        const std::uint64_t ordinals = NumberAt(table + kOrdinals, 4);
        m_IsGood = m_IsGood && nameCount <= kMostNames;
        for (std::uint64_t i = 0; m_IsGood && i < nameCount; ++i) {
            std::string name = NameAt(NumberAt(names + 4 * i, 4));
            const std::uint64_t ordinal = NumberAt(ordinals + 2 * i, 2);
            m_IsGood = m_IsGood && ordinal < functionCount;
            if (NumberAt(functions + 4 * ordinal, 4) != 0) exports.push_back(std::move(name));
        }
    }

    void ReadImports(std::uint64_t table, std::vector<std::string>& imports) {
        if (table == 0) return;
        for (std::uint64_t entry = table;; entry += kImportSize) {
            const std::uint64_t name = NumberAt(entry + kImportName, 4);
            if (name == 0) return;
            imports.push_back(NameAt(name));
        }
    }

    const std::string_view m_Bytes;
    std::uint64_t m_Header = 0;
    std::vector<Section> m_Sections;
    bool m_IsGood = true;
};

}  // namespace

std::string ReadPeFile(std::string_view bytes, PeFile& file) {
    return Reader(bytes).Read(file);
}
