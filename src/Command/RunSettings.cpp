// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunSettings.h"

#include "Command/Output.h"
#include "Imaging/CaptionDrawing.h"
#include "Persistence/ManagedLogoStore.h"
#include "Persistence/PresetLibrary.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Text/TextFrame.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <exception>

namespace ferrow::Command {

namespace {

/// The one preset of `file`, or of the user's where that is absent, that is called `name` where one is given.
PresetPayload findPreset(const QByteArray& option, const std::optional<FileUrl>& file,
                         const std::optional<QString>& name)
{
    const QString label = QString::fromLatin1(option) + QStringLiteral(": ");
    const FileKind kind = file ? fileKind(*file) : FileKind::file;
    if (kind == FileKind::missing || kind == FileKind::folder)
        throw UsageError{label + QStringLiteral("there is no file “%1”.").arg(file->displayPath())};
    const PresetLibrary library = file ? PresetLibrary(*file) : PresetLibrary();
    if (library.loadErrorMessage())
        throw UsageError{label + onOneLine(*library.loadErrorMessage())};

    std::vector<PresetPayload> matching;
    for (const PhotoPreset& preset : library.presets())
        if (!name || preset.name == *name)
            matching.push_back(preset.payload);
    if (matching.size() == 1)
        return matching.front();
    const QString wanted = name ? QStringLiteral("“") + *name + QStringLiteral("”") : QStringLiteral("a preset");
    // The name comes last: it may hold what looks like a placeholder.
    const QString reason = matching.empty() ? QStringLiteral("there is no such preset: ")
                                            : QStringLiteral("%1 presets fit, it must be one: ").arg(matching.size());
    throw UsageError{label + reason + wanted};
}

/// A preset's depth counts where the format holds it, one that is asked for must count.
void checkDepth(const Arguments& arguments, const ExportSettings& settings)
{
    if (!arguments.depth || settings.writtenDepth() == *arguments.depth)
        return;
    QStringList depths;
    for (const BitDepth depth : depthsOf(settings.format))
        depths << rawValue(depth);
    throw UsageError{
        QStringLiteral("--depth: %1 holds %2 bits a component, not %3.")
            .arg(rawValue(settings.format), depths.join(QStringLiteral(" or ")), rawValue(*arguments.depth))};
}

LogoAssetReference importedAsset(const FileUrl& file, const FileUrl& folder)
{
    try {
        return ManagedLogoStore::importAsset(file, folder);
    } catch (...) {
        throw UsageError{
            QStringLiteral("--logo: %1").arg(onOneLine(UserFacingError::message(std::current_exception())))};
    }
}

} // namespace

Settings resolvedSettings(const Arguments& arguments)
{
    Settings settings;
    if (arguments.presetName || arguments.presetFile) {
        const PresetPayload payload =
            findPreset(arguments.presetFile ? "--preset-file" : "--preset", arguments.presetFile, arguments.presetName);
        settings.recipe = payload.recipe();
        payload.applyTo(settings.exportSettings, settings.configuration);
    }
    if (arguments.frameFile)
        settings.recipe = findPreset("--frame-from", arguments.frameFile, std::nullopt).recipe();
    for (const auto& change : arguments.changes)
        change(settings);
    checkDepth(arguments, settings.exportSettings);
    std::optional<FrameShape>& shape = settings.recipe.border.shape;
    if (!arguments.shapeChanges.empty() && !shape)
        throw UsageError{QStringLiteral("--shape: options about a shape need a shape.")};
    for (const auto& change : arguments.shapeChanges)
        change(*shape);
    return settings;
}

PixelSize RunLogo::size(const Settings& settings) const
{
    try {
        return ManagedLogoStore::loadIfEnabled(settings.recipe.logo, managedFolder()).value_or(Bitmap()).size();
    } catch (const LogoAssetError&) {
        return {};
    } catch (const SystemError&) {
        return {};
    }
}

RunLogo::RunLogo(const Arguments& arguments, Settings& settings)
{
    if (arguments.logoFile) {
        LogoConfiguration logo = settings.recipe.logo.value_or(LogoConfiguration());
        logo.isEnabled = true;
        logo.asset = importedAsset(*arguments.logoFile, folder_.emplace().url());
        settings.recipe.logo = logo;
    }
    if (!arguments.logoChanges.empty() && !settings.recipe.logo)
        throw UsageError{QStringLiteral("--logo: options about a logo need a logo.")};
    for (const auto& change : arguments.logoChanges)
        change(*settings.recipe.logo);
}

std::jthread loadingFonts(const RenderRecipe& recipe)
{
    if (std::ranges::none_of(recipe.captions, &Caption::isEnabled))
        return {};
    try {
        return std::jthread([] { static_cast<void>(TextFrame(QStringLiteral("A"), {}).suggestedSize({100, 100})); });
    } catch (const std::system_error&) {
        return {}; // No thread to be had: they are loaded when a caption is drawn.
    }
}

void warnOfMissingFonts(const RenderRecipe& recipe)
{
    std::vector<QString> told;
    for (const Caption& caption : recipe.captions) {
        const auto missing = caption.isEnabled ? CaptionDrawing::missingFont(caption) : std::nullopt;
        if (!missing || std::ranges::find(told, missing->family) != told.end())
            continue;
        told.push_back(missing->family);
        printError(QStringLiteral("The font “%1” is not installed; “%2” stands in for it.")
                       .arg(missing->family, missing->standIn));
    }
}

} // namespace ferrow::Command
