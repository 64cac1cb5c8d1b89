// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

#include "service_fixture.h"

namespace DriveService {

namespace {

using testing::HasSubstr;

class CommandLineTest : public testing::Test {
protected:
    int Run(std::vector<std::string> arguments)
    {
        std::vector<const char *> argv{"nubis-drive-service"};
        for (const std::string &argument : arguments) {
            argv.push_back(argument.c_str());
        }
        std::ostringstream out;
        std::ostringstream err;
        int status =
            RunCommandLine(static_cast<int>(argv.size()), argv.data(), out, err, [this](const ServeOptions &options) {
                served_ = options;
                return serveStatus_;
            });
        out_ = out.str();
        err_ = err.str();
        return status;
    }

    std::string WriteFile(const std::string &name, const Json::Value &content)
    {
        std::string path = folder_.Path() + "/" + name;
        std::ofstream(path) << content.toStyledString();
        return path;
    }

    TempFolder folder_;
    int serveStatus_ = 0;
    ServeOptions served_;
    std::string out_;
    std::string err_;
};

TEST_F(CommandLineTest, ServingTakesItsOptions)
{
    serveStatus_ = 1;
    EXPECT_EQ(Run({"--data", "/x", "--user", "7", "--idle-seconds", "9"}), 1);
    EXPECT_EQ(served_.dataFolder, "/x");
    EXPECT_EQ(served_.userId, 7);
    EXPECT_EQ(served_.idleSeconds, 9);
    serveStatus_ = 0;
    EXPECT_EQ(Run({"--data", "/x"}), 0);
    EXPECT_EQ(served_.userId, 100);
    EXPECT_EQ(served_.idleSeconds, 0);
    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_THAT(out_, HasSubstr("nubis-drive-service 5."));
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_THAT(out_, HasSubstr("apply-catalogue"));
}

TEST_F(CommandLineTest, WrongOptionsAreExplained)
{
    EXPECT_EQ(Run({}), 2);
    EXPECT_THAT(err_, HasSubstr("--data is required"));
    EXPECT_EQ(Run({"--data", "/x", "--user", "-1"}), 2);
    EXPECT_THAT(err_, HasSubstr("--user"));
    EXPECT_EQ(Run({"--data", "/x", "--idle-seconds", "soon"}), 2);
    EXPECT_THAT(err_, HasSubstr("--idle-seconds"));
    EXPECT_EQ(Run({"--data", "/x", "--colour"}), 2);
    EXPECT_EQ(Run({"check-catalogue"}), 2);
    EXPECT_EQ(Run({"apply-catalogue", "f"}), 2);
}

TEST_F(CommandLineTest, CatalogueFilesAreCheckedAndInstalledAllOrNone)
{
    std::string good = WriteFile("good.json", PeopleEntry());
    Json::Value entry = PeopleEntry();
    entry["bundleName"] = "com.example.other";
    entry["appId"] = 5;
    std::string bad = WriteFile("bad.json", entry);
    std::string data = folder_.Path() + "/data";
    EXPECT_EQ(Run({"check-catalogue", good}), 0);
    EXPECT_THAT(out_, HasSubstr("1 catalogue file is good"));
    EXPECT_EQ(Run({"check-catalogue", good, bad, "/none.json"}), 1);
    EXPECT_THAT(err_, HasSubstr(bad + ": appId: expected a text that is not empty, found integer 5"));
    EXPECT_THAT(err_, HasSubstr("/none.json: cannot be read: No such file or directory"));
    EXPECT_EQ(Run({"apply-catalogue", "--data", data, good, bad}), 1);
    EXPECT_THAT(err_, HasSubstr("nothing was installed"));
    EXPECT_FALSE(std::filesystem::exists(data));
    EXPECT_EQ(Run({"apply-catalogue", "--data", data, good, good}), 1);
    EXPECT_THAT(err_, HasSubstr("bundleName: \"com.example.people\" is in another of these files too"));
    EXPECT_EQ(Run({"check-catalogue", folder_.Path()}), 1);
    EXPECT_THAT(err_, HasSubstr("it is not a regular file"));

    EXPECT_EQ(Run({"apply-catalogue", "--data", data, good}), 0) << err_;
    std::vector<std::string> installed;
    for (const auto &file : std::filesystem::directory_iterator(data + "/catalogue")) {
        installed.push_back(file.path().filename());
    }
    EXPECT_THAT(installed, testing::ElementsAre("com.example.people.json")) << "nothing is left beside it";
    ServiceInstance service(data, 100, SystemNowMs);
    EXPECT_THAT(service.Router().Answer(R"({"function":"GetCloudAppInfo","bundleName":["com.example.people"]})", "d"),
        HasSubstr("app-7"));
}

TEST_F(CommandLineTest, DatabasesAreCheckedWhileNobodyServesThem)
{
    const std::string data = folder_.Path() + "/data";
    const std::string database = data + "/user-100/drive.db";
    EXPECT_EQ(Run({"check-data", "--data", data}), 0);
    EXPECT_FALSE(std::filesystem::exists(data));
    {
        ServiceInstance service(data, 100, SystemNowMs);
        EXPECT_THAT(service.Router().Answer(R"({"function": "checkData"})", ""), HasSubstr(R"("problems":[])"));
        EXPECT_EQ(Run({"check-data", "--data", data}), 3);
        EXPECT_THAT(err_, HasSubstr("process " + std::to_string(getpid()) + "; stop it first"));
    }
    auto files = [&] {
        std::filesystem::directory_iterator folder(data + "/user-100");
        return std::distance(begin(folder), end(folder));
    };
    const auto before = files();
    EXPECT_EQ(Run({"check-data", "--data", data}), 0) << err_;
    EXPECT_THAT(out_, HasSubstr("drive.db is whole, schema version"));
    EXPECT_EQ(files(), before);

    // Pages of tables, not the header: it opens, and only reading all of it shows the damage.
    std::fstream file(database, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(3 * 4096);
    file << std::string(8 * 4096, 'x');
    file.close();
    EXPECT_EQ(Run({"check-data", "--data", data}), 1);
    EXPECT_THAT(err_, HasSubstr(database + ": "));
}

TEST_F(CommandLineTest, DataFoldersAreMadePrivateAndServedOnce)
{
    std::string data = folder_.Path() + "/a/b";
    auto open = [](const std::string &path, int user = 100) -> std::string {
        try {
            ServiceInstance service(path, user, SystemNowMs);
        } catch (const std::exception &failure) {
            return failure.what();
        }
        return "opened";
    };
    {
        ServiceInstance service(data, 100, SystemNowMs);
        struct stat info {};
        for (const std::string &path : {data, data + "/user-100"}) {
            ASSERT_EQ(stat(path.c_str(), &info), 0);
            EXPECT_EQ(info.st_mode & 0777, 0700u) << path;
        }
        EXPECT_THAT(
            open(data), HasSubstr("already running on this data (process " + std::to_string(getpid()) + " holds"));
        EXPECT_EQ(open(data, 101), "opened") << "another user's service has data of its own";
    }
    EXPECT_EQ(open(data), "opened") << "the lock ends with its holder";
    std::string file = WriteFile("file", J("{}"));
    EXPECT_THAT(open(file + "/data"), HasSubstr("cannot make the folder"));
    EXPECT_THAT(open(file), HasSubstr(file + " is not a folder"));
    ASSERT_EQ(chmod(data.c_str(), 0770), 0);
    EXPECT_THAT(open(data), HasSubstr("others can write to the data folder " + data));
    ASSERT_EQ(chmod(data.c_str(), 0755), 0);
    ASSERT_EQ(chmod((data + "/user-100").c_str(), 0777), 0);
    EXPECT_EQ(open(data), "opened");
    struct stat info {};
    ASSERT_EQ(stat((data + "/user-100").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u) << "what is the service's own is tightened";
    constexpr uid_t another = 65534;
    for (const std::string &folder : {data + "/user-100", data}) {
        if (geteuid() == 0) {
            ASSERT_EQ(chown(folder.c_str(), another, another), 0);
            EXPECT_THAT(open(data), HasSubstr("the folder " + folder + " belongs to user 65534, not to user 0"));
        }
    }
}

} // namespace

} // namespace DriveService
