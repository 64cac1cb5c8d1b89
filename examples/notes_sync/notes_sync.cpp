// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Two devices keep their notes in step through the cloud: note_store.h is what each has on its disk, note_sync.h brings
// it to the cloud and back. The program plays what their users do and succeeds if in the end all have the same.
//
//   nubis service exec --catalogue examples/notes.json -- notes_sync [PHONE.db TABLET.db]

#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "note_store.h"
#include "note_sync.h"
#include "nubis_async.h"

using namespace Nubis;

namespace {
constexpr char BUNDLE[] = "com.example.notes";

// Both devices are in this process, which makes the story short; on two machines each would have its own.
class Device {
public:
    Device(std::string name, const std::string &path, std::shared_ptr<NBDatabase> database, size_t batchSize)
        : name_(std::move(name)), store_(path), sync_(store_, std::move(database), batchSize, [this](auto &line) {
              std::cout << "  " << name_ << ' ' << line << '\n';
          })
    {}

    NoteStore &Store()
    {
        return store_;
    }

    void Sync()
    {
        sync_.Run();
    }

    void Edit(const std::string &id, const std::string &body, int64_t stars)
    {
        const std::optional<Note> note = store_.Find(id);
        if (!note) {
            throw std::runtime_error(name_ + " does not have note " + id);
        }
        store_.Edit(id, {note->content.title, body, stars});
    }

private:
    const std::string name_;
    NoteStore store_;
    NoteSync sync_;
};

void Expect(bool isTrue, const std::string &what)
{
    if (!isTrue) {
        throw std::runtime_error(what);
    }
}

// The ids come from the container's rules, which the library has asked for once: this works without a network, too.
std::vector<std::string> NewIds(NBDatabase &database, int count)
{
    std::vector<std::string> ids;
    Expect(!database.GenerateIds(count, ids).HasError(), "the service gave no rules for record ids");
    return ids;
}

void PlayStory(Device &phone, Device &tablet, const std::vector<std::string> &ids)
{
    const std::string &rome = ids[0];
    const std::string &shopping = ids[1];
    const std::string &recipe = ids[2];
    const std::string &taxes = ids[3];

    std::cout << "The phone writes four notes, and both devices sync.\n";
    phone.Store().Add(rome, {"Rome", "Colosseum", 3});
    phone.Store().Add(shopping, {"Shopping", "milk", 0});
    phone.Store().Add(recipe, {"Recipe", "flour, eggs", 4});
    phone.Store().Add(taxes, {"Taxes", "due in May", 1});
    phone.Sync();
    tablet.Sync();

    std::cout << "Offline both change \"Rome\"; each deletes a note, the tablet one that the phone goes on writing.\n";
    phone.Edit(rome, "Colosseum, Forum", 3);
    phone.Store().Remove(shopping);
    phone.Edit(recipe, "flour, eggs, sugar", 4);
    tablet.Edit(rome, "Colosseum", 5);
    tablet.Store().Remove(taxes);
    tablet.Store().Remove(recipe);
    phone.Sync();
    tablet.Sync();
    phone.Sync();
    const auto contents = tablet.Store().Contents();
    Expect(contents.at(rome) == Content{"Rome", "Colosseum, Forum", 5}, "the edits of \"Rome\" are not merged");
    Expect(contents.count(shopping) == 0 && contents.count(taxes) == 0, "a deleted note is still there");
    Expect(contents.count(recipe) == 1, "the note that was written on is gone");

    std::cout << "The tablet deletes \"Recipe\" first, and the phone, which does not know, changes it.\n";
    tablet.Store().Remove(recipe);
    tablet.Sync();
    phone.Edit(recipe, "flour, eggs, sugar, salt", 5);
    phone.Sync();

    std::cout << "Both change the same line of it; the tablet is first. The phone's cursor is of another cloud.\n";
    tablet.Sync();
    tablet.Edit(recipe, "rye flour", 5);
    tablet.Sync();
    phone.Edit(recipe, "wheat flour", 5);
    phone.Store().SetCursor("of another cloud");
    phone.Sync();
    Expect(phone.Store().Contents().at(recipe).body == "rye flour", "what came first did not stay");
}

int Run(const std::string &phonePath, const std::string &tabletPath)
{
    auto kit = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA);
    std::map<std::string, NBAppInfo> apps;
    auto container = kit->GetDefaultContainer(BUNDLE);
    if (container == nullptr || kit->GetCloudAppInfo({BUNDLE}, apps).HasError()) {
        throw std::runtime_error("the service does not know com.example.notes: nubis catalogue apply notes.json");
    }
    auto database = container->GetPrivateDatabase();
    const size_t batchSize = apps[BUNDLE].defaultContainer.maxBatchNumber;
    Device phone("phone", phonePath, database, batchSize);
    Device tablet("tablet", tabletPath, database, batchSize);
    PlayStory(phone, tablet, NewIds(*database, 4));

    const auto cloud = ReadCloud(database);
    Expect(phone.Store().Contents() == cloud, "the phone does not have what the cloud has");
    Expect(tablet.Store().Contents() == cloud, "the tablet does not have what the cloud has");
    std::cout << "Both devices have the notes of the cloud:\n";
    for (const auto &[id, note] : cloud) {
        std::cout << "  " << note.title << " (" << note.stars << "): " << note.body << '\n';
    }
    return 0;
}
} // namespace

int main(int argc, char *argv[])
{
    try {
        const bool isKept = argc == 3;
        return Run(isKept ? argv[1] : ":memory:", isKept ? argv[2] : ":memory:");
    } catch (const std::exception &error) {
        std::cerr << "notes_sync: " << error.what() << '\n';
        return 1;
    }
}
