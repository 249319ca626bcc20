// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/ScopeBlock.h"

#include "Session/WindowTexts.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/MessageLine.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int batchSegment = 0;
constexpr int photoSegment = 1;

/// Pixels of a file name that still tell something.
constexpr int shortestName = 40;
/// Of the line below the segments, with or without its button.
constexpr int hintHeight = 28;

/// What the active recipe belongs to: without a selected photo it is the batch's, whatever the scope.
bool editsPhoto(const PhotoSession& session)
{
    return session.recipeScope() == RecipeScope::selected && session.selectedPhoto();
}

} // namespace

ScopeBlock::ScopeBlock(const InspectorContext& context, QWidget* parent) : QWidget(parent), context_(context)
{
    scope_ = new SegmentedControl(QStringLiteral("Changes apply to"));
    scope_->setObjectName(QStringLiteral("scopeControl"));
    for (const RecipeScope scope : allCases<RecipeScope>())
        scope_->addSegment(rawValue(scope));
    connect(scope_, &SegmentedControl::chosen, this,
            [this](int index) { context_.session.setRecipeScope(allCases<RecipeScope>()[std::size_t(index)]); });

    mark_ = new IconLabel(IconName::ownFraming, Measure::fieldIcon, &ThemeColors::accent);
    hint_ = new ElidedLabel(QString(), Qt::ElideRight);
    hint_->setObjectName(QStringLiteral("scopeHint"));
    setTextRole(hint_, TextRole::small, &ThemeColors::text2);
    useBatch_ = new QPushButton(QStringLiteral("Use Batch"));
    useBatch_->setObjectName(QStringLiteral("useBatchButton"));
    useBatch_->setToolTip(QStringLiteral("Frame this photo like the batch again"));
    setButtonRole(useBatch_, ButtonRole::link);
    connect(useBatch_, &QPushButton::clicked, this, [this] {
        const std::optional<FileUrl> photoID = context_.session.selectedPhotoID();
        scope_->setFocus(Qt::OtherFocusReason); // This button is about to go.
        if (photoID)
            context_.history.useBatch(*photoID);
    });

    hint_->setMinimumHeight(Theme::current().scaled(hintHeight));
    auto* line = new QHBoxLayout;
    line->setSpacing(Space::group);
    line->addWidget(mark_);
    line->addWidget(hint_, 1);
    line->addWidget(useBatch_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Space::inspector, Space::row, Space::inspector, Space::group);
    column->setSpacing(Space::rowGap);
    column->addWidget(scope_);
    column->addLayout(line);
    column->addWidget(makeUnused());
}

QWidget* ScopeBlock::makeUnused()
{
    unused_ = new MessageLine(Severity::info, QString());
    unused_->setObjectName(QStringLiteral("unusedFramings"));
    unused_->setRole(TextRole::small);
    QPushButton* use = unused_->setButton(QStringLiteral("Use Own"));
    use->setObjectName(QStringLiteral("useOwnButton"));
    use->setToolTip(QStringLiteral("Frame these photos by themselves again"));
    setButtonRole(use, ButtonRole::link);
    connect(use, &QPushButton::clicked, this, [this] {
        scope_->setFocus(Qt::OtherFocusReason); // This button is about to go.
        context_.session.useOwnFramings();
    });
    return unused_;
}

void ScopeBlock::setLocked(bool locked)
{
    isLocked_ = locked;
    refresh();
}

void ScopeBlock::refresh()
{
    const PhotoSession& session = context_.session;
    const bool hasOwn = editsPhoto(session) && session.hasOwnRecipe(*session.selectedPhotoID());
    scope_->setEnabled(!isLocked_);
    scope_->setSegmentEnabled(photoSegment, session.selectedPhoto() != nullptr);
    scope_->setCurrentIndex(editsPhoto(session) ? photoSegment : batchSegment);
    mark_->setVisible(hasOwn && !isLocked_);
    useBatch_->setVisible(hasOwn && !isLocked_);
    const std::size_t unused = session.unusedOwnFramings();
    unused_->setMessage(Severity::info, unused > 0 ? WindowTexts::ownFramingUnused(unused) : QString());
    unused_->setVisible(unused > 0 && !isLocked_);
    showHint();
}

void ScopeBlock::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showHint();
}

void ScopeBlock::showHint()
{
    const QString full =
        isLocked_ ? QStringLiteral("Locked until the export has finished.") : WindowTexts::scopeHint(context_.session);
    layout()->activate();
    const int tooWide = hint_->fontMetrics().horizontalAdvance(full) - hint_->width();
    const ImportedPhoto* photo = context_.session.selectedPhoto();
    QString shown = full;
    if (photo && tooWide > 0 && !isLocked_) {
        // What is said of the photo matters more than its whole name.
        const QString name = photo->filename();
        const int room = hint_->fontMetrics().horizontalAdvance(name) - tooWide;
        shown.replace(name, hint_->fontMetrics().elidedText(name, Qt::ElideMiddle, std::max(room, shortestName)));
    }
    hint_->setText(shown);
    hint_->setToolTip(shown == full ? QString() : full);
    hint_->setAccessibleName(full);
}

} // namespace ferrow
