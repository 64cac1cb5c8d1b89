// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <cstdint>
#include <map>
#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "nb_record_id.h"
#include "record_json.h"
#include "table.h"

namespace NubisTool {
namespace {

struct CridOptions {
    std::vector<std::string> crids;
    int version = 0;
    uint64_t upid = 0;
    std::string id;
    bool json = false;
};

void Print(const std::vector<Nubis::NBRecordId> &ids, const CridOptions &options, const Console &console)
{
    Json::Value json(Json::arrayValue);
    Table table({{"VERSION", Align::RIGHT}, {"UPID", Align::RIGHT}, {"RECORD ID"}, {"CLOUD RECORD ID"}});
    for (const Nubis::NBRecordId &id : ids) {
        Json::Value entry(Json::objectValue);
        entry["version"] = id.version;
        // As text: many JSON readers keep no whole numbers of 64 bits.
        entry["upid"] = std::to_string(id.upid);
        entry["recordId"] = id.recordId;
        entry["crid"] = id.crid;
        json.append(entry);
        table.Add({std::to_string(id.version), std::to_string(id.upid), id.recordId, id.crid});
    }
    if (options.json) {
        console.out << PrettyText(json) << '\n';
    } else {
        table.Print(console.out);
    }
}

int Encode(const CridOptions &options, const Console &console)
{
    Nubis::NBRecordId id;
    if (!Nubis::EncodeRecordId(options.version, options.upid, options.id, id)) {
        throw CommandError("\"" + options.id + "\" is no id for version " + std::to_string(options.version),
            "give a decimal number for version 0, 32 hexadecimal characters for 1 and 5, any text for 10");
    }
    Print({id}, options, console);
    return EXIT_DONE;
}

int Decode(const CridOptions &options, const Console &console)
{
    std::vector<Nubis::NBRecordId> ids;
    std::string wrong;
    for (const std::string &crid : options.crids) {
        Nubis::NBRecordId id;
        if (Nubis::DecodeRecordId(crid, id)) {
            ids.push_back(id);
        } else {
            wrong += (wrong.empty() ? "\"" : ", \"") + crid + "\"";
        }
    }
    if (!ids.empty()) {
        Print(ids, options, console);
    }
    if (!wrong.empty()) {
        throw CommandError("no cloud record id: " + wrong,
            "check that it was copied whole; versions 0, 1, 2, 5 and 7 have 33 characters");
    }
    return EXIT_DONE;
}

} // namespace

void AddCridCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "crid", "Make cloud record ids and take them apart",
        "nubis crid decode AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA");
    family->require_subcommand(1);
    auto options = std::make_shared<CridOptions>();

    static const std::map<std::string, int> FORMS = {{"0", 0}, {"1", 1}, {"5", 5}, {"10", 10}};
    CLI::App *encode = AddCommand(*family, "encode", "Make the cloud record id of a record",
        "nubis crid encode --version-number 1 --upid 42 00112233445566778899aabbccddeeff");
    encode->add_option("--version-number,-n", options->version, "Form of the id: 0, 1, 5 or 10")
        ->required()
        ->transform(OneOf(FORMS))
        ->type_name("VERSION");
    encode->add_option("--upid", options->upid, "User partition")
        ->required()
        ->check(WholeNumber(0))
        ->type_name("NUMBER");
    encode->add_option("id", options->id, "Record id, as the form takes it")->required()->type_name("ID");
    AddJsonOption(*encode, options->json);
    SetAction(*encode, chosen, options, Encode);

    CLI::App *decode = AddCommand(
        *family, "decode", "Take cloud record ids apart", "nubis crid decode AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA");
    decode->add_option("crids", options->crids, "Cloud record ids")->required()->type_name("CRID");
    AddJsonOption(*decode, options->json);
    SetAction(*decode, chosen, options, Decode);
}

} // namespace NubisTool
