// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ContactSheet/ContactSheet.h"

#include "Features/ContactSheet/SheetGrid.h"
#include "Features/PreviewPane/PreviewFooter.h"
#include "Platform/Base/Localization.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/HairLine.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/MenuButton.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/Theme.h"
#include "Widgets/ValueSlider.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>
#include <map>

namespace ferrow {

namespace {

constexpr int barHeight = 48;
constexpr int sliderWidth = 112;
/// What a step of the slider by keys or wheel adds, in logical pixels.
constexpr int sliderStep = 20;

} // namespace

ContactSheet::ContactSheet(PhotoListModel& model, PhotoSession& session, PhotoWarnings& warnings, EditHistory& history,
                           ExportSession& exportSession, Preferences& preferences, QWidget* parent)
    : QWidget(parent), model_(model), session_(session), warnings_(warnings), history_(history),
      exportSession_(exportSession), preferences_(preferences)
{
    setGround(this, &ThemeColors::window);
    pictures_ = new CellPictures(session, CellPictures::Operations::system(), this);
    grid_ = new SheetGrid(model, *pictures_, session, history, exportSession);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildBar());
    column->addWidget(new HairLine);
    column->addWidget(grid_, 1);
    buildNothingFound();
    column->addWidget(nothingFound_, 1);
    buildSizes();
    setFocusProxy(grid_);

    connect(pictures_, &CellPictures::unreadable, this,
            [this](const FileUrl& photoID) { model_.setUnreadable(photoID, true); });
    for (const auto signal : {&PhotoSession::photosChanged, &PhotoSession::excludedPhotoIDsChanged})
        connect(&session_, signal, this, &ContactSheet::followCounts);
    connect(&warnings_, &PhotoWarnings::changed, this, &ContactSheet::followCounts);
    connect(&model_, &PhotoListModel::filterChanged, this, &ContactSheet::followCounts);
    connect(&model_, &PhotoListModel::shownChanged, this, &ContactSheet::followCounts);
    connect(&preferences_, &Preferences::previewBackdropChanged, this, &ContactSheet::followBackdrop);
    connect(&Theme::current(), &Theme::changed, this, &ContactSheet::followBackdrop);
    followCounts();
    followBackdrop();
}

QWidget* ContactSheet::buildBar()
{
    auto* bar = new QWidget;
    bar->setFixedHeight(Theme::current().scaled(barHeight));
    filter_ = new SegmentedControl(QStringLiteral("Photos shown"));
    filter_->setObjectName(QStringLiteral("sheetFilter"));
    filter_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(filter_, &SegmentedControl::chosen, this, [this](int index) {
        PhotoFilter filter = model_.filter();
        filter.kind = static_cast<PhotoFilter::Kind>(index);
        model_.setFilter(filter);
    });
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(Space::sidebar, 0, Space::sidebar, 0);
    leaveOut_ = new MenuButton(IconName::remove, QStringLiteral("Leave Out"));
    leaveOut_->setObjectName(QStringLiteral("leaveOutMenu"));
    leaveOut_->setToolTip(QStringLiteral("Leave out all photos with a warning, or invert what is left out"));
    leaveOutMenu_ = new QMenu(leaveOut_);
    leaveOut_->setMenu(leaveOutMenu_);
    setSmallControl(leaveOut_);
    connect(leaveOutMenu_, &QMenu::aboutToShow, this, &ContactSheet::fillLeaveOutMenu);
    row->addWidget(filter_);
    row->addStretch();
    row->addWidget(leaveOut_);
    return bar;
}

void ContactSheet::fillLeaveOutMenu()
{
    leaveOutMenu_->clear();
    const bool isLocked = exportSession_.isBusy();
    std::map<QString, std::int64_t> counts;
    for (const ImportedPhoto& photo : session_.photos())
        for (const QString& warning : warnings_.of(photo.id()))
            ++counts[warning];
    for (const auto& [warning, count] : counts)
        leaveOutMenu_
            ->addAction(QStringLiteral("Leave Out All With “%1” (%2)").arg(warning, Localization::number(count)), this,
                        [this, warning = warning] { leaveOutAllWith(warning); })
            ->setEnabled(!isLocked);
    if (counts.empty())
        leaveOutMenu_->addAction(QStringLiteral("No Photo Has a Warning"))->setEnabled(false);
    leaveOutMenu_->addSeparator();
    leaveOutMenu_->addAction(QStringLiteral("Invert"), this, [this] { history_.invertIncluded(); })
        ->setEnabled(!isLocked);
}

void ContactSheet::leaveOutAllWith(const QString& warning)
{
    std::vector<FileUrl> photos;
    for (const ImportedPhoto& photo : session_.photos())
        if (warnings_.of(photo.id()).contains(warning))
            photos.push_back(photo.id());
    history_.setIncluded(photos, false);
}

void ContactSheet::buildNothingFound()
{
    nothingFound_ = new QWidget;
    auto* column = new QVBoxLayout(nothingFound_);
    column->setSpacing(Space::row);
    auto* all = new QPushButton(QStringLiteral("Show All Photos"));
    all->setObjectName(QStringLiteral("showAllPhotosButton"));
    connect(all, &QPushButton::clicked, this, [this] {
        model_.setFilter({});
        grid_->setFocus(Qt::OtherFocusReason);
    });
    column->addStretch();
    column->addWidget(makeLabel(QStringLiteral("No photo matches"), TextRole::body, &ThemeColors::text2), 0,
                      Qt::AlignHCenter);
    column->addWidget(all, 0, Qt::AlignHCenter);
    column->addStretch();
    nothingFound_->hide();
}

void ContactSheet::buildSizes()
{
    sizes_ = new QWidget(this);
    sizes_->hide(); // Until somebody has placed it.
    auto* row = new QHBoxLayout(sizes_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Space::group);
    auto* slider = new ValueSlider(sizes_);
    slider->setObjectName(QStringLiteral("cellSizeSlider"));
    slider->setAccessibleName(QStringLiteral("Cell size"));
    slider->setToolTip(QStringLiteral("Size of the cells"));
    slider->setFixedWidth(sliderWidth);
    slider->setValueRange(SheetLayout::leastTile, SheetLayout::greatestTile);
    row->addWidget(new IconLabel(IconName::tilesSmall, Measure::fieldIcon, &ThemeColors::text2));
    row->addWidget(slider);
    row->addWidget(new IconLabel(IconName::tilesLarge, Measure::fieldIcon, &ThemeColors::text2));
    const auto show = [slider](int width) {
        NumberFormat format;
        format.unit = QStringLiteral("px");
        slider->showValue(width, format);
    };
    const auto choose = [this](double width) { grid_->setTileWidth(int(std::lround(width))); };
    connect(slider, &ValueSlider::dragged, this, choose);
    connect(slider, &ValueSlider::asked, this, choose);
    connect(slider, &ValueSlider::steps, this,
            [this](double count) { grid_->setTileWidth(grid_->tileWidth() + int(std::lround(count * sliderStep))); });
    connect(grid_, &SheetGrid::tileWidthChanged, this, show);
    show(grid_->tileWidth());
}

void ContactSheet::followCounts()
{
    const auto all = std::int64_t(session_.photos().size());
    const QStringList names{QStringLiteral("All"), QStringLiteral("Included"), QStringLiteral("With Warnings")};
    const std::int64_t counts[]{all, std::int64_t(session_.includedCount()), std::int64_t(warnings_.count())};
    QStringList texts;
    for (qsizetype i = 0; i < names.size(); ++i)
        texts << QStringLiteral("%1  %2").arg(names[i], Localization::number(counts[i]));
    filter_->setSegments(texts, texts);
    filter_->setCurrentIndex(int(model_.filter().kind));
    const bool isNothingFound = all > 0 && model_.rowCount() == 0;
    nothingFound_->setVisible(isNothingFound);
    grid_->setVisible(!isNothingFound);
}

void ContactSheet::followBackdrop()
{
    grid_->setBackdrop(backdropColor(preferences_.previewBackdrop(Theme::current().appearance() == Appearance::dark)));
}

void ContactSheet::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    warnings_.setWatched(true);
}

void ContactSheet::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    // The list beside the single photo shows the same photos.
    warnings_.setWatched(model_.filter().kind == PhotoFilter::Kind::withWarnings);
}

} // namespace ferrow
