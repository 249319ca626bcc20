// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Imaging/ImageLoader.h"
#include "Models/ImportedPhoto.h"
#include "Session/Background.h"

#include <QObject>

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <stop_token>

namespace ferrow {

/// Decodes the selected photo at preview size and publishes the newest request alone. Lives on the main thread.
class PreviewLoader : public QObject {
    Q_OBJECT

public:
    /// Called on a worker thread. Throws what ImageLoader throws.
    using Decode = std::function<ImportedPhoto(const FileUrl&, const std::stop_token&)>;
    /// Told on the main thread why a decode failed, also one that was overtaken; UserFacingError::message() has the
    /// words.
    using Failed = std::function<void(const std::exception_ptr&)>;

    explicit PreviewLoader(
        Decode decode = [](const FileUrl& url, const std::stop_token& stop) { return ImageLoader::load(url, stop); },
        QObject* parent = nullptr);

    /// With the picture for the preview pane in previewSource (at most 1,600 pixels long).
    [[nodiscard]] const std::optional<ImportedPhoto>& photo() const { return photo_; }
    /// A request that was overtaken ends the loading state as well when its decode returns.
    [[nodiscard]] bool isLoading() const { return isLoading_; }

    /// Decodes `photo` in the background; the one before stays published meanwhile. None is clear(). A stop through the
    /// returned source ends the decode, drops a result and swallows a failure: the caller stops the one before at each
    /// new load.
    std::stop_source load(const std::optional<ImportedPhoto>& photo, Failed failed = {});
    void clear();

signals:
    void photoChanged();
    void isLoadingChanged();

private:
    void setPhoto(std::optional<ImportedPhoto> photo);
    void setLoading(bool isLoading);

    Decode decode_;
    std::optional<ImportedPhoto> photo_;
    bool isLoading_ = false;
    std::int64_t generation_ = 0;
    MainThreadRelay relay_;
    WorkQueue work_;
};

} // namespace ferrow
