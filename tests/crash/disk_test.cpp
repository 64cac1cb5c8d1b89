// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// A disk that is full, and files that may not be written.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "crash_note.h"
#include "crash_test.h"
#include "host/ability_control.h"
#include "nb_context.h"

using namespace Nubis;
using namespace NubisTest;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace Crash {
namespace {
constexpr int STORE_FAILED = 1201;

std::string ReadFile(const fs::path &path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The first error of a call or of its records.
NBError ErrorOf(const Async::RecordsResult &saved)
{
    const auto failed = std::find_if(
        saved.results.begin(), saved.results.end(), [](const auto &result) { return result.second.HasError(); });
    return saved.error.HasError() || failed == saved.results.end() ? saved.error : failed->second;
}

class DiskTest : public CrashTest {
protected:
    fs::path DataFolder()
    {
        return Service().Folder() / "state/drive";
    }

    // Carries out a change that makes these records, and notes what became of it; a refusal must say what and where.
    // Whether it was acknowledged.
    template <typename Call>
    bool Change(const std::vector<std::string> &ids, const Call &call)
    {
        std::string line = "begin disk";
        for (const std::string &id : ids) {
            line += " " + id + "=" + id;
        }
        journal_.Read(line);
        const NBError error = ErrorOf(OnceConnected(call));
        journal_.Read(error.HasError() ? "refused disk" : "done disk");
        if (error.HasError()) {
            EXPECT_EQ(error.GetServerErrorCode(), STORE_FAILED) << error.GetReportErrorCode();
            EXPECT_THAT(error.GetErrorMsg(), HasSubstr(DatabaseFile()));
        }
        return !error.HasError();
    }

    bool SaveSome(size_t count)
    {
        std::vector<NBRecord> notes;
        std::vector<std::string> ids;
        for (size_t i = 0; i < count; ++i) {
            ids.push_back("disk" + std::to_string(++ids_));
            notes.push_back(NoteOf(ids.back(), ids.back(), 0));
        }
        return Change(ids, [&] { return Save(Database(), notes); });
    }

    void Fill()
    {
        for (const size_t count : {20, 1}) {
            while (SaveSome(count)) {
            }
        }
    }

    // Fills what space there is, looks whether every call says why it fails and nothing is lost, and whether all is
    // well again when there is space.
    void FillAndHeal(const std::function<void()> &heal)
    {
        Fill();
        const pid_t service = Service().Pid();
        std::cout << "figures: full after " << journal_.Acknowledged() << " requests\n";
        // Something smaller may still fit.
        Change({"copy"}, [this] { return Copy(Database(), {{NoteOf("copy", "copy", 0), "disk1"}}); });
        Change({"one", "two"}, [this] {
            Async::ModifyResult modified =
                Modify(Database(), {NoteOf("one", "one", 0), NoteOf("two", "two", 0)}, {}, true);
            return Async::RecordsResult{std::move(modified.saved), std::move(modified.error)};
        });
        Change({}, [this] { return Subscribe(); });
        CheckAllData(journal_);

        heal();
        EXPECT_TRUE(SaveSome(20));
        EXPECT_EQ(Service().Pid(), service) << "the service had to be started again";
        CheckAllData(journal_);
    }

    Async::RecordsResult Subscribe()
    {
        std::promise<NBError> promise;
        NBSubscription subscription{4102444800000};
        Container()->SaveSubscription(std::make_shared<NBContext>(), subscription,
            [&promise](auto, auto, const NBSubscriptionResult &result) { promise.set_value(result.error); });
        return {{}, promise.get_future().get()};
    }

    Journal journal_;

private:
    int ids_ = 0;
};

class FileLimitTest : public DiskTest {
protected:
    void SetUp() override
    {
        // The service inherits what this process does at the limit.
        std::signal(SIGXFSZ, SIG_DFL);
        DiskTest::SetUp();
    }
};

TEST_F(FileLimitTest, FileSize)
{
    ASSERT_TRUE(SaveSome(1));
    const rlimit limit{fs::file_size(DatabaseFile() + "-wal") + Random(1U << 22U), RLIM_INFINITY};
    ASSERT_EQ(prlimit(Service().Pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
    FillAndHeal([this] {
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        ASSERT_EQ(prlimit(Service().Pid(), RLIMIT_FSIZE, &none, nullptr), 0);
    });
}

// A small file system under the service's data, in a mount namespace of this process.
class FullDiskTest : public DiskTest {
protected:
    void SetUp() override
    {
        const std::string user = std::to_string(getuid()) + " " + std::to_string(getuid()) + " 1";
        if (unshare(CLONE_NEWNS) != 0) {
            if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
                GTEST_SKIP() << "no mount namespace of its own for this process: " << std::strerror(errno);
            }
            std::ofstream("/proc/self/uid_map") << user << std::flush;
        }
        fs::create_directories(DataFolder());
        const std::string size = "mode=700,size=" + std::to_string(700 + Random(8000)) + "k";
        if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", DataFolder().c_str(), "tmpfs", 0, size.c_str()) != 0) {
            GTEST_SKIP() << "no file system may be mounted here: " << std::strerror(errno);
        }
        isMounted_ = true;
        DiskTest::SetUp();
    }

    void TearDown() override
    {
        if (isMounted_) {
            Service().Kill();
            umount2(DataFolder().c_str(), MNT_DETACH);
        }
    }

private:
    bool isMounted_ = false;
};

TEST_F(FullDiskTest, FileSystem)
{
    FillAndHeal([this] {
        ASSERT_EQ(mount("tmpfs", DataFolder().c_str(), "tmpfs", MS_REMOUNT, "size=64m"), 0) << std::strerror(errno);
    });
}

TEST_F(FullDiskTest, Start)
{
    Fill();
    Service().Kill();
    CheckAllData(journal_);
}

class ReadOnlyTest : public DiskTest {
protected:
    void SetUp() override
    {
        // Permissions shall count for the service even when root runs this. Before there are threads, which inherit it.
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
        DiskTest::SetUp();
    }
};

TEST_F(ReadOnlyTest, Database)
{
    ASSERT_TRUE(SaveSome(1));
    Service().Kill();
    fs::permissions(DatabaseFile(), fs::perms::owner_read);
    EXPECT_FALSE(SaveSome(1));
    CheckAllData(journal_);
    const pid_t service = Service().Pid();

    fs::permissions(DatabaseFile(), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_TRUE(SaveSome(1));
    EXPECT_EQ(Service().Pid(), service) << "the service had to be started again";
    CheckAllData(journal_);
}

TEST_F(ReadOnlyTest, DataFolder)
{
    ASSERT_TRUE(SaveSome(1));
    const fs::path log = Service().Folder() / "state/log/com.orvane.tyra.aerostash.log";
    Service().Kill();
    fs::permissions(DataFolder(), fs::perms::none);
    // The first call may still meet the death.
    NBError error;
    while (error.GetLocalErrorCode() != NB_LOCAL_NOT_CONNECTED) {
        error = Save(Database(), {NoteOf("refused", "refused", 0)}).error;
        ASSERT_TRUE(error.IsLocalError());
    }
    EXPECT_THAT(Host::LastConnectError(), HasSubstr(log.string()));
    EXPECT_THAT(ReadFile(log), testing::AllOf(HasSubstr(DataFolder().string()), HasSubstr("Permission denied")));

    fs::permissions(DataFolder(), fs::perms::owner_all);
    EXPECT_TRUE(SaveSome(1));
    CheckAllData(journal_);
}
} // namespace
} // namespace Crash
