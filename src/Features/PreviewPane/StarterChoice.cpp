// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/StarterChoice.h"

#include "Models/StarterFrames.h"
#include "Session/EditHistory.h"
#include "Session/PhotoSession.h"
#include "Session/StarterPicture.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QStyleOptionButton>

#include <algorithm>

namespace ferrow {

namespace {

constexpr QSize largeTile{168, 136};
constexpr QSize smallTile{120, 98};
constexpr int largeWidth = 592; ///< Of the strip: from it on tiles are large.
constexpr int pictureInset = 10;
constexpr int textIndent = Measure::checkBox + Space::group;

QSize tileSize(int stripWidth)
{
    return stripWidth < largeWidth ? smallTile : largeTile;
}

QStringList names()
{
    QStringList names;
    for (const StarterFrame& frame : starterFrames())
        names << frame.name;
    return names;
}

/// Of the description, which goes on in a second line where it must.
int descriptionHeight(int tileWidth)
{
    const QFontMetrics metrics(Theme::current().font(TextRole::small));
    int height = 0;
    for (const StarterFrame& frame : starterFrames())
        height = std::max(
            height,
            metrics.boundingRect(QRect(0, 0, tileWidth - textIndent, 1'000), Qt::TextWordWrap, frame.description)
                .height());
    return height;
}

} // namespace

StarterChoice::StarterChoice(PhotoSession& session, EditHistory& history, QWidget* parent)
    : ChoiceStrip(QStringLiteral("Starter frames"), names(), parent), session_(session), history_(history)
{
    setObjectName(QStringLiteral("starterChoice"));
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(this, &ChoiceStrip::indexChosen, this, &StarterChoice::choose);
    for (const auto signal :
         {&PhotoSession::batchRecipeChanged, &PhotoSession::photoRecipesChanged, &PhotoSession::recipeScopeChanged})
        connect(&session_, signal, this, &StarterChoice::followRecipe);
    connect(&Theme::current(), &Theme::changed, this, [this] {
        updateGeometry();
        update();
    });
    followRecipe();
}

void StarterChoice::choose(int index)
{
    const RenderRecipe& chosen = starterFrames()[std::size_t(index)].recipe;
    history_.editRecipe(QStringLiteral("Starter Frame"), [&](RenderRecipe& recipe) { recipe = chosen; });
}

void StarterChoice::followRecipe()
{
    const auto& frames = starterFrames();
    const auto equal = std::ranges::find(frames, session_.activeRecipe(), &StarterFrame::recipe);
    setCurrentIndex(equal == frames.end() ? -1 : int(equal - frames.begin()));
}

AccessibleItem StarterChoice::item(int index) const
{
    AccessibleItem item = ChoiceStrip::item(index);
    item.description = starterFrames()[std::size_t(index)].description;
    return item;
}

QSize StarterChoice::sizeHint() const
{
    return {largeWidth, heightForWidth(largeWidth)};
}

QSize StarterChoice::minimumSizeHint() const
{
    const int least = itemCount() * (smallTile.width() + inset) + inset;
    return {least, heightForWidth(least)};
}

int StarterChoice::heightForWidth(int width) const
{
    const QSize tile = tileSize(width);
    return 2 * inset + tile.height() + Space::group + Theme::current().lineHeight(TextRole::body) +
           descriptionHeight(tile.width());
}

QRect StarterChoice::itemRect(int index) const
{
    const QSize tile = tileSize(width());
    const int gap = (width() - 2 * inset - itemCount() * tile.width()) / (itemCount() - 1);
    // Where tiles stand close, what is filled stays apart all the same.
    const int edge = std::min(inset, (gap - Space::rowGap) / 2);
    const int left = inset + index * (tile.width() + gap);
    return {left - edge, 0, tile.width() + 2 * edge, height()};
}

void StarterChoice::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int index = 0; index < itemCount(); ++index)
        paintItem(painter, index);
    const QSize room = tileSize(width()) - QSize(2 * pictureInset, 2 * pictureInset);
    renderPictures((QSizeF(room) * devicePixelRatioF()).toSize());
}

void StarterChoice::paintItem(QPainter& painter, int index)
{
    const bool isChosen = index == currentIndex();
    const QRect whole = itemRect(index);
    painter.setPen(Qt::NoPen);
    if (isChosen || index == hovered()) {
        painter.setBrush(themeColor(isChosen ? &ThemeColors::selection : &ThemeColors::fill));
        painter.drawRoundedRect(whole, Radius::row, Radius::row);
    }
    const QSize size = tileSize(width());
    const QRect tile(whole.center().x() + 1 - size.width() / 2, inset, size.width(), size.height());
    const bool isDark = Theme::current().appearance() == Appearance::dark;
    painter.setBrush(isDark ? Theme::backdrops().gray : Theme::backdrops().lightGray);
    painter.drawRoundedRect(tile, Radius::control, Radius::control);
    if (!pictures_.empty()) {
        const QImage& picture = pictures_[std::size_t(index)];
        QRectF place(QPointF(), QSizeF(picture.size()) / devicePixelRatioF());
        place.moveTopLeft(tile.topLeft() +
                          QPoint(int(tile.width() - place.width()) / 2, int(tile.height() - place.height()) / 2));
        painter.drawImage(place, picture);
    }

    QStyleOptionButton radio;
    radio.initFrom(this);
    radio.state.setFlag(QStyle::State_HasFocus, false);
    radio.state.setFlag(QStyle::State_MouseOver, index == hovered());
    radio.state.setFlag(isChosen ? QStyle::State_On : QStyle::State_Off);
    const int lineHeight = Theme::current().lineHeight(TextRole::body);
    QRect line(tile.left() + textIndent, tile.bottom() + 1 + Space::group, tile.width() - textIndent, lineHeight);
    radio.rect =
        QRect(tile.left(), line.center().y() + 1 - Measure::checkBox / 2, Measure::checkBox, Measure::checkBox);
    style()->drawPrimitive(QStyle::PE_IndicatorRadioButton, &radio, &painter, this);
    const StarterFrame& frame = starterFrames()[std::size_t(index)];
    painter.setFont(Theme::current().font(TextRole::body));
    painter.setPen(themeColor(&ThemeColors::text));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, frame.name);
    line.setTop(line.bottom() + 1);
    line.setBottom(whole.bottom());
    painter.setFont(Theme::current().font(TextRole::small));
    painter.setPen(themeColor(&ThemeColors::text2));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, frame.description);
}

void StarterChoice::renderPictures(QSize box)
{
    if (box == pictureBox_)
        return;
    pictureBox_ = box;
    rendering_.replace(
        [this, box](const std::stop_token& stop) -> NewestTask::Deliver {
            std::vector<QImage> pictures;
            for (const StarterFrame& frame : starterFrames())
                pictures.push_back(starterPicture(frame, int(pictures.size()), box, stop));
            return [this, pictures] {
                pictures_ = pictures;
                update();
            };
        },
        // Without memory or threads the names have to do.
        [](const std::exception_ptr&) {});
}

} // namespace ferrow
