// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <algorithm>
#include <iomanip>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "import_plan.h"
#include "importer.h"
#include "interrupt.h"
#include "record_json.h"
#include "row_checker.h"
#include "row_reader.h"
#include "session.h"

namespace NubisTool {
namespace {

struct ImportCommandOptions {
    CommonOptions common;
    std::vector<std::string> files;
    std::string type;
    std::string idField;
    RowFormat format = RowFormat::GUESS;
    bool existing = false;
};

Json::Value RefusalsJson(const std::vector<Refusal> &refusals)
{
    Json::Value json(Json::arrayValue);
    for (const Refusal &refusal : refusals) {
        Json::Value entry(Json::objectValue);
        entry["file"] = refusal.file;
        entry["line"] = Json::UInt64(refusal.line);
        entry["recordId"] = refusal.recordId;
        entry["reason"] = ErrorText(refusal.error);
        json.append(entry);
    }
    return json;
}

void PrintReportJson(const ImportReport &report, size_t rows, const Console &console)
{
    Json::Value json(Json::objectValue);
    json["rows"] = Json::UInt64(rows);
    json["saved"] = Json::UInt64(report.saved);
    json["notSent"] = Json::UInt64(report.notSent);
    json["requests"] = Json::UInt64(report.requests);
    json["bytes"] = Json::UInt64(report.bytes);
    json["seconds"] = report.time.count();
    json["interrupted"] = report.interrupted;
    json["refused"] = RefusalsJson(report.refusals);
    json["unanswered"] = RefusalsJson(report.unanswered);
    console.out << PrettyText(json) << '\n';
}

// Whole requests go without an answer, so their records are named together.
void PrintUnanswered(const std::vector<Refusal> &unanswered, const Console &console)
{
    for (size_t first = 0, next = 0; first < unanswered.size(); first = next) {
        while (next < unanswered.size() && unanswered[next].file == unanswered[first].file &&
               (next == first || unanswered[next].line > unanswered[next - 1].line)) {
            ++next;
        }
        console.err << unanswered[first].file << ':' << unanswered[first].line << '-' << unanswered[next - 1].line
                    << ": no answer for " << CountText(next - first, "record")
                    << ", saved or not: " << ErrorText(unanswered[first].error) << '\n';
    }
}

void PrintReport(const ImportReport &report, size_t rows, const Console &console)
{
    for (const Refusal &refusal : report.refusals) {
        console.err << refusal.file << ':' << refusal.line << ": record " << refusal.recordId
                    << " was refused: " << ErrorText(refusal.error) << '\n';
    }
    PrintUnanswered(report.unanswered, console);
    double seconds = report.time.count();
    auto rate = static_cast<size_t>(seconds > 0 ? static_cast<double>(report.saved) / seconds : 0);
    console.out << "rows      " << std::setw(10) << rows << '\n'
                << "saved     " << std::setw(10) << report.saved << '\n'
                << "refused   " << std::setw(10) << report.refusals.size() << '\n'
                << "unanswered" << std::setw(10) << report.unanswered.size() << '\n'
                << "not sent  " << std::setw(10) << report.notSent << '\n'
                << "requests  " << std::setw(10) << report.requests << '\n'
                << "bytes     " << std::setw(10) << report.bytes << '\n'
                << "seconds   " << std::setw(10) << std::fixed << std::setprecision(2) << seconds << "  (" << rate
                << " records/s)\n";
}

// How to go on with an import that ended before its time.
std::string AdviceToFinish(bool idsWereMade)
{
    return idsWereMade ? "import only the rows that are missing: ids were made for the rows, so the same rows would be "
                         "saved a second time (--id-field gives rows ids of their own)"
                       : "run the same command with --existing to finish: it also takes records that are there";
}

void ThrowUnlessWhole(const ImportReport &report, bool idsWereMade)
{
    std::string text;
    auto add = [&text](const std::string &what, size_t count) {
        if (count > 0) {
            text += (text.empty() ? "" : "; ") + what + ": " + CountText(count, "record");
        }
    };
    add("refused", report.refusals.size());
    add("unanswered", report.unanswered.size());
    add("not sent", report.notSent);
    if (report.firstNotSent != nullptr) {
        text += ", the first at " + report.firstNotSent->file + ":" + std::to_string(report.firstNotSent->line);
    }
    if (report.interrupted && report.notSent > 0) {
        throw CommandError("interrupted; saved: " + CountText(report.saved, "record") + "; " + text,
            AdviceToFinish(idsWereMade), EXIT_INTERRUPTED);
    }
    if (!report.unanswered.empty()) {
        throw CommandError(
            text, ErrorAdvice(report.unanswered.front().error) + "; then " + AdviceToFinish(idsWereMade));
    }
    if (!report.refusals.empty()) {
        throw CommandError(text, ErrorAdvice(report.refusals.front().error));
    }
}

int Import(const ImportCommandOptions &options, const Console &console)
{
    std::vector<Row> rows;
    for (const std::string &file : options.files) {
        std::vector<Row> read = ReadRowsFromFile(file, options.format, console.in);
        std::move(read.begin(), read.end(), std::back_inserter(rows));
    }
    Session session(options.common);
    RowChecker checker(session.RecordType(options.type), options.idField, Completeness::WHOLE);
    std::vector<RowProblem> problems;
    std::vector<ImportItem> items = CheckRows(checker, rows, problems);
    ThrowIfAny(problems, options.common.bundle);
    auto database = session.Database();
    bool idsWereMade = std::any_of(
        items.begin(), items.end(), [](const ImportItem &item) { return item.record.GetRecordId().empty(); });
    GiveIds(*database, items);
    for (ImportItem &item : items) {
        item.record.SetNewCreate(true);
    }
    BatchLimits limits{session.ContainerInfo().maxBatchNumber, session.UploadSize().maxBodySize};
    ImportPlan plan = PlanImport(items, limits, problems);
    ThrowIfAny(problems, options.common.bundle);
    InterruptGuard guard;
    // A new record saved "if unchanged" is refused when its id is taken; saved by overwriting, it takes its place.
    auto policy = options.existing ? Nubis::NB_SAVE_OVERWRITE : Nubis::NB_SAVE_IF_UNCHANGED;
    auto send = [&database, policy](std::vector<Nubis::NBRecord> records) {
        return Async::SaveRecords(database, std::move(records), policy).Start();
    };
    ImportReport report = RunImport(items, plan, send, {}, console);
    if (options.common.json) {
        PrintReportJson(report, rows.size(), console);
    } else {
        PrintReport(report, rows.size(), console);
    }
    ThrowUnlessWhole(report, idsWereMade);
    return EXIT_DONE;
}

} // namespace

void AddImportCommand(CLI::App &record, Chosen &chosen)
{
    static const std::map<std::string, RowFormat> FORMATS = {{"json", RowFormat::JSON}, {"csv", RowFormat::CSV}};
    auto options = std::make_shared<ImportCommandOptions>();
    CLI::App *command = AddCommand(record, "import",
        "Save the rows of files as records. Every row is checked against the record type before the first is sent",
        "nubis record import --bundle com.example.notes --type note --id-field title notes.csv");
    AddDatabaseOptions(*command, options->common);
    command
        ->add_option("files", options->files,
            "JSON arrays of objects, one JSON object a line, or CSV with a heading; - for standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("--type", options->type, "Record type")->required()->type_name("TYPE");
    command
        ->add_option("--id-field", options->idField,
            "Field whose value is the record id [the member recordId, else the library makes ids]")
        ->type_name("FIELD");
    command->add_option("--format", options->format, "json or csv [from the file's name or content]")
        ->transform(OneOf(FORMATS))
        ->type_name("FORMAT");
    command->add_flag("--existing", options->existing, "Also overwrite records that are there already");
    SetAction(*command, chosen, options, Import);
}

} // namespace NubisTool
