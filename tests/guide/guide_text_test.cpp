// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "drive_service_process.h"

// The guide's own words: what it quotes, what it lists, what it lets people type.
namespace {
const std::filesystem::path ROOT = NUBIS_ROOT;
const std::filesystem::path GUIDE = ROOT / "docs" / "guide";

std::string Read(const std::filesystem::path &path)
{
    std::ifstream file(path);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

// What the groups of the pattern find, joined by a space.
std::set<std::string> FindAll(const std::string &text, const char *pattern)
{
    const std::regex expression(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        found.insert((*match)[1].str() + " " + (*match)[2].str());
    }
    return found;
}

// The lines between the two marks of the name, without the indentation of the first.
std::string Snippet(const std::filesystem::path &path, const std::string &name)
{
    std::istringstream file(Read(path));
    std::string snippet;
    size_t indentation = std::string::npos;
    bool isInside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.find("//! [" + name + "]") != std::string::npos) {
            isInside = !isInside;
        } else if (isInside) {
            indentation = std::min(indentation, line.find_first_not_of(' '));
            snippet += line.substr(std::min(indentation, line.size())) + "\n";
        }
    }
    return snippet;
}

TEST(GuideText, EverySnippetIsPartOfAProgramThatIsBuilt)
{
    int count = 0;
    for (const auto &chapter : std::filesystem::directory_iterator(GUIDE)) {
        const std::string text = Read(chapter.path());
        static constexpr char BLOCK[] = "```cpp\n";
        for (size_t at = 0; (at = text.find(BLOCK, at)) != std::string::npos; ++count) {
            std::smatch from;
            const std::string before = text.substr(0, at);
            ASSERT_TRUE(std::regex_search(before, from, std::regex("<!-- ([a-z_/.]+) ([a-z-]+) -->\\n$")))
                << chapter.path() << ": a snippet does not say where it is from\n"
                << text.substr(at, 200);
            at += sizeof(BLOCK) - 1;
            EXPECT_EQ(text.substr(at, text.find("```", at) - at), Snippet(ROOT / from[1].str(), from[2]))
                << chapter.path();
        }
    }
    EXPECT_GT(count, 10);
}

TEST(GuideText, EveryLocalErrorIsExplained)
{
    EXPECT_EQ(FindAll(Read(GUIDE / "errors.md"), "\\n\\| (\\d+) \\| `(NB_LOCAL_\\w+)` \\|"),
        FindAll(std::regex_replace(
                    Read(ROOT / "interfaces" / "nb_error.h"), std::regex("(NB_LOCAL_\\w+) = (\\d+),"), "$2 $1"),
            "\\n +(\\d+) (NB_LOCAL_\\w+)"));
}

// The chapter's commands in one shell, which ends at the first that fails, with a service of their own.
TEST(GuideText, TheCommandsOfTheToolChapterWork)
{
    NubisTest::DriveServiceProcess service;
    const std::string text = Read(GUIDE / "tool.md");
    std::ofstream script(service.Folder() / "commands.sh");
    script << "set -eu\ncd '" << service.Folder().string() << "'\ncp -r '" << (ROOT / "examples").string()
           << "' .\nexport PATH='" << NUBIS_TEST_BIN << "':$PATH\n";
    static constexpr char BLOCK[] = "```sh\n";
    for (size_t at = 0; (at = text.find(BLOCK, at)) != std::string::npos;) {
        at += sizeof(BLOCK) - 1;
        script << text.substr(at, text.find("```", at) - at);
    }
    script.close();
    std::string output;
    EXPECT_EQ(NubisTest::RunCommand("sh -x " + (service.Folder() / "commands.sh").string() + " 2>&1", output), 0)
        << output;
}
} // namespace
