// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>

#include "child_process.h"
#include "command_error.h"
#include "common_options.h"
#include "demo_data.h"
#include "demo_device.h"
#include "demo_forger.h"
#include "demo_process.h"
#include "demo_report.h"
#include "demo_scenes.h"
#include "host/event_channel.h"
#include "interrupt.h"
#include "service_program.h"

namespace NubisTool {
namespace {

struct DemoOptions {
    std::string folder = ISO_CODES_FOLDER;
    int user = 100;
    bool json = false;
};

size_t FolderSize(const std::string &path)
{
    size_t size = 0;
    std::error_code error;
    for (auto entry = std::filesystem::recursive_directory_iterator(path, error);
         !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        // A file may go while its size is asked for.
        std::error_code gone;
        std::uintmax_t bytes = entry->is_regular_file(gone) ? entry->file_size(gone) : 0;
        size += gone ? 0 : static_cast<size_t>(bytes);
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
        StartService();
        Play();
        service_.reset();
        report_.Finish(Elapsed(start_));
        return report_.Held() ? EXIT_DONE : EXIT_OPERATION_FAILED;
    }

private:
    using Clock = std::chrono::steady_clock;

    static double Elapsed(Clock::time_point since)
    {
        return std::chrono::duration<double>(Clock::now() - since).count();
    }

    void StartService()
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
    }

    // The devices end before the service and its folders.
    void Play()
    {
        DeviceProcess first("device-A", service_->Folder().Make("device-A"), options_.user);
        DeviceProcess second("device-B", service_->Folder().Make("device-B"), options_.user);
        DemoStage stage(report_, first, second);
        stage.dataFolder = options_.folder;
        stage.folder = service_->Folder().Path();
        stage.publish = [this, &stage](const std::string &text) {
            std::string error;
            if (!Host::PublishEvent(options_.user, stage.eventName, text, error)) {
                throw CommandError("the forgery could not be given to B: " + error, "run the demo again");
            }
        };
        PlayBulkScene(stage);
        PlayForgeryScene(stage, DemoForger());
        PlayExpiryScene(stage);
        PlayConflictScene(stage);
        PlayLockScene(stage);
        PlayComparison(stage);
        report_.Number("size of the service's data", FolderSize(service_->Folder().Path() + "/state"), "bytes");
    }

    DemoOptions options_;
    DemoReport report_;
    Clock::time_point start_;
    std::optional<FreshService> service_;
};

} // namespace

void AddDemoCommands(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<DemoOptions>();
    CLI::App *demo = AddCommand(app, "demo",
        "Show the whole at work: two devices, a fresh service, some 13000 records, forgeries, conflicts and a lock",
        "nubis demo");
    demo->add_option("--data", options->folder, "Folder of the iso-codes lists")
        ->type_name("FOLDER")
        ->capture_default_str();
    AddJsonOption(*demo, options->json);
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
