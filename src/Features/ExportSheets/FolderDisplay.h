// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <QWidget>

#include <optional>

namespace ferrow {

/// Shows a chosen folder as a field does, elided in the middle, with the whole path as its tooltip. A press asks for
/// another one; keys have the button beside it for that.
class FolderDisplay : public QWidget {
    Q_OBJECT

public:
    explicit FolderDisplay(QWidget* parent = nullptr);

    void setFolder(const std::optional<FileUrl>& folder);

    QSize sizeHint() const override;

signals:
    void pressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QString text_;
    bool isChosen_ = false;
};

} // namespace ferrow
