// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>
#include <openssl/err.h>

#include "algorithm_parameter.h"
#include "asy_key_generator.h"
#include "blob.h"
#include "key_pair.h"
#include "object_base.h"
#include "pub_key.h"
#include "result.h"
#include "signature.h"

namespace {

constexpr const char *PSS = "RSA3072|PSS|SHA256|MGF1_SHA256";
const std::string MESSAGE = "the quick brown fox";

struct Destroy {
    void operator()(void *object) const
    {
        HcfObjDestroy(object);
    }
};

using Generator = std::unique_ptr<HcfAsyKeyGenerator, Destroy>;
using Pair = std::unique_ptr<HcfKeyPair, Destroy>;
using Verifier = std::unique_ptr<HcfVerify, Destroy>;

// Keys and signatures made by the openssl command: nothing here is both made and judged by the code under test.
class Openssl {
public:
    static const Openssl &Get()
    {
        static const Openssl instance;
        return instance;
    }

    // The command's standard output.
    std::string Run(const std::string &arguments) const
    {
        const std::string command = "cd '" + folder_ + "' && openssl " + arguments + " 2>/dev/null";
        FILE *pipe = popen(command.c_str(), "r");
        std::string output;
        char buffer[1024];
        for (size_t size; pipe != nullptr && (size = fread(buffer, 1, sizeof(buffer), pipe)) > 0;) {
            output.append(buffer, size);
        }
        EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << command;
        return output;
    }

    std::string SignPss(const std::string &salt) const
    {
        return Run(
            "dgst -sha256 -sign key.pem -sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:" + salt + " message");
    }

    std::string PublicKey() const
    {
        return Run("pkey -in key.pem -pubout -outform DER");
    }

private:
    Openssl()
    {
        std::string name = std::filesystem::temp_directory_path() / "nubis_crypto_XXXXXX";
        folder_ = mkdtemp(name.data());
        std::ofstream(folder_ + "/message") << MESSAGE;
        Run("genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:3072 -out key.pem");
    }

    ~Openssl()
    {
        std::filesystem::remove_all(folder_);
    }

    std::string folder_;
};

HcfBlob Blob(const std::string &bytes)
{
    return {reinterpret_cast<uint8_t *>(const_cast<char *>(bytes.data())), bytes.size()};
}

Generator MakeGenerator(const char *name = "RSA3072")
{
    HcfAsyKeyGenerator *generator = nullptr;
    EXPECT_EQ(HcfAsyKeyGeneratorCreate(name, &generator), HCF_SUCCESS) << name;
    return Generator(generator);
}

Pair Convert(const std::string &key, HcfResult expected = HCF_SUCCESS)
{
    Generator generator = MakeGenerator();
    HcfKeyPair *pair = nullptr;
    HcfBlob blob = Blob(key);
    EXPECT_EQ(generator->convertKey(generator.get(), nullptr, &blob, nullptr, &pair), expected);
    EXPECT_EQ(pair != nullptr, expected == HCF_SUCCESS);
    EXPECT_EQ(ERR_peek_error(), 0u);
    return Pair(pair);
}

// Initialised, where a key is given.
Verifier MakeVerifier(const char *name, const std::string &key)
{
    HcfVerify *verifier = nullptr;
    EXPECT_EQ(HcfVerifyCreate(name, &verifier), HCF_SUCCESS) << name;
    if (!key.empty()) {
        Pair pair = Convert(key);
        EXPECT_EQ(verifier->init(verifier, nullptr, pair->pubKey), HCF_SUCCESS);
    }
    return Verifier(verifier);
}

// The data at once, and once more in parts.
bool Verify(const char *name, const std::string &key, const std::string &message, const std::string &signature)
{
    Verifier verifier = MakeVerifier(name, key);
    HcfBlob data = Blob(message);
    HcfBlob signatureBlob = Blob(signature);
    const bool valid = verifier->verify(verifier.get(), &data, &signatureBlob);
    verifier = MakeVerifier(name, key);
    for (const char &byte : message) {
        HcfBlob part = {data.data + (&byte - message.data()), 1};
        EXPECT_EQ(verifier->update(verifier.get(), &part), HCF_SUCCESS);
    }
    HcfBlob empty = {nullptr, 5};
    EXPECT_FALSE(verifier->verify(verifier.get(), nullptr, nullptr));
    EXPECT_EQ(verifier->verify(verifier.get(), &empty, &signatureBlob), valid);
    EXPECT_EQ(ERR_peek_error(), 0u);
    return valid;
}

TEST(Crypto, VerifiesWhatWasSignedAndNothingElse)
{
    const auto &openssl = Openssl::Get();
    const std::string key = openssl.PublicKey();
    EXPECT_EQ(key.size(), 422u);
    for (const char *salt : {"0", "20", "32", "max"}) {
        const std::string signature = openssl.SignPss(salt);
        EXPECT_TRUE(Verify(PSS, key, MESSAGE, signature)) << salt;
        EXPECT_FALSE(Verify(PSS, key, MESSAGE + ".", signature)) << salt;
        EXPECT_FALSE(Verify(PSS, key, "", signature)) << salt;
    }
    const std::string signature = openssl.SignPss("32");
    const std::string pkcs1 = openssl.Run("dgst -sha256 -sign key.pem message");
    EXPECT_TRUE(Verify("RSA3072|PKCS1|SHA256", key, MESSAGE, pkcs1));
    EXPECT_FALSE(Verify("RSA3072|PKCS1|SHA256", key, MESSAGE, signature));
    EXPECT_FALSE(Verify("RSA3072|PSS|SHA384|MGF1_SHA384", key, MESSAGE, signature));
    EXPECT_FALSE(Verify("RSA3072|PSS|SHA256|MGF1_SHA1", key, MESSAGE, signature));
    for (const std::string &other : {pkcs1, signature.substr(1), signature + "x", std::string()}) {
        EXPECT_FALSE(Verify(PSS, key, MESSAGE, other));
    }
}

TEST(Crypto, ReadsPublicKeysInTheirOneForm)
{
    const auto &openssl = Openssl::Get();
    const std::string key = openssl.PublicKey();
    const std::string otherForms[] = {
        openssl.Run("rsa -in key.pem -RSAPublicKey_out -outform DER"),
        openssl.Run("pkey -in key.pem -pubout"),
        openssl.Run("pkey -in key.pem -outform DER"),
        openssl.Run("ecparam -name prime256v1 -genkey -noout | openssl pkey -pubout -outform DER"),
        key + "x",
        key.substr(0, key.size() - 1),
        "",
    };
    for (const auto &form : otherForms) {
        Convert(form, HCF_INVALID_PARAMS);
    }
    // The name's size is not the key's.
    Convert(openssl.Run("genrsa 2048 | openssl pkey -pubout -outform DER"));

    Generator generator = MakeGenerator();
    HcfKeyPair *pair = nullptr;
    HcfBlob blob = Blob(key);
    EXPECT_EQ(generator->convertKey(generator.get(), nullptr, nullptr, nullptr, &pair), HCF_INVALID_PARAMS);
    EXPECT_EQ(generator->convertKey(generator.get(), nullptr, &blob, &blob, &pair), HCF_NOT_SUPPORT);
    EXPECT_EQ(generator->convertKey(generator.get(), nullptr, &blob, nullptr, nullptr), HCF_INVALID_PARAMS);
    EXPECT_EQ(pair, nullptr);
}

TEST(Crypto, KnowsNames)
{
    for (const char *name : {"RSA512", "RSA768", "RSA1024", "RSA2048", "RSA3072", "RSA4096", "RSA8192"}) {
        MakeGenerator(name);
    }
    HcfAsyKeyGenerator *generator = nullptr;
    for (const char *name : {"", "RSA", "RSA3071", "RSA03072", "RSA3072 ", "ECC256", "RSA99999999999", "RSA+512"}) {
        EXPECT_EQ(HcfAsyKeyGeneratorCreate(name, &generator), HCF_NOT_SUPPORT) << name;
    }
    for (const char *name : {"RSA2048|PSS|SHA512|MGF1_SHA256", "RSA512|PKCS1|SHA1"}) {
        MakeVerifier(name, "");
    }
    HcfVerify *verifier = nullptr;
    for (const char *name : {"", "|", "RSA3072", "RSA3072|PSS|SHA256", "RSA3072|PSS|SHA256|SHA256",
             "RSA3072|PSS|SHA256|MGF1_SHA256|", "RSA3072|PSS|SHA256|MGF1_SHA256|x", "RSA3072|PSS|SHA255|MGF1_SHA256",
             "RSA3072|OAEP|SHA256|MGF1_SHA256", "RSA3072|PKCS1|SHA256|MGF1_SHA256", "RSA77|PSS|SHA256|MGF1_SHA256"}) {
        EXPECT_EQ(HcfVerifyCreate(name, &verifier), HCF_NOT_SUPPORT) << name;
    }
    EXPECT_EQ(HcfAsyKeyGeneratorCreate(nullptr, &generator), HCF_INVALID_PARAMS);
    EXPECT_EQ(HcfVerifyCreate(nullptr, &verifier), HCF_INVALID_PARAMS);
    EXPECT_EQ(generator, nullptr);
    EXPECT_EQ(verifier, nullptr);
}

TEST(Crypto, CallsOutOfOrderAreRefused)
{
    HcfObjDestroy(nullptr);
    Pair pair = Convert(Openssl::Get().PublicKey());
    pair->pubKey->base.destroy(&pair->pubKey->base);
    Verifier verifier = MakeVerifier(PSS, "");
    std::string text = "text";
    HcfBlob data = Blob(text);
    HcfPubKey foreign = {{[] { return "SomeoneElsesKey"; }, nullptr}};
    EXPECT_EQ(verifier->update(verifier.get(), &data), HCF_INVALID_PARAMS);
    EXPECT_FALSE(verifier->verify(verifier.get(), &data, &data));
    EXPECT_EQ(verifier->init(verifier.get(), nullptr, nullptr), HCF_INVALID_PARAMS);
    EXPECT_EQ(verifier->init(verifier.get(), nullptr, &foreign), HCF_INVALID_PARAMS);
    EXPECT_EQ(verifier->init(verifier.get(), nullptr, pair->pubKey), HCF_SUCCESS);
    EXPECT_EQ(verifier->init(verifier.get(), nullptr, pair->pubKey), HCF_INVALID_PARAMS);
    EXPECT_EQ(verifier->update(verifier.get(), nullptr), HCF_INVALID_PARAMS);
}

const std::string *g_lateKey;
const std::string *g_lateSignature;

// Threads may still verify while the process ends, so what exit runs must leave OpenSSL as it is.
TEST(Crypto, VerifiesWhileTheProcessEnds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto verifyThenExit = [] {
        // Registered before the first use of OpenSSL, so called after all that such a use registers.
        std::atexit([] { _exit(Verify(PSS, *g_lateKey, MESSAGE, *g_lateSignature) ? 0 : 1); });
        g_lateKey = new std::string(Openssl::Get().PublicKey());
        g_lateSignature = new std::string(Openssl::Get().SignPss("32"));
        if (Verify(PSS, *g_lateKey, MESSAGE, *g_lateSignature)) {
            std::exit(0);
        }
        _exit(2);
    };
    EXPECT_EXIT(verifyThenExit(), testing::ExitedWithCode(0), "");
}

TEST(Crypto, GeneratesPairs)
{
    Generator generator = MakeGenerator("RSA1024");
    HcfKeyPair *generated = nullptr;
    ASSERT_EQ(generator->generateKeyPair(generator.get(), nullptr, &generated), HCF_SUCCESS);
    generator.reset();
    Pair pair(generated);
    ASSERT_NE(pair->priKey, nullptr);
    Verifier verifier = MakeVerifier("RSA1024|PSS|SHA256|MGF1_SHA256", "");
    EXPECT_EQ(verifier->init(verifier.get(), nullptr, pair->pubKey), HCF_SUCCESS);
    const std::string signature(128, 'x');
    HcfBlob blob = Blob(signature);
    EXPECT_FALSE(verifier->verify(verifier.get(), nullptr, &blob));
}

} // namespace
