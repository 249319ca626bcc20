// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PickedColor.h"
#include "Features/Inspector/PositionGrid.h"
#include "Features/Inspector/PositionScene.h"
#include "Widgets/ColorWell.h"
#include "Widgets/Overlay.h"
#include "Widgets/SegmentedControl.h"
#include "Window/InspectorFixture.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

#include <array>

namespace ferrow {

TEST(PickedColor, keepsTheHueThroughGrayAndBlackAndEveryColorExact)
{
    const PickedColor blue = PickedColor::from({0, 0, 1, 1}, {});
    EXPECT_EQ(PickedColor::from({0.5, 0.5, 0.5, 1}, blue).hue, blue.hue);
    EXPECT_EQ(PickedColor::from(RGBAColor::black, blue).saturation, blue.saturation);
    EXPECT_EQ(PickedColor::from({-1, 2, 0, 3}, {}).color(), (RGBAColor{0, 1, 0, 1}));
    for (int rgb = 0; rgb <= 0xFFFFFF; rgb += 0x0501'03) {
        const RGBAColor color = NamedColor{u"", std::uint32_t(rgb)}.color();
        EXPECT_EQ(ColorText::hex(PickedColor::from(color, blue).color()), ColorText::hex(color));
    }
}

TEST(PickedColor, offersBlackAndWhiteThemselves)
{
    EXPECT_EQ(namedColorIndex(RGBAColor::white), 0U);
    const std::optional<std::size_t> black = namedColorIndex(RGBAColor::black);
    ASSERT_TRUE(black);
    EXPECT_EQ(namedColors[*black].displayName(), QStringLiteral("Black"));
}

TEST(PositionGrid, givesEverySpotATargetOfItsOwnInAnyShape)
{
    EXPECT_EQ(PositionGrid::spoken(CaptionPosition::borderBottomCenter),
              QStringLiteral("Center, bottom border, 14 of 15"));
    EXPECT_EQ(PositionGrid::moved(CaptionPosition::imageTopRight, 1, -1), CaptionPosition::borderTopRight);
    const SideLengths borders[] = {
        {}, {120, 120, 120, 120}, {120, 120, 4'000, 120}, {0, 9'000, 0, 100}, {2'000, 0, 30'000, 0}};
    for (const PixelSize photo : {PixelSize{1'000, 5'000}, PixelSize{6'000, 4'000}, PixelSize{9'000, 1'000}})
        for (const auto& [width, border] : {std::pair(216.0, 0), {280.0, 1}, {280.0, 2}, {216.0, 3}, {216.0, 4}}) {
            SCOPED_TRACE(testing::Message() << photo.width << ", border " << border);
            const PositionGrid::Picture picture = PositionGrid::picture(width, {photo, borders[border]});
            EXPECT_TRUE(QRectF(0, 0, width, 400).contains(picture.canvas));
            for (int i = 0; i < PositionGrid::spots; ++i) {
                EXPECT_EQ(PositionGrid::spotAt(picture, picture.spot(i)), i);
                EXPECT_EQ(picture.photo.contains(picture.spot(i)), !isInBorder(PositionGrid::at(i)));
            }
        }
}

TEST(PositionScene, warnsOfBordersThatHoldNoCaption)
{
    struct Row {
        const char* name;
        BorderUnit unit;
        double width;
        CaptionPosition position;
        bool hasPhoto;
        bool warns;
    };
    const Row rows[] = {
        {"wide", BorderUnit::pixels, 120, CaptionPosition::borderTopLeft, true, false},
        {"thin", BorderUnit::pixels, 60, CaptionPosition::borderTopLeft, false, true},
        {"on the photo", BorderUnit::pixels, 0, CaptionPosition::imageCenter, true, false},
        {"percent of a small photo", BorderUnit::percent, 5, CaptionPosition::borderTopLeft, true, true},
        {"percent of no photo", BorderUnit::percent, 5, CaptionPosition::borderTopLeft, false, false},
    };
    ImportedPhoto photo;
    photo.pixelSize = {600, 400};
    RenderRecipe recipe;
    recipe.captions.front().setCaptionTemplate(
        QStringLiteral("So many words that they need a third line in a border that has two"));
    EXPECT_FALSE(placeWarning(PlacedElement::caption, recipe, &photo, {}).isEmpty());
    recipe.captions.front().setCaptionTemplate(QStringLiteral("Hamburg"));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        recipe.border.unit = row.unit;
        recipe.border.width = row.width;
        recipe.captions.front().position = row.position;
        EXPECT_EQ(!placeWarning(PlacedElement::caption, recipe, row.hasPhoto ? &photo : nullptr, {}).isEmpty(),
                  row.warns);
    }
}

TEST(PositionScene, putsCaptionsInEachOthersPlacesAndSaysWhoseLinesMeet)
{
    const CaptionPosition left = CaptionPosition::borderBottomLeft;
    const CaptionPosition center = CaptionPosition::borderBottomCenter;
    const CaptionPosition right = CaptionPosition::borderBottomRight;
    RenderRecipe recipe;
    recipe.captions.front().setCaptionTemplate(QStringLiteral("Hamburg"));
    recipe.captions.push_back(recipe.captions.front());
    recipe.captions.push_back(recipe.captions.front());
    recipe.captions[0].position = left;
    recipe.captions[1].position = center;
    ImportedPhoto photo;
    photo.pixelSize = {3000, 2000};
    const PositionScene scene = PositionScene::make(PlacedElement::caption, recipe, &photo, {}, 2);
    EXPECT_EQ(scene.number, 3);
    EXPECT_EQ(scene.otherAt(center)->number, 2);
    EXPECT_EQ(scene.otherAt(right), nullptr);
    EXPECT_EQ(scene.warning, QString());

    const auto places = [&] {
        return std::array{recipe.captions[0].position, recipe.captions[1].position, recipe.captions[2].position};
    };
    const std::vector<CaptionPosition> before{left, center, right};
    putCaption(recipe, 2, center, before);
    EXPECT_EQ(places(), (std::array{left, right, center}));
    putCaption(recipe, 2, left, before);
    EXPECT_EQ(places(), (std::array{right, center, left})) << "the one passed over is back";
    putCaption(recipe, 2, CaptionPosition::imageCenter, before);
    EXPECT_EQ(places(), (std::array{left, center, CaptionPosition::imageCenter}));
    for (Caption& caption : recipe.captions)
        caption.position = left;
    const PixelSize logo{300, 200};
    const auto warning = [&] { return placeWarning(PlacedElement::caption, recipe, &photo, logo, 1); };
    EXPECT_EQ(warning(), QStringLiteral("Overlaps captions 1 and 3."));
    recipe.logo.emplace().position = left;
    EXPECT_EQ(warning(), QStringLiteral("Overlaps captions 1 and 3, and the logo."));
    EXPECT_EQ(placeWarning(PlacedElement::logo, recipe, &photo, logo), QStringLiteral("Overlaps captions 1, 2 and 3."));
    recipe.captions.resize(1);
    EXPECT_EQ(placeWarning(PlacedElement::logo, recipe, &photo, logo), QStringLiteral("Overlaps the caption."));
}

TEST_F(Inspector, takesWhatIsTypedOnEnterAndNothingFromOutsideMeanwhile)
{
    auto& width = find<QLineEdit>("borderWidthField");
    type(width, "77");
    history.editRecipe(QStringLiteral("Other"), [](RenderRecipe& changed) { changed.border.width = 9; });
    EXPECT_EQ(width.text(), QStringLiteral("77"));
    key(Qt::Key_Return);
    EXPECT_EQ(recipe().border.width, 77);
    history.stack().undo();
    EXPECT_EQ(width.text(), QStringLiteral("9"));
    history.stack().undo();
    // 120 pixels of the usual photo: there is none to measure.
    find<SegmentedControl>("borderUnitControl").pressItem(1);
    EXPECT_EQ(width.text(), QStringLiteral("3.0"));
}

TEST_F(Inspector, saysWhatItShowsOfTheScope)
{
    const auto& hint = find<QLabel>("scopeHint");
    for (const bool isLocked : {true, false}) {
        view.setLocked(isLocked);
        EXPECT_EQ(hint.text(), isLocked ? QStringLiteral("Locked until the export has finished.")
                                        : QStringLiteral("Changes apply to every photo you add."));
        EXPECT_EQ(hint.accessibleName(), hint.text());
    }
}

TEST_F(Inspector, leavesValuesOfPresetsAsTheyAreUntilTheyAreEdited)
{
    RenderRecipe wild;
    wild.border.width = 1'234.56;
    wild.border.color = {0.1234, 1e20, -3, 0.5};
    wild.captions.front().color = {1e300, -1e300, 2, 1};
    wild.captions.front().fontSize = {4'000};
    session.setBatchRecipe(wild);
    EXPECT_EQ(find<QLineEdit>("borderWidthField").text(), QStringLiteral("1235"));
    find<QLineEdit>("borderWidthField").setFocus();
    find<QLineEdit>("captionSizeField").setFocus();
    EXPECT_EQ(find<ColorWell>("borderColorWell").swatch()->accessibleDescription(),
              QStringLiteral("red 31, green 255, blue 0"));
    for (const char* name : {"borderColorWell", "captionColorWell"}) {
        find<ColorWell>(name).swatch()->click();
        key(Qt::Key_Escape);
    }
    EXPECT_EQ(recipe(), wild);
}

TEST_F(Inspector, recordsPopoversInRunsAndFollowsUndoWhileTheyAreOpen)
{
    find<ColorWell>("borderColorWell").swatch()->click();
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Right);
    EXPECT_EQ(ColorText::hex(recipe().border.color), QStringLiteral("#D9D9D9"));
    EXPECT_EQ(history.stack().count(), 1);
    history.stack().undo();
    auto* hex = Overlay::topmost(&window)->findChild<ColorWell*>()->field();
    EXPECT_EQ(hex->text(), QStringLiteral("#FFFFFF"));
    type(*hex, "#12");
    key(Qt::Key_Return);
    EXPECT_EQ(recipe().border.color, RGBAColor::white);
    view.setLocked(true);
    EXPECT_FALSE(Overlay::topmost(&window));
    EXPECT_FALSE(find<QLineEdit>("borderWidthField").isEnabled());
    view.setLocked(false);

    find<QPushButton>("captionPositionButton").click();
    key(Qt::Key_Left);
    key(Qt::Key_Up);
    EXPECT_EQ(recipe().captions.front().position, CaptionPosition::imageBottomCenter);
    EXPECT_EQ(history.stack().count(), 1);
}

TEST_F(Inspector, hasTabsFromTheSecondCaptionOn)
{
    const RenderRecipe usual = recipe();
    auto& tabs = find<SegmentedControl>("captionTabs");
    auto& button = find<QPushButton>("addOrRemoveCaptionButton");
    EXPECT_FALSE(tabs.isVisible());
    button.click();
    ASSERT_TRUE(tabs.isVisible());
    EXPECT_EQ(tabs.item(1).name, QStringLiteral("Caption 2, left, bottom border"));
    EXPECT_EQ(window.focusWidget()->objectName(), QStringLiteral("captionChips"));
    QTest::keyClick(window.focusWidget(), 'x');
    key(Qt::Key_Return);
    EXPECT_EQ(recipe().captions[1].captionTemplate(), QStringLiteral("x"));
    find<QPushButton>("addCaptionTab").click();
    EXPECT_EQ(tabs.item(2).name, QStringLiteral("Caption 3, center, bottom border"));
    view.stepCaption(-1);
    view.moveCaption(-1);
    EXPECT_EQ(tabs.currentIndex(), 0);
    EXPECT_EQ(recipe().captions[0].captionTemplate(), QStringLiteral("x"));
    auto& size = find<QLineEdit>("captionSizeField");
    type(size, "99");
    key(Qt::Key_Return);
    EXPECT_EQ(recipe().captions[0].fontSize.value, 99);
    EXPECT_EQ(recipe().captions[1].fontSize.value, 48);
    tabs.pressItem(1);
    EXPECT_EQ(size.text(), QStringLiteral("48"));
    find<QAbstractButton>("captionSwitch").click();
    EXPECT_FALSE(recipe().showsCaption());
    find<QAbstractButton>("captionSwitch").click();
    button.click();
    button.click();
    EXPECT_FALSE(tabs.isVisible());
    EXPECT_EQ(recipe().captions.size(), 1u);
    while (history.stack().canUndo())
        history.stack().undo();
    EXPECT_EQ(recipe(), usual);
}

TEST_F(Inspector, movesACaptionWhereItsTabIsDragged)
{
    session.setBatchRecipe({.captions = {{.segments = CaptionSegment::parse(QStringLiteral("a"))},
                                         {.segments = CaptionSegment::parse(QStringLiteral("b"))},
                                         {.segments = CaptionSegment::parse(QStringLiteral("c"))}}});
    auto& tabs = find<SegmentedControl>("captionTabs");
    const auto order = [&] {
        QString all;
        for (const Caption& caption : recipe().captions)
            all += caption.captionTemplate();
        return all + QString::number(tabs.currentIndex());
    };
    const auto drag = [&](int from, int to) {
        QTest::mousePress(&tabs, Qt::LeftButton, {}, tabs.item(from).rect.center());
        // What is taken is chosen, which makes it wider.
        QTest::mouseMove(&tabs, tabs.item(from).rect.center() + QPoint(from < to ? 12 : -12, 0));
        QTest::mouseMove(&tabs, tabs.item(to).rect.center() + QPoint(from < to ? 1 : -1, 0));
    };
    drag(0, 2);
    EXPECT_EQ(order(), QStringLiteral("abc0")) << "nothing has moved yet";
    QTest::mouseRelease(&tabs, Qt::LeftButton);
    EXPECT_EQ(order(), QStringLiteral("bca2"));
    drag(1, 0);
    QTest::keyClick(&tabs, Qt::Key_Escape);
    QTest::mouseRelease(&tabs, Qt::LeftButton);
    EXPECT_EQ(order(), QStringLiteral("bca1")) << "taken, and given up";
    drag(1, 0);
    QTest::mouseRelease(&tabs, Qt::LeftButton);
    EXPECT_EQ(order(), QStringLiteral("cba0"));
    EXPECT_EQ(history.stack().count(), 2);
}

TEST_F(Inspector, triesFontsUntilOneIsKept)
{
    auto& font = find<QPushButton>("captionFontButton");
    auto& style = find<QComboBox>("captionStyleCombo");
    EXPECT_FALSE(style.isVisible());
    font.click();
    type(*qobject_cast<QLineEdit*>(window.focusWidget()), "dejavu MONO");
    EXPECT_FALSE(recipe().captions.front().face) << "nothing is tried by typing";
    key(Qt::Key_Return);
    ASSERT_TRUE(recipe().captions.front().face);
    EXPECT_EQ(recipe().captions.front().face->family, QStringLiteral("DejaVu Sans Mono"));
    EXPECT_FALSE(Overlay::topmost(&window));
    EXPECT_EQ(history.stack().count(), 1);
    EXPECT_TRUE(style.isVisible());
    history.editRecipe(QStringLiteral("Style"),
                       [](RenderRecipe& changed) { changed.captions.front().face->style = QStringLiteral("Bold"); });
    EXPECT_EQ(style.currentText(), QStringLiteral("Bold"));
    const RenderRecipe before = recipe();
    font.click();
    key(Qt::Key_Up);
    EXPECT_NE(recipe(), before) << "what is tried is seen";
    key(Qt::Key_Down);
    EXPECT_EQ(recipe(), before) << "with its style";
    key(Qt::Key_Down);
    key(Qt::Key_Escape);
    EXPECT_EQ(recipe(), before);
    EXPECT_EQ(history.stack().count(), 2);
}

TEST_F(Inspector, leavesNothingOfACaptionInHandThatUndoInterrupts)
{
    const RenderRecipe usual = recipe();
    auto& well = find<QWidget>("captionChips");
    well.setFocus();
    key(Qt::Key_End);
    key(Qt::Key_Delete);
    QTest::keyClick(&well, 'x');
    EXPECT_EQ(recipe().captions.front().captionTemplate(), QStringLiteral("{camera} \u00B7 x"));
    history.stack().undo();
    EXPECT_EQ(recipe(), usual);
    key(Qt::Key_Home);
    key(Qt::Key_Delete);
    EXPECT_EQ(recipe().captions.front().captionTemplate(), QStringLiteral(" \u00B7 {lens}"));
    history.stack().undo();
    EXPECT_EQ(recipe(), usual);

    // Undo may also lead to another recipe: the one with the draft gets back what it had.
    const FileUrl photo = FileUrl::fromPath(QByteArray("/photos/a"));
    session.setPhotoRecipe(photo,
                           RenderRecipe{.captions = {{.segments = CaptionSegment::parse(QStringLiteral("own"))}}});
    well.setFocus();
    QTest::keyClick(&well, 'y');
    EXPECT_NE(recipe(), usual);
    session.setRecipeScope(RecipeScope::selected);
    session.setSelectedPhotoID(photo);
    EXPECT_EQ(recipe().captions.front().captionTemplate(), QStringLiteral("own"));
    EXPECT_EQ(session.batchRecipe(), usual);
}

} // namespace ferrow
