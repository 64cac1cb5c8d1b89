// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/sha256_stream.h"

#include <stdexcept>

#include "util/encoding.h"

namespace DriveService {

namespace {

void Require(bool isGood)
{
    if (!isGood) {
        throw std::runtime_error("a SHA-256 digest could not be computed");
    }
}

} // namespace

Sha256Stream::Sha256Stream() : context_(EVP_MD_CTX_new())
{
    Require(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1);
}

void Sha256Stream::Add(std::string_view bytes)
{
    Require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1);
}

std::string Sha256Stream::FinishHex()
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    Require(EVP_DigestFinal_ex(context_.get(), digest, &length) == 1);
    return HexEncode(std::string_view(reinterpret_cast<const char *>(digest), length));
}

} // namespace DriveService
