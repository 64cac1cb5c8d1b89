// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Saves one record and reads it back; docs/guide/first-steps.md shows the pieces that are marked. Run it against a
// service of its own:
//
//   nubis service exec --catalogue examples/notes.json -- first_steps

#include <future>
#include <iostream>
#include <memory>
#include <string>

#include "nb_container.h"
#include "nb_database.h"
#include "nubis_kit.h"

using namespace Nubis;

int main()
{
    //! [open]
    auto container = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA)->GetDefaultContainer("com.example.notes");
    if (container == nullptr) {
        std::cerr << "No com.example.notes here: try `nubis catalogue apply notes.json`, then `nubis doctor`\n";
        return 1;
    }
    auto database = container->GetPrivateDatabase();
    //! [open]

    //! [save]
    NBRecord note;
    note.SetRecordType("note");
    note.SetNewCreate(true);
    note.SetRecordData({{"title", NBRecordField("Hello, cloud")}, {"stars", NBRecordField(5)}});

    std::promise<std::string> savedId;
    database->SaveRecord(std::make_shared<NBContext>(), std::move(note), NB_SAVE_OVERWRITE,
        [&](auto, auto, std::string id, NBRecordOperResult result, const NBError &error) {
            savedId.set_value(error.HasError() || result.HasError() ? "" : id);
        });
    const std::string id = savedId.get_future().get();
    //! [save]

    //! [read]
    std::promise<std::string> title;
    database->FetchRecordWithId(
        std::make_shared<NBContext>(), "note", id, {}, [&](auto, auto, std::string, NBRecord &record, const NBError &) {
            NBFieldMap data;
            record.GetRecordData(data);
            std::string text;
            data["title"].GetString(text);
            title.set_value(text);
        });
    const std::string text = title.get_future().get();
    //! [read]
    std::cout << id << ": " << text << '\n';
    return text == "Hello, cloud" ? 0 : 1;
}
