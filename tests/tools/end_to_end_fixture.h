// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_END_TO_END_FIXTURE_H
#define NUBIS_TEST_END_TO_END_FIXTURE_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include "drive_service_process.h"
#include "row_reader.h"
#include "temp_dir.h"

namespace NubisTool {

// The tool as people use it: the real program against a real service, which `service exec` starts for each test.
class EndToEndTest : public testing::Test {
protected:
    EndToEndTest()
    {
        setenv("PATH", (std::string(NUBIS_TEST_BIN) + ":" + std::getenv("PATH")).c_str(), 1);
        setenv("NOTES", NUBIS_TEST_NOTES, 1);
        std::filesystem::current_path(folder_.Path());
    }

    ~EndToEndTest() override
    {
        std::filesystem::current_path("/");
    }

    void Put(const std::string &name, const std::string &text)
    {
        std::ofstream(folder_.Path() + "/" + name) << text;
    }

    // Runs shell lines against a fresh service with the catalogue of the notes; stderr goes to the file "errors".
    int RunLines(const std::string &lines)
    {
        Put("lines", "nubis catalogue apply \"$NOTES\" >/dev/null || exit 99\n" + lines);
        out_.clear();
        return NubisTest::RunCommand("nubis service exec -- sh lines 2>errors", out_);
    }

    std::string Errors() const
    {
        std::ifstream file(folder_.Path() + "/errors");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    Json::Value Out() const
    {
        Json::Value json;
        std::string error;
        EXPECT_TRUE(ParseJsonText(out_, json, error)) << out_ << error;
        return json;
    }

    TempDir folder_;
    std::string out_;
};

} // namespace NubisTool

#endif // NUBIS_TEST_END_TO_END_FIXTURE_H
