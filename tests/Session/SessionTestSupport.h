// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Base/SystemErrors.h"
#include "Session/PhotoListModel.h"
#include "Session/PhotoSession.h"
#include "Support/TestSupport.h"

#include <QTest>

#include <gmock/gmock.h>

#include <latch>
#include <string>
#include <vector>

namespace ferrow::test {

/// Serves the event loop until `condition` holds; the limit is only there so that a failing test ends.
template <typename Condition>
bool waitUntil(const Condition& condition)
{
    return QTest::qWaitFor(condition, 120'000);
}

inline FileUrl photoUrl(const QByteArray& name)
{
    return FileUrl::fromPath("/photos/" + name);
}

inline std::vector<FileUrl> photoUrls(const std::vector<QByteArray>& names)
{
    std::vector<FileUrl> urls;
    for (const QByteArray& name : names)
        urls.push_back(photoUrl(name));
    return urls;
}

inline ImportedPhoto photoAt(const FileUrl& url, PixelSize size = {600, 400})
{
    ImportedPhoto photo;
    photo.url = url;
    photo.pixelSize = size;
    photo.metadata.filename = url.lastPathComponent();
    return photo;
}

/// What is dropped is what is found; photos come without a disk.
inline PhotoSession::Operations withoutDisk()
{
    return {.scan =
                [](const std::vector<FileUrl>& urls) {
                    return BatchImportScan{urls, {}};
                },
            .load = [](const FileUrl& url, const std::stop_token&) { return photoAt(url); }};
}

class DisklessSession : public PhotoSession {
public:
    explicit DisklessSession(Operations operations = withoutDisk())
        : PhotoSession(SandboxAccessBroker(), std::move(operations))
    {
    }
};

inline ImportOutcome importInto(PhotoSession& session, const std::vector<FileUrl>& urls)
{
    std::optional<ImportOutcome> outcome;
    session.importPhotos(urls, [&](const ImportOutcome& given) { outcome = given; });
    return waitUntil([&] { return outcome.has_value(); }) ? *outcome : ImportOutcome::none;
}

inline std::vector<std::string> names(const std::vector<ImportedPhoto>& photos)
{
    std::vector<std::string> all;
    for (const ImportedPhoto& photo : photos)
        all.push_back(photo.filename().toStdString());
    return all;
}

inline std::string selectedName(const PhotoSession& session)
{
    return session.selectedPhotoID() ? session.selectedPhotoID()->lastPathComponent().toStdString() : "";
}

/// The session's photos as the views have them.
struct ListedPhotos {
    PhotoWarnings warnings;
    PhotoListModel model;

    ListedPhotos(PhotoSession& session, ExportSession& exportSession)
        : warnings(session, exportSession, ExportCheckOperations::system(), std::chrono::milliseconds(0)),
          model(session, exportSession, warnings)
    {
    }
};

inline RenderRecipe border(double width)
{
    RenderRecipe recipe;
    recipe.border.width = width;
    return recipe;
}

} // namespace ferrow::test
