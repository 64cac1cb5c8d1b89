// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "records/limits.h"

#include <fstream>
#include <functional>
#include <optional>
#include <ostream>

#include "catalogue/catalogue.h"
#include "message_parcel.h"
#include "requests/request_budget.h"
#include "service_fixture.h"
#include "util/json_writer.h"
#include "util/parcel_text.h"

namespace DriveService {

namespace {

using testing::HasSubstr;

Json::Value Nothings(size_t count)
{
    return List(std::vector<Json::Value>(count, Json::Value(Json::objectValue)));
}

std::string Repeat(const std::string &part, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += (i == 0 ? "" : "&") + part;
    }
    return text;
}

// One request, or one record of it, that is as large as `size` says.
struct RequestLimit {
    const char *name;
    size_t most;
    std::function<Json::Value(size_t size)> members;
    const char *function;
    ErrorCode code;
    const char *text;
    const char *position;

    friend std::ostream &operator<<(std::ostream &out, const RequestLimit &limit)
    {
        return out << limit.name;
    }
};

Json::Value SaveOf(const Json::Value &record)
{
    return Members({{"savePolicy", 0}, {"records", List({record})}});
}

Json::Value QueryOf(const std::string &text)
{
    return Members({{"recordType", "person"}, {"queryParam", text}});
}

Json::Value PersonWith(const char *member, size_t size)
{
    Json::Value record = J("{'recordType': 'person', 'recordId': 'p', 'isNew': true, 'name': 'Ann'}");
    record[member] = std::string(size, 'x');
    return record;
}

const std::vector<RequestLimit> &RequestLimits()
{
    constexpr auto argument = ErrorCode::INVALID_ARGUMENT;
    constexpr auto batch = ErrorCode::BATCH_TOO_LARGE;
    constexpr auto record = ErrorCode::INVALID_RECORD;
    constexpr auto query = ErrorCode::INVALID_QUERY;
    // {"name":""} and [], what is kept besides.
    constexpr size_t frame = 13;
    static const auto *limits = new std::vector<RequestLimit>{
        {"RecordId", MAX_ID_BYTES, [](size_t n) { return SaveOf(PersonWith("recordId", n)); }, "saveRecords", record,
            "at most 512 bytes", "recordId"},
        {"OwnerId", MAX_ID_BYTES, [](size_t n) { return SaveOf(PersonWith("ownerId", n)); }, "saveRecords", record,
            "at most 512 bytes", "ownerId"},
        {"RecordBytes", MAX_RECORD_BYTES, [](size_t n) { return SaveOf(PersonWith("name", n - frame)); }, "saveRecords",
            record, "at most 8388608 are allowed", "records"},
        {"TraceId", MAX_TRACE_ID_BYTES,
            [](size_t n) {
                Json::Value members = SaveOf(PersonWith("name", 1));
                members["prepareTraceId"] = std::string(n, 't');
                return members;
            },
            "saveRecords", argument, "at most 512 bytes", "prepareTraceId"},
        {"RecordsOfASave", 2000,
            [](size_t n) {
                return Members({{"savePolicy", 0}, {"records", Nothings(n)}});
            },
            "saveRecords", batch, "at most 2000", "records"},
        {"QueryBytes", MAX_QUERY_BYTES, [](size_t n) { return QueryOf("name=" + std::string(n - 5, 'x')); },
            "fetchRecordsWithQuery", query, "more than 65536 bytes", "queryParam"},
        {"Conditions", MAX_CONDITIONS, [](size_t n) { return QueryOf(Repeat("age>1", n)); }, "fetchRecordsWithQuery",
            query, "more than 32 conditions", "queryParam"},
        {"FetchedIds", MAX_FETCHED_IDS,
            [](size_t n) {
                return Members({{"recordType", "person"}, {"records", Nothings(n)}});
            },
            "fetchRecordWithIds", batch, "at most 1000", "records"},
        {"Bundles", MAX_BUNDLES,
            [](size_t n) {
                return Members({{"bundleName", List(std::vector<Json::Value>(n, "x"))}});
            },
            "GetCloudAppInfo", argument, "at most 1000 elements", "bundleName"},
        {"Subscriptions", MAX_SUBSCRIPTIONS,
            [](size_t n) {
                return Members({{"subscriptions", Nothings(n)}});
            },
            "batchSaveSubscription", batch, "at most 1000", "subscriptions"},
        {"EventName", MAX_EVENT_NAME,
            [](size_t n) {
                return Members({{"saName", std::string(n, 'e')}});
            },
            "saveSubscription", argument, "expected a name", "saName"},
        {"SettingTexts", MAX_SETTING_TEXTS,
            [](size_t n) {
                return Members({{"name", "flowControlWhiteList"}, {"value", List(std::vector<Json::Value>(n, "x"))}});
            },
            "setSetting", argument, "at most 1000 texts", "value"},
        {"SettingTextBytes", MAX_SETTING_TEXT_BYTES,
            [](size_t n) {
                return Members({{"name", "flowControlWhiteList"}, {"value", List({std::string(n, 'x')})}});
            },
            "setSetting", argument, "at most 512 bytes", "value"},
        {"JsonDepth", MAX_JSON_DEPTH,
            [](size_t n) {
                Json::Value deep;
                for (size_t i = 2; i < n; ++i) {
                    Json::Value outer(Json::arrayValue);
                    outer.append(deep);
                    deep = outer;
                }
                return Members({{"x", deep}});
            },
            "getAppState", ErrorCode::MALFORMED_REQUEST, "stackLimit", ""},
        // Besides these values, the request's own: an object of four members.
        {"JsonValues", MAX_JSON_VALUES,
            [](size_t n) {
                return Members({{"x", List(std::vector<Json::Value>(n - 4, 1))}});
            },
            "getAppState", ErrorCode::MALFORMED_REQUEST, "more than 1000000 values", ""},
    };
    return *limits;
}

class RequestLimitTest : public ServiceTest, public testing::WithParamInterface<RequestLimit> {};

TEST_P(RequestLimitTest, HoldsAtItAndRefusesAboveIt)
{
    const RequestLimit &limit = GetParam();
    for (size_t size : {limit.most + 1, limit.most}) {
        Json::Value reply = Ask(limit.function, limit.members(size));
        // Where a record is what is too large, its own result tells.
        const bool isOfRecord = limit.code == ErrorCode::INVALID_RECORD && reply["code"] == 0;
        const Json::Value &result = isOfRecord ? reply["records"][0] : reply;
        if (size == limit.most) {
            EXPECT_THAT(result, Succeeds());
        } else {
            EXPECT_THAT(result, FailsWith(limit.code, limit.text, limit.position));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, RequestLimitTest, testing::ValuesIn(RequestLimits()),
    [](const testing::TestParamInfo<RequestLimit> &limit) { return std::string(limit.param.name); });

class LimitsTest : public ServiceTest {};

TEST_F(LimitsTest, APageHoldsAThousandRecordsHoweverManyAreAskedFor)
{
    Json::Value records(Json::arrayValue);
    for (int i = 0; i <= MAX_PAGE_RECORDS; ++i) {
        records.append(NewPerson(std::to_string(i), "{'name': '" + std::to_string(i) + "'}"));
    }
    Save(records);
    Json::Value asked = QueryOf("");
    asked["pageSize"] = 5000;
    Json::Value page = Ask("fetchRecordsWithQuery", asked);
    EXPECT_EQ(page["records"].size(), MAX_PAGE_RECORDS);
    asked["cursor"] = page["nextCursor"];
    EXPECT_EQ(Ask("fetchRecordsWithQuery", asked)["records"].size(), 1u);
}

TEST_F(LimitsTest, AContainerHasSoManySubscriptionsThatHaveNotExpired)
{
    auto subscribe = [this](size_t number, int64_t expires) {
        return Ask("saveSubscription",
            Members({{"saName", "e" + std::to_string(number)}, {"expirationTime", Json::Int64(expires)}}));
    };
    for (size_t i = 0; i < MAX_CONTAINER_SUBSCRIPTIONS; ++i) {
        ASSERT_THAT(subscribe(i, i == 0 ? 5000 : 9000), Succeeds());
    }
    EXPECT_THAT(subscribe(1000, 9000), FailsWith(ErrorCode::LIMIT_REACHED, "has 100 subscriptions", "saName"));
    EXPECT_THAT(subscribe(1, 9000), Succeeds()) << "it is renewed";
    nowMs_ = 6000;
    EXPECT_THAT(subscribe(1000, 9000), Succeeds());
    EXPECT_THAT(subscribe(0, 9000), FailsWith(ErrorCode::LIMIT_REACHED, "at most 100 are possible", "saName"));
}

TEST_F(LimitsTest, SoManyCommonKeysAreMade)
{
    std::unique_ptr<WriteSession> session = service_->GetStore().BeginWrite();
    for (int64_t i = 1; i < MAX_COMMON_KEYS; ++i) {
        session->SetSetting("commonKey/" + std::to_string(i) + "/0", "k");
    }
    session->Commit();
    session.reset();
    EXPECT_THAT(Ask("getCommonKey", J("{'dataType': 5000, 'keyType': 1}")), Succeeds());
    EXPECT_THAT(Ask("getCommonKey", J("{'dataType': 5001, 'keyType': 1}")),
        FailsWith(ErrorCode::LIMIT_REACHED, "1000 common keys", "dataType"));
    EXPECT_EQ(Ask("getCommonKey", J("{'dataType': 7, 'keyType': 0}"))["key"], "k");
}

TEST_F(LimitsTest, NamesAndSizesOfCatalogueFiles)
{
    using Change = std::function<void(Json::Value &, size_t)>;
    auto type = [](Json::Value &entry) -> Json::Value & {
        return entry["defaultContainer"]["schema"]["recordTypes"][1];
    };
    const struct {
        size_t most;
        Change change;
        const char *problem;
    } cases[] = {
        {MAX_BUNDLE_NAME, [](auto &e, size_t n) { e["bundleName"] = std::string(n, 'b'); }, "bundleName: expected"},
        {MAX_CONTAINER_NAME, [](auto &e, size_t n) { e["defaultContainer"]["name"] = std::string(n, 'c'); },
            "name: expected at most 255 bytes"},
        {MAX_SCHEMA_NAME, [&](auto &e, size_t n) { type(e)["recordType"] = std::string(n, 't'); },
            "recordType: expected at most 128 bytes"},
        {MAX_SCHEMA_NAME,
            [&](auto &e, size_t n) {
                type(e)["fields"][1] = J("{'type': 'Long'}");
                type(e)["fields"][1]["name"] = std::string(n, 'f');
            },
            "name: expected at most 128 letters"},
        {MAX_CATALOGUE_ELEMENTS,
            [&](auto &e, size_t n) {
                for (Json::ArrayIndex i = 1; i < n; ++i) {
                    Json::Value &field = type(e)["fields"][i] = J("{'type': 'Long'}");
                    field["name"] = "f" + std::to_string(i);
                }
            },
            "has 10001 elements, at most 10000 are allowed"},
    };
    const std::string file = folder_.Path() + "/entry.json";
    auto problemsOf = [&](const std::string &text) {
        std::ofstream(file) << text;
        return CheckCatalogueFiles({file});
    };
    for (const auto &test : cases) {
        Json::Value entry = PeopleEntry();
        test.change(entry, test.most);
        EXPECT_EQ(problemsOf(WriteJson(entry)), "");
        test.change(entry, test.most + 1);
        EXPECT_THAT(problemsOf(WriteJson(entry)), HasSubstr(test.problem));
    }
    std::string text = WriteJson(PeopleEntry());
    text.resize(MAX_CATALOGUE_BYTES, ' ');
    EXPECT_EQ(problemsOf(text), "");
    EXPECT_THAT(problemsOf(text + " "), HasSubstr("cannot be read: "));
}

TEST_F(LimitsTest, ATextOfAParcel)
{
    OHOS::MessageParcel parcel;
    EXPECT_FALSE(WriteText(parcel, std::string(MAX_PARCEL_TEXT + 1, 'x')));
    ASSERT_TRUE(WriteText(parcel, std::string(MAX_PARCEL_TEXT, 'x')));
    EXPECT_EQ(ReadText(parcel).size(), MAX_PARCEL_TEXT);
}

TEST(RequestBudgetTest, AClientThatHasAllItMayLeavesTheOthersTheirs)
{
    // Of two clients each may have all of one kind.
    RequestBudget budget({{2, 100, 10}, {3, 150, 15}});
    std::optional<Failure> failure;
    const std::string small = "{}";
    {
        auto first = budget.Take(1, small, failure);
        auto second = budget.Take(1, small, failure);
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(budget.Take(1, small, failure), nullptr);
        EXPECT_THAT(failure->description, HasSubstr("this client has 2 requests of at most 2 under way"));
        auto other = budget.Take(2, small, failure);
        EXPECT_NE(other, nullptr);
        EXPECT_EQ(budget.Take(3, small, failure), nullptr);
        EXPECT_THAT(failure->description, HasSubstr("this service's clients have 3 requests of at most 3"));
    }
    auto share = budget.Take(1, std::string(98, 'x'), failure);
    EXPECT_NE(budget.Take(1, small, failure), nullptr) << "100 bytes, and given back at once";
    share->AddBytes(1);
    EXPECT_EQ(budget.Take(1, small, failure), nullptr) << "replies count";
    EXPECT_THAT(failure->description, HasSubstr("99 bytes of at most 100"));
    share = budget.Take(2, "[" + std::string(8, ','), failure);
    EXPECT_NE(budget.Take(2, small, failure), nullptr);
    EXPECT_EQ(budget.Take(2, "[{", failure), nullptr);
    EXPECT_THAT(failure->description, HasSubstr("9 values of at most 10"));
    share.reset();
    EXPECT_NE(budget.Take(2, std::string(1000, '['), failure), nullptr) << "one alone always fits";
}

} // namespace

} // namespace DriveService
