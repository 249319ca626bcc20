// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FontChoice.h"
#include "Widgets/Popover.h"

class QLineEdit;
class QModelIndex;

namespace ferrow {

class FontList;
class FontListModel;

/// All fonts with a search field, which has the focus: Up and Down try one after the other, Enter and a press on a row
/// keep, Esc gives up. A press outside keeps what is being tried.
class FontPopover : public Popover {
    Q_OBJECT

public:
    FontPopover(QWidget* opener, const FontChoice& chosen);

    void present();

signals:
    /// It is to be seen, and is not decided.
    void tried(const ferrow::FontChoice& choice);
    void kept();
    void givenUp();

protected:
    bool handleEnter() override;
    void aboutToClose() override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void search(const QString& text);
    void moveBy(int rows);
    void choose(int row);
    void tryRow(int row);

    FontChoice chosen_;
    FontListModel* model_ = nullptr;
    FontList* list_ = nullptr;
    QLineEdit* search_ = nullptr;
    bool isGivenUp_ = false;
};

} // namespace ferrow
