// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <json/json.h>

#include "blocking_calls.h"
#include "host/event_channel.h"
#include "host/paths.h"
#include "note_builder.h"
#include "notes_test.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
namespace fs = std::filesystem;

constexpr uid_t OTHER_USER = 65534;
constexpr int ANSWER_MS = 30000;

// What another user tries with a path: to open a file, to list a folder, to talk to a socket. True when he gets
// anything. Runs in a forked process, so system calls only.
bool GetsSomething(const std::string &path, bool isSocket)
{
    if (!isSocket) {
        return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC) >= 0;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), std::min(path.size() + 1, sizeof(address.sun_path) - 1));
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0) {
        return fd < 0;
    }
    // He is thrown out at once, before a word is said; who waits for one is taken for a client.
    pollfd answer{fd, POLLIN, 0};
    char byte = 0;
    return poll(&answer, 1, ANSWER_MS) != 1 || recv(fd, &byte, 1, 0) > 0;
}

// The path that another user gets something of; empty when there is none.
std::string WhatAnotherUserGets(const std::vector<fs::path> &paths)
{
    std::vector<std::pair<std::string, bool>> tries;
    tries.reserve(paths.size());
    for (const fs::path &path : paths) {
        tries.emplace_back(path.string(), fs::is_socket(path));
    }
    const pid_t child = fork();
    if (child == 0) {
        // Not the library's calls, which would wait for the threads that the fork has left behind.
        if (syscall(SYS_setgroups, 0, nullptr) != 0 ||
            syscall(SYS_setresgid, OTHER_USER, OTHER_USER, OTHER_USER) != 0 ||
            syscall(SYS_setresuid, OTHER_USER, OTHER_USER, OTHER_USER) != 0) {
            _exit(255);
        }
        for (size_t i = 0; i < tries.size() && i < 253; ++i) {
            if (GetsSomething(tries[i].first, tries[i].second)) {
                _exit(static_cast<int>(i) + 1);
            }
        }
        _exit(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 254;
    return code == 0 ? "" : code >= 254 ? "no way to become another user" : tries[static_cast<size_t>(code) - 1].first;
}

std::string ReadText(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Runs a command of the tool; the standard output.
std::string RunTool(const std::string &arguments)
{
    std::string output;
    RunCommand(std::string(NUBIS_TEST_BIN) + "/nubis " + arguments + " 2>/dev/null", output);
    return output;
}

class PrivacyTest : public NotesTest {};

TEST_F(PrivacyTest, AnotherUsersProcessGetsNothing)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    ASSERT_TRUE(AllSaved(Save(Database(), {Note("mine").Id("n1")})));
    NBUserInfo info;
    ASSERT_FALSE(Kit()->GetCloudUserInfo(info, false).HasError());
    std::string error;
    Host::EventListener listener(
        Host::DEFAULT_USER_ID, "told", [](const std::string &) {}, [] {});
    ASSERT_TRUE(listener.Start(error)) << error;
    std::vector<fs::path> folders{Service().Folder()};
    std::vector<fs::path> files;
    std::vector<fs::path> sockets;
    for (const auto &entry : fs::recursive_directory_iterator(Service().Folder())) {
        (entry.is_directory() ? folders : entry.is_socket() ? sockets : files).push_back(entry.path());
    }
    for (const char *name : {"drive.db", "push_key.pem", "drive.db-wal"}) {
        const auto isNamed = [name](const fs::path &path) { return path.filename() == name; };
        EXPECT_TRUE(std::any_of(files.begin(), files.end(), isNamed)) << name << " is not among those that are tried";
    }
    ASSERT_GE(sockets.size(), 2U);
    for (const std::vector<fs::path> *paths : {&folders, &files, &sockets}) {
        EXPECT_EQ(WhatAnotherUserGets(*paths), "");
    }

    // The folders' modes are not all that keeps him out.
    for (const fs::path &folder : folders) {
        fs::permissions(folder, fs::perms(0755));
    }
    const fs::path service = Host::AbilitySocketPath("com.orvane.tyra.aerostash", "DriveServiceAbility", 100);
    fs::permissions(service, fs::perms(0777));
    EXPECT_NE(WhatAnotherUserGets({folders}), "") << "he can see the folders now, or this test could not fail";
    EXPECT_EQ(WhatAnotherUserGets(files), "");
    EXPECT_EQ(WhatAnotherUserGets({service}), "");
    EXPECT_EQ(TitleOf(FetchById(Database(), "note", "n1").record), "mine") << "who is in already goes on";
    std::string refusal;
    EXPECT_NE(RunCommand(std::string(NUBIS_TEST_BIN) + "/nubis service start 2>&1", refusal), 0);
    EXPECT_THAT(refusal, testing::HasSubstr("has mode 0755, it must be 0700"));
}

// Only the tool uses the service here: threads of the library, which read the environment, would meet its change.
TEST(SecretsTest, NoneReachesALog)
{
    DriveServiceProcess service;
    service.InstallNotesCatalogue();
    const std::string where = " --bundle com.example.notes";
    const std::string note = where + " --type note";
    const std::string content = "what-nobody-may-read";
    for (const char *level : {"", "debug"}) {
        service.Kill();
        const fs::path log = service.Folder() / ("log" + std::string(level));
        setenv("NUBIS_LOG_FILE", log.c_str(), 1);
        *level == '\0' ? unsetenv("NUBIS_LOG_LEVEL") : setenv("NUBIS_LOG_LEVEL", level, 1);
        std::vector<std::string> secrets{content};
        for (const std::string &key : {"key service" + where, "key user" + where,
                 "key common" + where + " --data-type 1 --key-type 2", "token" + where}) {
            Json::Value list;
            std::istringstream(RunTool(key + " --show --json")) >> list;
            for (const Json::Value &entry : list) {
                secrets.push_back(entry["secret"].asString());
                EXPECT_GE(secrets.back().size(), 16U) << key;
            }
        }
        EXPECT_GE(secrets.size(), 6U);
        RunTool("subscription add" + where);
        const std::string id = "id" + std::string(level);
        EXPECT_THAT(
            RunTool("record save --new" + note + " '{\"recordId\": \"" + id + "\", \"title\": \"" + content + "\"}'"),
            testing::HasSubstr(id));
        RunTool("record save --new" + note + " '{\"recordId\": \"" + id + "\", \"title\": \"" + content + "\"}'");
        EXPECT_THAT(RunTool("record query" + note), testing::HasSubstr(content));
        RunTool("changes" + where);
        RunTool("service export " + (service.Folder() / "backup").string());
        EXPECT_THAT(RunTool("service import --replace " + (service.Folder() / "backup").string()),
            testing::HasSubstr("imported"));
        std::istringstream pem(ReadText(Host::StateDir() + "/drive/user-100/push_key.pem"));
        for (std::string line; std::getline(pem, line);) {
            if (line.find("PRIVATE KEY") == std::string::npos) {
                secrets.push_back(line);
            }
        }
        EXPECT_GE(secrets.size(), 20U);

        std::string text = ReadText(log);
        for (const auto &entry : fs::directory_iterator(Host::StateDir() + "/log")) {
            text += ReadText(entry.path());
        }
        EXPECT_FALSE(text.empty() && *level != '\0') << "nothing was logged, so nothing was tested";
        for (const std::string &secret : secrets) {
            EXPECT_EQ(text.find(secret), std::string::npos) << secret << " is in a log at level \"" << level << "\"";
        }
    }
}
} // namespace
