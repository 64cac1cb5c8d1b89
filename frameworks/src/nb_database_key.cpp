// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <algorithm>
#include <utility>

#include <json/value.h>

#include "byte_buffer.h"
#include "ffrt_inner.h"
#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"
#include "securec.h"
#include "urgent_scope.h"

// The service keys of the private database, common keys and the access token.
namespace Nubis {
namespace {
constexpr size_t KEY_UUID_LENGTH = UserKey::UUID_SIZE - 1;
constexpr int EFEK_TYPE = 1;
constexpr int SFEK_TYPE = 3;

template <size_t Size>
errno_t CopyKey(const std::vector<uint8_t> &key, const std::string &uuid, uint8_t (&keyOut)[Size],
    char (&uuidOut)[UserKey::UUID_SIZE])
{
    if (!key.empty()) {
        const errno_t result = memcpy_s(keyOut, Size, key.data(), std::min(key.size(), Size));
        if (result != EOK) {
            return result;
        }
    }
    return strcpy_s(uuidOut, UserKey::UUID_SIZE, uuid.c_str());
}
} // namespace

void NBDatabase::GetServiceKey()
{
    std::lock_guard<ffrt::mutex> lock(*serviceKeyMutex_);
    FetchServiceKey();
}

void NBDatabase::ParseServiceKey(const Json::Value &reply)
{
    std::lock_guard<ffrt::mutex> lock(*serviceKeyMutex_);
    StoreServiceKeys(reply);
}

void NBDatabase::FetchServiceKey()
{
    fetched_ &= ~static_cast<uint32_t>(SERVICE_KEY_FETCHED);
    Json::Value request = MakeRequest("getServiceKey");
    request["databaseType"] = static_cast<int>(scope_);
    // Whoever waits for the mutex may do so on behalf of a request of the service.
    const UrgentScope urgent;
    const NBError error = Exchange(
        request, RECORD_REQUEST_TIMEOUT, [this](const Json::Value &reply, NBError &) { StoreServiceKeys(reply); });
    if (error.HasError()) {
        NB_LOGE("get service key failed");
    }
}

void NBDatabase::StoreServiceKeys(const Json::Value &reply)
{
    const Json::Value *keys = JsonHelper::FindMember(reply, "keys");
    if (keys == nullptr || !keys->isArray()) {
        NB_LOGE("parse service key failed, no keys node");
        return;
    }
    fetched_ &= ~static_cast<uint32_t>(SERVICE_KEY_FETCHED);
    // A fresh holder, or keys of another user could stay in it.
    serviceKey_ = std::make_shared<UserKey>();
    for (const auto &keyJson : *keys) {
        if (keyJson.isObject() && !StoreServiceKey(keyJson)) {
            return;
        }
    }
    serviceKey_->userId = std::to_string(GetUserId());
    fetched_ |= SERVICE_KEY_FETCHED;
}

bool NBDatabase::StoreServiceKey(const Json::Value &keyJson)
{
    const auto key = ByteBuffer::HexStringToValueArray(JsonHelper::GetStringFromJson(keyJson, "key"));
    ByteBuffer buffer;
    buffer.FromByteArray(key.data(), key.size());
    const std::string expected = JsonHelper::GetStringFromJson(keyJson, "userKeySHA256");
    const std::string calculated = buffer.GetBufSha256Base64();
    if (calculated != expected) {
        NB_LOGE("parse service key failed, check user key sha256 error, cal sha256:%{public}s, "
                "user key sha256:%{public}s",
            calculated.c_str(), expected.c_str());
        return false;
    }
    const std::string uuid = JsonHelper::GetStringFromJson(keyJson, "userKeyGuid");
    if (uuid.size() != KEY_UUID_LENGTH) {
        NB_LOGE("parse service key failed, userKeyUuid length is error, uuid:%{public}s", uuid.c_str());
        return false;
    }
    const int keyType = JsonHelper::GetIntFromJson(keyJson, "keyType");
    errno_t result = EOK;
    if (keyType == EFEK_TYPE) {
        result = CopyKey(key, uuid, serviceKey_->efek, serviceKey_->efekUuid);
        if (result != EOK) {
            NB_LOGE("parse service key failed, get efek failed, strcpy ret:%{public}d", result);
        }
    } else if (keyType == SFEK_TYPE) {
        result = CopyKey(key, uuid, serviceKey_->sfek, serviceKey_->sfekUuid);
        if (result != EOK) {
            NB_LOGE("parse service key failed, get sfek failed, strcpy ret:%{public}d", result);
        }
    }
    return result == EOK;
}

std::shared_ptr<UserKey> NBDatabase::GetUserKey(const std::string &userId)
{
    {
        std::lock_guard<ffrt::mutex> lock(*serviceKeyMutex_);
        if (serviceKey_ != nullptr && (fetched_ & SERVICE_KEY_FETCHED) == 0) {
            NB_LOGI("get service key failed, will get service key again");
            FetchServiceKey();
        }
    }
    auto result = std::make_shared<UserKey>();
    std::lock_guard<ffrt::mutex> lock(*serviceKeyMutex_);
    if (serviceKey_ == nullptr) {
        return result;
    }
    if (!userId.empty() && userId != serviceKey_->userId) {
        NB_LOGI("userid change, will get service key again");
        FetchServiceKey();
    }
    *result = *serviceKey_;
    return result;
}

std::string NBDatabase::GetCommonKey(int dataType, int keyType)
{
    Json::Value request(Json::objectValue);
    request["function"] = "getCommonKey";
    request["dataType"] = dataType;
    request["keyType"] = keyType;
    std::string key;
    const NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT,
        [&key](const Json::Value &reply, NBError &) { key = JsonHelper::GetStringFromJson(reply, "key"); });
    if (error.HasError()) {
        NB_LOGE("Get common key failed, get service key failed, keyType:%{public}d", keyType);
    }
    return key;
}

std::string NBDatabase::GetAT()
{
    Json::Value request = MakeRequest("getAccessToken");
    std::string token;
    const NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT,
        [&token](const Json::Value &reply, NBError &) { token = JsonHelper::GetStringFromJson(reply, "accessToken"); });
    if (error.HasError()) {
        NB_LOGE("Get AT failed");
    }
    return token;
}
} // namespace Nubis
