// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record_field.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "json_helper.h"
#include "json_samples.h"
#include "log_capture.h"
#include "nb_schema.h"
#include "schema_builder.h"

using namespace Nubis;
using NubisTest::HostileJson;
using NubisTest::ParseJson;
using NubisTest::SchemaField;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
using Bytes = std::vector<uint8_t>;

std::string TextOf(const NBRecordField &field)
{
    return JsonHelper::JsonToString(field.ToJsonValue());
}

NBRecordField ListField(NBFieldList elements)
{
    return NBRecordField(elements);
}

// A field that holds this text until a parse replaces it.
NBRecordField HeldText()
{
    return NBRecordField("held");
}

// How many of the getters yield a value, which must be those that serve the field's type.
int CountGoodGetters(const NBRecordField &field)
{
    int number = 0;
    int64_t wide = 0;
    double real = 0;
    bool flag = false;
    std::string text;
    Bytes blob;
    NBFieldList list;
    NBFieldMap map;
    NBAsset asset;
    NBReference reference;
    const NBLocalErrorCode codes[] = {field.GetInt(number), field.GetLong(wide), field.GetDouble(real),
        field.GetBool(flag), field.GetString(text), field.GetBlob(blob), field.GetRecordList(list),
        field.GetRecordMap(map), field.GetAsset(asset), field.GetReference(reference)};
    int good = 0;
    for (NBLocalErrorCode code : codes) {
        EXPECT_TRUE(code == NB_LOCAL_SUCCESS || code == NB_LOCAL_BAD_DATA);
        good += code == NB_LOCAL_SUCCESS ? 1 : 0;
    }
    return good;
}

std::vector<NBRecordField> OneOfEachType()
{
    NBFieldList list = {1, "x"};
    NBAsset asset;
    NBReference reference;
    return {NBRecordField(), 1, 1.5, "text", true, Bytes{1}, list, NBFieldMap{{"k", 1}}, asset, reference};
}
} // namespace

TEST(NBRecordField, EveryConstructorSetsTheTypeOfItsValue)
{
    const auto fields = OneOfEachType();
    for (size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(fields[i].GetType(), i);
        EXPECT_EQ(fields[i].GetFieldValue().index(), i);
        EXPECT_EQ(NBRecordField(fields[i].GetFieldValue()).GetType(), i);
        EXPECT_EQ(CountGoodGetters(fields[i]), i == NB_FIELD_NULL ? 0 : i == NB_FIELD_INTEGER ? 2 : 1) << i;
    }
    EXPECT_EQ(NBRecordField(static_cast<const char *>(nullptr)).GetType(), NB_FIELD_STRING);
}

TEST(NBRecordField, GettersConvertNothingAndLeaveTheOutputAlone)
{
    double real = 2.5;
    EXPECT_EQ(NBRecordField(7).GetDouble(real), NB_LOCAL_BAD_DATA);
    EXPECT_EQ(real, 2.5);
    int number = -1;
    int64_t wide = 0;
    EXPECT_EQ(NBRecordField(int64_t{4294967296}).GetInt(number), NB_LOCAL_SUCCESS);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(NBRecordField(int64_t{4294967296}).GetLong(wide), NB_LOCAL_SUCCESS);
    EXPECT_EQ(wide, 4294967296);
    NBRecordField(-1).GetLong(wide);
    EXPECT_EQ(wide, -1);
}

TEST(NBRecordField, AVariantWithoutValueIsBeyondEveryType)
{
    struct Thrower {
        operator NBAsset() const
        {
            throw std::runtime_error("no asset");
        }
    };
    NBFieldValue value;
    EXPECT_THROW(value.emplace<NB_FIELD_ASSET>(Thrower()), std::runtime_error);
    const NBRecordField field(value);
    EXPECT_EQ(field.GetType(), 0xFFFFFFFFU);
    EXPECT_TRUE(field.ToJsonValue().isNull());
    EXPECT_EQ(CountGoodGetters(field), 0);
}

TEST(NBRecordField, StealingLeavesNothingBehind)
{
    NBRecordField field("text");
    NBFieldValue value;
    field.StealDKFieldValue(value);
    EXPECT_EQ(std::get<std::string>(value), "text");
    EXPECT_EQ(field.GetType(), NB_FIELD_NULL);
    EXPECT_TRUE(field.ToJsonValue().isNull());
    EXPECT_EQ(CountGoodGetters(field), 0);
}

TEST(NBRecordField, WritesEachTypeInItsForm)
{
    EXPECT_EQ(TextOf(INT64_MIN), "-9223372036854775808");
    EXPECT_EQ(TextOf(1.5), "1.5");
    EXPECT_EQ(TextOf(Bytes{0xFB, 0xFF}), "\"+/8=\"");
    EXPECT_EQ(TextOf(Bytes()), "\"\"");
    EXPECT_EQ(TextOf(ListField({})), "null");
    EXPECT_EQ(TextOf(NBFieldMap()), "null");
    EXPECT_EQ(TextOf(ListField({NBRecordField()})), "[null]");
    EXPECT_EQ(TextOf(NBFieldMap{{"b", ListField({1, true})}, {"a", "x"}}), R"({"a":"x","b":[1,true]})");
    NBReference reference = {"r1", "person"};
    EXPECT_EQ(TextOf(reference), R"({"recordId":"r1","recordType":"person"})");
    NBAsset asset;
    asset.fd = 5;
    asset.size = UINT64_MAX;
    EXPECT_EQ(TextOf(asset), R"({"assetId":"","assetName":"","assetOperType":0,"exCheckInfo":"","sha256":"",)"
                             R"("size":18446744073709551615,"subPath":"","uri":"","version":0})");
}

TEST(NBRecordField, WrapsTheElementsOfAnAssetList)
{
    EXPECT_EQ(JsonHelper::JsonToString(AssetListToJsonValue(ListField({1, "x"}))), R"([{"asset":1},{"asset":"x"}])");
    EXPECT_TRUE(AssetListToJsonValue(ListField({})).isNull());
    EXPECT_TRUE(AssetListToJsonValue(NBRecordField(1)).isNull());
}

TEST(NBRecordField, TakesScalarsOnlyFromTheirKind)
{
    const std::map<NBRecordFieldType, std::vector<const char *>> good = {{NB_FIELD_INTEGER, {"-5", "3.0"}},
        {NB_FIELD_DOUBLE, {"2", "2.5", "18446744073709551615"}}, {NB_FIELD_STRING, {"\"\"", "\"x\""}},
        {NB_FIELD_BOOLEAN, {"false"}}, {NB_FIELD_REFERENCE, {"{}"}}, {NB_FIELD_ASSET, {"{}"}}, {NB_FIELD_LIST, {"[]"}},
        {NB_FIELD_MAP, {"{}"}}, {NB_FIELD_BLOB, {"\"AQ==\""}}};
    const std::map<NBRecordFieldType, std::vector<const char *>> bad = {
        {NB_FIELD_INTEGER, {"18446744073709551615", "1.5", "\"5\"", "true", "null"}},
        {NB_FIELD_DOUBLE, {"\"2\"", "true", "null"}}, {NB_FIELD_STRING, {"1", "null", "[]"}},
        {NB_FIELD_BOOLEAN, {"1", "\"true\"", "null"}}, {NB_FIELD_REFERENCE, {"[]", "\"r\"", "null"}},
        {NB_FIELD_ASSET, {"[]", "null"}}, {NB_FIELD_LIST, {"{}", "null", "1"}}, {NB_FIELD_MAP, {"[]", "null", "1"}},
        {NB_FIELD_BLOB, {"1", "[1]", "null"}}, {static_cast<NBRecordFieldType>(10), {"1", "null"}}};
    for (const auto &[type, texts] : good) {
        for (const char *text : texts) {
            NBRecordField field;
            EXPECT_TRUE(field.ParseFromJsonValue(SchemaField(type), ParseJson(text))) << type << text;
            EXPECT_EQ(field.GetType(), type);
            EXPECT_EQ(field.GetFieldValue().index(), type);
        }
    }
    for (const auto &[type, texts] : bad) {
        for (const char *text : texts) {
            NBRecordField field = HeldText();
            EXPECT_FALSE(field.ParseFromJsonValue(SchemaField(type), ParseJson(text))) << type << text;
            EXPECT_EQ(field.GetType(), type);
            EXPECT_EQ(std::get<std::string>(field.GetFieldValue()), "held");
            EXPECT_EQ(CountGoodGetters(field), type == NB_FIELD_STRING ? 1 : 0);
        }
    }
}

TEST(NBRecordField, ReadsNothingForTheNullType)
{
    NBRecordField field = HeldText();
    EXPECT_TRUE(field.ParseFromJsonValue(SchemaField(NB_FIELD_NULL), ParseJson("5")));
    EXPECT_EQ(field.GetType(), NB_FIELD_NULL);
    EXPECT_EQ(std::get<std::string>(field.GetFieldValue()), "held");
}

TEST(NBRecordField, KeepsABlobThatIsHeldWhenTheTextIsNoBase64)
{
    for (const char *text : {"\"*\"", "\"\""}) {
        NBRecordField held(Bytes{1, 2});
        EXPECT_TRUE(held.ParseFromJsonValue(SchemaField(NB_FIELD_BLOB), ParseJson(text)));
        EXPECT_EQ(TextOf(held), "\"AQI=\"");
        NBRecordField fresh = HeldText();
        EXPECT_TRUE(fresh.ParseFromJsonValue(SchemaField(NB_FIELD_BLOB), ParseJson(text)));
        EXPECT_EQ(TextOf(fresh), "\"\"");
        Bytes blob = {7};
        EXPECT_EQ(fresh.GetBlob(blob), NB_LOCAL_SUCCESS);
        EXPECT_THAT(blob, IsEmpty());
    }
}

TEST(NBRecordField, KeepsTheGoodElementsOfABadList)
{
    NubisTest::LogCapture log;
    NBRecordField field;
    EXPECT_FALSE(field.ParseListFromJson(NB_FIELD_INTEGER, ParseJson(R"([1, "x", 2, null])")));
    EXPECT_EQ(TextOf(field), "[1,2]");
    const std::string line = R"(Parse field list from json failed, listType:1, data:[1,"x",2,null])";
    EXPECT_THAT(log.TakeErrors(), ElementsAre(line, line));
    EXPECT_TRUE(field.ParseListFromJson(NB_FIELD_LIST, ParseJson("[[], [[]]]")));
    EXPECT_EQ(TextOf(field), "[null,[null]]");
    EXPECT_FALSE(field.ParseListFromJson(static_cast<NBRecordFieldType>(77), ParseJson("[1]")));
    EXPECT_EQ(TextOf(field), "null");
}

TEST(NBRecordField, InfersTheKindsOfMapMembers)
{
    NubisTest::LogCapture log;
    NBRecordField field;
    EXPECT_FALSE(field.ParseMapFromJson(
        ParseJson(R"({"a": 1, "b": 1.5, "c": "s", "d": true, "e": [1], "f": 18446744073709551615})")));
    EXPECT_THAT(log.TakeErrors(), ElementsAre("Parse field map from json failed, data:[1]"));
    NBFieldMap map;
    ASSERT_EQ(field.GetRecordMap(map), NB_LOCAL_SUCCESS);
    std::map<std::string, uint32_t> types;
    for (const auto &[name, element] : map) {
        types[name] = element.GetType();
    }
    const std::map<std::string, uint32_t> expected = {{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"f", 2}};
    EXPECT_EQ(types, expected);
}

TEST(NBRecordField, TakesDefaultsForBadMembersOfAssetsAndReferences)
{
    NBAsset asset = ParseAssetFromJsonValue(
        ParseJson(R"({"uri": 5, "assetName": "n", "assetOperType": 7, "size": -5, "version": 1.5})"));
    EXPECT_EQ(asset.uri, "");
    EXPECT_EQ(asset.assetName, "n");
    EXPECT_EQ(asset.assetOperType, 0);
    EXPECT_EQ(asset.size, 0U);
    EXPECT_EQ(asset.version, 0U);
    EXPECT_EQ(asset.fd, -1);
    EXPECT_EQ(ParseAssetFromJsonValue(ParseJson(R"({"assetOperType": 3, "fd": 9})")).assetOperType, 3);
    EXPECT_EQ(ParseAssetFromJsonValue(ParseJson(R"({"assetOperType": -1, "fd": 9})")).fd, 9);
    NBRecordField reference;
    EXPECT_TRUE(reference.ParseReferenceFromJson(ParseJson(R"({"recordId": 5, "recordType": "t"})")));
    EXPECT_EQ(TextOf(reference), R"({"recordId":"","recordType":"t"})");
}

TEST(NBRecordField, NoJsonMakesAParserGetterOrWriterThrow)
{
    for (uint32_t type = 0; type <= 10; ++type) {
        for (const Json::Value &json : HostileJson()) {
            for (uint32_t listType = 0; listType <= 10; ++listType) {
                NBRecordField field;
                const auto schema =
                    SchemaField(static_cast<NBRecordFieldType>(type), static_cast<NBRecordFieldType>(listType));
                if (field.ParseFromJsonValue(schema, json)) {
                    EXPECT_NO_THROW(field.ToJsonValue());
                }
                EXPECT_NO_THROW(CountGoodGetters(field));
            }
        }
    }
}

RC_GTEST_PROP(NBRecordField, ValuesComeBackAsTheyWere,
    (int64_t number, bool flag, const std::string &text, const std::vector<uint8_t> &blob,
        const std::vector<std::string> &list, const std::map<std::string, int64_t> &numbers))
{
    // Whole numbers written as reals are integers to maps, so only lists and fields of their own hold reals here.
    const double real = static_cast<double>(number) / 3;
    NBFieldList elements(list.begin(), list.end());
    NBFieldMap members(numbers.begin(), numbers.end());
    NBAsset asset;
    asset.uri = text;
    asset.size = static_cast<uint64_t>(number);
    asset.assetOperType = flag ? 3 : 0;
    NBReference reference = {text, text};
    for (const NBRecordField &field :
        std::vector<NBRecordField>{number, real, flag, text, blob, elements, members, asset, reference}) {
        NBRecordField parsed;
        Json::Value json = field.ToJsonValue();
        if (json.isNull()) {
            json = Json::Value(field.GetType() == NB_FIELD_LIST ? Json::arrayValue : Json::objectValue);
        }
        RC_ASSERT(parsed.ParseFromJsonValue(SchemaField(field.GetType(), NB_FIELD_STRING), json));
        RC_ASSERT(parsed.ToJsonValue() == field.ToJsonValue());
    }
}
