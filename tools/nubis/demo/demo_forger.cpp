// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_forger.h"

#include <utility>
#include <vector>

#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "command_error.h"
#include "record_json.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

constexpr unsigned KEY_BITS = 3072;
constexpr const char *SIGNATURE = "signV2";
constexpr const char *TRACE_ID = "x-ov-trace-id";

void ThrowUnless(bool isGood)
{
    if (!isGood) {
        throw CommandError("a key or a signature for the forgery could not be made", "run the demo again");
    }
}

std::string Hex(const unsigned char *bytes, size_t size)
{
    constexpr const char *digits = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        text += {digits[bytes[i] >> 4U], digits[bytes[i] & 15U]};
    }
    return text;
}

// JsonCpp gives members in ascending order, as signatures want them.
std::string SignedText(const Json::Value &notification)
{
    std::string text;
    for (const std::string &name : notification.getMemberNames()) {
        if (name != SIGNATURE && name != TRACE_ID) {
            text += (text.empty() ? "" : "&") + name + "=" + notification[name].asString();
        }
    }
    return text;
}

Json::Value Parsed(const std::string &text)
{
    Json::Value value;
    std::string error;
    ParseJsonText(text, value, error);
    return value;
}

} // namespace

DemoForger::DemoForger() : key_(EVP_RSA_gen(KEY_BITS), &EVP_PKEY_free)
{
    ThrowUnless(key_ != nullptr);
}

Json::Value DemoForger::Sign(Json::Value notification) const
{
    const std::string text = SignedText(notification);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_PKEY_CTX *options = nullptr;
    ThrowUnless(EVP_DigestSignInit(context.get(), &options, EVP_sha256(), nullptr, key_.get()) == 1 &&
                EVP_PKEY_CTX_set_rsa_padding(options, RSA_PKCS1_PSS_PADDING) == 1);
    const auto *data = reinterpret_cast<const unsigned char *>(text.data());
    size_t size = 0;
    ThrowUnless(EVP_DigestSign(context.get(), nullptr, &size, data, text.size()) == 1);
    std::vector<unsigned char> signature(size);
    ThrowUnless(EVP_DigestSign(context.get(), signature.data(), &size, data, text.size()) == 1);
    notification[SIGNATURE] = Hex(signature.data(), size);
    return notification;
}

std::string DemoForger::PublicKey() const
{
    unsigned char *der = nullptr;
    const int size = i2d_PUBKEY(key_.get(), &der);
    ThrowUnless(size > 0);
    std::string hex = Hex(der, static_cast<size_t>(size));
    OPENSSL_free(der);
    return hex;
}

Json::Value WithAnnounced(Json::Value notification, const std::string &recordType)
{
    Json::Value data = Parsed(notification["data"].asString());
    Json::Value types = Parsed(data["recordTypes"].asString());
    types.append(recordType);
    data["recordTypes"] = CompactText(types);
    notification["data"] = CompactText(data);
    return notification;
}

} // namespace NubisTool
