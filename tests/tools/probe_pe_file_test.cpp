#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/probe/doctor/pe_file.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A library of one section, with everything at a place that the rows below know.
class Image {
  public:
    Image() {
        Put(0, "MZ");
        Put32(0x3C, kHeader);
        Put(kHeader, std::string("PE\0\0", 4));
        Put16(kHeader + 4, 0x8664);
        Put16(kHeader + 6, 1);     // sections
        Put16(kHeader + 20, 240);  // the optional header's size
        Put16(kOptional, 0x20B);
        Put32(kOptional + 108, 16);  // directories
        Put32(kExportDirectory, kRva);
        Put32(kImportDirectory, kRva + 0x80);
        Put32(kSection + 12, kRva);
        Put32(kSection + 16, 0x200);
        Put32(kSection + 20, kPlace);
        Put32(kPlace + 20, 2);  // functions, then names, and where the three tables are
        Put32(kPlace + 24, 2);
        Put32(kPlace + 28, kRva + 0x30);
        Put32(kPlace + 32, kRva + 0x40);
        Put32(kPlace + 36, kRva + 0x50);
        Put32(kPlace + 0x30, 0);       // the first leads to nothing
        Put32(kPlace + 0x34, 0x5000);  // anywhere
        Put32(kPlace + 0x40, kRva + 0x60);
        Put32(kPlace + 0x44, kRva + 0x68);
        Put16(kPlace + 0x50, 0);
        Put16(kPlace + 0x52, 1);
        Put(kPlace + 0x60, "Gone");
        Put(kPlace + 0x68, "SteamClient");
        Put32(kPlace + 0x80 + 12, kRva + 0xC0);
        Put(kPlace + 0xC0, "KERNEL32.dll");
    }

    void Put(std::size_t offset, const std::string& bytes) { m_Bytes.replace(offset, bytes.size(), bytes); }
    void Put16(std::size_t offset, unsigned value) {
        Put(offset, {static_cast<char>(value), static_cast<char>(value >> 8)});
    }
    void Put32(std::size_t offset, unsigned value) {
        Put16(offset, value & 0xFFFF);
        Put16(offset + 2, value >> 16);
    }

    static constexpr unsigned kRva = 0x1000;
    static constexpr std::size_t kHeader = 0x40;
    static constexpr std::size_t kOptional = kHeader + 24;
    static constexpr std::size_t kExportDirectory = kOptional + 112;
    static constexpr std::size_t kImportDirectory = kExportDirectory + 8;
    static constexpr std::size_t kSection = kOptional + 240;
    static constexpr std::size_t kPlace = 0x200;

    std::string m_Bytes = std::string(0x400, '\0');
};

TEST(PeFile, TellsExportsAndImports) {
    PeFile file;
    EXPECT_EQ(ReadPeFile(Image().m_Bytes, file), "");
    EXPECT_THAT(file.m_Exports, ElementsAre("SteamClient"));
    EXPECT_THAT(file.m_Imports, ElementsAre("KERNEL32.dll"));
}

TEST(PeFile, SurvivesDamageOfEveryKind) {
    const char damaged[] = "it is damaged";
    const unsigned huge = 0xFFFFFFFF;
    const struct {
        std::size_t offset;
        unsigned value;
        const char* problem;  // null: it is none, but there are no exports then
    } rows[] = {
        {0, 0x464C457F, "no program or library for Windows"},  // as a program of another system begins
        {0x3C, huge, "or is damaged"},
        {0x3C, 0x3FE, "or is damaged"},
        {Image::kHeader, 0, "damaged"},
        {Image::kHeader + 4, 0x014C | 1 << 16, "it isn't for 64 bits (machine 0x014C)"},
        {Image::kOptional, 0x10B, "it isn't for 64 bits"},
        {Image::kHeader + 4, 0x8664 | 0xFFFFu << 16, damaged},  // sections
        {Image::kHeader + 4, 0x8664, damaged},                  // none
        {Image::kHeader + 20, 0xFFFF, damaged},                 // the optional header's size
        {Image::kExportDirectory, 0, nullptr},
        {Image::kOptional + 108, 0, nullptr},
        {Image::kExportDirectory, huge, damaged},
        {Image::kExportDirectory, Image::kRva + 0x1F0, damaged},
        {Image::kImportDirectory, Image::kRva + 0x1F8, damaged},
        {Image::kSection + 20, huge, damaged},
        {Image::kSection + 20, 0x3FF, damaged},
        {Image::kPlace + 20, 0, damaged},  // a name's function is beyond the last
        {Image::kPlace + 24, huge, damaged},
        {Image::kPlace + 28, huge, damaged},
        {Image::kPlace + 32, huge, damaged},
        {Image::kPlace + 36, huge, damaged},
        {Image::kPlace + 0x44, huge, damaged},
        {Image::kPlace + 0x52, 0xFFFF, damaged},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.offset << " = " << row.value);
        Image image;
        image.Put32(row.offset, row.value);
        PeFile file;
        const std::string problem = ReadPeFile(image.m_Bytes, file);
        if (row.problem != nullptr) {
            EXPECT_THAT(problem, HasSubstr(row.problem));
        } else {
            EXPECT_EQ(problem, "");
            EXPECT_THAT(file.m_Exports, IsEmpty());
        }
    }
    Image image;
    image.Put(Image::kPlace + 0x68, std::string(0x400 - Image::kPlace - 0x68, 'x'));  // a name without an end
    PeFile file;
    EXPECT_THAT(ReadPeFile(image.m_Bytes, file), HasSubstr(damaged));
}

TEST(PeFile, IsNotWholeWhereverItIsCut) {
    const std::string bytes = Image().m_Bytes;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        // As large as what there is, so that a look beyond it is noticed.
        const std::vector<char> cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        PeFile file;
        EXPECT_NE(ReadPeFile({cut.data(), cut.size()}, file), "") << size;
    }
}

}  // namespace
