// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/EmptyPreview.h"

#include "Session/PhotoSession.h"
#include "Session/WindowTexts.h"
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

EmptyPreview::EmptyPreview(PhotoSession& session, QWidget* parent) : QWidget(parent), session_(session)
{
    setGround(this, &ThemeColors::sidebar);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Space::preview, Space::preview, Space::preview, Space::preview);
    column->setSpacing(0);
    column->addStretch();
    column->addWidget(new FrameDrawing(this), 0, Qt::AlignHCenter);
    column->addSpacing(Space::preview);
    title_ = centered(makeLabel({}, TextRole::empty, &ThemeColors::text, this));
    title_->setObjectName(QStringLiteral("emptyTitle"));
    column->addWidget(title_);
    column->addSpacing(Space::group);
    sentence_ = centered(makeLabel({}, TextRole::body, &ThemeColors::text2, this));
    sentence_->setObjectName(QStringLiteral("emptySentence"));
    sentence_->setFixedWidth(Theme::current().scaled(sentenceWidth));
    // Aligned in the column itself it would be given the height of one line.
    column->addLayout(centeredRow({sentence_}));
    column->addSpacing(Space::sheet);

    addPhotos_ = new QPushButton(icon(IconName::add, &ThemeColors::onInk), QStringLiteral("Add Photos…"), this);
    addPhotos_->setObjectName(QStringLiteral("emptyAddPhotosButton"));
    setButtonRole(addPhotos_, ButtonRole::main);
    addFolder_ = new QPushButton(icon(IconName::folder), QStringLiteral("Add Folder…"), this);
    addFolder_->setObjectName(QStringLiteral("emptyAddFolderButton"));
    stop_ = new QPushButton(QStringLiteral("Stop Adding Photos"), this);
    stop_->setObjectName(QStringLiteral("emptyStopButton"));
    column->addLayout(centeredRow({addPhotos_, addFolder_, stop_}));
    column->addStretch();

    connect(addPhotos_, &QPushButton::clicked, this, &EmptyPreview::addPhotosRequested);
    connect(addFolder_, &QPushButton::clicked, this, &EmptyPreview::addFolderRequested);
    connect(stop_, &QPushButton::clicked, &session_, &PhotoSession::cancelImport);
    connect(&session_, &PhotoSession::isImportingChanged, this, &EmptyPreview::followImport);
    connect(&session_, &PhotoSession::importProgressed, this, &EmptyPreview::showProgress);
    followImport();
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
