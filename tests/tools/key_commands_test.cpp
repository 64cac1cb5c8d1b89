// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "end_to_end_fixture.h"

namespace NubisTool {
namespace {
constexpr const char *NOTES = " --bundle com.example.notes ";

TEST_F(EndToEndTest, SecretsAreWrittenOnlyOnRequest)
{
    for (const char *secret : {"key common --data-type 1 --key-type 2", "token"}) {
        const std::string command = std::string("nubis ") + secret + NOTES;
        ASSERT_EQ(
            RunLines("secret=$(" + command + "--show) || exit 98\n" + command +
                     "--json >shown; grep -q \"$secret\" shown && exit 97\n"
                     "grep -q $(printf %s \"$secret\" | sha256sum | cut -c1-64) shown && printf %s $secret | wc -c"),
            0)
            << Errors();
        EXPECT_THAT(out_, testing::AnyOf("64\n", "43\n")) << secret;
    }
    ASSERT_EQ(RunLines(std::string("nubis key service --show --json >one") + NOTES +
                       "&& nubis key user --show --json >two" + NOTES + "&& cmp one two && cat one"),
        0)
        << Errors();
    Json::Value keys = Out();
    ASSERT_EQ(keys.size(), 2U);
    EXPECT_EQ(keys[0]["secret"].asString().size(), 34U);
    EXPECT_EQ(keys[1]["secret"].asString().size(), 66U);
    EXPECT_EQ(keys[1]["id"].asString().size(), 32U);
}
} // namespace
} // namespace NubisTool
