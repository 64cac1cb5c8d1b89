// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "import_plan.h"

#include <map>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace NubisTool {
namespace {
using namespace Nubis;

ImportItem Item(const std::string &id, const std::string &parent = "", size_t padding = 0)
{
    ImportItem item;
    item.file = "in";
    item.line = 1;
    item.record.SetRecordId(id);
    item.record.SetRecordType("Node");
    NBFieldMap data;
    data["text"] = NBRecordField(std::string(padding, 'x'));
    if (!parent.empty()) {
        NBReference reference{parent, "Node"};
        NBFieldList list = {NBRecordField(reference)};
        // Lists of references count like references.
        data["parent"] = padding % 2 == 0 ? NBRecordField(reference) : NBRecordField(list);
    }
    item.record.SetRecordData(std::move(data));
    return item;
}

RC_GTEST_PROP(ImportPlan, KeepsTheLimitsAndSendsEveryItemOnceAfterWhatItRefersTo, ())
{
    // Parents are earlier or later in the input; an order of their own keeps them from going in circles.
    size_t count = *rc::gen::inRange<size_t>(0, 60);
    std::vector<size_t> ranks(count);
    std::iota(ranks.begin(), ranks.end(), 0);
    std::vector<ImportItem> items(count);
    for (size_t i = 0; i < count; ++i) {
        size_t place = (i * 37 + 11) % count;
        while (items[place].line != 0) {
            place = (place + 1) % count;
        }
        std::string parent =
            i > 0 && *rc::gen::arbitrary<bool>() ? "r" + std::to_string(*rc::gen::inRange<size_t>(0, i)) : "elsewhere";
        items[place] = Item("r" + std::to_string(i), parent, *rc::gen::inRange<size_t>(0, 300));
    }
    BatchLimits limits{*rc::gen::inRange<size_t>(1, 20), ENVELOPE_BYTES + *rc::gen::inRange<size_t>(600, 3000)};
    std::vector<RowProblem> problems;
    ImportPlan plan = PlanImport(items, limits, problems);
    RC_ASSERT(problems.empty());

    std::map<std::string, size_t> waveOf;
    for (size_t wave = 0; wave < plan.waves.size(); ++wave) {
        for (const Batch &batch : plan.waves[wave]) {
            RC_ASSERT(!batch.items.empty());
            RC_ASSERT(batch.items.size() <= limits.maxRecords);
            size_t bytes = 0;
            for (size_t index : batch.items) {
                Json::StreamWriterBuilder builder;
                builder["indentation"] = "";
                bytes += Json::writeString(builder, items[index].record.ToJsonValue()).size();
                RC_ASSERT(waveOf.emplace(items[index].record.GetRecordId(), wave).second);
            }
            RC_ASSERT(bytes + batch.items.size() <= limits.maxBytes - ENVELOPE_BYTES);
        }
    }
    RC_ASSERT(waveOf.size() == count);
    for (const ImportItem &item : items) {
        NBFieldMap data;
        item.record.GetRecordData(data);
        NBReference parent;
        if (data["parent"].GetReference(parent) == NB_LOCAL_SUCCESS && waveOf.count(parent.recordId) != 0) {
            RC_ASSERT(waveOf[parent.recordId] < waveOf[item.record.GetRecordId()]);
        }
    }
}

TEST(ImportPlan, RefusesCirclesAndRecordsTooLargeForARequest)
{
    std::vector<RowProblem> problems;
    PlanImport({Item("a", "b"), Item("b", "a"), Item("c", "a"), Item("d")}, {10, 100000}, problems);
    EXPECT_EQ(problems.size(), 3U);
    EXPECT_THAT(problems[0].found, testing::HasSubstr("circle"));

    problems.clear();
    PlanImport({Item("small"), Item("large", "", 2000)}, {10, ENVELOPE_BYTES + 1000}, problems);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_THAT(ProblemText(problems[0]), testing::HasSubstr("at most 1000 bytes"));
}
} // namespace
} // namespace NubisTool
