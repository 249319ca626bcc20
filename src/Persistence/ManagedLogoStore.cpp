// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/ManagedLogoStore.h"

#include "Engine/Answerer.h"
#include "Imaging/DecodeCache.h"
#include "Models/ErrorTexts.h"
#include "Persistence/FerrowStorage.h"
#include "Platform/Base/ByteText.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FileAccess.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/ImageTypes.h"

#include <algorithm>
#include <cerrno>

namespace ferrow::ManagedLogoStore {

namespace {

FileUrl folderOr(const std::optional<FileUrl>& managedDirectory)
{
    return managedDirectory ? *managedDirectory : FerrowStorage::applicationSupportDirectory().appending("Logos");
}

/// What is a folder, a pipe or a socket is malformed; any other reason why a file can't be opened stays the system's.
OpenedFile openLogo(const FileUrl& url)
try {
    return OpenedFile::open(url);
} catch (const SystemError& error) {
    if (error.errorNumber == EISDIR || error.errorNumber == EINVAL || error.errorNumber == ENXIO)
        throw LogoAssetError{LogoAssetError::Case::malformed};
    throw;
}

Engine::LogoAnswer rasterize(const OpenedFile& file, std::int64_t maximumDimension, const std::stop_token& stop)
{
    const auto dimension = std::clamp<std::int64_t>(maximumDimension, 1, Engine::maximumLogoSide);
    Engine::LogoAnswer answer = Engine::answerer().rasterizeLogo({{file.descriptor(), file.size()}, dimension}, stop);
    // The extension becomes part of a file name.
    if (!ImageTypes::isLogoExtension(answer.fileExtension))
        throw LogoAssetError{LogoAssetError::Case::unsupportedType};
    if (answer.picture.isNull())
        throw LogoAssetError{LogoAssetError::Case::malformed};
    return answer;
}

/// Whether the name stays inside the managed folder.
bool isPlainName(const QByteArray& name)
{
    return !name.isEmpty() && name != "." && name != ".." && !name.contains('/');
}

} // namespace

LogoAssetReference importAsset(const FileUrl& url, const std::optional<FileUrl>& managedDirectory,
                               const std::stop_token& stop)
{
    const OpenedFile file = openLogo(url);
    if (file.size() > maximumFileSize)
        throw LogoAssetError{LogoAssetError::Case::fileTooLarge, file.size()};
    throwIfCanceled(stop);
    const QByteArray extension = rasterize(file, validationDimension, stop).fileExtension;

    const QUuid id = QUuid::createUuid();
    const QByteArray name = id.toByteArray(QUuid::WithoutBraces).toUpper() + '.' + extension;
    const FileUrl folder = folderOr(managedDirectory);
    createPrivateFolder(folder);
    copyWithoutReplacing(file, folder.appending(name));
    return {id, ByteText::display(url.stem()), QString::fromLatin1(name)};
}

Bitmap load(const LogoAssetReference& asset, std::int64_t maximumDimension,
            const std::optional<FileUrl>& managedDirectory, const std::stop_token& stop)
{
    const QByteArray name = ByteText::encode(asset.managedFilename);
    if (!isPlainName(name))
        throw LogoAssetError{LogoAssetError::Case::missingManagedAsset};
    const FileUrl url = folderOr(managedDirectory).appending(name);
    if (fileKind(url) == FileKind::missing)
        throw LogoAssetError{LogoAssetError::Case::missingManagedAsset};

    const DecodeCache::Key key{url.path(), maximumDimension};
    if (auto cached = DecodeCache::shared().image(key))
        return *cached;
    throwIfCanceled(stop);
    const Bitmap picture = rasterize(openLogo(url), maximumDimension, stop).picture;
    DecodeCache::shared().store(picture, key);
    return picture;
}

std::optional<Bitmap> loadIfEnabled(const std::optional<LogoConfiguration>& configuration,
                                    const std::optional<FileUrl>& managedDirectory, const std::stop_token& stop)
{
    if (!configuration || !configuration->isEnabled)
        return std::nullopt;
    return load(configuration->asset, renderDimension, managedDirectory, stop);
}

} // namespace ferrow::ManagedLogoStore
