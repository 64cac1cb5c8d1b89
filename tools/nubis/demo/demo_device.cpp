// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_device.h"

#include <chrono>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "demo_data.h"
#include "demo_follower.h"
#include "demo_record_orders.h"
#include "demo_subscription.h"
#include "demo_writer.h"
#include "record_json.h"
#include "row_reader.h"
#include "session.h"

namespace NubisTool {
namespace {

constexpr std::chrono::seconds ARRIVAL_TIME(60);

CommonOptions DeviceOptions(int user)
{
    CommonOptions options;
    options.user = user;
    options.bundle = DEMO_BUNDLE;
    return options;
}

class Device {
public:
    Device(int user, const Console &console)
        : session_(DeviceOptions(user)), writer_(session_, records_, console), recordOrders_(session_, records_)
    {
        AddOrdersOnRecords();
        AddOrdersOnNotifications();
    }

    Json::Value Perform(const Json::Value &order)
    {
        auto known = orders_.find(order["order"].asString());
        if (known == orders_.end()) {
            throw UsageError("unknown order " + order["order"].asString(), "");
        }
        return known->second(order);
    }

private:
    void AddOrdersOnRecords()
    {
        orders_["import"] = [this](const Json::Value &order) {
            return writer_.Import(order["folder"].asString(), order["action"].asString());
        };
        orders_["edit"] = [this](const Json::Value &order) {
            return writer_.Edit({order["edits"].asUInt(), order["removals"].asUInt(), order["additions"].asUInt()},
                order["action"].asString());
        };
        orders_["pick"] = [this](const Json::Value &order) {
            return recordOrders_.Pick(order["recordType"].asString(), order["count"].asUInt());
        };
        orders_["read"] = [this](const Json::Value &order) { return recordOrders_.Read(order["recordId"].asString()); };
        orders_["fetch"] = [this](const Json::Value &order) {
            return recordOrders_.Fetch(order["recordId"].asString(), order["recordType"].asString());
        };
        orders_["save"] = [this](const Json::Value &order) {
            return recordOrders_.Save(
                order["record"], static_cast<Nubis::NBSavePolicy>(order["policy"].asInt()), order["action"].asString());
        };
        orders_["lock"] = [this](const Json::Value &) { return recordOrders_.Lock(); };
        orders_["unlock"] = [this](const Json::Value &) { return recordOrders_.Unlock(); };
        orders_["write"] = [this](const Json::Value &order) { return Write(order["path"].asString()); };
    }

    void AddOrdersOnNotifications()
    {
        orders_["follow"] = [this](const Json::Value &order) { return Follow(order["subscribe"].asBool()); };
        orders_["await"] = [this](const Json::Value &order) {
            return Following().Await(
                {order["action"].asString(), order["notifications"].asUInt(), order["refusals"].asUInt()},
                ARRIVAL_TIME);
        };
        orders_["subscribe"] = [this](const Json::Value &order) {
            return Accept(Subscription().Save(std::chrono::milliseconds(order["milliseconds"].asInt64())));
        };
        orders_["subscribe anew"] = [this](const Json::Value &) { return Accept(Subscription().SaveAnew()); };
        orders_["notify me"] = [this](const Json::Value &) {
            Nubis::NBError error = Subscription().NotifyMe();
            Json::Value answer = error.HasError() ? RefusalJson(error) : Json::Value(Json::objectValue);
            answer["notified"] = !error.HasError();
            return answer;
        };
    }

    Json::Value Follow(bool subscribes)
    {
        auto container = session_.Kit().GetContainer(DEMO_BUNDLE, session_.ContainerInfo().containerName);
        if (container == nullptr) {
            throw CommandError("the demo's container cannot be opened", "");
        }
        std::vector<std::string> recordTypes;
        for (const auto &type : session_.ContainerInfo().schema.recordTypes) {
            recordTypes.push_back(type.first);
        }
        subscription_ = std::make_unique<DemoSubscription>(session_);
        Json::Value subscription = subscribes ? subscription_->Save(std::chrono::milliseconds(0)) : Json::Value();
        follower_ = std::make_unique<DemoFollower>(container, std::move(recordTypes), records_);
        Json::Value answer =
            follower_->Start(subscribes ? DemoFollower::Beginning::FIRST_CHANGE : DemoFollower::Beginning::NOW);
        answer["subscription"] = subscription["subscription"];
        return answer;
    }

    Json::Value Accept(Json::Value subscription)
    {
        Following().AcceptUntil(subscription["expirationTime"].asInt64());
        return subscription;
    }

    DemoFollower &Following()
    {
        if (follower_ == nullptr) {
            throw UsageError("the device does not follow yet", "");
        }
        return *follower_;
    }

    DemoSubscription &Subscription()
    {
        if (subscription_ == nullptr) {
            throw UsageError("the device does not follow yet", "");
        }
        return *subscription_;
    }

    Json::Value Write(const std::string &path)
    {
        Json::Value answer(Json::objectValue);
        records_.With([&](LocalStore &store) {
            store.Write(path);
            answer["records"] = Json::UInt64(store.Entries().size());
        });
        return answer;
    }

    Session session_;
    DemoRecords records_;
    DemoWriter writer_;
    DemoRecordOrders recordOrders_;
    std::unique_ptr<DemoSubscription> subscription_;
    std::unique_ptr<DemoFollower> follower_;
    std::map<std::string, std::function<Json::Value(const Json::Value &)>> orders_;
};

Json::Value Answer(Device &device, const std::string &line)
{
    auto start = std::chrono::steady_clock::now();
    Json::Value answer(Json::objectValue);
    try {
        Json::Value order;
        std::string error;
        if (!ParseJsonText(line, order, error) || !order.isObject()) {
            throw UsageError("an order is a JSON object", "");
        }
        answer = device.Perform(order);
    } catch (const CommandError &error) {
        answer["error"] = error.what();
        answer["advice"] = error.Advice();
    } catch (const std::exception &error) {
        answer["error"] = error.what();
        answer["advice"] = "";
    }
    answer["seconds"] = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return answer;
}

} // namespace

int RunDemoDevice(int user, const Console &console)
{
    Device device(user, console);
    std::string line;
    while (std::getline(console.in, line)) {
        console.out << CompactText(Answer(device, line)) << '\n' << std::flush;
    }
    return EXIT_DONE;
}

} // namespace NubisTool
