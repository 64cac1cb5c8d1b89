// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "command_error.h"
#include "fuzz_target.h"
#include "host/event_log.h"
#include "kept_events.h"
#include "local_store.h"
#include "notification.h"
#include "record_json.h"

namespace {
using namespace NubisTool;
constexpr int USER = 100;

void WriteFile(const std::string &path, const std::string &text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadFile(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Without the service's key nothing is verified, but all of it can be shown.
void CheckNotification(const std::string &text)
{
    static const auto *kit = new std::shared_ptr<Nubis::NubisNative>(Nubis::NubisNative::GetInstance(USER));
    const Notification notification = ReadNotification(**kit, text);
    FUZZ_CHECK(!notification.IsVerified());
    FUZZ_CHECK(!CompactText(NotificationToJson(notification)).empty());
    ScopesText(notification);
    TypesText(notification);
}

void CheckEvents(const std::string &text)
{
    WriteFile(Host::EventLogPath("NubisSDK_" + std::to_string(USER)), text);
    size_t events = 0;
    const size_t unreadable = VisitKeptEvents(USER, [&events](Json::Value &&event) {
        FUZZ_CHECK(event["fields"].isObject());
        ++events;
    });
    const bool endsOpen = !text.empty() && text.back() != '\n';
    FUZZ_CHECK(events + unreadable == static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + endsOpen);
}

// A store that can be read is written in one form only.
void CheckStore(const std::string &text)
{
    const std::string path = Fuzz::Folder() + "/store";
    WriteFile(path, text);
    try {
        LocalStore::Read(path).Write(path);
        const std::string written = ReadFile(path);
        LocalStore::Read(path).Write(path);
        FUZZ_CHECK(ReadFile(path) == written);
    } catch (const CommandError &refusal) {
        FUZZ_CHECK(ReadFile(path) == text && !refusal.Advice().empty());
    }
}
} // namespace

// Texts that the tool finds: notifications, events and stores. The first byte tells which.
void Fuzz::TestOne(const std::string &input)
{
    switch (Selector(input)) {
        case 'n':
            CheckNotification(Body(input));
            break;
        case 'e':
            CheckEvents(Body(input));
            break;
        default:
            CheckStore(Body(input));
            break;
    }
}
