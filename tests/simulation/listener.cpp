// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "listener.h"

#include <chrono>
#include <stdexcept>
#include <utility>

#include <json/json.h>

#include "util/json_util.h"

namespace Simulation {

namespace {

constexpr const char *MARK = "mark";
constexpr std::chrono::seconds PATIENCE(30);

} // namespace

Listener::Listener(std::shared_ptr<Nubis::NubisNative> kit, Ledger &ledger, OnChange onChange)
    : kit_(std::move(kit)), ledger_(ledger), onChange_(std::move(onChange)),
      channel_(
          kit_->GetUserId(), kit_->GetCloudSyncSaName(), [this](const std::string &text) { OnText(text); },
          [this] { ledger_.Report("notifications were dropped\n"); })
{
    std::string error;
    if (!channel_.Start(error)) {
        throw std::runtime_error(error);
    }
}

bool Listener::CatchUp()
{
    std::string error;
    if (!Host::PublishEvent(kit_->GetUserId(), kit_->GetCloudSyncSaName(), MARK, error)) {
        ledger_.Report(error + "\n");
        return false;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    ++marks_;
    return changed_.wait_for(lock, PATIENCE, [this] { return heardMarks_ == marks_; });
}

void Listener::OnText(const std::string &text)
{
    if (text == MARK) {
        std::lock_guard<std::mutex> lock(mutex_);
        ++heardMarks_;
        changed_.notify_all();
        return;
    }
    Json::Value notification;
    std::string error;
    Nubis::NBRecordChangeEvent event;
    if (!DriveService::ParseJson(text, notification, error) ||
        kit_->VerifyNotificationFromJson(notification).HasError()) {
        ledger_.Report("a notification does not verify: " + text + "\n");
        return;
    }
    kit_->ResolveNotificationEvent(text, event);
    onChange_(event);
}

} // namespace Simulation
