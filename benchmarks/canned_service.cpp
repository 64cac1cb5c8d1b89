// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// The service that the library is measured against: answers each function with the text that it was told, and reads no
// more of a request than the name of its function. bench-canned-service USER

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>

#include <sys/prctl.h>

#include "canned_protocol.h"
#include "ffrt_inner.h"
#include "host/ability_server.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
#include "message_option.h"
#include "parcel_text.h"

namespace NubisBench {
namespace {
constexpr std::chrono::seconds IDLE_TIME(5);

// The value of the first member of this name, which the writer puts before the records.
std::string TextMember(std::string_view text, std::string_view name)
{
    const std::string opening = "\"" + std::string(name) + "\":\"";
    const size_t start = text.find(opening);
    if (start == std::string_view::npos) {
        return "";
    }
    const size_t from = start + opening.size();
    return std::string(text.substr(from, text.find('"', from) - from));
}

class CannedService : public OHOS::IPCObjectStub {
public:
    explicit CannedService(int32_t userId) : OHOS::IPCObjectStub(SERVICE_TOKEN), userId_(userId)
    {}

    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override
    {
        if (data.ReadInterfaceToken() != SERVICE_TOKEN) {
            return OHOS::ERR_INVALID_STATE;
        }
        switch (code) {
            case SYNC_REQUEST:
                AnswerAtOnce(data, reply);
                return OHOS::ERR_NONE;
            case ASYNC_REQUEST:
                AnswerLater(data);
                return OHOS::ERR_NONE;
            default:
                return Obey(code, data, reply) ? static_cast<int>(OHOS::ERR_NONE)
                                               : OHOS::IPCObjectStub::OnRemoteRequest(code, data, reply, option);
        }
    }

private:
    struct Canned {
        std::shared_ptr<const std::string> text = std::make_shared<const std::string>(R"({"code":0})");
        std::chrono::milliseconds delay{0};
    };

    bool Obey(uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        switch (code) {
            case SET_REPLY: {
                Canned &canned = canned_[ReadText(data)];
                canned.delay = std::chrono::milliseconds(data.ReadInt32());
                canned.text = std::make_shared<const std::string>(ReadText(data));
                return true;
            }
            case CAPTURE:
                captureOf_ = ReadText(data);
                return true;
            case CAPTURED:
                WriteText(reply, captured_);
                return true;
            case HOLD_SAVES:
                isHolding_ = data.ReadInt32() == 1;
                released_.notify_all();
                return true;
            case COUNT_HELD:
                return reply.WriteInt32(held_);
            default:
                return false;
        }
    }

    void AnswerAtOnce(OHOS::MessageParcel &data, OHOS::MessageParcel &reply)
    {
        const std::string request = ReadText(data);
        const auto text = Find(request, TextMember(request, "function"));
        reply.WriteInt32(0);
        WriteText(reply, *text);
    }

    void AnswerLater(OHOS::MessageParcel &data)
    {
        auto request = std::make_shared<const std::string>(ReadText(data));
        const auto callback = data.ReadRemoteObject();
        ffrt::submit([self = OHOS::sptr<CannedService>(this), request, callback] {
            const auto text = self->Find(*request, TextMember(*request, "function"));
            std::string answer = "{\"uuid\":\"" + TextMember(*request, "uuid") + "\"," + text->substr(1);
            OHOS::MessageParcel parcel;
            OHOS::MessageParcel ignored;
            OHOS::MessageOption option;
            parcel.WriteInterfaceToken(CALLBACK_TOKEN);
            WriteText(parcel, answer);
            callback->SendRequest(1, parcel, ignored, option);
        });
    }

    std::shared_ptr<const std::string> Find(const std::string &request, const std::string &function)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (function == "getSysParameters") {
            // Users with odd numbers have the asynchronous way.
            return std::make_shared<const std::string>(
                R"({"code":0,"parameters":[{"key":"ohNubisUseAsyncIPC","value":)" + std::to_string(userId_ % 2) +
                "}]}");
        }
        if (function == captureOf_) {
            captured_ = request;
            captureOf_.clear();
        }
        if (function == "echo") {
            return std::make_shared<const std::string>(request);
        }
        if (isHolding_ && function == "saveRecords") {
            ++held_;
            released_.wait(lock, [this] { return !isHolding_; });
            --held_;
        }
        const Canned canned = canned_[function];
        lock.unlock();
        if (canned.delay.count() > 0) {
            // The exact time is what the slots of the library are held against.
            static thread_local const int slack = prctl(PR_SET_TIMERSLACK, 1UL);
            static_cast<void>(slack);
            std::this_thread::sleep_for(canned.delay);
        }
        return canned.text;
    }

    const int32_t userId_;
    std::mutex mutex_;
    std::condition_variable released_;
    std::map<std::string, Canned> canned_;
    std::string captureOf_;
    std::string captured_;
    bool isHolding_ = false;
    int32_t held_ = 0;
};
} // namespace
} // namespace NubisBench

int main(int argc, char **argv)
{
    using namespace NubisBench;
    if (argc != 2) {
        std::cerr << "usage: bench-canned-service USER\n";
        return 2;
    }
    Host::AbilityServerOptions options;
    options.bundleName = SERVICE_BUNDLE;
    options.abilityName = SERVICE_ABILITY;
    options.userId = std::atoi(argv[1]);
    options.idleTimeout = IDLE_TIME;
    Host::AbilityServer server(options, new CannedService(options.userId));
    std::string error;
    if (!server.Start(error)) {
        std::cerr << "bench-canned-service: " << error << "\n";
        return 1;
    }
    server.Run();
    return 0;
}
