// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/LogoImporter.h"

#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"

#include <utility>

namespace ferrow {

LogoImporter::LogoImporter(Import import, QObject* parent) : QObject(parent), import_(std::move(import)), work_(1)
{
    if (!import_)
        import_ = [](const FileUrl& url, const std::stop_token& stop) {
            return ManagedLogoStore::importAsset(url, {}, stop);
        };
}

LogoImporter::~LogoImporter()
{
    stop_.request_stop();
}

void LogoImporter::importLogo(const FileUrl& url, Imported imported, Failed failed)
{
    stop_.request_stop();
    stop_ = {};
    setImporting(true);
    const auto finish = [this, number = ++generation_](const std::function<void()>& tell) {
        if (number != generation_)
            return;
        setImporting(false);
        tell();
    };
    work_.post([=, import = import_, stop = stop_.get_token(), sender = relay_.sender()] {
        try {
            const LogoAssetReference asset = import(url, stop);
            sender.post([=] { finish([=] { imported(asset); }); });
        } catch (const Cancelled&) {
        } catch (...) {
            sender.post([=, error = std::current_exception()] { finish([=] { failed(error); }); });
        }
    });
}

void LogoImporter::setImporting(bool isImporting)
{
    if (std::exchange(isImporting_, isImporting) != isImporting)
        emit isImportingChanged();
}

} // namespace ferrow
