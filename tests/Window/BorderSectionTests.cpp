// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/ShapeRows.h"
#include "Features/Inspector/SidesField.h"
#include "Widgets/ColorWell.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"
#include "Widgets/ToggleSwitch.h"
#include "Window/InspectorFixture.h"

#include <QComboBox>
#include <QPushButton>

namespace ferrow {

struct BorderControls : Inspector {
    const Border& border() const { return recipe().border; }
    NumberField& side(Side side) { return *find<SidesField>("borderSidesField").field(side); }
    void chooseShape(const char* text)
    {
        auto& combo = find<QComboBox>("frameShapeCombo");
        combo.setCurrentText(QString::fromUtf8(text));
        emit combo.activated(combo.currentIndex());
    }
    bool isShown(const char* name) { return find<QWidget>(name).isVisible(); }
};

TEST_F(BorderControls, setEachSideAndLinkThemAgainInAStepEach)
{
    auto& unlink = find<QPushButton>("unlinkSidesButton");
    unlink.setFocus();
    key(Qt::Key_Space);
    EXPECT_EQ(border().sides, (SideLengths{120, 120, 120, 120}));
    EXPECT_TRUE(unlink.isChecked());
    for (const Side next : {Side::top, Side::right, Side::bottom, Side::left}) {
        key(Qt::Key_Tab);
        EXPECT_EQ(window.focusWidget(), &side(next));
    }
    type(side(Side::bottom), "360");
    key(Qt::Key_Return);
    type(side(Side::top), "100");
    key(Qt::Key_Return);
    const SideLengths set{100, 120, 360, 120};
    EXPECT_EQ(border().sides, set);
    type(side(Side::left), "1e9");
    key(Qt::Key_Return);
    EXPECT_EQ(border().sides, set);
    key(Qt::Key_Escape);

    unlink.click();
    EXPECT_EQ(border(), Border{.width = 100});
    EXPECT_TRUE(isShown("borderWidthField"));
    history.stack().undo();
    EXPECT_EQ(border().sides, set);
    EXPECT_EQ(border().width, 120);
    const int steps = history.stack().index();
    side(Side::bottom).setFocus();
    key(Qt::Key_Up);
    key(Qt::Key_Up);
    EXPECT_EQ(border().sides->bottom, 362);
    EXPECT_EQ(history.stack().index(), steps + 1) << "a run of keys is one step";
}

TEST_F(BorderControls, switchTheUnitOfEveryLength)
{
    history.editRecipe(QStringLiteral("Frame"), [](RenderRecipe& changed) {
        changed.border.sides = {40, 80, 400, 80};
        changed.border.line = {.thickness = {6}, .distance = {48}};
        changed.border.photoEdge.cornerRadius = {24};
    });
    const Border before = border();
    auto& unit = find<SegmentedControl>("borderUnitControl");
    unit.pressItem(1);
    EXPECT_EQ(border().sides, (SideLengths{1, 2, 10, 2})) << "of the usual photo: there is none to measure";
    const std::pair<const char*, const char*> shown[] = {
        {"lineThicknessField", "0.15"}, {"lineDistanceField", "1.2"}, {"cornerRadiusField", "0.6"}};
    for (const auto& [field, text] : shown) {
        EXPECT_EQ(find<QLineEdit>(field).text(), QLatin1StringView(text));
        EXPECT_EQ(find<NumberField>(field).format().unit, QStringLiteral("%"));
    }
    unit.pressItem(0);
    EXPECT_EQ(border(), before);
}

TEST_F(BorderControls, bringBackWhatWasSwitchedOff)
{
    auto& background = find<SegmentedControl>("backgroundControl");
    background.pressItem(1);
    EXPECT_FALSE(isShown("borderColorWell"));
    type(find<QLineEdit>("backgroundBlurField"), "70");
    key(Qt::Key_Return);
    background.pressItem(0);
    EXPECT_TRUE(isShown("borderColorWell"));
    EXPECT_FALSE(border().blurredBackground);
    background.pressItem(1);
    EXPECT_EQ(border().blurredBackground, (BlurredBackground{.blur = 70}));

    auto& line = find<ToggleSwitch>("frameLineSwitch");
    EXPECT_FALSE(isShown("lineThicknessField"));
    line.click();
    EXPECT_EQ(border().line, FrameLine());
    EXPECT_TRUE(isShown("lineThicknessField"));
    type(find<QLineEdit>("lineThicknessField"), "10");
    key(Qt::Key_Return);
    line.click();
    EXPECT_FALSE(border().line || find<QWidget>("lineThicknessField").isEnabled());
    // 4,000 pixels are the shorter side of the usual photo.
    find<SegmentedControl>("borderUnitControl").pressItem(1);
    line.click();
    EXPECT_EQ(border().line,
              (FrameLine{.thickness = {0.25, BorderUnit::percent}, .distance = {1.2, BorderUnit::percent}}));
    line.click();
    history.stack().undo();
    EXPECT_TRUE(border().line && line.isChecked());
}

TEST_F(BorderControls, offerOfAShapeWhatItHas)
{
    struct Row {
        const char* choice;
        std::optional<FrameShape> shape;
        bool hasNumbers;
        bool turns;
    };
    const Row rows[] = {
        {"Square 1:1", FrameShape{1, 1}, false, false}, {"Portrait 4:5", FrameShape{4, 5}, false, true},
        {"9:16", FrameShape{9, 16}, false, true},       {"Custom", FrameShape{9, 16}, true, true},
        {"As Photo", std::nullopt, false, false},       {"Custom", FrameShape{7, 5}, true, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.choice);
        chooseShape(row.choice);
        EXPECT_EQ(border().shape, row.shape);
        EXPECT_EQ(find<QComboBox>("frameShapeCombo").currentText(), QString::fromUtf8(row.choice));
        EXPECT_EQ(isShown("frameRatioField"), row.hasNumbers);
        EXPECT_EQ(isShown("shapeTurnsSwitch"), row.turns);
        EXPECT_EQ(isShown("frameBalanceField"), row.shape.has_value());
    }
    auto& numbers = find<QWidget>("frameRatioField");
    const QList<NumberField*> fields = numbers.findChildren<NumberField*>();
    type(*fields[0], "0");
    key(Qt::Key_Return);
    EXPECT_EQ(border().shape, (FrameShape{7, 5}));
    type(*fields[0], "2.35");
    key(Qt::Key_Return);
    type(*fields[1], "1");
    key(Qt::Key_Return);
    EXPECT_EQ(border().shape, (FrameShape{2.35, 1}));
    EXPECT_EQ(fields[0]->text(), QStringLiteral("2.35"));
    type(*fields[0], "4");
    key(Qt::Key_Return);
    type(*fields[1], "5");
    key(Qt::Key_Return);
    EXPECT_TRUE(isShown("frameRatioField")) << "what is typed stays where it is typed";
    find<ToggleSwitch>("shapeTurnsSwitch").click();
    type(find<QLineEdit>("frameBalanceField"), "-20");
    key(Qt::Key_Return);
    EXPECT_EQ(find<QLineEdit>("frameBalanceField").text(), QString(QChar(0x2212)) + QStringLiteral("20"));
    chooseShape("2:3");
    EXPECT_EQ(border().shape, (FrameShape{2, 3, true, -20})) << "another ratio keeps the rest";
}

TEST_F(BorderControls, roundCornersInTheBordersUnit)
{
    find<SegmentedControl>("borderUnitControl").pressItem(1);
    EXPECT_EQ(border(), (Border{.unit = BorderUnit::percent, .width = 3}));
    find<ToggleSwitch>("photoShadowSwitch").click();
    type(find<QLineEdit>("cornerRadiusField"), "2");
    key(Qt::Key_Return);
    EXPECT_EQ(border().photoEdge, (PhotoEdge{{2, BorderUnit::percent}, true}));
    type(find<QLineEdit>("cornerRadiusField"), "0");
    key(Qt::Key_Return);
    find<ToggleSwitch>("photoShadowSwitch").click();
    EXPECT_EQ(border().photoEdge, PhotoEdge()) << "as a preset without it reads";
}

TEST(BalanceHint, saysWhereThePhotoStands)
{
    struct Row {
        const char* name;
        FrameShape shape;
        PixelSize photo;
        const char* hint;
    };
    const Row rows[] = {
        {"middle", {4, 5}, {6'000, 4'000}, "The photo sits in the middle."},
        {"higher", {4, 5, false, -20}, {6'000, 4'000}, "The photo sits above the middle."},
        {"at the foot", {4, 5, false, 100}, {6'000, 4'000}, "The photo sits at the bottom."},
        {"aside", {5, 4, false, -1}, {4'000, 6'000}, "The photo sits left of the middle."},
        {"turned", {4, 5, true, 50}, {5'000, 4'500}, "The photo sits right of the middle."},
        {"no room", {1, 1, false, 50}, {500, 500}, "This photo’s frame has the shape already."},
        {"no frame", {1, 1'000}, {50'000, 40}, ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(balanceHint({.border = {.shape = row.shape}}, row.photo), QString::fromUtf8(row.hint)) << row.name;
}

} // namespace ferrow
