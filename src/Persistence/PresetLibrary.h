// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"
#include "Platform/Base/FileUrl.h"

#include <QObject>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace ferrow {

/// The user's presets, kept sorted, in one file that other windows of the program change as well: each change is made
/// to what the file holds by then, under a lock, and the whole is written back. For one thread.
///
/// Names are trimmed; one that is empty then throws PresetPersistenceError. A failing write throws SystemError and
/// leaves the change in memory, from where the next successful write takes it to disk. A file that could not be loaded
/// keeps a copy of its bytes beside it before anything is written over it.
class PresetLibrary : public QObject {
    Q_OBJECT

public:
    using Clock = std::function<QDateTime()>;

    /// Loads at once; a failure ends in loadErrorMessage(). Without `fileURL`: presets.json in the support folder.
    explicit PresetLibrary(const std::optional<FileUrl>& fileURL = {}, Clock clock = &QDateTime::currentDateTimeUtc);

    [[nodiscard]] const std::vector<PhotoPreset>& presets() const { return presets_; }
    /// Why the last load failed, for the user.
    [[nodiscard]] const std::optional<QString>& loadErrorMessage() const { return loadErrorMessage_; }
    [[nodiscard]] const FileUrl& fileURL() const { return fileURL_; }

    /// Reads what the file holds now; no file means no presets. Throws SystemError, PresetCodingError or
    /// PresetPersistenceError; the presets in memory are then left as they are.
    void load();
    /// The same, with a failure in loadErrorMessage() alone.
    void refresh();

    PhotoPreset save(const QString& name, const PresetPayload& payload);
    /// All of them in one writing, each with its name.
    void saveAll(const std::vector<std::pair<QString, PresetPayload>>& presets);
    /// An unknown `id` changes and writes nothing.
    void rename(const QUuid& id, const QString& name);
    /// Saves a copy under a name that no other preset bears; absent when `id` is unknown.
    std::optional<PhotoPreset> duplicate(const QUuid& id);
    void remove(const QUuid& id);

signals:
    /// The list differs from what it was.
    void presetsChanged();

private:
    /// Made to whatever list stands in the file when it is written.
    using Change = std::function<void(std::vector<PhotoPreset>&)>;

    void change(Change change);
    void setPresets(std::vector<PhotoPreset> presets);
    void persist();
    void keepUnreadableFile();

    FileUrl fileURL_;
    Clock clock_;
    std::vector<PhotoPreset> presets_;
    std::vector<Change> unsaved_; ///< In memory alone since their writing failed; oldest first.
    std::optional<QString> loadErrorMessage_;
    bool unreadableFileStands_ = false; ///< The file could not be loaded, and no copy of it was kept yet.
};

} // namespace ferrow
