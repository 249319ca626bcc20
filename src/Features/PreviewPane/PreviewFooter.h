// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/Preferences.h"

#include <QColor>
#include <QString>
#include <QWidget>

#include <vector>

class QLabel;

namespace ferrow {

class BackdropDots;
class ElidedLabel;
class StepButtons;

[[nodiscard]] QColor backdropColor(PreviewBackdrop backdrop);

/// Widths of what stands in a preview's footer, in logical pixels, and what of it there is room for.
struct FooterFit {
    bool showsBackdropLabel = true;
    int detail = -1; ///< Which of the details, the longest first; -1 for none.
    int nameWidth = 0;

    bool operator==(const FooterFit&) const = default;
};

/// `room` is what remains beside pager and dots. Details grow shorter first, then the word at the dots goes, then the
/// name is elided, and what is left of the details goes last. `gap` stands between two parts.
[[nodiscard]] FooterFit fitFooter(int room, int name, const std::vector<int>& details, int backdropLabel, int gap);

/// Name and sizes of the photo in view, and the choice of its backdrop.
class PreviewFooter : public QWidget {
    Q_OBJECT

public:
    explicit PreviewFooter(QWidget* parent = nullptr);

    /// `details`: the same in ever fewer words, the longest first.
    void setPhoto(const QString& name, const std::vector<QString>& details);
    void setBackdrop(PreviewBackdrop backdrop);
    /// Without a photo, which an `index` below 0 says, the text is empty and the arrows are disabled.
    void setPosition(int index, int count);
    void setPagerShown(bool isShown);
    /// A control that stands before the backdrops while it is shown.
    void setTool(QWidget* tool);
    void setToolShown(bool isShown);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void backdropChosen(ferrow::PreviewBackdrop backdrop);
    void stepRequested(int places);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    void buildPager();
    void buildDots();
    void arrange();

    StepButtons* pager_ = nullptr;
    ElidedLabel* name_ = nullptr;
    QLabel* detail_ = nullptr;
    QLabel* backdropLabel_ = nullptr;
    BackdropDots* dots_ = nullptr;
    QWidget* tool_ = nullptr; ///< None before setTool().
    std::vector<QString> details_;
};

} // namespace ferrow
