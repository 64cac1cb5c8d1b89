// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <ostream>
#include <stdexcept>
#include <vector>

#include <CLI/CLI.hpp>

#include "catalogue/catalogue.h"
#include "service_instance.h"
#include "store/sqlite_check.h"
#include "util/file_util.h"

namespace DriveService {

namespace {

constexpr int DONE = 0;
constexpr int FAILED = 1;
constexpr int WRONG_USAGE = 2;
constexpr int SERVED = 3; // the data belongs to a running service, so nothing was found out about it
constexpr int DEFAULT_USER = 100;
constexpr int MOST_SECONDS = 86400 * 365;

int CheckCatalogue(const std::vector<std::string> &files, std::ostream &out, std::ostream &err)
{
    std::string problems = CheckCatalogueFiles(files);
    err << problems;
    if (!problems.empty()) {
        return FAILED;
    }
    out << files.size() << (files.size() == 1 ? " catalogue file is good\n" : " catalogue files are good\n");
    return DONE;
}

int ApplyCatalogue(
    const std::string &dataFolder, const std::vector<std::string> &files, std::ostream &out, std::ostream &err)
{
    std::string folder = DataPaths::CatalogueOf(dataFolder);
    std::string problems = InstallCatalogueFiles(folder, files);
    if (!problems.empty()) {
        err << problems << "nothing was installed\n";
        return FAILED;
    }
    out << files.size() << (files.size() == 1 ? " catalogue file" : " catalogue files") << " installed in " << folder
        << "\n";
    return DONE;
}

bool IsServed(const DataPaths &paths, std::ostream &err)
{
    const std::string holder = HolderOf(paths.lock);
    if (!holder.empty()) {
        err << "nubis-drive-service: a drive service runs on this data, process " << holder << "; stop it first\n";
    }
    return !holder.empty();
}

int CheckData(const ServeOptions &options, std::ostream &out, std::ostream &err)
{
    DataPaths paths(options.dataFolder, options.userId);
    if (IsServed(paths, err)) {
        return SERVED;
    }
    if (!SignatureOf(paths.database)) {
        out << "there is no database " << paths.database << "\n";
        return DONE;
    }
    StoreReport report = CheckDatabaseFile(paths.database);
    if (!report.problems.empty()) {
        // What one that has started meanwhile writes looks like damage.
        if (IsServed(paths, err)) {
            return SERVED;
        }
        for (const std::string &problem : report.problems) {
            err << paths.database << ": " << problem << "\n";
        }
        return FAILED;
    }
    out << paths.database << " is whole, schema version " << report.schemaVersion << "\n";
    return DONE;
}

} // namespace

int RunCommandLine(int argc, const char *const *argv, std::ostream &out, std::ostream &err,
    const std::function<int(const ServeOptions &)> &serve)
{
    ServeOptions options;
    options.userId = DEFAULT_USER;
    std::vector<std::string> files;
    CLI::App app("A local cloud-drive service: answers the requests of the record database library and keeps the data.",
        "nubis-drive-service");
    app.set_version_flag("--version", std::string("nubis-drive-service ") + NUBIS_VERSION);
    app.require_subcommand(0, 1);
    app.add_option("--data", options.dataFolder, "The data folder")->type_name("DIR");
    app.add_option("--user", options.userId, "The user whose service this is (default 100)")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    app.add_option(
           "--idle-seconds", options.idleSeconds, "End when nobody has been connected for so long (default 0: never)")
        ->type_name("N")
        ->check(CLI::Range(0, MOST_SECONDS));
    CLI::App *check = app.add_subcommand("check-catalogue", "Check catalogue files and say what is wrong with them");
    check->add_option("FILE", files, "The files")->required();
    CLI::App *apply = app.add_subcommand("apply-catalogue", "Check catalogue files and install them if all are good");
    apply->add_option("--data", options.dataFolder, "The data folder")->type_name("DIR")->required();
    apply->add_option("FILE", files, "The files")->required();
    CLI::App *checkData = app.add_subcommand("check-data", "Check a user's database, while no service runs on it");
    checkData->add_option("--data", options.dataFolder, "The data folder")->type_name("DIR")->required();
    checkData->add_option("--user", options.userId, "The user whose database it is (default 100)")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty() && options.dataFolder.empty()) {
            throw CLI::RequiredError("--data");
        }
    } catch (const CLI::ParseError &error) {
        return app.exit(error, out, err) == 0 ? DONE : WRONG_USAGE;
    }
    try {
        if (check->parsed()) {
            return CheckCatalogue(files, out, err);
        }
        if (checkData->parsed()) {
            return CheckData(options, out, err);
        }
        return apply->parsed() ? ApplyCatalogue(options.dataFolder, files, out, err) : serve(options);
    } catch (const std::exception &failure) {
        err << "nubis-drive-service: " << failure.what() << "\n";
        return FAILED;
    }
}

} // namespace DriveService
