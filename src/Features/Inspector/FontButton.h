// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FontChoice.h"

#include <QPushButton>

namespace ferrow {

/// Shows a font's name in its own face, like the closed list of choices that it opens.
class FontButton : public QPushButton {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls it: "Caption font".
    explicit FontButton(const QString& name, QWidget* parent = nullptr);
    void setChoice(const FontChoice& choice);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString name_;
    FontChoice choice_;
};

} // namespace ferrow
