// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>

#include <json/json.h>

#include "child_process.h"
#include "command_error.h"
#include "common_options.h"
#include "demo_data.h"
#include "demo_device.h"
#include "demo_report.h"
#include "interrupt.h"
#include "local_store.h"
#include "record_json.h"
#include "row_reader.h"
#include "service_program.h"

namespace NubisTool {
namespace {

constexpr std::chrono::minutes ANSWER_TIME(5);
constexpr unsigned EDITS = 100;
constexpr unsigned REMOVALS = 50;
constexpr unsigned ADDITIONS = 25;

struct DemoOptions {
    std::string folder = ISO_CODES_FOLDER;
    int user = 100;
    bool json = false;
};

void ThrowIfInterrupted()
{
    if (Interrupted()) {
        throw CommandError("interrupted", "nothing is left behind; run `nubis demo` again", EXIT_INTERRUPTED);
    }
}

// A device of the demo: a process that obeys orders.
class DeviceProcess {
public:
    DeviceProcess(const std::string &name, const std::string &stateFolder, int user)
        : name_(name), process_({{OwnProgram(), "demo-device", "--user", std::to_string(user)},
                           {{"NUBIS_DEVICE_NAME", name}, {"NUBIS_STATE_DIR", stateFolder}}, true, false})
    {}

    Json::Value Do(Json::Value order)
    {
        std::string what = order["order"].asString();
        std::optional<std::string> line;
        if (process_.WriteLine(CompactText(order))) {
            line = process_.ReadLine(ANSWER_TIME);
        }
        ThrowIfInterrupted();
        Json::Value answer;
        std::string error;
        if (!line || !ParseJsonText(*line, answer, error) || !answer.isObject()) {
            throw CommandError(name_ + " gave no answer to \"" + what + "\"",
                "run the demo again with NUBIS_LOG_LEVEL=info to see the library's log");
        }
        if (answer.isMember("error")) {
            throw CommandError(name_ + ", " + what + ": " + answer["error"].asString(), answer["advice"].asString());
        }
        return answer;
    }

    pid_t Pid() const
    {
        return process_.Pid();
    }

private:
    std::string name_;
    ChildProcess process_;
};

Json::Value Order(const std::string &name)
{
    Json::Value order(Json::objectValue);
    order["order"] = name;
    return order;
}

size_t FileSize(const std::string &path)
{
    std::error_code error;
    auto size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

size_t FolderSize(const std::string &path)
{
    size_t size = 0;
    std::error_code error;
    for (auto entry = std::filesystem::recursive_directory_iterator(path, error);
         !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        size += entry->is_regular_file(error) ? FileSize(entry->path()) : 0;
    }
    return size;
}

class Demo {
public:
    Demo(const DemoOptions &options, const Console &console)
        : options_(options), report_(console, options.json), start_(std::chrono::steady_clock::now())
    {}

    int Run()
    {
        // Before anything is started, so that missing data is said at once.
        LoadDemoData(options_.folder);
        report_.Title("Two devices share the countries, their subdivisions and the languages of the world\n"
                      "through a drive service: what one writes, the other must end up with.");
        StartEverything();
        Import();
        FirstFollow();
        EditAndFollow();
        CompareStores();
        StopEverything();
        report_.Finish(Elapsed(start_));
        return report_.Held() ? EXIT_DONE : EXIT_OPERATION_FAILED;
    }

private:
    using Clock = std::chrono::steady_clock;

    static double Elapsed(Clock::time_point since)
    {
        return std::chrono::duration<double>(Clock::now() - since).count();
    }

    void StartEverything()
    {
        report_.Step("A fresh drive service and its catalogue");
        Clock::time_point start = Clock::now();
        service_.emplace(options_.user);
        ThrowIfInterrupted();
        report_.Number("process of the service", static_cast<size_t>(service_->Status().pid));
        report_.Seconds("time to start it", Elapsed(start));
        start = Clock::now();
        std::string file = service_->Folder().Path() + "/catalogue.json";
        std::ofstream(file) << DemoCatalogue();
        ChildProcess apply({{OwnProgram(), "catalogue", "apply", "--user", std::to_string(options_.user), file},
            {{"NUBIS_DEVICE_NAME", "device-A"}}, true, true});
        std::string said = apply.ReadAll();
        if (apply.WaitForwardingSignals() != 0) {
            ThrowIfInterrupted();
            throw CommandError("applying the catalogue failed: " + said, "see the message");
        }
        report_.Seconds("time to apply the catalogue", Elapsed(start));
        first_.emplace("device-A", service_->Folder().Make("device-A"), options_.user);
        second_.emplace("device-B", service_->Folder().Make("device-B"), options_.user);
    }

    void Import()
    {
        report_.Step("Device A saves its records (process " + std::to_string(first_->Pid()) + ")");
        Json::Value order = Order("import");
        order["folder"] = options_.folder;
        Json::Value answer = first_->Do(order);
        for (const std::string &type : answer["records"].getMemberNames()) {
            report_.Number("records of type " + type, answer["records"][type].asUInt64());
            total_ += answer["records"][type].asUInt64();
        }
        report_.Number("records saved", answer["saved"].asUInt64());
        report_.Number("requests", answer["requests"].asUInt64());
        report_.Number("record JSON sent", answer["bytes"].asUInt64(), "bytes");
        report_.Number("waves, so that references find their records", answer["waves"].asUInt64());
        report_.Seconds("time to save them", answer["saveSeconds"].asDouble(), answer["saved"].asUInt64());
        report_.Check("every record was saved", answer["saved"].asUInt64() == total_);
    }

    void FirstFollow()
    {
        report_.Step("Device B reads the changes from the beginning (process " + std::to_string(second_->Pid()) + ")");
        Json::Value answer = second_->Do(Order("follow"));
        report_.Number("records received", answer["added"].size());
        report_.Number("requests", answer["requests"].asUInt64());
        report_.Seconds("time to receive them", answer["seconds"].asDouble(), answer["added"].size());
        report_.Check("B received as many records as A saved, each once",
            answer["added"].size() == total_ && answer["changed"].empty() && answer["removed"].empty() &&
                answer["nothing"].empty());
    }

    void EditAndFollow()
    {
        report_.Step("Device A changes some, deletes some and adds some");
        Json::Value order = Order("edit");
        order["edits"] = EDITS;
        order["removals"] = REMOVALS;
        order["additions"] = ADDITIONS;
        Json::Value sent = first_->Do(order);
        report_.Number("records changed", sent["changed"].size());
        report_.Number("records deleted", sent["removed"].size());
        report_.Number("records added", sent["added"].size());
        report_.Seconds("time for all three", sent["seconds"].asDouble());
        report_.Check("A did what it was told",
            sent["changed"].size() == EDITS && sent["removed"].size() == REMOVALS && sent["added"].size() == ADDITIONS);

        report_.Step("Device B reads on from its cursor");
        Json::Value received = second_->Do(Order("follow"));
        for (const char *kind : {"changed", "removed", "added"}) {
            std::string verb = std::string(kind) == "removed" ? "deleted" : kind;
            std::vector<std::string> differences = IdDifferences(SortedIds(sent[kind]), SortedIds(received[kind]));
            report_.Number("records " + verb, received[kind].size());
            report_.Check("these are exactly the records that A " + verb, differences.empty(), differences);
        }
        report_.Seconds("time to receive them", received["seconds"].asDouble());
        report_.Check("nothing else arrived", received["nothing"].empty());
    }

    void CompareStores()
    {
        report_.Step("The contents of both devices, record by record and field by field");
        std::string firstFile = service_->Folder().Path() + "/device-A.jsonl";
        std::string secondFile = service_->Folder().Path() + "/device-B.jsonl";
        Write(*first_, firstFile);
        Write(*second_, secondFile);
        StoreDifference difference = Compare(LocalStore::Read(firstFile), "A", LocalStore::Read(secondFile), "B");
        report_.Number("records compared", difference.records);
        report_.Number("fields compared", difference.fields);
        report_.Number("size of A's contents", FileSize(firstFile), "bytes");
        report_.Number("size of B's contents", FileSize(secondFile), "bytes");
        report_.Number("size of the service's data", FolderSize(service_->Folder().Path() + "/state"), "bytes");
        report_.Check(
            "there are as many records as there should be", difference.records == total_ - REMOVALS + ADDITIONS);
        report_.Check(
            "every record, version and field is the same on both", difference.lines.empty(), difference.lines);
    }

    static void Write(DeviceProcess &device, const std::string &path)
    {
        Json::Value order = Order("write");
        order["path"] = path;
        device.Do(order);
    }

    void StopEverything()
    {
        first_.reset();
        second_.reset();
        service_.reset();
    }

    DemoOptions options_;
    DemoReport report_;
    Clock::time_point start_;
    size_t total_ = 0;
    // In this order, so that the devices end before the service and its folders.
    std::optional<FreshService> service_;
    std::optional<DeviceProcess> first_;
    std::optional<DeviceProcess> second_;
};

} // namespace

void AddDemoCommands(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<DemoOptions>();
    CLI::App *demo = AddCommand(app, "demo",
        "Show the whole at work: two devices, a fresh service, some 13000 records, every field compared", "nubis demo");
    demo->add_option("--data", options->folder, "Folder of the iso-codes lists")
        ->type_name("FOLDER")
        ->capture_default_str();
    demo->add_flag("--json", options->json, "Write JSON for programs");
    SetAction(*demo, chosen, [options](const Console &console) {
        InterruptGuard guard;
        return Demo(*options, console).Run();
    });

    // One of the demo's devices; of no use to people.
    CLI::App *device = AddCommand(app, "demo-device", "Obey the demo's orders on standard input", "nubis demo");
    device->group("");
    AddUserOption(*device, options->user);
    SetAction(*device, chosen, [options](const Console &console) { return RunDemoDevice(options->user, console); });
}

} // namespace NubisTool
