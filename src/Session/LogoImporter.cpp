// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/LogoImporter.h"

#include "Persistence/ManagedLogoStore.h"

#include <utility>

namespace ferrow {

LogoImporter::LogoImporter(Import import, QObject* parent) : QObject(parent), importAsset_(std::move(import))
{
    if (!importAsset_)
        importAsset_ = [](const FileUrl& url, const std::stop_token& stop) {
            return ManagedLogoStore::importAsset(url, {}, stop);
        };
}

void LogoImporter::importLogo(const FileUrl& url, Imported imported, Failed failed)
{
    setImporting(true);
    const auto finish = [this](const auto& tell, const auto& what) {
        setImporting(false);
        tell(what);
    };
    import_.replace(
        [=, import = importAsset_](const std::stop_token& stop) -> NewestTask::Deliver {
            return [=, asset = import(url, stop)] { finish(imported, asset); };
        },
        [=](const std::exception_ptr& error) { finish(failed, error); });
}

void LogoImporter::setImporting(bool isImporting)
{
    if (std::exchange(isImporting_, isImporting) != isImporting)
        emit isImportingChanged();
}

} // namespace ferrow
