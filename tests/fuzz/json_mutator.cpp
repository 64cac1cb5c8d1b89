// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Changes JSON inputs value by value, because hardly any change of single bytes leaves a text that is JSON. Linked into
// the fuzzers whose inputs are lines of JSON, each behind what is no JSON, which stays.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <json/json.h>

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed);

namespace {
bool Parse(const std::string &text, Json::Value &json)
{
    std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    try {
        return reader->parse(text.data(), text.data() + text.size(), &json, nullptr);
    } catch (const std::exception &) {
        return false;
    }
}

void Collect(Json::Value &json, std::vector<Json::Value *> &nodes, std::vector<std::string> &names)
{
    nodes.push_back(&json);
    for (auto child = json.begin(); child != json.end(); ++child) {
        if (json.isObject()) {
            names.push_back(child.name());
        }
        Collect(*child, nodes, names);
    }
}

class Mutation {
public:
    explicit Mutation(unsigned seed) : random_(seed)
    {}

    size_t Below(size_t bound)
    {
        return std::uniform_int_distribution<size_t>(0, bound - 1)(random_);
    }

    void Change(Json::Value &json)
    {
        std::vector<Json::Value *> nodes;
        std::vector<std::string> names = {"other"};
        Collect(json, nodes, names);
        Json::Value &target = *nodes[Below(nodes.size())];
        const Json::Value other = *nodes[Below(nodes.size())];
        switch (Below(6)) {
            case 0:
                target = Strange();
                break;
            case 1:
                target = other;
                break;
            case 2:
                Remove(target);
                break;
            case 3:
                Add(target, names[Below(names.size())], Below(2) == 0 ? other : Strange());
                break;
            case 4:
                target = Json::Value(Json::arrayValue);
                target.append(other);
                break;
            default:
                ChangeScalar(target);
                break;
        }
    }

private:
    Json::Value Strange()
    {
        static const auto *values = new std::vector<Json::Value>{Json::Value(), true, false, 0, -1, 1, 2, 3, 5, 0.5,
            1e300, Json::Value(Json::Int64(INT64_MIN)), Json::Value(Json::Int64(INT64_MAX)),
            Json::Value(Json::UInt64(UINT64_MAX)), Json::Value(INT32_MIN), Json::Value(Json::UInt(UINT32_MAX)), "", "a",
            "1", "\xc3\xb6", std::string("a\0b", 3), std::string(300, 'x'), Json::Value(Json::arrayValue),
            Json::Value(Json::objectValue)};
        return (*values)[Below(values->size())];
    }

    void Remove(Json::Value &target)
    {
        if (target.isObject() && !target.empty()) {
            target.removeMember(target.getMemberNames()[Below(target.size())]);
        } else if (target.isArray() && !target.empty()) {
            target.removeIndex(static_cast<Json::ArrayIndex>(Below(target.size())), nullptr);
        }
    }

    static void Add(Json::Value &target, const std::string &name, const Json::Value &value)
    {
        if (target.isArray()) {
            target.append(value);
        } else if (target.isObject()) {
            target[name] = value;
        }
    }

    void ChangeScalar(Json::Value &target)
    {
        if (target.isString()) {
            std::string text = target.asString();
            const size_t size = text.size();
            text.resize(size + 16);
            text.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t *>(text.data()), size, text.size()));
            target = text;
        } else if (target.isInt64() && target.asInt64() < INT64_MAX) {
            target = Json::Int64(target.asInt64() + 1);
        }
    }

    std::minstd_rand random_;
};
} // namespace

size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed)
{
    Mutation mutation(seed);
    std::string text(reinterpret_cast<const char *>(data), size);
    // One of the lines, which stays in its place.
    const auto lines = static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    size_t begin = 0;
    for (size_t skip = mutation.Below(lines); skip > 0; --skip) {
        begin = text.find('\n', begin) + 1;
    }
    const size_t end = std::min(text.find('\n', begin), text.size());
    const size_t start = text.find_first_of("[{", begin);
    Json::Value json;
    if (mutation.Below(4) == 0 || start >= end || !Parse(text.substr(start, end - start), json)) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    mutation.Change(json);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = mutation.Below(2) == 0;
    text.replace(start, end - start, Json::writeString(builder, json));
    const size_t written = std::min(text.size(), maxSize);
    std::memcpy(data, text.data(), written);
    return written;
}
