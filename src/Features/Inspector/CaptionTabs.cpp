// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/CaptionTabs.h"

#include "Features/Inspector/PositionGrid.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Icons.h"
#include "Widgets/SegmentedControl.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>

namespace ferrow {

CaptionTabs::CaptionTabs(QWidget* parent) : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Space::group);
    tabs_ = new SegmentedControl(QStringLiteral("Captions"));
    tabs_->setObjectName(QStringLiteral("captionTabs"));
    // Its texts give way, rather than make the pane wider.
    tabs_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    tabs_->setContextMenuPolicy(Qt::CustomContextMenu);
    tabs_->setMovable(true);
    connect(tabs_, &SegmentedControl::chosen, this, &CaptionTabs::chosen);
    connect(tabs_, &SegmentedControl::moveRequested, this, [this](int from, int to) { emit moveRequested(to - from); });
    connect(tabs_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& point) { openMenu(tabs_->mapToGlobal(point)); });
    row->addWidget(tabs_, 1);

    add_ = makeIconButton(IconName::add, QStringLiteral("Add Caption"));
    add_->setObjectName(QStringLiteral("addCaptionTab"));
    setButtonRole(add_, ButtonRole::standard);
    connect(add_, &QPushButton::clicked, this, &CaptionTabs::addRequested);
    row->addWidget(add_);
}

void CaptionTabs::setCaptions(const std::vector<Caption>& captions, int chosen)
{
    QStringList texts;
    QStringList names;
    for (int i = 0; i < int(captions.size()); ++i) {
        const CaptionPosition position = captions[std::size_t(i)].position;
        const bool isShort = captions.size() > 2 && i != chosen;
        texts.append(isShort ? QString::number(i + 1)
                             : QStringLiteral("%1 %2").arg(i + 1).arg(PositionGrid::corner(position)));
        names.append(QStringLiteral("Caption %1, %2").arg(QString::number(i + 1), PositionGrid::inWords(position)));
    }
    tabs_->setSegments(texts, names);
    tabs_->setCurrentIndex(chosen);
    const bool mayAdd = captions.size() < RenderRecipe::mostCaptions;
    add_->setEnabled(mayAdd);
    add_->setToolTip(mayAdd ? QStringLiteral("Add Caption")
                            : QStringLiteral("A photo has at most %1 captions").arg(RenderRecipe::mostCaptions));
}

void CaptionTabs::openMenu(const QPoint& globalPosition)
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const int chosen = tabs_->currentIndex();
    const auto add = [&](const QString& text, const QKeySequence& keys, bool enabled, const auto& verb) {
        QAction* action = menu->addAction(text, this, verb);
        action->setEnabled(enabled);
        action->setShortcut(keys);
    };
    add(QStringLiteral("Move Left"), Qt::CTRL | Qt::SHIFT | Qt::Key_PageUp, chosen > 0,
        [this] { emit moveRequested(-1); });
    add(QStringLiteral("Move Right"), Qt::CTRL | Qt::SHIFT | Qt::Key_PageDown, chosen + 1 < tabs_->count(),
        [this] { emit moveRequested(1); });
    menu->addSeparator();
    add(QStringLiteral("Remove Caption %1").arg(chosen + 1), {}, true, [this] { emit removeRequested(); });
    menu->popup(globalPosition);
}

} // namespace ferrow
