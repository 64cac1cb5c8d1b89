// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_CATALOGUE_CATALOGUE_H
#define NUBIS_SERVICE_CATALOGUE_CATALOGUE_H

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "catalogue/catalogue_types.h"
#include "store/store.h"
#include "util/file_util.h"

namespace DriveService {

// The bundles that the service knows: the files BUNDLE.json of a folder. Each request looks whether the file is still
// the one that was read, which is one system call; a changed file is read and checked, and a broken one is logged and
// leaves the last good state in force. Any thread may call; do not call within a session of the store, because
// reading a changed file begins one.
class Catalogue {
public:
    // The folder need not exist. The store remembers which versions were served, and must live longer.
    Catalogue(std::string folder, Store &store);

    // Null when there is no such bundle. The entry is constant and may be kept.
    std::shared_ptr<const AppEntry> Find(const std::string &bundleName);

    // The bundles in the order of their names.
    std::vector<std::shared_ptr<const AppEntry>> All();

    // The texts of all files, by bundle name. Throws std::runtime_error when one cannot be read or is broken.
    std::map<std::string, std::string> Texts();

    // Puts files in force that were checked before, and forgets what was read. Throws std::runtime_error when one cannot
    // be written.
    void Install(const std::map<std::string, std::string> &texts);

private:
    struct Cached {
        FileSignature signature;
        bool settled = false; // the signature surely tells the next state of the file from this one
        std::string digest;   // of the text that was read last, good or not
        std::shared_ptr<const AppEntry> entry;
    };

    // Of the bundles that there are files of.
    std::set<std::string> Names() const;
    void Load(const std::string &bundleName, const FileSignature &signature, Cached &cached);
    std::shared_ptr<const AppEntry> MakeEntry(const std::string &bundleName, const std::string &text);
    std::string PathOf(const std::string &bundleName) const;

    const std::string folder_;
    Store &store_;
    std::mutex mutex_;
    std::map<std::string, Cached> cache_; // guarded by mutex_
};

// Checks files without installing them. Returns the problems as text, one line each; empty when all are good.
std::string CheckCatalogueFiles(const std::vector<std::string> &files);

// Installs files into the folder, each whole or not at all, after all of them were found good. Returns the problems
// as CheckCatalogueFiles does; throws std::runtime_error when a good file cannot be written.
std::string InstallCatalogueFiles(const std::string &folder, const std::vector<std::string> &files);

} // namespace DriveService

#endif // NUBIS_SERVICE_CATALOGUE_CATALOGUE_H
