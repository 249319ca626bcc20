// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Shared/Widgets/ChoiceStrip.h"
#include "Shared/Widgets/Icons.h"

#include <QCheckBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QWidget>

class QStyleOption;
class QVariantAnimation;

namespace ferrow {

/// A line of one logical pixel, like all that part panes, rows of menus and the splitter's columns.
class HairLine : public QWidget {
    Q_OBJECT

public:
    explicit HairLine(Qt::Orientation orientation = Qt::Horizontal, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::Orientation orientation_;
};

/// An icon that only shows. Assistive technology passes it over, so its meaning has to stand in words beside it.
class IconLabel : public QWidget {
    Q_OBJECT

public:
    IconLabel(IconName name, int size, ColorRole color = &ThemeColors::text, QWidget* parent = nullptr);
    void setIcon(IconName name, ColorRole color);
    void setIconSize(int size);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    IconName name_;
    int size_;
    ColorRole color_;
};

/// The backdrops as dots of 14 in targets of 24.
class BackdropDots : public ChoiceStrip {
    Q_OBJECT

public:
    /// `names` in the order of Theme::backdrops.
    BackdropDots(const QString& name, const QStringList& names, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    QRect itemRect(int index) const override;
    void paintEvent(QPaintEvent* event) override;
};

/// A check box whose box alone stands for it (list headers): `name` is for assistive technology. With a text it is a
/// QCheckBox like any other; the style draws both, three states too.
class Checkbox16 : public QCheckBox {
    Q_OBJECT

public:
    explicit Checkbox16(const QString& name, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    bool hitButton(const QPoint& point) const override;
};

/// A button that opens a menu below itself: icon, text, chevron. Enter, Space and Down open it.
class MenuButton : public QPushButton {
    Q_OBJECT

public:
    MenuButton(IconName iconName, const QString& text, QWidget* parent = nullptr);
    /// Without icon.
    explicit MenuButton(const QString& text, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A bar of 4. With minimum equal to maximum it sweeps, or, where motion is reduced, stands still: say "Working" beside
/// it then.
class ProgressLine : public QProgressBar {
    Q_OBJECT

public:
    /// `name` is for assistive technology: "Export progress".
    explicit ProgressLine(const QString& name, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void updateSweep();

    QVariantAnimation* sweep_ = nullptr;
};

/// Lays a bar of 6 over the right edge of what scrolls, so that nothing shifts when it comes.
void overlayScrollBar(QAbstractScrollArea* area);

/// Scrolls upright only, with its bar over the right inset of the page. Follows the focus of the keyboard.
class ScrollPane : public QScrollArea {
    Q_OBJECT

public:
    explicit ScrollPane(QWidget* parent = nullptr);
    ~ScrollPane() override;
    /// The page is as wide as the pane and as high as it asks to be.
    void setPage(QWidget* page);

protected:
    void wheelEvent(QWheelEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showFocused(QWidget* focused);
};

/// Ground and focus ring of a row of a list.
void paintRow(QPainter& painter, const QRectF& row, const QStyleOption& option, bool isHovered);

enum class ShadowKind { popover, sheet };
/// Paints the shadow of a card with rounded corners; the card itself comes after it. Drawn from a picture that is made
/// once for each scale.
void paintShadow(QPainter& painter, const QRectF& card, ShadowKind kind);

} // namespace ferrow
