// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>

namespace ferrow {

/// A check box whose box alone stands for it (list headers): `name` is for assistive technology. With a text it is a
/// QCheckBox like any other; the style draws both, three states too.
class BareCheckBox : public QCheckBox {
    Q_OBJECT

public:
    explicit BareCheckBox(const QString& name, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    bool hitButton(const QPoint& point) const override;
};

} // namespace ferrow
