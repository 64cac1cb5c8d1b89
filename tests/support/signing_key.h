// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_SIGNING_KEY_H
#define NUBIS_TEST_SIGNING_KEY_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

namespace NubisTest {
// A fresh RSA key that signs as the cloud side does.
class SigningKey {
public:
    explicit SigningKey(unsigned bits = 3072) : key_(EVP_RSA_gen(bits), &EVP_PKEY_free)
    {
        Check(key_ != nullptr);
    }

    // SubjectPublicKeyInfo in DER, hexadecimal.
    std::string PublicHex() const
    {
        unsigned char *der = nullptr;
        const int size = i2d_PUBKEY(key_.get(), &der);
        Check(size > 0);
        const std::string hex = Hex(der, static_cast<size_t>(size));
        OPENSSL_free(der);
        return hex;
    }

    // PSS with SHA-256, hexadecimal.
    std::string SignHex(const std::string &text) const
    {
        const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        EVP_PKEY_CTX *options = nullptr;
        Check(EVP_DigestSignInit(context.get(), &options, EVP_sha256(), nullptr, key_.get()) == 1);
        Check(EVP_PKEY_CTX_set_rsa_padding(options, RSA_PKCS1_PSS_PADDING) == 1);
        const auto *data = reinterpret_cast<const unsigned char *>(text.data());
        size_t size = 0;
        Check(EVP_DigestSign(context.get(), nullptr, &size, data, text.size()) == 1);
        std::vector<unsigned char> signature(size);
        Check(EVP_DigestSign(context.get(), signature.data(), &size, data, text.size()) == 1);
        return Hex(signature.data(), size);
    }

private:
    static void Check(bool good)
    {
        if (!good) {
            throw std::runtime_error("the key or signature could not be made");
        }
    }

    static std::string Hex(const unsigned char *bytes, size_t size)
    {
        static const char *digits = "0123456789abcdef";
        std::string text;
        for (size_t i = 0; i < size; ++i) {
            text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
        }
        return text;
    }

    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_;
};
} // namespace NubisTest

#endif // NUBIS_TEST_SIGNING_KEY_H
