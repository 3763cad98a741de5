#include "access_token_kit.h"

#include <gtest/gtest.h>

#include "tokenid_kit.h"

namespace Tarvo::Security::AccessToken {
namespace {

TEST(AccessTokenKitTest, TypeLivesInBits28And29)
{
    EXPECT_EQ(AccessTokenKit::MakeTokenId(TOKEN_HAP, 5), 0x00000005u);
    EXPECT_EQ(AccessTokenKit::MakeTokenId(TOKEN_NATIVE, 5), 0x10000005u);
    EXPECT_EQ(AccessTokenKit::MakeTokenId(TOKEN_SHELL, 0xFFFFF), 0x200FFFFFu);
    // The serial cannot spill into the type.
    EXPECT_EQ(AccessTokenKit::MakeTokenId(TOKEN_HAP, 0x300001), 0x00000001u);

    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(0x00000005u), TOKEN_HAP);
    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(0x10000000u), TOKEN_NATIVE);
    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(0x200ABCDEu), TOKEN_SHELL);
    // Bits outside the type field do not change the type.
    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(0xC0000001u), TOKEN_HAP);
}

TEST(AccessTokenKitTest, UnknownTypeDecodesAsInvalid)
{
    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(0x30000001u), TOKEN_INVALID);
    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(AccessTokenKit::MakeTokenId(TOKEN_INVALID, 1)), TOKEN_INVALID);
    EXPECT_EQ(AccessTokenKit::GetTokenTypeFlag(AccessTokenKit::MakeTokenId(TOKEN_TYPE_BUTT, 1)), TOKEN_INVALID);
}

TEST(AccessTokenKitTest, SystemAppFlagIsBit32OfTheFullId)
{
    AccessTokenID id = AccessTokenKit::MakeTokenId(TOKEN_HAP, 42);
    EXPECT_EQ(TokenIdKit::MakeFullTokenId(id, true), 0x10000002AULL);
    EXPECT_EQ(TokenIdKit::MakeFullTokenId(id, false), 0x2AULL);
    EXPECT_TRUE(TokenIdKit::IsSystemAppByFullTokenID(0x100000000ULL));
    EXPECT_FALSE(TokenIdKit::IsSystemAppByFullTokenID(0xFFFFFFFFULL));
    EXPECT_FALSE(TokenIdKit::IsSystemAppByFullTokenID(0x200000000ULL));
}

}  // namespace
}  // namespace Tarvo::Security::AccessToken
