// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FerrowStyle.h"

#include "Widgets/Accessibility.h"
#include "Widgets/FillFade.h"
#include "Widgets/FocusRing.h"
#include "Widgets/InputRules.h"
#include "Widgets/StyleDrawing.h"
#include "Widgets/StyleParts.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QSlider>
#include <QStyleOption>
#include <QToolButton>

#include <algorithm>

namespace ferrow {

using namespace StyleDrawing;

namespace {

constexpr const char* roleProperty = "ferrowButtonRole";
constexpr const char* smallProperty = "ferrowSmall";
constexpr int menuInset = 5;
constexpr const char* comboPopup = "QComboBoxPrivateContainer";

const ThemeColors& colors()
{
    return Theme::current().colors();
}

bool isSmall(const QWidget* widget)
{
    return widget && widget->property(smallProperty).toBool();
}

int controlHeight(const QWidget* widget)
{
    return Theme::current().scaled(isSmall(widget) ? Measure::smallControl : Measure::control);
}

/// Mnemonics are drawn by nobody here; a doubled ampersand is one.
QString shownText(QString text)
{
    static const QString doubled = QStringLiteral("&&");
    text.replace(doubled, QString(QChar(1)));
    text.remove(QLatin1Char('&'));
    return text.replace(QChar(1), QLatin1Char('&'));
}

ButtonLook lookOf(const QStyleOptionButton& option, const QWidget* widget)
{
    ButtonLook look;
    look.role = buttonRole(widget);
    look.isSmall = isSmall(widget);
    look.hasMenu = option.features & QStyleOptionButton::HasMenu;
    look.text = shownText(option.text);
    look.icon = option.icon;
    look.state = ControlState::of(&option, widget);
    return look;
}

ButtonLook lookOf(const QStyleOptionToolButton& option, const QWidget* widget)
{
    ButtonLook look;
    look.role = buttonRole(widget);
    look.isSmall = isSmall(widget);
    look.hasMenu = option.features & QStyleOptionToolButton::HasMenu;
    look.text =
        option.toolButtonStyle == Qt::ToolButtonIconOnly && !option.icon.isNull() ? QString() : shownText(option.text);
    look.icon = option.toolButtonStyle == Qt::ToolButtonTextOnly ? QIcon() : option.icon;
    look.state = ControlState::of(&option, widget);
    return look;
}

void drawButton(QPainter& painter, const QRect& rect, const ButtonLook& look, const QWidget* widget)
{
    paintButton(painter, rect, look, FillFade::step(widget, buttonFill(look)));
}

} // namespace

void setButtonRole(QAbstractButton* button, ButtonRole role)
{
    button->setProperty(roleProperty, int(role));
    button->updateGeometry();
    button->update();
}

ButtonRole buttonRole(const QWidget* button)
{
    const QVariant role = button ? button->property(roleProperty) : QVariant();
    if (role.isValid())
        return static_cast<ButtonRole>(role.toInt());
    return qobject_cast<const QToolButton*>(button) ? ButtonRole::flat : ButtonRole::standard;
}

void setSmallControl(QWidget* control, bool small)
{
    control->setProperty(smallProperty, small);
    control->updateGeometry();
    control->update();
}

void setErrorEdge(QWidget* field, bool hasError)
{
    field->setProperty("ferrowError", hasError);
    field->update();
}

void setOpenEdge(QWidget* opener, bool isOpen)
{
    opener->setProperty("ferrowOpen", isOpen);
    opener->update();
}

FerrowStyle::FerrowStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void FerrowStyle::install(QApplication& application)
{
    application.setStyle(new FerrowStyle);
    installAccessibility();
    Theme::current().renewApplication();
    FocusRing::install();
    installKeyRules(application);
}

QPalette FerrowStyle::standardPalette() const
{
    return Theme::paletteOf(Theme::current().colors());
}

void FerrowStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const
{
    switch (element) {
    case PE_FrameFocusRect:
    case PE_FrameMenu:
    case PE_PanelItemViewRow:
    case PE_FrameWindow:
        return;
    case PE_PanelLineEdit:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option); frame && frame->lineWidth > 0)
            paintField(*painter, option->rect, ControlState::of(option, widget));
        return;
    case PE_FrameLineEdit:
    case PE_Frame:
        paintField(*painter, option->rect, ControlState::of(option, widget));
        return;
    case PE_PanelButtonCommand:
    case PE_PanelButtonTool: {
        ButtonLook look;
        look.role = buttonRole(widget);
        look.state = ControlState::of(option, widget);
        paintBox(*painter, option->rect, Radius::control, buttonFill(look), colors().fillEdge);
        return;
    }
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        paintCheckBox(*painter, option->rect, ControlState::of(option, widget));
        return;
    case PE_IndicatorRadioButton:
        paintRadioButton(*painter, option->rect, ControlState::of(option, widget));
        return;
    case PE_PanelMenu:
        paintPopup(*painter, option->rect, widget);
        return;
    case PE_PanelTipLabel:
        paintBox(*painter, option->rect, 0, colors().raised, colors().groove);
        return;
    case PE_PanelItemViewItem:
        drawRow(*painter, *option);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void FerrowStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const
{
    switch (element) {
    case CE_PushButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option))
            drawButton(*painter, option->rect, lookOf(*button, widget), widget);
        return;
    case CE_ComboBoxLabel:
        if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option))
            drawComboBoxLabel(*painter, *box, *proxy(), widget);
        return;
    case CE_MenuItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
            paintMenuItem(*painter, *item);
        return;
    case CE_MenuEmptyArea:
        painter->fillRect(option->rect, colors().raised);
        return;
    case CE_ProgressBar:
        if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option))
            drawProgress(*painter, *bar);
        return;
    case CE_Splitter:
        painter->fillRect(option->rect, colors().line);
        return;
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void FerrowStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                     const QWidget* widget) const
{
    switch (control) {
    case CC_ToolButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option))
            drawButton(*painter, option->rect, lookOf(*button, widget), widget);
        return;
    case CC_ComboBox:
        if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option))
            drawComboBox(*painter, *box, widget);
        return;
    case CC_SpinBox:
        paintField(*painter, option->rect, ControlState::of(option, widget));
        return;
    case CC_ScrollBar:
        if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option))
            drawScrollBar(*painter, *bar, *proxy(), widget);
        return;
    case CC_Slider:
        if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option))
            drawSlider(*painter, *slider, *proxy(), widget);
        return;
    default:
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

QSize FerrowStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                    const QWidget* widget) const
{
    switch (type) {
    case CT_PushButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option))
            return buttonSize(lookOf(*button, widget));
        break;
    case CT_ToolButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option))
            return buttonSize(lookOf(*button, widget));
        break;
    case CT_LineEdit:
    case CT_SpinBox:
        return QSize(contents.width() + 2 * fieldPadding, controlHeight(widget));
    case CT_ComboBox:
        return QSize(contents.width() + 2 * fieldPadding + Measure::fieldIcon + Space::group, controlHeight(widget));
    case CT_CheckBox:
    case CT_RadioButton: {
        const QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
        return size.expandedTo(QSize(Measure::checkBox, Measure::hitArea));
    }
    case CT_Slider:
        return QSize(contents.width(), std::max(contents.height(), Measure::hitArea));
    case CT_ProgressBar:
        return QSize(contents.width(), Measure::progress);
    case CT_MenuItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
            return menuItemSize(*item, contents);
        break;
    default:
        break;
    }
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

QRect FerrowStyle::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const
{
    // A line edit adds 2 of its own before its text.
    constexpr int inset = fieldPadding - 2;
    switch (element) {
    case SE_LineEditContents: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        return frame && frame->lineWidth == 0 ? option->rect : option->rect.adjusted(inset, 1, -inset, -1);
    }
    default:
        return QProxyStyle::subElementRect(element, option, widget);
    }
}

QRect FerrowStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
                                  const QWidget* widget) const
{
    if (control == CC_ComboBox && subControl == SC_ComboBoxEditField)
        return option->rect.adjusted(fieldPadding, 1, -(8 + 16 + 4), -1);
    if (control == CC_SpinBox) {
        const bool isArrow = subControl == SC_SpinBoxUp || subControl == SC_SpinBoxDown;
        return isArrow                             ? QRect()
               : subControl == SC_SpinBoxEditField ? option->rect.adjusted(1, 1, -1, -1)
                                                   : option->rect;
    }
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (slider && control == CC_ScrollBar)
        return scrollBarPart(*slider, subControl);
    if (slider && control == CC_Slider && slider->orientation == Qt::Horizontal && subControl != SC_SliderTickmarks)
        return sliderPart(*slider, subControl);
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

int FerrowStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_ButtonIconSize:
    case PM_ToolBarIconSize:
        return isSmall(widget) ? Measure::fieldIcon : Measure::icon;
    case PM_SmallIconSize:
    case PM_ListViewIconSize:
        return Measure::icon;
    case PM_LineEditIconSize:
        return Measure::fieldIcon;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_MenuButtonIndicator:
    case PM_MenuDesktopFrameWidth:
    case PM_DefaultFrameWidth:
        return metric == PM_DefaultFrameWidth ? 1 : 0;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return Measure::checkBox;
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return 10;
    case PM_SliderThickness:
    case PM_SliderControlThickness:
    case PM_SliderLength:
        return Measure::thumb;
    case PM_ScrollBarExtent:
        return Measure::scrollBar + 2 * scrollBarInset;
    case PM_ScrollView_ScrollBarOverlap:
    case PM_ScrollView_ScrollBarSpacing:
        return 0;
    case PM_SplitterWidth:
        return 1;
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return menuInset - 1;
    case PM_ToolTipLabelFrameWidth:
        return 6;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int FerrowStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* returned) const
{
    switch (hint) {
    case SH_Slider_AbsoluteSetButtons:
        return Qt::LeftButton;
    case SH_Slider_PageSetButtons:
        return 0;
    case SH_ScrollBar_LeftClickAbsolutePosition:
        return false;
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_UnderlineShortcut:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return false;
    case SH_ComboBox_Popup:
        return true;
    case SH_ComboBox_PopupFrameStyle:
        return QFrame::NoFrame;
    case SH_Widget_Animation_Duration:
        return Theme::current().duration(Motion::popIn);
    case SH_ToolTipLabel_Opacity:
        return 255;
    case SH_Menu_Scrollable:
    case SH_Menu_MouseTracking:
    case SH_MenuBar_MouseTracking:
        return true;
    case SH_SpinBox_AnimateButton:
    case SH_ComboBox_AllowWheelScrolling: // A pane that is scrolled would choose in passing.
        return false;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }
}

void FerrowStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget) ||
        qobject_cast<QLineEdit*>(widget) || qobject_cast<QSlider*>(widget) || qobject_cast<QScrollBar*>(widget))
        widget->setAttribute(Qt::WA_Hover);
    if (auto* button = qobject_cast<QPushButton*>(widget)) {
        // Enter presses the focused button everywhere, not only in dialogs.
        button->setAutoDefault(true);
    }
    if (auto* box = qobject_cast<QComboBox*>(widget)) {
        box->setFocusPolicy(Qt::StrongFocus); // Not by the wheel.
        // On this platform Qt calls the box by its current text; the list tells what it is about.
        if (box->view()->accessibleName().isEmpty())
            box->view()->setAccessibleName(box->accessibleName());
    }
    if (widget->inherits(comboPopup)) {
        // Its list would cover the edge.
        widget->setContentsMargins(menuInset, 0, menuInset, 0);
    }
    if ((qobject_cast<QMenu*>(widget) || widget->inherits(comboPopup)) && desktopComposes())
        widget->setAttribute(Qt::WA_TranslucentBackground);
}

void FerrowStyle::unpolish(QWidget* widget)
{
    if (qobject_cast<QMenu*>(widget) || widget->inherits(comboPopup))
        widget->setAttribute(Qt::WA_TranslucentBackground, false);
    QProxyStyle::unpolish(widget);
}

} // namespace ferrow
