// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"
#include "Session/NewestTask.h"

#include <QObject>

#include <exception>
#include <functional>
#include <stop_token>

namespace ferrow {

/// Brings a logo file into the managed folder without holding up the window. Lives on the main thread.
class LogoImporter : public QObject {
    Q_OBJECT

public:
    /// Throws LogoAssetError, SystemError and Canceled; on a worker thread.
    using Import = std::function<LogoAssetReference(const FileUrl&, const std::stop_token&)>;
    using Imported = std::function<void(const LogoAssetReference&)>;
    using Failed = std::function<void(const std::exception_ptr&)>;

    explicit LogoImporter(Import import = {}, QObject* parent = nullptr);

    [[nodiscard]] bool isImporting() const { return isImporting_; }
    /// One of the two is called on the main thread, unless a newer import was begun meanwhile.
    void importLogo(const FileUrl& url, Imported imported, Failed failed);

signals:
    void isImportingChanged();

private:
    void setImporting(bool isImporting);

    Import importAsset_;
    bool isImporting_ = false;
    NewestTask import_;
};

} // namespace ferrow
