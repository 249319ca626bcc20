// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Icons.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace ferrow {

class IconLabel;

enum class Severity { plain, info, success, warning, error };

[[nodiscard]] ColorRole severityColor(Severity severity);
/// No icon for `plain`; never color alone for the rest.
[[nodiscard]] IconName severityIcon(Severity severity);

/// Icon and text, with an optional second line and button. Wraps, never elides.
class MessageLine : public QWidget {
    Q_OBJECT

public:
    enum class Ground { none, tinted };

    explicit MessageLine(Severity severity, const QString& text, Ground ground = Ground::none,
                         QWidget* parent = nullptr);

    void setMessage(Severity severity, const QString& text, const QString& detail = QString());
    /// The text's role; `small` under fields, `body` in checks. `strong` on a tinted ground.
    void setRole(TextRole role);
    /// A small button at the end; made by the first call.
    QPushButton* setButton(const QString& text);
    [[nodiscard]] QString text() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void renew();

    Severity severity_;
    Ground ground_;
    TextRole role_ = TextRole::body;
    IconLabel* icon_ = nullptr;
    QLabel* text_ = nullptr;
    QLabel* detail_ = nullptr;
    QPushButton* button_ = nullptr;
};

} // namespace ferrow
