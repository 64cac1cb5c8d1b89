// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "callback_object.h"
#include "requests/client_callback.h"
#include "service_fixture.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

const std::filesystem::path DOCS = NUBIS_DOCS_DIR;

std::vector<std::smatch> FindAll(const std::string &text, const char *pattern)
{
    std::regex expression(pattern);
    return {std::sregex_iterator(text.begin(), text.end(), expression), std::sregex_iterator()};
}

// The story that the examples of a document tell: each request, the call of the client that it leads to, if any, and
// the reply. A text "<name>" in a reply stands for the same text wherever the name comes again.
class Story : public testing::Test {
protected:
    Story()
    {
        size_t end = 0;
        for (size_t at = 0; (at = text_.find(BEGIN, end)) != std::string::npos;) {
            at += std::string(BEGIN).size();
            end = text_.find("\n```", at);
            Json::Value block;
            std::string error;
            EXPECT_TRUE(ParseJson(text_.substr(at, end - at), block, error))
                << error << " in " << text_.substr(at, 200);
            if (block.isMember("function") || !block.isMember("bundleName")) {
                blocks_.push_back(block);
            } else {
                Install(block);
            }
        }
        names_["folder"] = folder_.Path() + "/backup";
        service_ = std::make_unique<ServiceInstance>(folder_.Path(), 100, [] { return int64_t{1800000000000}; });
    }

    void Install(const Json::Value &entry) const
    {
        std::string catalogue = DataPaths::CatalogueOf(folder_.Path());
        std::filesystem::create_directories(catalogue);
        std::ofstream(catalogue + "/" + entry["bundleName"].asString() + ".json") << WriteJson(entry);
    }

    // The next block.
    Json::Value Take()
    {
        EXPECT_LT(next_, blocks_.size()) << "the last example is not whole";
        return next_ < blocks_.size() ? blocks_[next_++] : Json::Value(Json::objectValue);
    }

    bool IsCallNext() const
    {
        return next_ < blocks_.size() && blocks_[next_]["function"] == "onUploadRecordAssets";
    }

    // The value with what the names stand for.
    Json::Value Told(Json::Value value) const
    {
        if (value.isString()) {
            auto name = names_.find(NameOf(value));
            return name == names_.end() ? value : Json::Value(name->second);
        }
        for (Json::Value &member : value) {
            member = Told(member);
        }
        return value;
    }

    void ExpectSame(const Json::Value &told, const Json::Value &is, const std::string &where)
    {
        std::string name = NameOf(told);
        if (name == "any" || (name == "number" && is.isIntegral())) {
            return;
        }
        if (!name.empty() && is.isString() && !is.asString().empty()) {
            EXPECT_EQ(names_.emplace(name, is.asString()).first->second, is.asString()) << where;
            return;
        }
        if (told.type() != is.type() || !(told.isObject() || told.isArray()) || told.size() != is.size()) {
            EXPECT_EQ(told, is) << where;
            return;
        }
        for (Json::ArrayIndex i = 0; told.isArray() && i < told.size(); ++i) {
            ExpectSame(told[i], is[i], where + "[" + std::to_string(i) + "]");
        }
        for (const std::string &member : told.isObject() ? told.getMemberNames() : Json::Value::Members()) {
            ExpectSame(told[member], is[member], where + "." + member);
        }
    }

    // Sends the next request and compares what comes of it.
    void TellNext()
    {
        Json::Value request = Told(Take());
        std::string function = request["function"].asString();
        functions_.insert(function);
        int calls = 0;
        ClientCallback callback(new CallbackObject([&](const Json::Value &call) {
            EXPECT_EQ(++calls, 1) << function;
            ExpectSame(Take(), call, function + ": the call");
            functions_.insert(call["function"].asString());
            return WriteJson(Told(Take()));
        }));
        bool isCallTold = IsCallNext();
        Json::Value reply;
        std::string error;
        ASSERT_TRUE(ParseJson(service_->Router().Answer(WriteJson(request), "tablet", &callback), reply, error));
        EXPECT_EQ(calls == 1, isCallTold) << function;
        ExpectSame(Take(), reply, function);
    }

    static constexpr const char *BEGIN = "```json\n";

    const std::string text_ = ReadText(DOCS / "protocol.md");
    TempFolder folder_;
    std::unique_ptr<ServiceInstance> service_;
    std::vector<Json::Value> blocks_;
    size_t next_ = 0;
    std::map<std::string, std::string> names_;
    std::set<std::string> functions_;

private:
    // "name" of the text "<name>", else empty.
    static std::string NameOf(const Json::Value &value)
    {
        std::string text = value.isString() ? value.asString() : "";
        return text.size() > 2 && text.front() == '<' && text.back() == '>' ? text.substr(1, text.size() - 2) : "";
    }
};

TEST_F(Story, TheServiceAnswersAsTheProtocolTells)
{
    while (next_ < blocks_.size() && !HasFatalFailure()) {
        TellNext();
    }
    std::string operations = ReadText(DOCS / "operations.md");
    std::vector<std::smatch> rows = FindAll(operations, "\\n\\| ([a-zA-Z]+)[^|]*\\| (?:kit|database|container|the) ");
    EXPECT_EQ(rows.size(), 30u);
    for (const std::smatch &row : rows) {
        EXPECT_EQ(functions_.count(row[1]), 1u) << "there is no example of " << row[1];
    }
}

TEST_F(Story, EveryErrorIsTold)
{
    std::map<int, std::string> told;
    for (const std::smatch &row : FindAll(text_, "\\n\\| (\\d{4}) \\| ([A-Z_]+) \\|")) {
        told[std::stoi(row[1])] = row[2];
    }
    for (int code = 1000; code < 2000; ++code) {
        std::string name = ReasonOf(static_cast<ErrorCode>(code));
        bool isKnown =
            name != ReasonOf(ErrorCode::INTERNAL_ERROR) || code == static_cast<int>(ErrorCode::INTERNAL_ERROR);
        EXPECT_EQ(told.count(code) > 0 ? told[code] : "", isKnown ? name : "") << code;
    }
}

} // namespace

} // namespace DriveService
