// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "record_failures.h"
#include "record_options.h"
#include "session.h"

namespace NubisTool {
namespace {

int Share(const RecordOptions &options, const Console &console)
{
    RequireIds(options.ids);
    Session session(options.common);
    const Nubis::NBSchemaNode &schemaNode = session.RecordType(options.type);
    auto database = session.Database();
    std::vector<Nubis::NBRecord> shared;
    RecordFailures failures;
    for (const std::string &id : options.ids) {
        Async::PreSharedResult outcome = Wait(Async::SetPreShared(database, options.type, id));
        if (outcome.error.HasError()) {
            failures.Add(id, outcome.error);
            continue;
        }
        shared.push_back(std::move(outcome.record));
        if (!options.common.json) {
            console.out << "shared " << options.type << ' ' << id << ", version " << shared.back().GetVersion() << '\n';
        }
    }
    if (options.common.json) {
        PrintRecords(shared, schemaNode, options, console);
    }
    failures.ThrowIfAny("not every record could be shared");
    return EXIT_DONE;
}

} // namespace

void AddShareCommand(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<RecordOptions>();
    CLI::App *command = AddCommand(app, "share", "Mark records as shared in advance of an invitation",
        "nubis share --bundle com.example.notes --type note note-1");
    AddTypeOption(*command, *options);
    command->add_option("ids", options->ids, "Record ids")->required()->type_name("ID");
    SetAction(*command, chosen, options, Share);
}

} // namespace NubisTool
