// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetLibrary.h"

#include "Persistence/FerrowStorage.h"
#include "Platform/Base/ByteText.h"
#include "Platform/Base/Localization.h"
#include "Platform/Files/FileAccess.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FolderLock.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <span>
#include <utility>

namespace ferrow {

namespace {

/// Some 20,000 presets. More is no preset file, and would be read into memory several times over.
constexpr std::int64_t maximumFileSize = 32'000'000; // Bytes.

/// Absent when there is no file.
std::optional<QByteArray> readWhole(const FileUrl& url)
try {
    const OpenedFile file = OpenedFile::open(url);
    if (file.size() > maximumFileSize)
        throw PresetCodingError{PresetCodingError::Case::tooLarge, {}};
    QByteArray bytes(file.size(), Qt::Uninitialized);
    bytes.truncate(
        qsizetype(file.source().readAt(0, std::as_writable_bytes(std::span(bytes.data(), size_t(bytes.size()))))));
    return bytes;
} catch (const SystemError& error) {
    if (error.errorNumber == ENOENT)
        return std::nullopt;
    throw;
} catch (const InputOutputError& error) {
    throw SystemError{error.errorNumber, url};
}

std::vector<PhotoPreset> readPresets(const FileUrl& url)
{
    const auto bytes = readWhole(url);
    if (!bytes)
        return {};
    // Asked first: what a newer format changed would read as damage.
    const std::optional<std::int64_t> version = PresetDocument::versionOf(*bytes);
    if (version && *version > PresetDocument::currentSchemaVersion)
        throw PresetPersistenceError{PresetPersistenceError::Case::unsupportedVersion, *version};
    return PresetDocument::decode(*bytes).presets;
}

QString validated(const QString& name)
{
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty())
        throw PresetPersistenceError{PresetPersistenceError::Case::invalidName};
    return trimmed;
}

std::vector<PhotoPreset> sorted(std::vector<PhotoPreset> presets)
{
    Localization::standardSort(presets, &PhotoPreset::name);
    return presets;
}

QString uniqueCopyName(const QString& name, const std::vector<PhotoPreset>& presets)
{
    const QString candidate = name + QStringLiteral(" Copy");
    QString unique = candidate;
    for (int counter = 2; std::ranges::find(presets, unique, &PhotoPreset::name) != presets.end(); ++counter)
        unique = candidate + QLatin1Char(' ') + QString::number(counter);
    return unique;
}

QString userFacingMessage(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const PresetCodingError& coding) {
        return UserFacingError::message(localizedTexts(coding));
    } catch (...) {
        return UserFacingError::message(error);
    }
}

/// Copies `file` to `kept`, or moves it there when its bytes can't be read. Answers an errno, 0 also when there is no
/// file any more.
int keepAs(const FileUrl& file, const FileUrl& kept)
try {
    copyWithoutReplacing(OpenedFile::open(file), kept);
    return 0;
} catch (const SystemError& error) {
    if (error.errorNumber == ENOENT)
        return 0;
    if (error.errorNumber != EACCES && error.errorNumber != EPERM && error.errorNumber != EIO)
        return error.errorNumber;
    int errorNumber = 0;
    return place(file, kept, false, &errorNumber) == PlacementResult::placed ? 0 : errorNumber;
}

} // namespace

PresetLibrary::PresetLibrary(const std::optional<FileUrl>& fileURL, Clock clock)
    : fileURL_(fileURL ? *fileURL
                       : FerrowStorage::applicationSupportDirectory().appending(QByteArrayLiteral("presets.json"))),
      clock_(std::move(clock))
{
    refresh();
}

void PresetLibrary::refresh()
{
    try {
        load();
    } catch (...) {
        // The message says what happened.
    }
}

void PresetLibrary::load()
{
    std::vector<PhotoPreset> presets;
    try {
        presets = readPresets(fileURL_);
    } catch (...) {
        loadErrorMessage_ = userFacingMessage(std::current_exception());
        unreadableFileStands_ = true;
        throw;
    }
    loadErrorMessage_.reset();
    unreadableFileStands_ = false;
    for (const Change& change : unsaved_)
        change(presets);
    setPresets(std::move(presets));
}

PhotoPreset PresetLibrary::save(const QString& name, const PresetPayload& payload)
{
    const QDateTime now = clock_();
    const PhotoPreset preset{QUuid::createUuid(), validated(name), payload, now, now};
    change([preset](std::vector<PhotoPreset>& presets) { presets.push_back(preset); });
    return preset;
}

void PresetLibrary::saveAll(const std::vector<std::pair<QString, PresetPayload>>& presets)
{
    const QDateTime now = clock_();
    std::vector<PhotoPreset> added;
    for (const auto& [name, payload] : presets)
        added.push_back({QUuid::createUuid(), validated(name), payload, now, now});
    change([added](std::vector<PhotoPreset>& all) { all.insert(all.end(), added.begin(), added.end()); });
}

void PresetLibrary::rename(const QUuid& id, const QString& name)
{
    if (std::ranges::find(presets_, id, &PhotoPreset::id) == presets_.end())
        return;
    change([id, name = validated(name), now = clock_()](std::vector<PhotoPreset>& presets) {
        const auto preset = std::ranges::find(presets, id, &PhotoPreset::id);
        if (preset == presets.end())
            return; // Removed in another window.
        preset->name = name;
        preset->modifiedAt = now;
    });
}

std::optional<PhotoPreset> PresetLibrary::duplicate(const QUuid& id)
{
    const auto preset = std::ranges::find(presets_, id, &PhotoPreset::id);
    if (preset == presets_.end())
        return std::nullopt;
    return save(uniqueCopyName(preset->name, presets_), PresetPayload(preset->payload));
}

void PresetLibrary::remove(const QUuid& id)
{
    change([id](std::vector<PhotoPreset>& presets) {
        std::erase_if(presets, [&](const PhotoPreset& preset) { return preset.id == id; });
    });
}

void PresetLibrary::change(Change change)
{
    auto presets = presets_;
    change(presets);
    setPresets(std::move(presets));
    unsaved_.push_back(std::move(change));
    persist();
}

void PresetLibrary::setPresets(std::vector<PhotoPreset> presets)
{
    presets = sorted(std::move(presets));
    if (presets == presets_)
        return;
    presets_ = std::move(presets);
    emit presetsChanged();
}

void PresetLibrary::persist()
{
    const FileUrl folder = fileURL_.deletingLastPathComponent();
    createPrivateFolder(folder);
    const FolderLock lock(folder);
    refresh(); // Another window may have written since.
    const QByteArray bytes = PresetDocument{.presets = presets_}.encode();
    if (unreadableFileStands_)
        keepUnreadableFile();
    writeAtomically(fileURL_, bytes);
    unreadableFileStands_ = false;
    unsaved_.clear();
}

void PresetLibrary::keepUnreadableFile()
{
    const QString time = clock_().toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"));
    for (int counter = 1;; ++counter) {
        const QString number = counter == 1 ? QString() : QStringLiteral(" %1").arg(counter);
        const QByteArray name = fileURL_.stem() + QStringLiteral(" (unreadable %1)%2.").arg(time, number).toUtf8() +
                                fileURL_.pathExtension();
        const FileUrl copy = fileURL_.deletingLastPathComponent().appending(name);
        const int errorNumber = keepAs(fileURL_, copy);
        if (errorNumber == 0)
            return;
        if (errorNumber != EEXIST)
            throw SystemError{errorNumber, fileURL_};
    }
}

} // namespace ferrow
