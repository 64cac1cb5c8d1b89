// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "change_printer.h"

#include <ostream>
#include <utility>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "interrupt.h"
#include "record_json.h"
#include "table.h"

namespace NubisTool {
namespace {

const char *StateOf(const Nubis::NBRecord &record)
{
    return record.GetIsDelete() ? "deleted" : record.GetVersion() <= 1 ? "new" : "changed";
}

std::string FieldsText(const Nubis::NBRecord &record)
{
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    std::string text;
    for (const auto &[name, field] : data) {
        text += (text.empty() ? "" : ", ") + name + "=" + FieldToCell(field);
    }
    return text;
}

void Print(const std::vector<Nubis::NBRecord> &records, bool json, const Console &console)
{
    if (json) {
        for (const Nubis::NBRecord &record : records) {
            console.out << CompactText(RecordToJson(record)) << '\n';
        }
    } else if (!records.empty()) {
        Table table({{"CHANGE"}, {"TYPE"}, {"ID"}, {"VERSION", Align::RIGHT}, {"DEVICE"}, {"FIELDS"}});
        for (const Nubis::NBRecord &record : records) {
            table.Add({StateOf(record), record.GetRecordType(), record.GetRecordId(),
                std::to_string(record.GetVersion()), record.GetRecordModifiedInfo().deviceName, FieldsText(record)});
        }
        table.Print(console.out, console.outWidth);
    }
    console.out.flush();
}

} // namespace

std::string PrintChanges(const std::shared_ptr<Nubis::NBDatabase> &database, std::string cursor,
    const ChangesWanted &wanted, bool json, const Console &console)
{
    const std::string start = cursor;
    bool hasMore = true;
    while (hasMore && console.out && !Interrupted()) {
        Async::ChangesResult page =
            Wait(Async::FetchDatabaseChanges(database, wanted.type, wanted.fields, wanted.pageSize, cursor));
        if (page.error.HasError()) {
            // Whatever was printed is behind this cursor, so nothing need be read twice.
            throw CommandError("reading changes failed: " + ErrorText(page.error),
                ErrorAdvice(page.error) + (cursor == start ? "" : "; go on with --since " + cursor));
        }
        Print(page.records, json, console);
        hasMore = page.hasMore;
        if (hasMore && page.cursor == cursor) {
            throw CommandError("the service says that more changes follow, but its cursor stands still at " + cursor,
                "restart the service with `nubis service stop` and try again");
        }
        cursor = page.cursor;
    }
    return cursor;
}

} // namespace NubisTool
