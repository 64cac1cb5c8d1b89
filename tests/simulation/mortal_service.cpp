// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "mortal_service.h"

#include <chrono>
#include <stdexcept>
#include <utility>
#include <vector>

#include "drive_service_stub.h"
#include "host/ability_registry.h"
#include "errors.h"
#include "ipc_types.h"

namespace Simulation {

namespace {

constexpr const char *BUNDLE = "com.orvane.tyra.aerostash";
constexpr const char *ABILITY = "DriveServiceAbility";
constexpr std::chrono::seconds PATIENCE(30);

// Never destroyed, and never lost, as the one of a process: its threads end in their own time.
DriveService::RequestPool *NewPool()
{
    static auto *mutex = new std::mutex;
    static auto *pools = new std::vector<DriveService::RequestPool *>;
    std::lock_guard<std::mutex> lock(*mutex);
    pools->push_back(new DriveService::RequestPool());
    return pools->back();
}

} // namespace

// What clients connect to: counts the requests of one life, and lets none in after its end.
class MortalService::Gate : public OHOS::IPCObjectStub {
public:
    Gate(MortalService &service, std::shared_ptr<Life> life)
        : IPCObjectStub(u"OHOS.Aerostash.DriveServiceAbility"), service_(service), life_(std::move(life)),
          stub_(new DriveService::DriveServiceStub(life_->instance->Router(), *life_->pool))
    {
        service_.OnGate(1);
    }
    // When nobody is connected to it any more.
    ~Gate() override
    {
        service_.OnGate(-1);
    }

    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override
    {
        Death death;
        if (!service_.Enter(*life_, death)) {
            return OHOS::ERR_DEAD_OBJECT;
        }
        int result = OHOS::ERR_DEAD_OBJECT;
        const bool isLast = death.atRequest > 0;
        if (!isLast || death.isAnswered) {
            result = stub_->OnRemoteRequest(code, data, reply, option);
        }
        if (isLast) {
            service_.End(life_, death.returnsAtOnce);
        }
        service_.Leave(*life_);
        return result;
    }

private:
    MortalService &service_;
    const std::shared_ptr<Life> life_;
    const OHOS::sptr<DriveService::DriveServiceStub> stub_;
};

MortalService::MortalService(std::string dataFolder, int userId, std::function<int64_t()> nowMs)
    : dataFolder_(std::move(dataFolder)), userId_(userId), nowMs_(std::move(nowMs))
{
    Begin();
}

MortalService::~MortalService()
{
    Die();
    Bury();
}

void MortalService::Begin()
{
    auto life = std::make_shared<Life>();
    life->instance = std::make_unique<DriveService::ServiceInstance>(dataFolder_, userId_, nowMs_);
    life->pool = NewPool();
    OHOS::sptr<Gate> gate = new Gate(*this, life);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        life_ = std::move(life);
    }
    Host::AbilityRegistry::Offer(BUNDLE, ABILITY, userId_, gate, {{"abilityVersion", "3"}});
}

void MortalService::Plan(const Death &death)
{
    std::lock_guard<std::mutex> lock(mutex_);
    death_ = death;
    requestsOfPlan_ = 0;
}

// False when it is dead; the death is the one to die when the request is done with, if any.
bool MortalService::Enter(Life &life, Death &death)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (life.isOver) {
        return false;
    }
    ++requests_;
    ++life.handling;
    if (++requestsOfPlan_ == death_.atRequest) {
        death = death_;
    }
    return true;
}

void MortalService::Leave(Life &life)
{
    std::lock_guard<std::mutex> lock(mutex_);
    --life.handling;
    changed_.notify_all();
}

void MortalService::End(const std::shared_ptr<Life> &life, bool returnsAtOnce)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (std::exchange(life->isOver, true)) {
            return;
        }
    }
    Host::AbilityRegistry::Kill(BUNDLE, ABILITY, userId_);
    if (returnsAtOnce) {
        std::lock_guard<std::mutex> lock(mutex_);
        returning_ = std::async(std::launch::async, [this] { Revive(); });
    }
}

void MortalService::Die()
{
    AwaitReturning();
    std::unique_lock<std::mutex> lock(mutex_);
    const std::shared_ptr<Life> life = life_;
    lock.unlock();
    End(life, false);
}

bool MortalService::AwaitHandled()
{
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, PATIENCE, [this] { return life_->handling == 0; });
}

bool MortalService::IsOver()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return life_->isOver;
}

void MortalService::Bury()
{
    std::lock_guard<std::mutex> lock(lifeMutex_);
    if (!AwaitHandled() || !life_->pool->Finish(PATIENCE)) {
        throw std::runtime_error("a request to the dead service does not end");
    }
    life_->instance.reset();
}

void MortalService::Revive()
{
    Bury();
    Begin();
}

void MortalService::AwaitReturning()
{
    std::unique_lock<std::mutex> lock(mutex_);
    std::future<void> returning = std::move(returning_);
    lock.unlock();
    if (returning.valid()) {
        returning.get();
    }
}

void MortalService::Return()
{
    AwaitReturning();
    if (IsOver()) {
        Revive();
    }
}

bool MortalService::AwaitQuiet()
{
    const bool isHandled = AwaitHandled();
    AwaitReturning();
    std::lock_guard<std::mutex> lock(lifeMutex_);
    return isHandled && AwaitHandled() && life_->pool->AwaitIdle(PATIENCE) &&
           life_->instance->GetNotifier().Finish(PATIENCE);
}

void MortalService::OnGate(int change)
{
    std::lock_guard<std::mutex> lock(mutex_);
    gates_ += change;
    changed_.notify_all();
}

uint64_t MortalService::Requests()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

std::string MortalService::Ask(const std::string &request)
{
    std::lock_guard<std::mutex> lock(lifeMutex_);
    return life_->instance->Router().Answer(request, "simulation");
}

bool MortalService::IsLeftByAll()
{
    Host::AbilityRegistry::Withdraw(BUNDLE, ABILITY, userId_);
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, PATIENCE, [this] { return gates_ == 0; });
}

} // namespace Simulation
