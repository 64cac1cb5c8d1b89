// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/push_key.h"

#include <memory>
#include <optional>
#include <stdexcept>

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "util/encoding.h"
#include "util/file_util.h"

namespace DriveService {

namespace {

constexpr unsigned KEY_BITS = 3072;
constexpr size_t MAX_PEM_BYTES = size_t{64} * 1024;
constexpr size_t ID_BYTES = 16;

struct KeyFree {
    void operator()(EVP_PKEY *key) const
    {
        EVP_PKEY_free(key);
    }
};
struct DigestFree {
    void operator()(EVP_MD_CTX *context) const
    {
        EVP_MD_CTX_free(context);
    }
};
struct BioFree {
    void operator()(BIO *bio) const
    {
        BIO_free(bio);
    }
};
using KeyPointer = std::unique_ptr<EVP_PKEY, KeyFree>;
using DigestPointer = std::unique_ptr<EVP_MD_CTX, DigestFree>;
using BioPointer = std::unique_ptr<BIO, BioFree>;

KeyPointer ReadPem(const std::string &pem)
{
    BioPointer bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return KeyPointer(bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr) : nullptr);
}

std::string WritePem(EVP_PKEY *key)
{
    BioPointer bio(BIO_new(BIO_s_mem()));
    if (!bio || PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1) {
        throw std::runtime_error("the push key could not be written as PEM");
    }
    char *text = nullptr;
    long length = BIO_get_mem_data(bio.get(), &text);
    return std::string(text, static_cast<size_t>(length));
}

std::string PublicDerOf(EVP_PKEY *key)
{
    unsigned char *bytes = nullptr;
    int length = i2d_PUBKEY(key, &bytes);
    if (length <= 0) {
        throw std::runtime_error("the public push key could not be written");
    }
    std::string der(reinterpret_cast<char *>(bytes), static_cast<size_t>(length));
    OPENSSL_free(bytes);
    return der;
}

} // namespace

PushKey::PushKey(std::string path) : path_(std::move(path))
{}

void PushKey::EnsureLoaded()
{
    if (!publicDer_.empty()) {
        return;
    }
    KeyPointer key;
    if (SignatureOf(path_)) {
        std::string error;
        std::optional<std::string> pem = ReadFile(path_, MAX_PEM_BYTES, error);
        key = pem ? ReadPem(*pem) : nullptr;
        // Making a new one in its place would break every subscription that was made with the old one.
        if (!key) {
            throw std::runtime_error("the push key " + path_ + " cannot be read" + (error.empty() ? "" : ": " + error));
        }
    } else {
        key.reset(EVP_RSA_gen(KEY_BITS));
        if (!key) {
            throw std::runtime_error("the push key could not be made");
        }
        ReplaceFile(path_, WritePem(key.get()));
    }
    publicDer_ = PublicDerOf(key.get());
    key_ = std::move(key);
}

std::string PushKey::Id()
{
    std::lock_guard<std::mutex> lock(mutex_);
    EnsureLoaded();
    return HexEncode(Sha256(publicDer_).substr(0, ID_BYTES));
}

std::string PushKey::PublicKeyHex()
{
    std::lock_guard<std::mutex> lock(mutex_);
    EnsureLoaded();
    return HexEncode(publicDer_);
}

std::string PushKey::SignHex(const std::string &text)
{
    std::shared_ptr<EVP_PKEY> key;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        EnsureLoaded();
        key = key_;
    }
    DigestPointer digest(EVP_MD_CTX_new());
    EVP_PKEY_CTX *options = nullptr;
    const auto *data = reinterpret_cast<const unsigned char *>(text.data());
    auto length = static_cast<size_t>(EVP_PKEY_get_size(key.get()));
    std::string signature(length, '\0');
    auto *bytes = reinterpret_cast<unsigned char *>(signature.data());
    if (!digest || EVP_DigestSignInit(digest.get(), &options, EVP_sha256(), nullptr, key.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(options, RSA_PKCS1_PSS_PADDING) != 1 ||
        EVP_PKEY_CTX_set_rsa_pss_saltlen(options, RSA_PSS_SALTLEN_DIGEST) != 1 ||
        EVP_DigestSign(digest.get(), bytes, &length, data, text.size()) != 1) {
        throw std::runtime_error("a notification could not be signed with " + path_);
    }
    signature.resize(length);
    return HexEncode(signature);
}

} // namespace DriveService
