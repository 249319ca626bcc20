// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/EmptyPreview.h"

#include "Features/PreviewPane/StarterChoice.h"
#include "Session/PhotoSession.h"
#include "Session/WindowTexts.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <initializer_list>

namespace ferrow {

namespace {

constexpr int sentenceWidth = 320;
constexpr int dropAreaWidth = 584;
constexpr int dropAreaFree = 42; ///< Above and below what it says; less in a low window.
constexpr double dropAreaEdge = 1.5;
/// Of the window: in a lower one the starters would crowd what is to be done first.
constexpr int leastHeightWithStarters = 820;

/// A framed landscape in lines.
class FrameDrawing : public QWidget {
public:
    explicit FrameDrawing(QWidget* parent) : QWidget(parent)
    {
        setFixedSize(168, 128);
        connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(themeColor(&ThemeColors::border), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(themeColor(&ThemeColors::surface));
        painter.drawRoundedRect(QRectF(3, 4, 162, 120), 3, 3);
        painter.setBrush(themeColor(&ThemeColors::sidebar));
        painter.drawRoundedRect(QRectF(27, 24, 114, 76), 1.5, 1.5);
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(QPointF(112, 47), 7, 7);
        painter.drawPolyline(QPolygonF{{27, 88}, {60, 60}, {104, 100}});
        painter.drawPolyline(QPolygonF{{91, 88}, {108, 74}, {141, 99}});
        painter.drawLine(QPointF(72, 112), QPointF(96, 112));
    }
};

QLabel* centered(QLabel* label)
{
    label->setAlignment(Qt::AlignHCenter);
    label->setWordWrap(true);
    return label;
}

QHBoxLayout* centeredRow(std::initializer_list<QWidget*> widgets)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(Space::group);
    row->addStretch();
    for (QWidget* widget : widgets)
        row->addWidget(widget);
    row->addStretch();
    return row;
}

} // namespace

/// Drops are taken anywhere in the window; this is where they are looked for.
class DropArea : public QWidget {
public:
    explicit DropArea(QWidget* parent) : QWidget(parent)
    {
        setMaximumWidth(Theme::current().scaled(dropAreaWidth));
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);
        connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
    }

    void setDropTarget(bool isDropTarget)
    {
        isDropTarget_ = isDropTarget;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double width = isDropTarget_ ? Measure::dropFrame : dropAreaEdge;
        QPen pen(themeColor(isDropTarget_ ? &ThemeColors::accent : &ThemeColors::border), width);
        if (!isDropTarget_)
            pen.setDashPattern({3, 3});
        painter.setPen(pen);
        const double half = width / 2;
        painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), Radius::sheet, Radius::sheet);
    }

private:
    bool isDropTarget_ = false;
};

EmptyPreview::EmptyPreview(PhotoSession& session, EditHistory& history, QWidget* parent)
    : QWidget(parent), session_(session)
{
    setGround(this, &ThemeColors::sidebar);
    dropArea_ = new DropArea(this);
    buildDropArea();
    starters_ = makeStarters(history);
    constexpr int margin = Space::preview - StarterChoice::inset;
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(margin, Space::preview, margin, Space::preview);
    column->setSpacing(0);
    column->addStretch();
    auto* dropRow = new QHBoxLayout;
    dropRow->setContentsMargins(StarterChoice::inset, 0, StarterChoice::inset, 0);
    dropRow->addWidget(dropArea_);
    column->addLayout(dropRow);
    auto* startersRow = new QHBoxLayout;
    startersRow->addWidget(starters_);
    column->addLayout(startersRow);
    column->addStretch();

    connect(addPhotos_, &QPushButton::clicked, this, &EmptyPreview::addPhotosRequested);
    connect(addFolder_, &QPushButton::clicked, this, &EmptyPreview::addFolderRequested);
    connect(stop_, &QPushButton::clicked, &session_, &PhotoSession::cancelImport);
    connect(&session_, &PhotoSession::isImportingChanged, this, &EmptyPreview::followImport);
    connect(&session_, &PhotoSession::importProgressed, this, &EmptyPreview::showProgress);
    followImport();
}

void EmptyPreview::buildDropArea()
{
    auto* column = new QVBoxLayout(dropArea_);
    column->setContentsMargins(Space::row, 0, Space::row, 0);
    column->setSpacing(0);
    const auto addFree = [column] {
        column->addSpacerItem(new QSpacerItem(0, dropAreaFree, QSizePolicy::Minimum, QSizePolicy::Maximum));
    };
    addFree();
    column->addWidget(new FrameDrawing(dropArea_), 0, Qt::AlignHCenter);
    column->addSpacing(Space::sheet);
    title_ = centered(makeLabel({}, TextRole::empty, &ThemeColors::text, dropArea_));
    title_->setObjectName(QStringLiteral("emptyTitle"));
    column->addWidget(title_);
    column->addSpacing(Space::group);
    sentence_ = centered(makeLabel({}, TextRole::body, &ThemeColors::text2, dropArea_));
    sentence_->setObjectName(QStringLiteral("emptySentence"));
    sentence_->setFixedWidth(Theme::current().scaled(sentenceWidth));
    // Aligned in the column itself it would be given the height of one line.
    column->addLayout(centeredRow({sentence_}));
    column->addSpacing(Space::sheet);

    addPhotos_ = new QPushButton(icon(IconName::add, &ThemeColors::onInk), QStringLiteral("Add Photos…"), dropArea_);
    addPhotos_->setObjectName(QStringLiteral("emptyAddPhotosButton"));
    setButtonRole(addPhotos_, ButtonRole::main);
    addFolder_ = new QPushButton(icon(IconName::folder), QStringLiteral("Add Folder…"), dropArea_);
    addFolder_->setObjectName(QStringLiteral("emptyAddFolderButton"));
    stop_ = new QPushButton(QStringLiteral("Stop Adding Photos"), dropArea_);
    stop_->setObjectName(QStringLiteral("emptyStopButton"));
    column->addLayout(centeredRow({addPhotos_, addFolder_, stop_}));
    addFree();
}

QWidget* EmptyPreview::makeStarters(EditHistory& history)
{
    auto* block = new QWidget(this);
    block->setObjectName(QStringLiteral("starterFrames"));
    block->setMaximumWidth(Theme::current().scaled(dropAreaWidth) + 2 * StarterChoice::inset);
    auto* column = new QVBoxLayout(block);
    column->setContentsMargins(0, Space::emptyBlocks, 0, 0);
    column->setSpacing(Space::group);
    auto* heading = new QHBoxLayout;
    heading->setContentsMargins(StarterChoice::inset, 0, StarterChoice::inset, 0);
    heading->setSpacing(Space::row);
    heading->addWidget(makeLabel(QStringLiteral("Start with a frame"), TextRole::section));
    auto* hint = new ElidedLabel(QStringLiteral("Change anything later, or save your own under Presets."));
    setTextRole(hint, TextRole::small, &ThemeColors::text2);
    heading->addWidget(hint, 1);
    column->addLayout(heading);
    column->addWidget(new StarterChoice(session_, history, block));
    return block;
}

void EmptyPreview::setDropTarget(bool isDropTarget)
{
    dropArea_->setDropTarget(isDropTarget);
}

void EmptyPreview::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    starters_->setVisible(window()->height() >= Theme::current().scaled(leastHeightWithStarters));
}

void EmptyPreview::followImport()
{
    const bool isImporting = session_.isImporting();
    title_->setText(isImporting ? QStringLiteral("Adding photos…") : QStringLiteral("Drop photos or a folder here"));
    if (isImporting)
        showProgress(0, 0);
    else
        sentence_->setText(QStringLiteral("They stay where they are. Ferrow reads them and writes framed copies."));
    // What has the focus hands it on before it goes.
    QPushButton* next = isImporting ? stop_ : addPhotos_;
    const QWidget* focused = window()->focusWidget();
    const bool handsOn = focused && focused != this && isAncestorOf(focused);
    next->setVisible(true);
    if (handsOn)
        next->setFocus(Qt::OtherFocusReason);
    addPhotos_->setVisible(!isImporting);
    addFolder_->setVisible(!isImporting);
    stop_->setVisible(isImporting);
}

void EmptyPreview::showProgress(std::size_t read, std::size_t total)
{
    const QString progress =
        total == 0 ? QStringLiteral("Looking for photos.")
                   : QStringLiteral("%1 read.").arg(WindowTexts::outOf(std::int64_t(read), std::int64_t(total)));
    sentence_->setText(progress + QStringLiteral("\nThey appear together when all have been read."));
}

void EmptyPreview::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget())
        addPhotos_->setFocus(Qt::OtherFocusReason);
}

} // namespace ferrow
