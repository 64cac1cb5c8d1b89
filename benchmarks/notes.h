// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_NOTES_H
#define NUBIS_BENCH_NOTES_H

#include <string>
#include <vector>

#include <json/value.h>

#include "nb_record.h"

// The records that are measured: notes of about 350 bytes with eight fields, in every form that they take on their way.
namespace NubisBench {
constexpr const char *BUNDLE = "com.example.notes";
constexpr const char *CONTAINER = "main";

// A note as an app without the library would hold it.
struct Note {
    std::string id;
    std::string title;
    std::string body;
    int64_t stars = 0;
    double score = 0;
    bool isDone = false;
    std::vector<std::string> tags;
    std::string folderId;
    int64_t edited = 0;
};

// The notes first, first + 1 ...: the same texts for the same number, whoever asks.
std::vector<Note> MakeNotes(size_t count, size_t first = 0);

// New records of the library.
std::vector<Nubis::NBRecord> ToRecords(const std::vector<Note> &notes);
// The record as a request to save it carries it, built with nothing but JsonCpp.
Json::Value ToRequestJson(const Note &note);
// The record as the drive service returns it.
Json::Value ToReplyJson(const Note &note);

// The texts of replies, as the drive service writes them.
std::string SaveReply(const std::vector<Note> &notes);
std::string FetchReply(const Note &note);
std::string ChangesReply(const std::vector<Note> &notes);
// The catalogue entry of the bundle, as the answer of GetCloudAppInfo.
std::string CatalogueReply();

// As the library writes and reads.
std::string WriteJson(const Json::Value &json);
Json::Value ParseJson(const std::string &text);
} // namespace NubisBench

#endif // NUBIS_BENCH_NOTES_H
