// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/NewestTask.h"
#include "Session/PhotoSession.h"

#include <QCache>
#include <QImage>
#include <QObject>

#include <vector>

namespace ferrow {

/// Thumbnails as they are painted: decoded and scaled off the main thread, the newest wish first, a few hundred kept.
/// Main thread.
class ThumbnailCache : public QObject {
    Q_OBJECT

public:
    explicit ThumbnailCache(PhotoSession& session, QObject* parent = nullptr);

    /// The photo's thumbnail within `box` device pixels. Null when it has yet to be decoded, and ready() follows; and
    /// for a photo that has none.
    [[nodiscard]] QImage image(const FileUrl& photoID, const QSize& box);

signals:
    void ready(const ferrow::FileUrl& photoID);

private:
    /// What was decoded, and of what: a file may be added again with other contents.
    struct Decoded {
        CompressedPicture picture;
        QImage image;
    };

    void decodeNext();
    void take(const FileUrl& photoID, const Decoded& decoded);

    PhotoSession& session_;
    QCache<QByteArray, Decoded> images_; ///< By path.
    QSize box_;
    std::vector<FileUrl> wanted_; ///< Newest last.
    NewestTask decoding_;
};

} // namespace ferrow
