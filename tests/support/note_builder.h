// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_NOTE_BUILDER_H
#define NUBIS_TEST_NOTE_BUILDER_H

#include <string>

#include <gtest/gtest.h>
#include <json/json.h>

#include "blocking_calls.h"
#include "record_builder.h"

// Records of the test bundle's two types: Note("title").Id("n1").With("stars", 3)
namespace NubisTest {
inline RecordBuilder Note(const std::string &title)
{
    return RecordBuilder("note").AsNew().With("title", Nubis::NBRecordField(title));
}

inline RecordBuilder Folder(const std::string &title)
{
    return RecordBuilder("folder").AsNew().With("title", Nubis::NBRecordField(title));
}

inline Nubis::NBRecordField InFolder(const std::string &folderId)
{
    Nubis::NBReference reference{folderId, "folder"};
    return Nubis::NBRecordField(reference);
}

inline std::string TitleOf(const Nubis::NBRecord &record)
{
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    std::string title;
    data["title"].GetString(title);
    return title;
}

// The fields of a record alone, in the form in which they are sent.
inline Json::Value JsonOf(const Nubis::NBRecord &record)
{
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    Json::Value json(Json::objectValue);
    for (const auto &[name, field] : data) {
        json[name] = field.ToJsonValue();
    }
    return json;
}

// Whether the call and each of its records succeeded; says which did not and why.
inline testing::AssertionResult AllSaved(const Async::RecordsResult &saved)
{
    if (saved.error.HasError()) {
        return testing::AssertionFailure() << saved.error.GetReportErrorCode() << ' ' << saved.error.GetErrorMsg();
    }
    for (const auto &[id, result] : saved.results) {
        if (result.HasError()) {
            return testing::AssertionFailure()
                   << id << ": " << result.GetReportErrorCode() << ' ' << result.GetErrorMsg();
        }
    }
    return testing::AssertionSuccess();
}
} // namespace NubisTest

#endif // NUBIS_TEST_NOTE_BUILDER_H
