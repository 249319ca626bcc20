// SPDX-License-Identifier: GPL-3.0-or-later
// Takes pictures of the window, its sheets and its popovers: Screenshots FOLDER [light|dark] [width height]
#include "SamplePhotos.h"

#include "Engine/InProcessAnswerer.h"
#include "Features/PreviewPane/PreviewPane.h"
#include "Session/Preferences.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Overlay.h"
#include "Widgets/Theme.h"
#include "Window/ContentView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

namespace {

using namespace ferrow;

class Photographer {
public:
    Photographer(ContentView& window, QString folder, QString suffix)
        : window_(window), folder_(std::move(folder)), suffix_(std::move(suffix))
    {
    }

    /// Waits until `done`, at most two minutes, and a little longer for fades.
    void waitFor(const std::function<bool()>& done)
    {
        if (!QTest::qWaitFor(done, 120'000))
            std::fprintf(stderr, "gave up waiting\n");
        QTest::qWait(settling);
    }

    void press(const char* objectName)
    {
        // Of a color well: its swatch.
        const auto* host = window_.findChild<QWidget*>(QLatin1StringView(objectName));
        auto* button = window_.findChild<QAbstractButton*>(QLatin1StringView(objectName));
        if (!button && host)
            button = host->findChild<QAbstractButton*>();
        if (!button) {
            std::fprintf(stderr, "no %s\n", objectName);
            return;
        }
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::qWait(settling);
    }

    /// What those keys do: without a window manager no window is active and hears them.
    void trigger(const QKeySequence& keys)
    {
        for (QAction* action : window_.actions())
            if (action->shortcuts().contains(keys))
                action->trigger();
        QTest::qWait(settling);
    }

    void shoot(const char* name, QWidget* what = nullptr)
    {
        const QPixmap picture = (what ? what : &window_)->grab();
        picture.save(QStringLiteral("%1/%2%3.png").arg(folder_, QLatin1StringView(name), suffix_));
    }

    void closeOverlay()
    {
        if (Overlay* overlay = Overlay::topmost(&window_))
            overlay->dismiss();
        QTest::qWait(settling);
    }

private:
    static constexpr int settling = 350; // Milliseconds: longer than any fade or render.

    ContentView& window_;
    QString folder_;
    QString suffix_;
};

void photographEmpty(ContentView& window, Photographer& photographer)
{
    QTest::qWait(300);
    photographer.shoot("empty");
    auto* pane = window.findChild<PreviewPane*>();
    pane->setDropTarget(3);
    photographer.shoot("empty-drop");
    pane->setDropTarget({});
    auto* starters = window.findChild<QWidget*>(QStringLiteral("starterChoice"));
    starters->setFocus(Qt::TabFocusReason);
    QTest::keyClick(starters, Qt::Key_End);
    QTest::qWait(600);
    photographer.shoot("starter");
    window.history().stack().undo();
    photographer.press("presetsButton");
    photographer.shoot("presets-empty");
    photographer.closeOverlay();
}

void photographMain(ContentView& window, Photographer& photographer, const FileUrl& photos)
{
    window.importRoots({photos});
    photographer.waitFor([&] { return !window.session().isImporting() && !window.session().photos().empty(); });
    window.history().editRecipe(QStringLiteral("Frame"), [](RenderRecipe& recipe) {
        Caption& caption = recipe.captions.front();
        caption.setCaptionTemplate(QStringLiteral("{filename} · {artist}"));
        caption.position = CaptionPosition::borderBottomCenter;
        caption.alignment = CaptionAlignment::center;
        caption.fontSize = {40};
        recipe.border.width = 130;
        if (Theme::current().appearance() == Appearance::dark) {
            recipe.border.color = {0.07, 0.07, 0.07, 1};
            caption.color = {0.8, 0.8, 0.8, 1};
        }
    });
    QTest::qWait(700);
    photographer.shoot("main");
}

/// The contact sheet: all photos, one of them left out, one with a framing of its own, then those with warnings.
void photographSheet(ContentView& window, Photographer& photographer)
{
    const auto photos = [&](std::size_t index) { return window.session().photos().at(index).id(); };
    RenderRecipe own = window.session().batchRecipe();
    own.border.color = {0.16, 0.24, 0.33, 1};
    own.captions.front().color = RGBAColor::white;
    window.session().setPhotoRecipe(photos(3), own);
    window.session().setRecipeScope(RecipeScope::selected);
    window.session().setIncluded({photos(4)}, false);
    window.session().setSelectedPhotoID(photos(1));
    photographer.trigger(Qt::CTRL | Qt::SHIFT | Qt::Key_G);
    auto* grid = window.findChild<QWidget*>(QStringLiteral("contactSheet"));
    grid->setFocus(Qt::TabFocusReason);
    QTest::qWait(1'500);
    photographer.shoot("sheet");
    QTest::keyClick(window.findChild<QWidget*>(QStringLiteral("sheetFilter")), Qt::Key_End);
    QTest::qWait(700);
    photographer.shoot("sheet-warnings");
    QTest::keyClick(window.findChild<QWidget*>(QStringLiteral("sheetFilter")), Qt::Key_Home);
    for (int i = 0; i < 3; ++i)
        photographer.trigger(Qt::CTRL | Qt::Key_Plus);
    QTest::qWait(700);
    photographer.shoot("sheet-large");
    photographer.trigger(Qt::CTRL | Qt::SHIFT | Qt::Key_G);
    window.session().setIncluded({photos(4)}, true);
    window.session().setPhotoRecipe(photos(3), std::nullopt);
    window.session().setRecipeScope(RecipeScope::batch);
}

void photographPopovers(Photographer& photographer)
{
    photographer.press("borderColorWell");
    photographer.shoot("color-popover");
    photographer.closeOverlay();
    photographer.press("captionPositionButton");
    photographer.shoot("position-popover");
    photographer.closeOverlay();
}

/// The border's section, at its default and with all that it has.
void photographBorder(ContentView& window, Photographer& photographer)
{
    auto* section = window.findChild<QWidget*>(QStringLiteral("borderSection"));
    photographer.shoot("border-section", section);
    const RenderRecipe before = window.session().batchRecipe();
    photographer.press("frameLineSwitch");
    photographer.press("photoEdgeLine");
    window.history().editRecipe(QStringLiteral("Frame"), [](RenderRecipe& recipe) {
        recipe.border.sides = {120, 120, 360, 120};
        recipe.border.blurredBackground.emplace();
        recipe.border.shape = {.width = 7, .height = 5, .turnsWithPhoto = true, .balance = -20};
        recipe.border.line->color = {0.78, 0.66, 0.42, 1};
        recipe.border.photoEdge = {.cornerRadius = {24}, .hasShadow = true};
    });
    QTest::qWait(700);
    photographer.shoot("border-section-full", section);
    photographer.shoot("border");
    photographer.press("captionPositionButton");
    photographer.shoot("position-popover-full");
    photographer.closeOverlay();
    window.session().setBatchRecipe(before);
    photographer.press("photoEdgeLine");
    photographer.press("frameLineLine");
}

void photographCaptions(ContentView& window, Photographer& photographer)
{
    window.history().editRecipe(QStringLiteral("Captions"), [](RenderRecipe& recipe) {
        recipe.captions.front().position = CaptionPosition::borderBottomLeft;
        recipe.captions.front().face = FontFace{QStringLiteral("DejaVu Serif"), QStringLiteral("Bold")};
        recipe.captions.push_back(recipe.captionLike(0));
        recipe.captions.back().setCaptionTemplate(QStringLiteral("{camera} · {lens}"));
    });
    auto* section = window.findChild<QWidget*>(QStringLiteral("captionFontButton"));
    while (section && !section->inherits("ferrow::CaptionSection"))
        section = section->parentWidget();
    QTest::qWait(700);
    photographer.shoot("captions", section);
    photographer.press("captionFontButton");
    photographer.shoot("font-popover");
    photographer.closeOverlay();
    photographer.press("captionPositionButton");
    photographer.shoot("positions-popover");
    photographer.closeOverlay();
    window.history().stack().undo();
}

/// As the file says, and with values corrected, one of them left out.
void photographDetails(ContentView& window, Photographer& photographer)
{
    photographer.trigger(Qt::CTRL | Qt::Key_I);
    photographer.shoot("photo-details");
    const auto photoID = *window.session().selectedPhotoID();
    window.history().correct(QStringLiteral("Values"), {photoID}, [](MetadataCorrections& corrections) {
        corrections[MetadataField::lens] = QStringLiteral("Helios 44-2 58 mm F2, adapted");
        corrections[MetadataField::cameraMake] = {};
        corrections[MetadataField::title] = QStringLiteral("Blue hour at the lake");
    });
    QTest::qWait(700);
    photographer.shoot("photo-details-corrected");
    photographer.trigger(Qt::CTRL | Qt::Key_I);
    window.history().stack().undo();
}

/// The options of a date, of one with a pattern that is none, and of a token whose value is missing.
void photographTokens(ContentView& window, Photographer& photographer)
{
    window.history().editRecipe(QStringLiteral("Tokens"), [](RenderRecipe& recipe) {
        recipe.captions.front().setCaptionTemplate(
            QStringLiteral("{camera} · {lens|Manual lens} · {captureDate:iso} · {artist}"));
    });
    auto* well = window.findChild<QWidget*>(QStringLiteral("captionChips"));
    const auto open = [&](int chip) {
        well->setFocus(Qt::TabFocusReason);
        QTest::keyClick(well, Qt::Key_Home);
        for (int i = 0; i < chip; ++i)
            QTest::keyClick(well, Qt::Key_Right);
        QTest::keyClick(well, Qt::Key_Return);
        QTest::qWait(700);
    };
    open(4);
    photographer.shoot("token-date");
    QTest::keyClick(window.findChild<QWidget*>(QStringLiteral("dateStyles")), Qt::Key_End);
    auto* pattern = window.findChild<QLineEdit*>(QStringLiteral("datePatternField"));
    pattern->setFocus();
    pattern->selectAll();
    QTest::keyClicks(pattern, QStringLiteral("d 'of"));
    QTest::keyClick(pattern, Qt::Key_Return);
    photographer.shoot("token-pattern");
    photographer.closeOverlay();
    open(2);
    photographer.shoot("token-missing");
    photographer.closeOverlay();
    photographer.shoot("token-chips");
    while (window.history().stack().undoText() != QStringLiteral("Tokens"))
        window.history().stack().undo();
    window.history().stack().undo();
}

void photographPresets(ContentView& window, Photographer& photographer)
{
    const auto save = [&](const QString& name) {
        window.presetLibrary().save(name, PresetPayload::make(window.session().batchRecipe(),
                                                              window.exportSession().settings(),
                                                              window.exportSession().configuration()));
    };
    photographer.press("presetsButton");
    photographer.shoot("presets-empty");
    photographer.closeOverlay();
    save(QStringLiteral("Gallery"));
    const RenderRecipe before = window.session().batchRecipe();
    RenderRecipe blue = before;
    blue.border.color = {0.16, 0.24, 0.33, 1};
    blue.border.unit = BorderUnit::percent;
    blue.border.width = 2.5;
    window.session().setBatchRecipe(blue);
    save(QStringLiteral("Blue Mat"));
    RenderRecipe instant = before;
    instant.border.sides = {160, 160, 640, 160};
    instant.border.shape = {.width = 4, .height = 5};
    instant.border.line.emplace();
    window.session().setBatchRecipe(instant);
    save(QStringLiteral("Instant"));
    window.session().setBatchRecipe(before);
    photographer.press("presetsButton");
    photographer.shoot("presets");
    photographer.closeOverlay();
}

void photographFailures(ContentView& window, Photographer& photographer, const FileUrl& folder)
{
    QDir().mkpath(folder.displayPath());
    for (const char* name : {"harbor-old.jpg", "harbor-scan.tif", "meadow.heic"}) {
        QFile file(folder.appending(name).displayPath());
        if (file.open(QIODevice::WriteOnly))
            file.write("no picture");
    }
    window.importRoots({folder});
    photographer.waitFor([&] { return Overlay::topmost(&window) != nullptr; });
    photographer.shoot("not-added");
    photographer.closeOverlay();
}

void photographExport(ContentView& window, Photographer& photographer, const FileUrl& output)
{
    BatchExportConfiguration configuration = window.exportSession().configuration();
    configuration.chosenFolder = output;
    window.exportSession().setConfiguration(configuration);
    photographer.press("exportButton");
    QTest::qWait(600);
    photographer.shoot("export-options");
    photographer.press("showPhotosButton");
    photographer.shoot("review");
    photographer.press("backToExportButton");
    QTest::qWait(600);
    // The slowest format, so that there is an export to be seen.
    window.exportSession().setSettings({.format = ExportFormat::heic, .quality = 0.9});
    QTest::qWait(600);
    photographer.press("startExportButton");
    photographer.waitFor([&] { return window.exportSession().isRunning() || window.exportSession().report(); });
    photographer.shoot("exporting");
    photographer.waitFor([&] { return window.exportSession().report().has_value(); });
    photographer.shoot("report");
    photographer.closeOverlay();
}

void photographWindows(ContentView& window, Photographer& photographer)
{
    const auto shootWindow = [&](const char* name, const char* file) {
        QTest::qWait(300);
        if (auto* dialog = window.findChild<QWidget*>(QLatin1StringView(name))) {
            photographer.shoot(file, dialog);
            dialog->close();
        }
    };
    photographer.press("settingsButton");
    shootWindow("settingsWindow", "settings");
    photographer.trigger(Qt::Key_F1);
    shootWindow("shortcutsWindow", "shortcuts");
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList words = QApplication::arguments();
    if (words.size() < 2)
        return 2;
    const bool dark = words.value(2) == QLatin1StringView("dark");
    const QTemporaryDir scratch;
    const FileUrl root = FileUrl::fromPath(scratch.path());
    // A home of its own, so that folders read in the pictures as they would for anybody.
    qputenv("HOME", root.path());
    qputenv("XDG_DATA_HOME", root.appending("data").path());
    qputenv("XDG_CONFIG_HOME", root.appending("config").path());
    const FileUrl photos = root.appending("Pictures");
    const FileUrl output = photos.appending("Framed");
    for (const FileUrl& folder : {photos, output})
        QDir().mkpath(folder.displayPath());
    tools::writeSamplePhotos(photos);
    Engine::setAnswerer(std::make_unique<Engine::InProcessAnswerer>());

    Theme::current().setAppearance(dark ? Appearance::dark : Appearance::light);
    Theme::current().setReducedMotion(true);
    FerrowStyle::install(application);
    Preferences preferences;
    preferences.setPreviewBackdrop(dark, dark ? PreviewBackdrop::charcoal : PreviewBackdrop::lightGray);
    ContentView window(preferences);
    if (words.size() > 4)
        window.resize(words[3].toInt(), words[4].toInt());
    window.show();
    QDir().mkpath(words[1]);
    Photographer photographer(window, words[1], dark ? QStringLiteral("-dark") : QStringLiteral("-light"));
    photographEmpty(window, photographer);
    photographMain(window, photographer, photos);
    photographSheet(window, photographer);
    photographPopovers(photographer);
    photographBorder(window, photographer);
    photographCaptions(window, photographer);
    photographDetails(window, photographer);
    photographTokens(window, photographer);
    photographPresets(window, photographer);
    photographWindows(window, photographer);
    photographFailures(window, photographer, root.appending("Broken"));
    photographExport(window, photographer, output);
    return 0;
}
