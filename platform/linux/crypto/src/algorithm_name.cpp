// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <charconv>
#include <cstddef>

#include <openssl/rsa.h>

#include "algorithm_name.h"

namespace Host {
namespace {

constexpr std::string_view KEY_PREFIX = "RSA";
constexpr std::string_view MASK_PREFIX = "MGF1_";
constexpr int KEY_SIZES[] = {512, 768, 1024, 2048, 3072, 4096, 8192};

// Takes the part before the next bar off `rest`, which becomes empty behind the last one.
std::string_view NextPart(std::string_view &rest)
{
    size_t end = rest.find('|');
    std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return part;
}

const EVP_MD *DigestOf(std::string_view name)
{
    struct Digest {
        std::string_view name;
        const EVP_MD *(*get)();
    };
    static constexpr Digest DIGESTS[] = {{"SHA1", EVP_sha1}, {"SHA224", EVP_sha224}, {"SHA256", EVP_sha256},
        {"SHA384", EVP_sha384}, {"SHA512", EVP_sha512}};
    for (const auto &digest : DIGESTS) {
        if (digest.name == name) {
            return digest.get();
        }
    }
    return nullptr;
}

} // namespace

int RsaBitsOf(std::string_view name)
{
    if (name.substr(0, KEY_PREFIX.size()) != KEY_PREFIX) {
        return 0;
    }
    name.remove_prefix(KEY_PREFIX.size());
    int bits = 0;
    const char *end = name.data() + name.size();
    if (name.empty() || name.front() == '0' || std::from_chars(name.data(), end, bits).ptr != end) {
        return 0;
    }
    for (int size : KEY_SIZES) {
        if (size == bits) {
            return bits;
        }
    }
    return 0;
}

bool ParseSignatureScheme(std::string_view name, SignatureScheme &scheme)
{
    if (name.empty() || name.back() == '|' || RsaBitsOf(NextPart(name)) == 0) {
        return false;
    }
    std::string_view padding = NextPart(name);
    scheme.digest = DigestOf(NextPart(name));
    if (scheme.digest == nullptr) {
        return false;
    }
    if (padding == "PKCS1") {
        scheme.padding = RSA_PKCS1_PADDING;
        return name.empty();
    }
    if (padding != "PSS" || name.substr(0, MASK_PREFIX.size()) != MASK_PREFIX) {
        return false;
    }
    scheme.padding = RSA_PKCS1_PSS_PADDING;
    scheme.maskDigest = DigestOf(name.substr(MASK_PREFIX.size()));
    return scheme.maskDigest != nullptr;
}

} // namespace Host
