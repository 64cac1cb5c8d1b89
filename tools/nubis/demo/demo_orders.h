// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_ORDERS_H
#define NUBIS_TOOL_DEMO_ORDERS_H

#include <string>

#include <json/json.h>

#include "demo_scenes.h"
#include "nb_types.h"

namespace NubisTool {

// The orders that several scenes give.

Json::Value Order(const std::string &name);

// An order to change something, as a user action of its own.
Json::Value ActionOrder(DemoStage &stage, const std::string &name);

// Has the device save the record; the answer has "action" besides.
Json::Value SaveRecord(DemoStage &stage, DemoDevice &device, const Json::Value &record, Nubis::NBSavePolicy policy);

// What the device has heard and read since it was last asked, once so many notifications of the action have come.
Json::Value Await(DemoDevice &device, const std::string &action, size_t notifications);

// Gives B a text that it has to refuse, and checks that it does.
void PlayRefused(DemoStage &stage, const std::string &what, const std::string &text);

// Waits until both have heard of the saved record.
void AwaitBoth(DemoStage &stage, const Json::Value &saved);

// The record as the device holds it.
Json::Value HeldBy(DemoDevice &device, const Json::Value &record);

// The record with another text in a field.
Json::Value WithField(Json::Value record, const std::string &field, const std::string &text);

// The record with this field alone.
Json::Value OnlyField(const Json::Value &record, const std::string &field);

} // namespace NubisTool

#endif
