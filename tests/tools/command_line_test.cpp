// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <array>
#include <sstream>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_error.h"
#include "command_tree.h"

namespace NubisTool {
namespace {
using testing::HasSubstr;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome RunNubis(std::vector<std::string> arguments, const std::string &input = "")
{
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    int status = RunTool(std::move(arguments), {in, out, err, false});
    return {status, out.str(), err.str()};
}

TEST(CommandLine, EveryCommandHasHelpWithAnExampleThatItTakes)
{
    CLI::App app("", "nubis");
    Chosen chosen;
    AddAllCommands(app, chosen);
    const std::vector<CommandNode> commands = CommandTree(app);
    EXPECT_GT(commands.size(), 50U);
    for (const CommandNode &node : commands) {
        const std::string example = "\n  nubis" + node.path;
        EXPECT_THAT(node.command->get_footer(), HasSubstr("Example:" + example)) << node.path;
        EXPECT_EQ(node.command->help().find(" -- COMMAND") != std::string::npos, RunsCommand(*node.command));
    }
    Outcome outcome = RunNubis({"lock", "exec", "--help"});
    EXPECT_EQ(outcome.status, EXIT_DONE);
    EXPECT_THAT(outcome.out, HasSubstr("exec [OPTIONS] -- COMMAND [ARGUMENT ...]\n"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(RunNubis({"--version"}).out, testing::StartsWith("nubis 5."));
    EXPECT_THAT(RunNubis({"--help"}).out, testing::Not(HasSubstr("demo-device")));
}

TEST(CommandLine, WrongArgumentsAreUsageErrorsWithAdvice)
{
    const std::vector<std::vector<std::string>> wrong = {{}, {"nonsense"}, {"service"}, {"record", "import"},
        {"record", "query", "--type", "T"}, {"record", "get", "--bundle", "b", "--type", "T"},
        {"record", "query", "--bundle", "b", "--type", "T", "--limit", "0"},
        {"record", "query", "--bundle", "b", "--type", "T", "--scope", "secret"},
        {"record", "save", "--bundle", "b", "--type", "T", "--policy", "maybe", "{}"},
        {"record", "save", "--bundle", "b", "--type", "T", "[1]"}, {"user", "info", "--user", "-1"},
        {"user", "info", "--demon", "unknown"}, {"changes", "--bundle", "b", "--interval", "x"},
        {"changes", "--bundle", "b", "--interval", "nan"}, {"subscription", "remove", "x", "x"},
        {"record", "new-ids", "--bundle", "b", "--key", ""},
        {"crid", "encode", "--version-number", "2", "--upid", "1", "x"}, {"crid", "encode", "--upid", "1", "x"},
        {"record", "delete", "--bundle", "b", "--type", "T", "--if-version", "1", "x", "y"}, {"service", "exec"},
        {"service", "exec", "--"}, {"lock", "exec", "--bundle", "b"}, {"watch", "--fetch"},
        {"watch", "--once", "--count", "2"}, {"subscription", "add"},
        {"lock", "take", "--bundle", "b", "--session", "s", "--wait", "1"},
        {"crid", "encode", "-n", "0", "--upid", "-1", "5"},
        {"crid", "encode", "-n", "0", "--upid", "18446744073709551616", "5"}, {"catalogue", "list", "surplus"},
        {"record", "copy", "--bundle", "b", "--type", "T", "x", "--to-id", "y", "--to-id", "z"},
        {"record", "delete", "--bundle", "b", "--type", "T", "x", "x"}, {"share", "--bundle", "b", "--type", "T", ""},
        {"key", "user", "--bundle", "b", "--scope", "shared"}, {"key", "common", "--bundle", "b", "--data-type", "1"},
        {"report", "send", "--bundle", "b", "end", "x"}, {"report", "send", "--bundle", "b", "end", "errorCode=1"}};
    for (const std::vector<std::string> &arguments : wrong) {
        Outcome outcome = RunNubis(arguments);
        EXPECT_EQ(outcome.status, EXIT_USAGE) << testing::PrintToString(arguments) << outcome.err;
        EXPECT_THAT(outcome.err, testing::AllOf(testing::StartsWith("nubis: "), HasSubstr("next: ")));
        EXPECT_EQ(outcome.out, "");
    }
    const std::vector<std::pair<std::vector<std::string>, std::string>> explained = {
        {{"record", "import", "--bundle"}, "nubis record import --help"},
        {{"nonsense", "save", "{}"}, "\"nonsense\" is no command; expected: demo, doctor, service, "},
        {{"record"}, "expected a command: import, save, get, delete, new-ids, modify, copy, query"},
        {{"--user", "5", "user", "info"}, "not expected: --user 5 (options stand behind the command that has them)"},
        {{"user", "info", "--user", "x"}, "--user: expected a whole number from 0 to 2147483647, found \"x\""},
        {{"share", "--bundle", "b", "--type", "T", "\x1b[2J", "\x1b[2J"}, "the record id \\x1b[2J is given twice"},
        {{"user", "info", "--demon", "x"}, "--demon: expected one of asset, data, file, found \"x\""}};
    for (const auto &[arguments, text] : explained) {
        EXPECT_THAT(RunNubis(arguments).err, HasSubstr(text));
    }
}

TEST(CommandLine, CridsAreMadeAndTakenApart)
{
    Outcome made = RunNubis({"crid", "encode", "-n", "0", "--upid", "42", "18446744073709551615"});
    EXPECT_THAT(made.out, HasSubstr("VERSION  UPID  RECORD ID"));
    EXPECT_THAT(made.out, HasSubstr("0    42  Affffffd5ffffffffffffffffffffffff  A"));
    std::string crid = made.out.substr(made.out.rfind(' ') + 1);
    crid.pop_back();
    EXPECT_EQ(RunNubis({"crid", "decode", crid}).out, made.out);

    Outcome wrong = RunNubis({"crid", "decode", std::string(33, 'A'), "Zebra"});
    EXPECT_EQ(wrong.status, EXIT_OPERATION_FAILED);
    EXPECT_THAT(wrong.err, HasSubstr("\"Zebra\""));
    EXPECT_EQ(RunNubis({"crid", "decode", ""}).status, EXIT_OPERATION_FAILED);
    EXPECT_THAT(wrong.out, HasSubstr("VERSION"));
    EXPECT_EQ(RunNubis({"crid", "encode", "-n", "0", "--upid", "1", "no number"}).status, EXIT_OPERATION_FAILED);
    EXPECT_EQ(RunNubis({"crid", "encode", "-n", "1", "--upid", "1", "abc"}).status, EXIT_OPERATION_FAILED);
}

TEST(CommandLine, OutputThatCannotBeWrittenIsAFailure)
{
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    out.setstate(std::ios::badbit);
    EXPECT_EQ(RunTool({"crid", "decode", std::string(33, 'A')}, {in, out, err, false}), EXIT_OPERATION_FAILED);
    EXPECT_THAT(err.str(), HasSubstr("could not be written"));

    // A reader that has gone, as `head` does, is nothing to complain of.
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    int standardOutput = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    err.str("");
    int status = RunTool({"crid", "decode", std::string(33, 'A')}, {in, out, err, false});
    dup2(standardOutput, STDOUT_FILENO);
    close(ends[1]);
    close(standardOutput);
    EXPECT_EQ(status, EXIT_READER_GONE);
    EXPECT_EQ(err.str(), "");
}
} // namespace
} // namespace NubisTool
