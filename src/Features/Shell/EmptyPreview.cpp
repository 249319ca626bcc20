// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Shell/EmptyPreview.h"

#include "Shared/Widgets/FerrowStyle.h"
#include "Shared/Widgets/Icons.h"
#include "Shared/Widgets/Theme.h"

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

QLabel* centred(QLabel* label)
{
    label->setAlignment(Qt::AlignHCenter);
    label->setWordWrap(true);
    return label;
}

QHBoxLayout* centredRow(std::initializer_list<QWidget*> widgets)
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

EmptyPreview::EmptyPreview(QWidget* parent) : QWidget(parent)
{
    setGround(this, &ThemeColors::sidebar);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Space::preview, Space::preview, Space::preview, Space::preview);
    column->setSpacing(0);
    column->addStretch();
    column->addWidget(new FrameDrawing(this), 0, Qt::AlignHCenter);
    column->addSpacing(Space::preview);
    column->addWidget(
        centred(makeLabel(QStringLiteral("Drop photos or a folder here"), TextRole::empty, &ThemeColors::text, this)));
    column->addSpacing(Space::group);
    QLabel* sentence =
        centred(makeLabel(QStringLiteral("They stay where they are. Ferrow reads them and writes framed copies."),
                          TextRole::body, &ThemeColors::text2, this));
    sentence->setFixedWidth(Theme::current().scaled(sentenceWidth));
    // Aligned in the column itself it would be given the height of one line.
    column->addLayout(centredRow({sentence}));
    column->addSpacing(Space::sheet);

    addPhotos_ = new QPushButton(icon(IconName::add, &ThemeColors::onInk), QStringLiteral("Add Photos…"), this);
    addPhotos_->setObjectName(QStringLiteral("emptyAddPhotosButton"));
    setButtonRole(addPhotos_, ButtonRole::main);
    auto* addFolder = new QPushButton(icon(IconName::folder), QStringLiteral("Add Folder…"), this);
    addFolder->setObjectName(QStringLiteral("emptyAddFolderButton"));
    column->addLayout(centredRow({addPhotos_, addFolder}));
    column->addStretch();

    connect(addPhotos_, &QPushButton::clicked, this, &EmptyPreview::addPhotosRequested);
    connect(addFolder, &QPushButton::clicked, this, &EmptyPreview::addFolderRequested);
}

void EmptyPreview::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget())
        addPhotos_->setFocus(Qt::OtherFocusReason);
}

} // namespace ferrow
