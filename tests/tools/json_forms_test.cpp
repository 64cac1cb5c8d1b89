// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "command_line.h"
#include "command_tree.h"
#include "end_to_end_fixture.h"

namespace NubisTool {
namespace {
std::string Document()
{
    std::ifstream file(NUBIS_ROOT "/docs/tool-json.md");
    EXPECT_TRUE(file.is_open());
    return {std::istreambuf_iterator<char>(file), {}};
}

bool IsPlaceholder(const Json::Value &value)
{
    return value.isString() && !value.asString().empty() && value.asString().front() == '<';
}

// Whether a value is what the document promises; "<number>" stands for any number, another text in angle brackets for
// any text, "<more>" at the end of a list for further elements.
bool Fits(const Json::Value &expected, const Json::Value &found)
{
    if (IsPlaceholder(expected)) {
        return expected == "<number>" ? found.isNumeric() : found.isString();
    }
    if (expected.type() != found.type() && !(expected.isNumeric() && found.isNumeric())) {
        return false;
    }
    if (!expected.isArray() && !expected.isObject()) {
        return expected.compare(found) == 0;
    }
    const bool goesOn = expected.isArray() && !expected.empty() && expected[expected.size() - 1] == "<more>";
    const Json::ArrayIndex size = expected.size() - (goesOn ? 1 : 0);
    bool fits = goesOn ? found.size() > size : found.size() == size;
    if (expected.isArray()) {
        for (Json::ArrayIndex i = 0; fits && i < size; ++i) {
            fits = Fits(expected[i], found[i]);
        }
        return fits;
    }
    for (const std::string &name : expected.getMemberNames()) {
        fits = fits && found.isMember(name) && Fits(expected[name], found[name]);
    }
    return fits;
}

// Of one value, or of one in each line.
std::vector<Json::Value> ValuesOf(const std::string &text, bool isLines)
{
    std::istringstream stream(text);
    std::vector<Json::Value> values;
    std::string part = isLines ? "" : text;
    while (!isLines || std::getline(stream, part)) {
        std::string error;
        EXPECT_TRUE(ParseJsonText(part, values.emplace_back(), error)) << error << " in " << part;
        if (!isLines) {
            break;
        }
    }
    return values;
}

TEST_F(EndToEndTest, JsonIsAsDocumented)
{
    const std::string text = Document();
    const std::regex block("```sh\\n([^`]*)\\n```\\n```(jsonl?)\\n([^`]*)\\n```");
    const std::vector<std::smatch> examples(std::sregex_iterator(text.begin(), text.end(), block), {});
    std::string script = "cp \"$EXAMPLES\"/notes.json .\n";
    for (size_t i = 0; i < examples.size(); ++i) {
        script += "{ " + examples[i][1].str() + "\n} >out." + std::to_string(i) + "\n";
    }
    setenv("EXAMPLES", NUBIS_ROOT "/examples", 1);
    Put("script", script);
    EXPECT_EQ(NubisTest::RunCommand("nubis service exec -- sh script 2>errors", out_), 0);
    EXPECT_EQ(Errors(), "");
    for (size_t i = 0; i < examples.size(); ++i) {
        std::ifstream file(folder_.Path() + "/out." + std::to_string(i));
        const std::string found{std::istreambuf_iterator<char>(file), {}};
        const bool isLines = examples[i][2] == "jsonl";
        const auto expectedValues = ValuesOf(examples[i][3], isLines);
        const auto foundValues = ValuesOf(found, isLines);
        EXPECT_TRUE(
            std::equal(expectedValues.begin(), expectedValues.end(), foundValues.begin(), foundValues.end(), Fits))
            << examples[i][1] << "\n"
            << found;
    }
}

TEST(JsonForms, EveryCommandThatWritesJsonIsDocumented)
{
    const std::string text = Document();
    CLI::App app("", "nubis");
    Chosen chosen;
    AddAllCommands(app, chosen);
    int count = 0;
    for (const CommandNode &node : CommandTree(app)) {
        if (node.command->get_option_no_throw("--json") != nullptr) {
            ++count;
            EXPECT_NE(text.find("nubis" + node.path + " "), std::string::npos) << node.path;
        }
    }
    EXPECT_GT(count, 30);
}
} // namespace
} // namespace NubisTool
