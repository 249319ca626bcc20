// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Models/ValueHash.h"
#include "Platform/Base/FileNumber.h"
#include "Platform/Base/FileUrl.h"

#include <QString>
#include <QUuid>

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

namespace ferrow {

enum class ExportDestinationMode { chosenFolder, sourceSubfolder };
enum class CollisionRule { appendNumber, skip, replace };

struct BatchExportConfiguration {
    ExportDestinationMode destinationMode = ExportDestinationMode::chosenFolder;
    std::optional<FileUrl> chosenFolder = std::nullopt;
    QString sourceSubfolderName = QStringLiteral("Ferrow Export");
    QString filenameTemplate = QStringLiteral("{filename}_framed");
    CollisionRule collisionRule = CollisionRule::appendNumber;
    std::int64_t maximumConcurrentExports = 2;

    bool operator==(const BatchExportConfiguration&) const = default;
};

/// One planned export of one photo.
struct BatchExportJob {
    ImportedPhoto photo;
    RenderRecipe recipe; ///< Already resolved for this photo.
    ExportSettings settings;
    FileUrl destination;
    bool replaceExisting = false;
};

/// A photo that could not be imported, planned or exported, with the sentence for the user.
struct BatchExportFailure {
    QUuid id = QUuid::createUuid();
    QString filename;
    QString message;
    FileUrl source; ///< The photo itself, where known: two failures may share a file name.

    bool operator==(const BatchExportFailure&) const = default;
};

struct BatchExportPlan {
    std::vector<BatchExportJob> jobs;
    std::int64_t skipped = 0;
    std::vector<FileUrl> skippedPhotos; ///< One per photo counted in `skipped`, in photo order.
    std::vector<BatchExportFailure> failures;
    std::vector<FileUrl> outputFolders;
};

/// How one job ended; the strings are source file names.
struct BatchExportOutcome {
    struct Exported {
        QString filename;
    };
    struct Failed {
        BatchExportFailure failure;
    };
    struct Canceled {
        QString filename;
    };

    std::variant<Exported, Failed, Canceled> result;
    std::size_t jobIndex = 0; ///< Position in the list of jobs: names alone can repeat.

    [[nodiscard]] QString filename() const;
};

struct BatchExportProgress {
    std::int64_t completed = 0;
    std::int64_t total = 0;
    QString currentFilename;

    bool operator==(const BatchExportProgress&) const = default;
};

struct BatchExportReport {
    QUuid id = QUuid::createUuid();
    std::int64_t total = 0;
    std::int64_t exported = 0;
    std::int64_t skipped = 0;
    std::int64_t canceled = 0;
    std::vector<BatchExportFailure> failures;
    std::vector<FileUrl> outputFolders;
};

enum class BatchPlanningError { missingDestination, invalidSubfolder };

/// Whether a folder name typed by the user is acceptable. Callers that use the name trim it as this does.
namespace SafePathComponent {
[[nodiscard]] bool isValid(const QString& name);
} // namespace SafePathComponent

namespace FilenameTemplate {
/// Output name with its extension, for the photo at the 0-based position `index`. Bytes of a source name that are not
/// UTF-8 are kept and count as one byte each. Never empty, never holds a slash or a control character, and leaves room
/// for a number within the 255 bytes of a file name.
[[nodiscard]] QByteArray filename(const QString& nameTemplate, const FileUrl& sourceURL, std::int64_t index,
                                  const QString& extension);
/// Longest prefix of whole characters (grapheme clusters) of at most `maximumBytes` bytes of UTF-8; "framed" when not
/// even the first fits. `text` may hold undecodable bytes as ByteText::decode() gives them.
[[nodiscard]] QString truncatedUTF8(const QString& text, std::int64_t maximumBytes);
} // namespace FilenameTemplate

/// The destinations that earlier jobs of a plan were given.
struct ReservedDestinations {
    /// Alike for all places that may be one file: volumes that fold case hold one file under many names.
    std::function<FileUrl(const FileUrl&)> key = [](const FileUrl& url) { return url; };
    /// Of the file that stands at a place; absent where that is nothing. Asked before one is replaced.
    std::function<std::optional<FileNumber>(const FileUrl&)> fileNumber = [](const FileUrl&) { return std::nullopt; };
    std::unordered_set<FileUrl> keys = {};
    /// What stands at these places and is to be replaced. It says what the keys can't: that two names lead to one file
    /// by a rule of the volume's own, such as its short names.
    std::set<FileNumber> files = {};
    /// By key of the proposed url, the first number that was not yet found taken: thousands of photos of one name would
    /// otherwise each ask for all numbers before theirs.
    std::unordered_map<FileUrl, std::int64_t> nextNumbers = {};

    [[nodiscard]] bool contains(const FileUrl& url) const { return keys.contains(key(url)); }
    void add(const FileUrl& url) { keys.insert(key(url)); }
    /// Whether no earlier job has the file that stands at `url`, which is this job's from now on.
    [[nodiscard]] bool claimFile(const FileUrl& url);
};

/// Picks a free name for one output.
namespace BatchCollisionResolver {
struct Resolution {
    FileUrl url;
    bool replaceExisting = false;

    bool operator==(const Resolution&) const = default;
};
/// Absent when the photo is to be skipped. The url returned is added to `reserved`. `proposed` must be standardized.
/// Throws what `fileExists` throws, with nothing reserved.
[[nodiscard]] std::optional<Resolution> destination(const FileUrl& proposed, CollisionRule rule,
                                                    ReservedDestinations& reserved,
                                                    const std::function<bool(const FileUrl&)>& fileExists);
} // namespace BatchCollisionResolver

template <>
struct CodedCases<ExportDestinationMode> {
    static constexpr std::array<CodedCase<ExportDestinationMode>, 2> table{
        {{ExportDestinationMode::chosenFolder, u"Chosen Folder"},
         {ExportDestinationMode::sourceSubfolder, u"Beside Each Source"}}};
};

template <>
struct CodedCases<CollisionRule> {
    static constexpr std::array<CodedCase<CollisionRule>, 3> table{{{CollisionRule::appendNumber, u"Append a Number"},
                                                                    {CollisionRule::skip, u"Skip Existing"},
                                                                    {CollisionRule::replace, u"Replace Existing"}}};
};

void feed(ValueHash& hash, const BatchExportConfiguration& configuration);

} // namespace ferrow

template <>
struct std::hash<ferrow::BatchExportConfiguration> : ferrow::ValueHasher {
};
