// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportFindings.h"

#include "Export/ExportPlanner.h"
#include "Imaging/CaptionDrawing.h"
#include "Imaging/KeptData.h"
#include "Metadata/MetadataTemplateExpander.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/ByteText.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Base/Localization.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Files/FileStatus.h"
#include "Session/WindowTexts.h"
#include "Shared/UserFacingError.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <exception>
#include <map>
#include <unordered_map>
#include <utility>

namespace ferrow {

namespace {

using Severity = ExportFinding::Severity;
using Findings = std::vector<ExportFinding>;

/// File names that a line of the check gives as examples.
constexpr std::size_t exampleNames = 3;

/// "1 photo has", "3 photos have".
QString photosThat(std::size_t count, const QString& singular, const QString& plural)
{
    return WindowTexts::photoCount(std::int64_t(count)) + u' ' + (count == 1 ? singular : plural);
}

QString examples(const QStringList& names)
{
    if (names.size() <= qsizetype(exampleNames))
        return names.join(QStringLiteral(", "));
    return names.mid(0, exampleNames).join(QStringLiteral(", ")) + QStringLiteral(" …");
}

QString examples(const std::vector<FileUrl>& photos)
{
    QStringList names;
    for (std::size_t i = 0; i < std::min(photos.size(), exampleNames + 1); ++i)
        names.append(photos[i].lastPathComponent());
    return examples(names);
}

/// A line has no room for the paragraphs of an alert.
QString inOneLine(QString message)
{
    return message.replace(QStringLiteral("\n\n"), QStringLiteral(" "));
}

/// What fails some photos is a warning: the rest can be exported. What fails all is an error.
Severity severityFor(const std::vector<FileUrl>& failing, const ExportRequest& request)
{
    return failing.size() == request.photos.size() ? Severity::error : Severity::warning;
}

void checkSources(const ExportRequest& request, const ExportCheckOperations& operations, const std::stop_token& stop,
                  Findings& findings)
{
    std::vector<FileUrl> unreadable;
    for (const ImportedPhoto& photo : request.photos) {
        throwIfCanceled(stop);
        if (!operations.isReadable(photo.url))
            unreadable.push_back(photo.id());
    }
    const auto count = std::int64_t(request.photos.size());
    if (unreadable.empty()) {
        findings.push_back({Severity::ok,
                            count == 1 ? QStringLiteral("The photo can be read")
                                       : QStringLiteral("All %1 photos can be read").arg(Localization::number(count)),
                            {},
                            {}});
        return;
    }
    findings.push_back({severityFor(unreadable, request),
                        photosThat(unreadable.size(), QStringLiteral("can’t be read"), QStringLiteral("can’t be read")),
                        (unreadable.size() == 1 ? QStringLiteral("No longer where it was added from: %1")
                                                : QStringLiteral("No longer where they were added from: %1"))
                            .arg(examples(unreadable)),
                        unreadable, ExportFinding::Remedy::none, QStringLiteral("Can’t be read")});
}

/// The rule is the user's choice of the scope; that it leaves work of theirs aside is easily forgotten.
void checkOwnFramings(const ExportRequest& request, Findings& findings)
{
    if (request.framing.scope == RecipeScope::selected)
        return;
    std::vector<FileUrl> unused;
    for (const ImportedPhoto& photo : request.photos)
        if (request.framing.own.contains(photo.id()))
            unused.push_back(photo.id());
    if (!unused.empty())
        findings.push_back({Severity::warning, WindowTexts::ownFramingUnused(unused.size()), examples(unused), unused,
                            ExportFinding::Remedy::useOwnFraming});
}

/// What names and folders say before anything is looked up. Answers whether planning makes sense.
bool checkConfiguration(const BatchExportConfiguration& configuration, Findings& findings)
{
    if (configuration.destinationMode == ExportDestinationMode::chosenFolder && !configuration.chosenFolder) {
        findings.push_back({Severity::error,
                            QStringLiteral("No folder is chosen"),
                            UserFacingError::message(BatchPlanningError::missingDestination),
                            {},
                            ExportFinding::Remedy::besideEachSource});
        return false;
    }
    if (configuration.destinationMode == ExportDestinationMode::sourceSubfolder &&
        !SafePathComponent::isValid(configuration.sourceSubfolderName)) {
        findings.push_back({Severity::error,
                            QStringLiteral("The subfolder can’t have this name"),
                            UserFacingError::message(BatchPlanningError::invalidSubfolder),
                            {}});
        return false;
    }
    if (configuration.filenameTemplate.trimmed().isEmpty())
        findings.push_back({Severity::warning,
                            QStringLiteral("The file names are empty"),
                            QStringLiteral("Every copy is called “framed” with a number."),
                            {}});
    return true;
}

/// A plan as the export would make it, but for the folders that it would create.
BatchExportPlan dryPlan(const ExportRequest& request, const ExportCheckOperations& operations,
                        const std::stop_token& stop)
{
    const bool createsFolders = request.configuration.destinationMode == ExportDestinationMode::sourceSubfolder;
    ExportPlanner planner;
    planner.createDirectory = [](const FileUrl&) {};
    planner.checkWritable = [&](const FileUrl& folder) {
        if (operations.exists(folder))
            operations.checkWritable(folder);
        else if (createsFolders)
            operations.checkWritable(folder.deletingLastPathComponent());
        else
            throw SystemError{ENOENT, folder};
    };
    planner.fileExists = operations.exists;
    return planner.plan(request, stop);
}

/// Where all folders say the same, as those of one disk do.
std::optional<std::int64_t> freeBytesFor(const BatchExportPlan& plan, const ExportCheckOperations& operations)
{
    std::optional<std::int64_t> bytes;
    for (const FileUrl& folder : plan.outputFolders) {
        auto here = operations.freeBytes(folder);
        if (!here)
            here = operations.freeBytes(folder.deletingLastPathComponent()); // It is yet to be made.
        if (!here || (bytes && *bytes != *here))
            return std::nullopt;
        bytes = here;
    }
    return bytes;
}

QString freeSpace(const std::optional<std::int64_t>& bytes)
{
    return bytes ? QStringLiteral("%1 free").arg(Localization::fileSize(*bytes)) : QString();
}

/// Answers what is left to be measured.
std::optional<SpaceQuestion> checkFolders(const ExportRequest& request, const BatchExportPlan& plan,
                                          const ExportCheckOperations& operations, Findings& findings)
{
    std::map<QString, std::vector<FileUrl>> failing;
    for (const BatchExportFailure& failure : plan.failures)
        failing[inOneLine(failure.message)].push_back(failure.source);
    for (const auto& [message, photos] : failing)
        findings.push_back(
            {severityFor(photos, request),
             photos.size() == request.photos.size()
                 ? QStringLiteral("The folder can’t be written")
                 : photosThat(photos.size(), QStringLiteral("can’t be written"), QStringLiteral("can’t be written")),
             message, photos});
    if (!failing.empty())
        return std::nullopt;
    const auto bytes = freeBytesFor(plan, operations);
    findings.push_back({Severity::ok,
                        plan.outputFolders.size() == 1 ? QStringLiteral("The folder can be written")
                                                       : QStringLiteral("The folders can be written"),
                        freeSpace(bytes),
                        {}});
    return SpaceQuestion{findings.size() - 1, spaceSamples(plan.jobs), bytes};
}

/// "1 name is taken already", "3 names are taken already".
QString namesTaken(std::size_t count)
{
    return count == 1 ? QStringLiteral("1 name is taken already")
                      : QStringLiteral("%1 names are taken already").arg(Localization::number(std::int64_t(count)));
}

void checkNames(const ExportRequest& request, const BatchExportPlan& plan, Findings& findings)
{
    std::unordered_map<FileUrl, std::int64_t> positions;
    for (std::size_t i = 0; i < request.photos.size(); ++i)
        positions.emplace(request.photos[i].id(), std::int64_t(i));
    std::vector<FileUrl> numbered;
    std::vector<FileUrl> replacing;
    std::vector<FileUrl> overItself;
    QStringList newNames;
    const QString extension = filenameExtension(request.settings.format);
    for (const BatchExportJob& job : plan.jobs) {
        const FileUrl& id = job.photo.id();
        if (job.destination == id.standardized())
            overItself.push_back(id);
        else if (job.replaceExisting)
            replacing.push_back(id);
        else if (job.destination.lastPathComponentBytes() !=
                 FilenameTemplate::filename(request.configuration.filenameTemplate, id, positions[id], extension)) {
            numbered.push_back(id);
            newNames.append(job.destination.lastPathComponent());
        }
    }
    if (!numbered.empty())
        findings.push_back(
            {Severity::info, namesTaken(numbered.size()),
             (numbered.size() == 1 ? QStringLiteral("It gets a number: %1") : QStringLiteral("They get a number: %1"))
                 .arg(examples(newNames)),
             numbered});
    if (!plan.skippedPhotos.empty())
        findings.push_back(
            {severityFor(plan.skippedPhotos, request) == Severity::error ? Severity::warning : Severity::info,
             namesTaken(plan.skippedPhotos.size()),
             (plan.skippedPhotos.size() == 1 ? QStringLiteral("This photo is skipped: %1")
                                             : QStringLiteral("These photos are skipped: %1"))
                 .arg(examples(plan.skippedPhotos)),
             plan.skippedPhotos});
    if (!replacing.empty())
        findings.push_back({Severity::warning, namesTaken(replacing.size()),
                            replacing.size() == 1 ? QStringLiteral("The file is replaced.")
                                                  : QStringLiteral("The files are replaced."),
                            replacing});
    if (!overItself.empty())
        findings.push_back(
            {severityFor(overItself, request),
             photosThat(overItself.size(), QStringLiteral("would replace itself"),
                        QStringLiteral("would replace themselves")),
             inOneLine(UserFacingError::message(ImagePipelineError(ImagePipelineError::destinationIsSource))),
             overItself});
}

/// The tokens that a caption's template really holds and that leave out what is missing, each once.
std::vector<MetadataToken> tokensOf(const QString& captionTemplate)
{
    std::vector<MetadataToken> tokens;
    for (const CaptionSegment& segment : CaptionSegment::parse(captionTemplate))
        if (const auto* token = std::get_if<CaptionToken>(&segment.content);
            token && token->ifMissing.isEmpty() && std::ranges::find(tokens, token->token) == tokens.end())
            tokens.push_back(token->token);
    return tokens;
}

/// "No lens", "No ISO".
QString nothingOf(MetadataToken token)
{
    const QString name = displayName(token);
    return QStringLiteral("No %1").arg(name == name.toUpper() ? name : name.toLower());
}

/// What is wrong with captions, and with those of which photos.
class CaptionProblems {
public:
    std::vector<FileUrl> empty;
    std::vector<FileUrl> cut;
    std::vector<FileUrl> overlapping;
    std::map<MetadataToken, std::vector<FileUrl>> missing;
    struct FontProblem {
        CaptionDrawing::MissingFont font;
        std::vector<FileUrl> photos;
    };
    std::map<QString, FontProblem> fonts; ///< By the family that is missing.

    void check(const ImportedPhoto& photo, const RenderRecipe& recipe, const OutputSize& size)
    {
        const PhotoMetadata metadata = photo.captionMetadata();
        for (const Caption& caption : recipe.captions)
            if (caption.isEnabled)
                check(photo, metadata, recipe, caption, size);
        if (!CaptionDrawing::overlaps(photo.pixelSize, recipe, metadata, size).empty())
            overlapping.push_back(photo.id());
    }

private:
    void check(const ImportedPhoto& photo, const PhotoMetadata& metadata, const RenderRecipe& recipe,
               const Caption& caption, const OutputSize& size)
    {
        const auto [entry, isNew] = texts_.try_emplace(&caption);
        Text& text = entry->second;
        if (isNew) {
            text.captionTemplate = caption.captionTemplate();
            text.tokens = tokensOf(text.captionTemplate);
            text.missingFont = CaptionDrawing::missingFont(caption);
        }
        if (MetadataTemplateExpander::expand(text.captionTemplate, metadata).isEmpty()) {
            addOnce(empty, photo);
            return;
        }
        if (text.missingFont) {
            FontProblem& problem = fonts[text.missingFont->family];
            problem.font = *text.missingFont;
            addOnce(problem.photos, photo);
        }
        if (CaptionDrawing::cut(photo.pixelSize, recipe, caption, metadata, size).isCut())
            addOnce(cut, photo);
        for (const MetadataToken token : text.tokens)
            if (MetadataTemplateExpander::isMissing(token, metadata))
                addOnce(missing[token], photo);
    }

    struct Text {
        QString captionTemplate;
        std::vector<MetadataToken> tokens;
        std::optional<CaptionDrawing::MissingFont> missingFont;
    };

    /// Several captions of one photo may have the same problem, one after the other.
    static void addOnce(std::vector<FileUrl>& photos, const ImportedPhoto& photo)
    {
        if (photos.empty() || photos.back() != photo.id())
            photos.push_back(photo.id());
    }

    std::unordered_map<const Caption*, Text> texts_; ///< Recipes are shared by many photos.
};

void checkCaptions(const ExportRequest& request, const std::stop_token& stop, Findings& findings)
{
    CaptionProblems problems;
    for (const ImportedPhoto& photo : request.photos) {
        throwIfCanceled(stop);
        problems.check(photo, request.framing.recipeFor(photo.id()), request.settings.size);
    }
    if (!problems.empty.empty())
        findings.push_back({Severity::warning,
                            photosThat(problems.empty.size(), QStringLiteral("has an empty caption"),
                                       QStringLiteral("have an empty caption")),
                            problems.empty.size() == 1 ? QStringLiteral("It is framed without one.")
                                                       : QStringLiteral("They are framed without one."),
                            problems.empty, ExportFinding::Remedy::none, QStringLiteral("Empty caption")});
    if (!problems.cut.empty())
        findings.push_back({Severity::warning,
                            photosThat(problems.cut.size(), QStringLiteral("has a caption that doesn’t fit"),
                                       QStringLiteral("have captions that don’t fit")),
                            problems.cut.size() == 1 ? QStringLiteral("A part of it is cut off.")
                                                     : QStringLiteral("A part of each is cut off."),
                            problems.cut, ExportFinding::Remedy::none, QStringLiteral("Caption doesn’t fit")});
    if (!problems.overlapping.empty())
        findings.push_back({Severity::warning,
                            photosThat(problems.overlapping.size(), QStringLiteral("has captions that overlap"),
                                       QStringLiteral("have captions that overlap")),
                            QStringLiteral("One is drawn over the other."), problems.overlapping,
                            ExportFinding::Remedy::none, QStringLiteral("Captions overlap")});
    for (const auto& [family, problem] : problems.fonts)
        findings.push_back({Severity::warning, QStringLiteral("The font “%1” is not installed").arg(family),
                            QStringLiteral("“%1” stands in for it.").arg(problem.font.standIn), problem.photos,
                            ExportFinding::Remedy::none, QStringLiteral("Font not installed")});
    for (const auto& [token, photos] : problems.missing)
        findings.push_back({Severity::warning,
                            photosThat(photos.size(), QStringLiteral("has no %1"), QStringLiteral("have no %1"))
                                .arg(displayName(token)),
                            photos.size() == 1 ? QStringLiteral("Its caption leaves it out.")
                                               : QStringLiteral("Their captions leave it out."),
                            photos, ExportFinding::Remedy::none, nothingOf(token)});
}

void checkLogos(const ExportRequest& request, const ExportCheckOperations& operations, const std::stop_token& stop,
                Findings& findings)
{
    struct Loaded {
        PixelSize size;
        QString message; ///< Why it can't be drawn; empty for a logo that is well.
    };
    std::unordered_map<QString, Loaded> logos; // By file name.
    std::map<QString, std::vector<FileUrl>> failing;
    std::vector<FileUrl> covered;
    for (const ImportedPhoto& photo : request.photos) {
        throwIfCanceled(stop);
        const RenderRecipe& recipe = request.framing.recipeFor(photo.id());
        const auto& logo = recipe.logo;
        if (!logo || !logo->isEnabled)
            continue;
        const auto [entry, isNew] = logos.try_emplace(logo->asset.managedFilename);
        if (isNew) {
            try {
                entry->second.size = operations.loadLogo(logo->asset, stop).size();
            } catch (const Canceled&) {
                throw;
            } catch (...) {
                entry->second.message = inOneLine(UserFacingError::message(std::current_exception()));
            }
        }
        if (!entry->second.message.isEmpty())
            failing[entry->second.message].push_back(photo.id());
        else if (!CaptionDrawing::overLogo(photo.pixelSize, recipe, photo.captionMetadata(), entry->second.size,
                                           request.settings.size)
                      .empty())
            covered.push_back(photo.id());
    }
    if (!covered.empty())
        findings.push_back({Severity::warning,
                            photosThat(covered.size(), QStringLiteral("has a caption that overlaps the logo"),
                                       QStringLiteral("have captions that overlap the logo")),
                            QStringLiteral("The caption is drawn over the logo."), covered, ExportFinding::Remedy::none,
                            QStringLiteral("Caption over the logo")});
    for (const auto& [message, photos] : failing)
        findings.push_back({severityFor(photos, request), QStringLiteral("The logo can’t be drawn"), message, photos,
                            ExportFinding::Remedy::none, QStringLiteral("Logo can’t be drawn")});
}

/// Why this photo's framed copy can't be made, if so.
std::optional<QString> sizeProblem(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                   const ExportSettings& settings)
try {
    const PixelSize output = exportLayout(photo, recipe, settings).layout.canvasSize;
    if (settings.format == ExportFormat::heic && output.longestSide() > heifMaximumSide)
        return QStringLiteral("HEIC files are at most %1 pixels a side.")
            .arg(Localization::number(std::int64_t(heifMaximumSide)));
    return std::nullopt;
} catch (const ImagePipelineError& error) {
    return inOneLine(UserFacingError::message(error));
}

/// Which photos can't keep the data that they are to keep, and why.
void checkKeptData(const ExportRequest& request, const std::stop_token& stop, Findings& findings)
{
    if (!request.settings.keepsPhotoData || request.settings.format != ExportFormat::jpeg)
        return;
    std::map<KeepObstacle, std::int64_t> counts;
    std::vector<FileUrl> photos;
    for (const ImportedPhoto& photo : request.photos) {
        throwIfCanceled(stop);
        const auto obstacle = obstacleToKeeping(photo, request.framing.recipeFor(photo.id()), request.settings.size);
        if (!obstacle)
            continue;
        ++counts[*obstacle];
        photos.push_back(photo.id());
    }
    if (photos.empty())
        return;
    QStringList reasons;
    for (const auto& [obstacle, count] : counts)
        reasons.append(QStringLiteral("%1 %2").arg(Localization::number(count), reasonText(obstacle)));
    findings.push_back(
        {Severity::info,
         photosThat(photos.size(), QStringLiteral("can’t keep its data"), QStringLiteral("can’t keep their data")),
         QStringLiteral("Written at %1 %: %2.")
             .arg(Localization::number(std::int64_t(std::lround(request.settings.quality * 100))),
                  reasons.join(QStringLiteral(", "))),
         photos});
}

void checkSizes(const ExportRequest& request, const std::stop_token& stop, Findings& findings)
{
    std::vector<FileUrl> tooLarge;
    QString firstReason;
    for (const ImportedPhoto& photo : request.photos) {
        throwIfCanceled(stop);
        const auto problem = sizeProblem(photo, request.framing.recipeFor(photo.id()), request.settings);
        if (!problem)
            continue;
        if (tooLarge.empty())
            firstReason = *problem;
        tooLarge.push_back(photo.id());
    }
    if (!tooLarge.empty())
        findings.push_back({severityFor(tooLarge, request),
                            photosThat(tooLarge.size(), QStringLiteral("can’t be framed like this"),
                                       QStringLiteral("can’t be framed like this")),
                            firstReason, tooLarge, ExportFinding::Remedy::none,
                            QStringLiteral("Can’t be framed like this")});
}

} // namespace

ExportCheckOperations ExportCheckOperations::system()
{
    return {.isReadable = ferrow::isReadable,
            .exists = isTaken,
            .checkWritable = checkFolderWritable,
            .freeBytes = ferrow::freeBytes,
            .loadLogo =
                [](const LogoAssetReference& asset, const std::stop_token& stop) {
                    return ManagedLogoStore::load(asset, ManagedLogoStore::renderDimension, {}, stop);
                },
            .encodedSize = ferrow::encodedSize};
}

ExportFindings findingsFor(const ExportRequest& request, const ExportCheckOperations& operations,
                           const std::stop_token& stop)
{
    Findings findings;
    std::optional<SpaceQuestion> space;
    if (request.photos.empty()) {
        findings.push_back({Severity::error,
                            QStringLiteral("No photo is included"),
                            QStringLiteral("Tick at least one photo in the list."),
                            {}});
        return {findings, space};
    }
    checkSources(request, operations, stop, findings);
    checkOwnFramings(request, findings);
    if (checkConfiguration(request.configuration, findings)) {
        const BatchExportPlan plan = dryPlan(request, operations, stop);
        space = checkFolders(request, plan, operations, findings);
        checkNames(request, plan, findings);
    }
    checkCaptions(request, stop, findings);
    checkLogos(request, operations, stop, findings);
    checkKeptData(request, stop, findings);
    checkSizes(request, stop, findings);
    return {std::move(findings), std::move(space)};
}

Findings photoWarnings(const ExportRequest& request, const ExportCheckOperations& operations,
                       const std::stop_token& stop)
{
    Findings findings;
    checkSources(request, operations, stop, findings);
    checkCaptions(request, stop, findings);
    checkLogos(request, operations, stop, findings);
    checkSizes(request, stop, findings);
    std::erase_if(findings, [](const ExportFinding& finding) { return finding.ofOnePhoto.isEmpty(); });
    return findings;
}

ExportFinding withSpace(ExportFinding folders, const SpaceEstimate& needed,
                        const std::optional<std::int64_t>& freeBytes)
{
    folders.detail =
        QStringLiteral("About %1, measured on %2")
            .arg(Localization::fileSize(needed.bytes), WindowTexts::photoCount(std::int64_t(needed.measured)));
    if (freeBytes)
        folders.detail += QStringLiteral(" · ") + freeSpace(freeBytes);
    // It may suffice all the same: where files are replaced, or the other photos take less.
    if (freeBytes && needed.bytes > *freeBytes) {
        folders.severity = Severity::warning;
        folders.title = QStringLiteral("There may be too little room");
    }
    return folders;
}

bool hasErrors(const Findings& findings)
{
    return std::ranges::any_of(findings, [](const auto& finding) { return finding.severity == Severity::error; });
}

QString exampleFilename(const QString& nameTemplate, const FileUrl& photo, std::int64_t index, ExportFormat format)
{
    return ByteText::display(FilenameTemplate::filename(nameTemplate, photo, index, filenameExtension(format)));
}

} // namespace ferrow
