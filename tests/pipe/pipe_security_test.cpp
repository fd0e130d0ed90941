#include "pipe/pipe_security.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using testing::_;
using testing::ElementsAre;

// Byte for byte, because a wrong mask or a wrong group would make a pipe that works just as well for us.
TEST(PipeSecurity, NamesAuthenticatedUsersAloneForReadingAndWriting) {
    PipeSecurity security;
    const SECURITY_ATTRIBUTES& attributes = *security.Attributes();
    EXPECT_EQ(attributes.nLength, sizeof attributes);
    EXPECT_FALSE(attributes.bInheritHandle);
    const auto& descriptor = *static_cast<const SECURITY_DESCRIPTOR*>(attributes.lpSecurityDescriptor);
    EXPECT_EQ(descriptor.Revision, 1);
    EXPECT_EQ(descriptor.Control, 4) << "a list is present, and not by default";
    ASSERT_NE(descriptor.Dacl, nullptr);

    const auto* const list = reinterpret_cast<const BYTE*>(descriptor.Dacl);
    const BYTE* const entry = list + 8;
    EXPECT_THAT(std::vector<int>(list, entry), ElementsAre(2, 0, _, _, 1, 0, 0, 0)) << "one entry";
    EXPECT_THAT(std::vector<int>(entry, entry + 8), ElementsAre(0, 0, 20, 0, 0, 0, 0, 0xC0))
        << "it allows, is for the pipe itself, and grants GENERIC_READ and GENERIC_WRITE";
    EXPECT_THAT(std::vector<int>(entry + 8, entry + 20), ElementsAre(1, 1, 0, 0, 0, 0, 0, 5, 11, 0, 0, 0))
        << "S-1-5-11";
}

}  // namespace
