// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/event_channel.h"
#include "host/paths.h"

namespace {

using testing::ElementsAre;

constexpr int USER = 100;
constexpr const char *EVENT = "cloudData_notifyDataChange";

void Publish(const std::string &text, bool expected = true)
{
    std::string error;
    EXPECT_EQ(Host::PublishEvent(USER, EVENT, text, error), expected) << error;
    EXPECT_EQ(error.empty(), expected) << error;
}

// The folders of listeners, living and dead.
std::vector<std::string> Spools()
{
    std::vector<std::string> spools;
    std::error_code none;
    for (const auto &entry : std::filesystem::directory_iterator(Host::RuntimeDir() + "/100/events/" + EVENT, none)) {
        spools.push_back(entry.path().filename());
    }
    return spools;
}

// Remembers what it hears.
class Listener {
public:
    Listener()
        : listener_(
              USER, EVENT, [this](const std::string &text) { Add(text); }, [this] { Add("(gap)"); })
    {
        std::string error;
        EXPECT_TRUE(listener_.Start(error)) << error;
    }

    std::vector<std::string> Await(size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        EXPECT_TRUE(heard_.wait_for(lock, std::chrono::seconds(40), [&] { return texts_.size() >= count; }));
        return texts_;
    }

private:
    void Add(const std::string &text)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        texts_.push_back(text);
        heard_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable heard_;
    std::vector<std::string> texts_;
    Host::EventListener listener_;
};

// A listener in a process of its own, which ends after so many texts: with 0 when they were the expected ones.
class ListenerProcess {
public:
    explicit ListenerProcess(const std::vector<std::string> &expected)
    {
        int ready[2] = {};
        if (pipe(ready) != 0) {
            throw std::runtime_error("no pipe");
        }
        pid_ = fork();
        if (pid_ == 0) {
            {
                Listener listener;
                EXPECT_EQ(write(ready[1], "!", 1), 1);
                EXPECT_EQ(listener.Await(expected.size()), expected);
            }
            // The folders are the parent's, so nothing is cleaned up.
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        char sign = 0;
        close(ready[1]);
        EXPECT_EQ(read(ready[0], &sign, 1), 1);
        close(ready[0]);
    }

    void Kill() const
    {
        kill(pid_, SIGKILL);
        EXPECT_EQ(ExitStatus(), -1);
    }

    int ExitStatus() const
    {
        int status = 0;
        waitpid(pid_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t pid_ = -1;
};

TEST(EventChannelTest, EveryListenerOfEveryProcessHearsEverythingInOrder)
{
    std::vector<std::string> texts{"", std::string(1 << 20, 'x'), std::string("a\0b", 3)};
    for (int i = 0; i < 300; ++i) {
        texts.push_back(std::to_string(i));
    }
    Publish("nobody hears this");
    const ListenerProcess other(texts);
    Listener one;
    Listener two;
    for (const std::string &text : texts) {
        Publish(text);
    }
    EXPECT_EQ(one.Await(texts.size()), texts);
    EXPECT_EQ(two.Await(texts.size()), texts);
    EXPECT_EQ(other.ExitStatus(), 0);
}

TEST(EventChannelTest, ADeadListenerHoldsNobodyUpAndIsSweptAway)
{
    const ListenerProcess dead({"never"});
    Listener living;
    EXPECT_EQ(Spools().size(), 2u);
    dead.Kill();
    Publish("a");
    EXPECT_THAT(living.Await(1), ElementsAre("a"));
    EXPECT_EQ(Spools().size(), 1u);
}

TEST(EventChannelTest, AListenerThatNeverReadsIsToldAboutTheGap)
{
    std::promise<void> entered;
    std::promise<void> released;
    std::promise<void> told;
    size_t texts = 0;
    Host::EventListener stuck(
        USER, EVENT,
        [&, wait = released.get_future().share()](const std::string &text) {
            if (text == "first") {
                entered.set_value();
                wait.wait();
            }
            ++texts;
            if (text == "after") {
                told.set_value();
            }
        },
        [&] { EXPECT_EQ(texts, Host::MAX_UNREAD_EVENTS + 1) << "the gap comes in its place, and once"; });
    std::string error;
    ASSERT_TRUE(stuck.Start(error)) << error;
    Publish("first");
    entered.get_future().wait();
    for (size_t i = 0; i < Host::MAX_UNREAD_EVENTS; ++i) {
        Publish("kept");
    }
    Publish("lost", false);
    Publish("lost", false);
    released.set_value();
    // What follows is kept again as soon as there is room.
    while (!Host::PublishEvent(USER, EVENT, "after", error)) {
        ASSERT_THAT(error, testing::HasSubstr("events unread"));
    }
    EXPECT_EQ(told.get_future().wait_for(std::chrono::seconds(40)), std::future_status::ready);
}

TEST(EventChannelTest, ListenersMayThrowAndMayEndInACall)
{
    std::promise<void> ended;
    std::unique_ptr<Host::EventListener> listener;
    listener = std::make_unique<Host::EventListener>(USER, EVENT, [&](const std::string &text) {
        if (text == "throw") {
            throw std::runtime_error("the listener does not care");
        }
        listener.reset();
        ended.set_value();
    });
    std::string error;
    ASSERT_TRUE(listener->Start(error)) << error;
    Publish("throw");
    Publish("end");
    ASSERT_EQ(ended.get_future().wait_for(std::chrono::seconds(40)), std::future_status::ready);
    {
        Listener other;
    }
    Publish("to nobody");
    // The one that ended itself removes its folder a little later.
    while (!Spools().empty()) {
        std::this_thread::yield();
    }
}

TEST(EventChannelTest, AProcessMayEndWhileItListens)
{
    EXPECT_EXIT(
        {
            auto *listener = new Listener;
            Publish("a");
            listener->Await(1);
            exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(EventChannelTest, BadNamesAndOversizedTextsAreRefused)
{
    std::string error;
    for (const char *name : {"", "../100", "a/b", ".hidden", "a b"}) {
        Host::EventListener listener(USER, name, [](const std::string &) {});
        EXPECT_FALSE(listener.Start(error));
        EXPECT_THAT(error, testing::HasSubstr("not the name of an event"));
        EXPECT_FALSE(Host::PublishEvent(USER, name, "text", error));
    }
    EXPECT_FALSE(Host::PublishEvent(USER, EVENT, std::string(Host::MAX_EVENT_SIZE + 1, 'x'), error));
    EXPECT_THAT(error, testing::HasSubstr("too large"));
}

} // namespace
