// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_CRID_H
#define NUBIS_CRID_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace Nubis {
// The two identities of a record: the rid, which the app and its local store use and which belongs to one user
// partition (the upid), and the crid, which the cloud uses and from which upid and rid can be rebuilt. The first
// character of a crid names the version of its form:
//
//   A    tag, base64url( BE64(upid ^ id), BE64(rotl32(upid) ^ id), BE64(id) )         33 characters
//   B C  tag, base64url( BE64(upid ^ low), BE64(high), BE64(low) )                     33 characters
//   F      high and low being the halves of a 128-bit id
//   D K  tag, base64url( BE64(upid) ), rid                                             13 or more
//   E    tag, base64url( BE64(upid), BE32(number), BE64(number) )                      28 characters
//   H    tag, base64url( 8 bytes, 8 bytes, 8 bytes ), upid being the first ^ the last  33 characters
//   I    tag, base64url( BE32(number), BE64(upid) ), rid                               17 or more
//   J    tag, base64url( BE32(number), BE64(upid), 16 bytes of the rid )               39 characters
//
// Objects do not change after construction and may be shared by threads; the functions have no state. In every
// version Decode rebuilds an object from a rid and checks that it belongs to the upid, DecodeCrid rebuilds it from a
// crid alone; both give null, with a log line, for what is malformed.
class Crid {
public:
    using DecodeTable = std::map<char, std::shared_ptr<Crid> (*)(uint64_t upid, const std::string &rid)>;
    using DecodeCridTable = std::map<char, std::shared_ptr<Crid> (*)(const std::string &crid)>;

    virtual ~Crid() = default;

    std::string GetVersion() const;
    std::string GetCrid() const;
    uint64_t GetUpid() const;
    std::string GetRid() const;

    // The decoders of all versions by tag.
    static const DecodeTable &GetDecodeTable();
    static const DecodeCridTable &GetDecodeCridTable();

protected:
    Crid(std::string version, std::string crid, uint64_t upid, std::string rid);

private:
    std::string version_;
    std::string crid_;
    uint64_t upid_;
    std::string rid_;
};

// Ids that are 64-bit numbers. The only version whose crids carry a check.
class CridV0 : public Crid {
public:
    CridV0(std::string crid, uint64_t upid, std::string rid, uint64_t id);
    uint64_t GetId() const;

    static std::shared_ptr<CridV0> Encode(uint64_t upid, uint64_t id);
    static std::shared_ptr<CridV0> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV0> DecodeCrid(const std::string &crid);

private:
    uint64_t id_;
};

// Ids that are UUIDs; the rid carries the tag.
class CridV1 : public Crid {
public:
    CridV1(std::string crid, uint64_t upid, std::string rid, std::string hexId);
    std::string GetHexId() const;

    static std::shared_ptr<CridV1> Encode(uint64_t upid, const std::string &hexId);
    static std::shared_ptr<CridV1> Random(uint64_t upid);
    static std::shared_ptr<CridV1> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV1> DecodeCrid(const std::string &crid);

private:
    std::string hexId_;
};

// Laid out as version 1. Decode takes rids with this version's tag, while DecodeCrid rebuilds rids with the tag of
// version 1: both directions are part of the form and neither may change.
class CridV2 : public Crid {
public:
    CridV2(std::string crid, uint64_t upid, std::string rid);

    static std::shared_ptr<CridV2> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV2> DecodeCrid(const std::string &crid);
};

// The rid in clear; made by the service only.
class CridV3 : public Crid {
public:
    CridV3(std::string crid, uint64_t upid, std::string rid);

    static std::shared_ptr<CridV3> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV3> DecodeCrid(const std::string &crid);
};

// Two numbers and no rid; made by the service only.
class CridV4 : public Crid {
public:
    CridV4(std::string crid, uint64_t upid, uint32_t shortNumber, uint64_t longNumber);
    uint32_t GetShortNumber() const;
    uint64_t GetLongNumber() const;

    static std::shared_ptr<CridV4> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV4> DecodeCrid(const std::string &crid);

private:
    uint32_t shortNumber_;
    uint64_t longNumber_;
};

// Laid out as version 1, with a rid that carries no tag.
class CridV5 : public Crid {
public:
    CridV5(std::string crid, uint64_t upid, std::string rid);

    static std::shared_ptr<CridV5> Encode(uint64_t upid, const std::string &hexId);
    static std::shared_ptr<CridV5> Random(uint64_t upid);
    static std::shared_ptr<CridV5> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV5> DecodeCrid(const std::string &crid);
};

// Only a upid; made by the service only.
class CridV7 : public Crid {
public:
    CridV7(std::string crid, uint64_t upid);

    static std::shared_ptr<CridV7> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV7> DecodeCrid(const std::string &crid);
};

// A number and the rid in clear; made by the service only.
class CridV8 : public Crid {
public:
    CridV8(std::string crid, uint64_t upid, uint32_t number, std::string rid);
    uint32_t GetNumber() const;

    static std::shared_ptr<CridV8> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV8> DecodeCrid(const std::string &crid);

private:
    uint32_t number_;
};

// A number and a rid of 32 hexadecimal characters; made by the service only.
class CridV9 : public Crid {
public:
    CridV9(std::string crid, uint64_t upid, uint32_t number, std::string rid);
    uint32_t GetNumber() const;

    static std::shared_ptr<CridV9> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV9> DecodeCrid(const std::string &crid);

private:
    uint32_t number_;
};

// The rid in clear. The encoder writes the upid as 11 characters while the decoder reads 12, so that a decoded rid
// lacks its first character: the form is in use and stays so.
class CridV10 : public Crid {
public:
    CridV10(std::string crid, uint64_t upid, std::string rid);

    static std::shared_ptr<CridV10> Encode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV10> Decode(uint64_t upid, const std::string &rid);
    static std::shared_ptr<CridV10> DecodeCrid(const std::string &crid);
};
} // namespace Nubis

#endif // NUBIS_CRID_H
