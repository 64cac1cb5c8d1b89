// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <ostream>
#include <vector>

#include <json/json.h>
#include <openssl/evp.h>

#include "command_error.h"
#include "common_options.h"
#include "record_json.h"
#include "session.h"
#include "table.h"

namespace NubisTool {
namespace {

struct KeyOptions {
    CommonOptions common;
    int dataType = 0;
    int keyType = 0;
    bool show = false;
};

// A secret and what may be said of it without telling it.
struct Secret {
    std::string what;
    std::string id;
    std::string bytes;
    bool isText = false;
};

std::string Hex(const std::string &bytes)
{
    static constexpr const char *DIGITS = "0123456789abcdef";
    std::string text;
    for (char byte : bytes) {
        auto value = static_cast<unsigned char>(byte);
        text += DIGITS[value >> 4];
        text += DIGITS[value & 0x0f];
    }
    return text;
}

// The SHA-256, by which two secrets can be compared.
std::string Digest(const std::string &bytes)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1) {
        throw CommandError("the digest could not be calculated", "check the installation of OpenSSL");
    }
    return Hex(std::string(digest.begin(), digest.begin() + length));
}

Json::Value SecretToJson(const Secret &secret, bool show)
{
    Json::Value json(Json::objectValue);
    json["what"] = secret.what;
    if (!secret.id.empty()) {
        json["id"] = secret.id;
    }
    json["length"] = Json::UInt64(secret.bytes.size());
    json["sha256"] = Digest(secret.bytes);
    if (show) {
        json["secret"] = secret.isText ? secret.bytes : Hex(secret.bytes);
    }
    return json;
}

int Print(const std::vector<Secret> &secrets, const KeyOptions &options, const Console &console)
{
    Json::Value entries(Json::arrayValue);
    for (const Secret &secret : secrets) {
        entries.append(SecretToJson(secret, options.show));
    }
    if (options.common.json) {
        console.out << PrettyText(entries) << '\n';
        return EXIT_DONE;
    }
    // Alone it can be taken over by a script.
    if (options.show && entries.size() == 1) {
        console.out << entries[0]["secret"].asString() << '\n';
        return EXIT_DONE;
    }
    std::vector<Column> columns = {{"WHAT"}, {"ID"}, {"LENGTH", Align::RIGHT}, {"SHA-256"}};
    if (options.show) {
        columns.push_back({"SECRET"});
    }
    Table table(std::move(columns));
    for (const Json::Value &entry : entries) {
        table.Add({entry["what"].asString(), entry["id"].asString(), entry["length"].asString(),
            entry["sha256"].asString(), entry["secret"].asString()});
    }
    table.Print(console.out);
    return EXIT_DONE;
}

// The library keeps to itself why it has none.
[[noreturn]] void ThrowNone(const std::string &what)
{
    throw CommandError(what + " cannot be had", "run the command with NUBIS_LOG_LEVEL=info to see why");
}

int CommonKey(const KeyOptions &options, const Console &console)
{
    Session session(options.common);
    std::string key = session.Database()->GetCommonKey(options.dataType, options.keyType);
    if (key.empty()) {
        ThrowNone("the common key");
    }
    std::string what = "common key " + std::to_string(options.dataType) + "/" + std::to_string(options.keyType);
    return Print({{std::move(what), "", std::move(key), true}}, options, console);
}

int Token(const KeyOptions &options, const Console &console)
{
    Session session(options.common);
    std::string token = session.Database()->GetAT();
    if (token.empty()) {
        ThrowNone("the access token");
    }
    return Print({{"access token", "", std::move(token), true}}, options, console);
}

void RequirePrivate(const CommonOptions &options)
{
    if (options.scope != Nubis::NB_DATABASE_PRIVATE) {
        throw UsageError("only the private database has service keys", "leave --scope out");
    }
}

int PrintUserKey(const Nubis::UserKey &key, const KeyOptions &options, const Console &console)
{
    auto bytes = [](const auto &array) { return std::string(std::begin(array), std::end(array)); };
    std::vector<Secret> secrets = {
        {"efek (type 1)", key.efekUuid, bytes(key.efek)}, {"sfek (type 3)", key.sfekUuid, bytes(key.sfek)}};
    return Print(secrets, options, console);
}

int ServiceKey(const KeyOptions &options, const Console &console)
{
    RequirePrivate(options.common);
    Session session(options.common);
    auto database = session.Database();
    database->GetServiceKey();
    auto key = database->GetUserKey("");
    if (key->userId.empty()) {
        ThrowNone("the service keys of the container");
    }
    return PrintUserKey(*key, options, console);
}

int UserKey(const KeyOptions &options, const Console &console)
{
    RequirePrivate(options.common);
    Session session(options.common);
    const std::string user = std::to_string(options.common.user);
    auto key = session.Database()->GetUserKey(user);
    if (key->userId != user) {
        ThrowNone("the keys of user " + user);
    }
    return PrintUserKey(*key, options, console);
}

void AddShowOption(CLI::App &command, KeyOptions &options)
{
    AddDatabaseOptions(command, options.common);
    command.add_flag("--show", options.show, "Also write the secret itself; a single one alone without --json");
}

} // namespace

void AddKeyCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "key", "Keys that the service keeps; secrets are written only with --show",
        "nubis key service --bundle com.example.notes");
    family->require_subcommand(1);
    auto options = std::make_shared<KeyOptions>();
    auto add = [&](const char *name, const char *description, const char *example,
                   int (*act)(const KeyOptions &, const Console &)) {
        CLI::App *command = AddCommand(*family, name, description, example);
        AddShowOption(*command, *options);
        SetAction(*command, chosen, options, act);
        return command;
    };
    CLI::App *common = add("common", "The key of a type of data and a type of key",
        "nubis key common --bundle com.example.notes --data-type 1 --key-type 2", CommonKey);
    auto addType = [common](const char *name, int &type, const char *description) {
        common->add_option(name, type, description)
            ->check(WholeNumber(0, std::numeric_limits<int>::max()))
            ->required()
            ->type_name("N");
    };
    addType("--data-type", options->dataType, "Type of the data");
    addType("--key-type", options->keyType, "Type of the key");
    add("service", "Ask the service for the keys of a container", "nubis key service --bundle com.example.notes",
        ServiceKey);
    add("user", "The keys of a container that the library holds for the user",
        "nubis key user --bundle com.example.notes --user 100", UserKey);
}

void AddTokenCommand(CLI::App &app, Chosen &chosen)
{
    auto options = std::make_shared<KeyOptions>();
    CLI::App *command = AddCommand(app, "token", "The access token of a container; written only with --show",
        "nubis token --bundle com.example.notes --show");
    AddShowOption(*command, *options);
    SetAction(*command, chosen, options, Token);
}

} // namespace NubisTool
