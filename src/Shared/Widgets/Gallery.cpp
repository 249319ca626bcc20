// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/Widgets/Gallery.h"

#include "Shared/Widgets/ColorWell.h"
#include "Shared/Widgets/ElidedLabel.h"
#include "Shared/Widgets/FerrowStyle.h"
#include "Shared/Widgets/FlowLayout.h"
#include "Shared/Widgets/FormRow.h"
#include "Shared/Widgets/Section.h"
#include "Shared/Widgets/SegmentedControl.h"
#include "Shared/Widgets/SliderField.h"
#include "Shared/Widgets/SmallParts.h"
#include "Shared/Widgets/StyleDrawing.h"
#include "Shared/Widgets/ToggleSwitch.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

#include <array>
#include <functional>

namespace ferrow {

namespace {

using StyleDrawing::ControlState;

enum class Shown { rest, hover, pressed, focused, disabled, error };

constexpr std::array shownStates{Shown::rest,    Shown::hover,    Shown::pressed,
                                 Shown::focused, Shown::disabled, Shown::error};

ControlState stateOf(Shown shown)
{
    ControlState state;
    state.enabled = shown != Shown::disabled;
    state.hovered = shown == Shown::hover;
    state.pressed = shown == Shown::pressed;
    state.focused = shown == Shown::focused;
    state.hasError = shown == Shown::error;
    return state;
}

/// One state of one control, drawn by what draws the living one.
class StateCell : public QWidget {
public:
    using Paint = std::function<void(QPainter&, const ControlState&)>;

    StateCell(Shown shown, QSize size, double ringRadius, Paint paint)
        : shown_(shown), size_(size), ringRadius_(ringRadius), paint_(std::move(paint))
    {
        setFixedSize(92, 44);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.translate(6, (height() - size_.height()) / 2);
        paint_(painter, stateOf(shown_));
        if (shown_ == Shown::focused && ringRadius_ > 0) {
            const QRectF ring = QRectF(QPointF(), size_).adjusted(-4, -4, 4, 4);
            StyleDrawing::paintBox(painter, ring, ringRadius_ + 4, Qt::transparent, themeColor(&ThemeColors::accent),
                                   2);
        }
    }

private:
    Shown shown_;
    QSize size_;
    double ringRadius_;
    Paint paint_;
};

struct StateRow {
    QString name;
    QSize size;
    double ringRadius; ///< 0 for what shows focus by its edge.
    bool hasError;
    StateCell::Paint paint;
};

StateRow buttonRow(const QString& name, ButtonRole role, const QString& text, const QIcon& icon = QIcon())
{
    StyleDrawing::ButtonLook look;
    look.role = role;
    look.text = text;
    look.icon = icon;
    const QSize size = StyleDrawing::buttonSize(look);
    return {name, size, Radius::control, false, [look, size](QPainter& painter, const ControlState& state) {
                StyleDrawing::ButtonLook now = look;
                now.state = state;
                StyleDrawing::paintButton(painter, QRect(QPoint(), size), now, StyleDrawing::buttonFill(now));
            }};
}

void paintFieldCell(QPainter& painter, const ControlState& state)
{
    const QRect rect(0, 0, 78, Measure::control);
    StyleDrawing::paintField(painter, rect, state);
    painter.setPen(themeColor(state.enabled ? &ThemeColors::text : &ThemeColors::disabled));
    painter.drawText(rect.adjusted(11, 0, 0, 0), Qt::AlignVCenter, QStringLiteral("240"));
}

void paintCheckCell(QPainter& painter, ControlState state)
{
    state.checked = true;
    StyleDrawing::paintCheckBox(painter, QRectF(0, 0, 16, 16), state);
    if (!state.focused) {
        state.checked = false;
        StyleDrawing::paintCheckBox(painter, QRectF(26, 0, 16, 16), state);
        state.isMixed = true;
        StyleDrawing::paintCheckBox(painter, QRectF(52, 0, 16, 16), state);
    }
}

void paintSwitchCell(QPainter& painter, ControlState state)
{
    state.checked = true;
    StyleDrawing::paintSwitch(painter, QRectF(0, 0, 34, 20), state, false);
    if (!state.focused) {
        state.checked = false;
        StyleDrawing::paintSwitch(painter, QRectF(40, 0, 34, 20), state, false);
    }
}

void paintSliderCell(QPainter& painter, const ControlState& state)
{
    StyleDrawing::paintSlider(painter, QRectF(-6, 6, 70, 4), QRectF(0, 0, 16, 16), state, false);
}

std::vector<StateRow> stateRows()
{
    return {buttonRow(QStringLiteral("Button"), ButtonRole::standard, QStringLiteral("Choose")),
            buttonRow(QStringLiteral("Primary"), ButtonRole::main, QStringLiteral("Export")),
            buttonRow(QStringLiteral("Destructive"), ButtonRole::destructive, QStringLiteral("Delete")),
            buttonRow(QStringLiteral("Icon button"), ButtonRole::flat, QString(), icon(IconName::compare)),
            {QStringLiteral("Field"), QSize(78, Measure::control), 0, true, paintFieldCell},
            {QStringLiteral("Check box"), QSize(16, 16), Radius::box, false, paintCheckCell},
            {QStringLiteral("Switch"), QSize(34, 20), 10, false, paintSwitchCell},
            {QStringLiteral("Slider"), QSize(16, 16), 8, false, paintSliderCell}};
}

/// Every state side by side. The states are painted: nothing there can be used.
QWidget* makeStates()
{
    auto* states = new QWidget;
    auto* grid = new QGridLayout(states);
    grid->setSpacing(2);
    const QStringList heads{QStringLiteral("Rest"),    QStringLiteral("Hover"),    QStringLiteral("Pressed"),
                            QStringLiteral("Focused"), QStringLiteral("Disabled"), QStringLiteral("Error")};
    for (int column = 0; column < heads.size(); ++column) {
        grid->addWidget(makeLabel(heads[column], TextRole::small, &ThemeColors::text2), 0, column + 1);
    }
    int line = 1;
    for (const StateRow& row : stateRows()) {
        grid->addWidget(makeLabel(row.name, TextRole::body, &ThemeColors::text2), line, 0);
        int column = 1;
        for (const Shown shown : shownStates) {
            if (shown != Shown::error || row.hasError) {
                grid->addWidget(new StateCell(shown, row.size, row.ringRadius, row.paint), line, column);
            }
            ++column;
        }
        ++line;
    }
    return states;
}

QWidget* makeButtons(QWidget* parent)
{
    auto* buttons = new QWidget(parent);
    auto* flow = new FlowLayout(Space::group, buttons);
    auto* add = new MenuButton(IconName::add, QStringLiteral("Add"), buttons);
    auto* menu = new QMenu(add);
    menu->addAction(icon(IconName::photo), QStringLiteral("Add Photos…"), QKeySequence(QStringLiteral("Ctrl+O")),
                    [] {});
    menu->addAction(icon(IconName::folder), QStringLiteral("Add Folder…"), QKeySequence(QStringLiteral("Ctrl+Shift+O")),
                    [] {});
    menu->addSeparator();
    menu->addAction(QStringLiteral("Clear All"))->setEnabled(false);
    add->setMenu(menu);
    add->setObjectName(QStringLiteral("addButton"));
    flow->addWidget(add);
    auto* presets = new QPushButton(icon(IconName::presets), QStringLiteral("Presets"), buttons);
    presets->setObjectName(QStringLiteral("sheetButton"));
    flow->addWidget(presets);
    auto* exportButton = new QPushButton(icon(IconName::exportPhotos), QStringLiteral("Export Batch"), buttons);
    setButtonRole(exportButton, ButtonRole::main);
    flow->addWidget(exportButton);
    auto* disabledExport = new QPushButton(icon(IconName::exportPhotos), QStringLiteral("Export Nothing"), buttons);
    setButtonRole(disabledExport, ButtonRole::main);
    disabledExport->setEnabled(false);
    flow->addWidget(disabledExport);
    flow->addWidget(makeIconButton(IconName::undo, QStringLiteral("Undo"), buttons));
    auto* fit = makeIconButton(IconName::zoomFit, QStringLiteral("Fit"), buttons);
    fit->setCheckable(true);
    fit->setChecked(true);
    flow->addWidget(fit);
    auto* small = new QPushButton(icon(IconName::textChip), QStringLiteral("Text"), buttons);
    setSmallControl(small);
    flow->addWidget(small);
    auto* link = new QPushButton(QStringLiteral("Use Batch"), buttons);
    setButtonRole(link, ButtonRole::link);
    flow->addWidget(link);
    return buttons;
}

FormRow* sliderRow(const QString& label, const QString& name, double value, double greatest, const NumberFormat& format)
{
    auto* slider = new SliderField(name);
    slider->setFormat(format);
    slider->setRange(0, greatest);
    slider->setValue(value);
    return new FormRow(label, slider);
}

Section* makeBorderSection()
{
    auto* section = new Section(QStringLiteral("Border"));
    section->setSummary(QStringLiteral("240 px"));
    auto* unit =
        new SegmentedControl(QStringLiteral("Border unit"), {QStringLiteral("Pixels"), QStringLiteral("Percent")});
    section->body()->addWidget(new FormRow(QStringLiteral("Unit"), unit));
    section->body()->addWidget(
        sliderRow(QStringLiteral("Width"), QStringLiteral("Border width"), 240, 800, {0, 1, QStringLiteral("px")}));
    auto* well = new ColorWell(QStringLiteral("Border color"));
    well->setObjectName(QStringLiteral("borderColor"));
    well->setColor({0xF4 / 255.0, 0xF1 / 255.0, 0xEA / 255.0, 1});
    section->body()->addWidget(new FormRow(QStringLiteral("Color"), well));
    return section;
}

Section* makeCaptionSection()
{
    auto* section = new Section(QStringLiteral("Caption"));
    section->setSummary(QStringLiteral("Photograph by Martin Adams and several others"));
    section->addSwitch(QStringLiteral("Caption on"))->setChecked(true);
    auto* font = new QComboBox;
    font->setAccessibleName(QStringLiteral("Caption font"));
    font->addItems({QStringLiteral("System"), QStringLiteral("Helvetica Neue"), QStringLiteral("New York")});
    section->body()->addWidget(new FormRow(QStringLiteral("Font"), font));
    NumberFormat percent{1, 100, QStringLiteral("%")};
    percent.least = 0;
    section->body()->addWidget(
        sliderRow(QStringLiteral("Opacity"), QStringLiteral("Caption opacity"), 0.9, 1, percent));
    auto* alignment = new SegmentedControl(QStringLiteral("Caption alignment"),
                                           {QStringLiteral("Left"), QStringLiteral("Center"), QStringLiteral("Right")});
    alignment->setCurrentIndex(1);
    section->body()->addWidget(new FormRow(QStringLiteral("Alignment"), alignment));
    auto* row = new FormRow(QStringLiteral("Size"), new NumberField(QStringLiteral("Caption size")));
    row->setMessage(Severity::error, QStringLiteral("This can’t be used as a number here."));
    setErrorEdge(row->control(), true);
    section->body()->addWidget(row);
    auto* disabled =
        sliderRow(QStringLiteral("Spacing"), QStringLiteral("Caption spacing"), 8, 40, {0, 1, QStringLiteral("px")});
    disabled->setEnabled(false);
    section->body()->addWidget(disabled);
    return section;
}

Section* makeLogoSection()
{
    auto* section = new Section(QStringLiteral("Logo"));
    section->addSwitch(QStringLiteral("Logo on"));
    section->setSummary(QStringLiteral("mark.svg"));
    section->setExpanded(false);
    return section;
}

QWidget* makeInspector()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeBorderSection());
    layout->addWidget(makeCaptionSection());
    layout->addWidget(makeLogoSection());
    layout->addStretch(1);
    auto* pane = new ScrollPane;
    pane->setPage(page);
    pane->setFixedWidth(320);
    pane->setObjectName(QStringLiteral("inspector"));
    return pane;
}

QWidget* makeBackdrops()
{
    auto* dots = new QWidget;
    auto* layout = new QHBoxLayout(dots);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    const BackdropColors& colors = Theme::backdrops();
    layout->addWidget(makeLabel(QStringLiteral("Backdrop"), TextRole::small, &ThemeColors::text2));
    layout->addWidget(new BackdropDot(colors.black, QStringLiteral("Black"), dots));
    layout->addWidget(new BackdropDot(colors.charcoal, QStringLiteral("Charcoal"), dots));
    layout->addWidget(new BackdropDot(colors.gray, QStringLiteral("Gray"), dots));
    auto* chosen = new BackdropDot(colors.lightGray, QStringLiteral("Light Gray"), dots);
    chosen->setChecked(true);
    layout->addWidget(chosen);
    layout->addWidget(new BackdropDot(colors.white, QStringLiteral("White"), dots));
    layout->addStretch(1);
    return dots;
}

void addParts(QVBoxLayout& column, QWidget* parent)
{
    auto* include = new QCheckBox(QStringLiteral("Open the folders when done"), parent);
    include->setChecked(true);
    column.addWidget(include);
    auto* all = new Checkbox16(QStringLiteral("Include all photos"), parent);
    all->setTristate(true);
    all->setCheckState(Qt::PartiallyChecked);
    column.addWidget(all);
    column.addWidget(makeBackdrops());
    auto* name = new ElidedLabel(QStringLiteral("A very long file name that gives way in its middle IMG_20240305.jpg"),
                                 Qt::ElideMiddle);
    name->setMaximumWidth(260);
    column.addWidget(name);
    auto* known = new ProgressLine(QStringLiteral("Export progress"));
    known->setRange(0, 11);
    known->setValue(3);
    column.addWidget(known);
    auto* unknown = new ProgressLine(QStringLiteral("Import progress"));
    unknown->setRange(0, 0);
    column.addWidget(unknown);
    column.addWidget(new MessageLine(Severity::success, QStringLiteral("All 11 photos can be read")));
    auto* warning = new MessageLine(Severity::warning, QString());
    warning->setMessage(Severity::warning, QStringLiteral("3 photos have no Camera"),
                        QStringLiteral("Their captions leave it out."));
    warning->setButton(QStringLiteral("Show"));
    column.addWidget(warning);
    auto* tinted = new MessageLine(Severity::warning, QString(), MessageLine::Ground::tinted);
    tinted->setMessage(Severity::warning, QStringLiteral("The presets file could not be read."),
                       QStringLiteral("It stays where it is; new presets go into a fresh file."));
    column.addWidget(tinted);
    auto* search = new QLineEdit(QStringLiteral("Pictures / Framed"), parent);
    search->setAccessibleName(QStringLiteral("Folder"));
    search->addAction(icon(IconName::folder), QLineEdit::LeadingPosition);
    column.addWidget(search);
}

} // namespace

QWidget* makeGallery()
{
    auto* window = new QWidget;
    setGround(window, &ThemeColors::window);
    auto* left = new QVBoxLayout;
    left->setContentsMargins(Space::sheet, Space::sheet, Space::sheet, Space::sheet);
    left->setSpacing(Space::row);
    left->addWidget(makeButtons(window));
    left->addWidget(makeStates());
    addParts(*left, window);
    left->addStretch(1);

    auto* layout = new QHBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(left, 1);
    layout->addWidget(new HairLine(Qt::Vertical, window));
    layout->addWidget(makeInspector());
    return window;
}

} // namespace ferrow
