// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

class QAbstractButton;
class QApplication;

namespace ferrow {

enum class ButtonRole {
    standard,    ///< Filled gray.
    raised,      ///< Filled like a card: on rows that are gray or tinted themselves.
    main,        ///< Ink: the one button that a view leads to.
    flat,        ///< No fill at rest: icon buttons, toolbar.
    destructive, ///< Filled gray, its text in the color of errors.
    link         ///< Text in the accent color, no fill: "Use Batch".
};

/// Works on QPushButton and QToolButton; a button without a role is `standard`, a QToolButton `flat`.
void setButtonRole(QAbstractButton* button, ButtonRole role);
[[nodiscard]] ButtonRole buttonRole(const QWidget* button);

/// 28 instead of 32 high, for buttons in rows and beside chips.
void setSmallControl(QWidget* control, bool isSmall = true);

/// Shows a field's error edge. The text of the error is the caller's: FormRow::setMessage.
void setErrorEdge(QWidget* field, bool hasError);

/// Shows the accent edge that an opener has while its popover is open. Popover does this by itself.
void setOpenEdge(QWidget* opener, bool isOpen);

/// Metrics, palette and drawing of Qt's own widgets in Ferrow's look; Fusion does the rest.
class FerrowStyle : public QProxyStyle {
    Q_OBJECT

public:
    /// Gives the application style, palette, font, focus ring and accessible interfaces. Once, before the first widget.
    static void install(QApplication& application);

    FerrowStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
                         const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override;
    QPalette standardPalette() const override;
    void polish(QWidget* widget) override;
    void unpolish(QWidget* widget) override;
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;
};

} // namespace ferrow
