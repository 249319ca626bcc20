// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/MessageLine.h"

#include <QString>
#include <QWidget>

#include <optional>

class QLabel;
class QPushButton;
class QVariantAnimation;

namespace ferrow {

/// A raised ground over the picture, with its shadow: text never stands on the backdrop itself. The shadow lies inside
/// the widget, `shadowRoom` wide.
class FloatingCard : public QWidget {
    Q_OBJECT

public:
    static constexpr int shadowRoom = 24; ///< Logical pixels on each side.

    /// `cardWidth` in logical pixels at the usual font; 0 for whatever the content asks for.
    explicit FloatingCard(QWidget* parent, int cardWidth = 0);

    /// Text is wrapped within the width, which shrinks with a narrow parent.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int cardWidth_;
};

/// Tells in the middle of the pane why there is no picture, with the ways out.
class ErrorCard : public FloatingCard {
    Q_OBJECT

public:
    enum class WaysOut { none, all };

    explicit ErrorCard(QWidget* parent);
    void show(const QString& title, const QString& message, WaysOut waysOut);
    void setRemoveEnabled(bool enabled);

signals:
    void retryRequested();
    void showInFolderRequested();
    void removeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* title_ = nullptr;
    QLabel* message_ = nullptr;
    QWidget* buttons_ = nullptr;
    QPushButton* remove_ = nullptr;
};

/// One line at the foot of the pane, with a button that takes it away.
class NoticeCard : public FloatingCard {
    Q_OBJECT

public:
    explicit NoticeCard(QWidget* parent);
    void show(Severity severity, const QString& text);

signals:
    /// By the user.
    void dismissed();

private:
    MessageLine* line_ = nullptr;
};

/// A thin line at the top edge that says that something is on its way.
class LoadingLine : public QWidget {
    Q_OBJECT

public:
    explicit LoadingLine(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QVariantAnimation* sweep_ = nullptr;
};

/// What a drag over the window shows while its files would be taken: an accent outline round the whole window, which
/// takes drops everywhere, and a card at the foot of `area`. The mouse goes through it.
class DropOverlay : public QWidget {
    Q_OBJECT

public:
    explicit DropOverlay(QWidget* area);
    /// 0: the number is not known.
    void show(int fileCount);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void place();

    QWidget* area_;
    FloatingCard* card_ = nullptr;
    QLabel* text_ = nullptr;
};

} // namespace ferrow
