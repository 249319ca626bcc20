// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoDetails/PhotoDetails.h"

#include "Features/PhotoDetails/CorrectionField.h"
#include "Metadata/MetadataTexts.h"
#include "Models/Caption.h"
#include "Session/WindowTexts.h"
#include "Shared/UserFacingError.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/Icons.h"
#include "Widgets/Overlay.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Shadow.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr int widest = 300;
constexpr int paneInset = 12;
constexpr int shadowRoom = 24;
constexpr QSize thumbnailRoom(64, 44);

/// The column of labels has no room for the names that menus have.
QString label(MetadataField field)
{
    switch (field) {
    case MetadataField::cameraMake:
        return QStringLiteral("Make");
    case MetadataField::cameraModel:
        return QStringLiteral("Model");
    case MetadataField::lens:
        return QStringLiteral("Lens");
    case MetadataField::focalLength:
        return QStringLiteral("Focal length");
    case MetadataField::aperture:
        return QStringLiteral("Aperture");
    case MetadataField::shutterSpeed:
        return QStringLiteral("Shutter");
    case MetadataField::iso:
        return QStringLiteral("ISO");
    case MetadataField::exposureCompensation:
        return QStringLiteral("Exposure");
    case MetadataField::captureDate:
        return QStringLiteral("Date");
    case MetadataField::artist:
        return QStringLiteral("Artist");
    case MetadataField::copyright:
        return QStringLiteral("Copyright");
    case MetadataField::title:
        return QStringLiteral("Title");
    case MetadataField::caption:
        return QStringLiteral("Caption");
    }
    return {};
}

/// As its token is called everywhere else.
QString fullName(MetadataField field)
{
    const auto token = fromRawValue<MetadataToken>(rawValue(field));
    return token ? displayName(*token) : label(field);
}

/// What stands below a corrected value.
QString fileSays(const MetadataValue& read)
{
    const QString text = MetadataTexts::text(read).simplified();
    return text.isEmpty() ? QStringLiteral("Not in the file") : QStringLiteral("Was ") + text;
}

/// "Sets the 2 corrected values in 12 photos."
QString sets(std::size_t values, std::size_t photos)
{
    const QString what =
        values == 1 ? QStringLiteral("the corrected value") : QStringLiteral("the %1 corrected values").arg(values);
    return QStringLiteral("Sets %1 in %2.").arg(what, WindowTexts::photoCount(std::int64_t(photos)));
}

int heightOf(const QWidget& part, int width)
{
    const QLayout& layout = *part.layout();
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width) : layout.totalSizeHint().height();
}

QVBoxLayout* columnOf(QWidget* host, int top, int bottom)
{
    auto* column = new QVBoxLayout(host);
    column->setContentsMargins(Space::inspector, top, Space::inspector, bottom);
    column->setSpacing(Space::row);
    return column;
}

/// Lies under the card and lets the mouse through to whatever the card does not cover.
class CardShadow : public QWidget {
public:
    explicit CardShadow(QWidget* window) : QWidget(window)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        paintShadow(painter, QRectF(rect()).adjusted(shadowRoom, shadowRoom, -shadowRoom, -shadowRoom),
                    ShadowKind::popover);
    }
};

} // namespace

PhotoDetails::PhotoDetails(PhotoSession& session, EditHistory& history, QWidget* pane)
    : QWidget(pane->window()), session_(session), history_(history), pane_(pane),
      shadow_(new CardShadow(pane->window()))
{
    setObjectName(QStringLiteral("photoDetails"));
    setAccessibleName(QStringLiteral("Photo Details"));
    hide();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* scroll = new ScrollPane;
    scroll->setPage(buildRows());
    column->addWidget(buildHead());
    column->addWidget(scroll, 1);
    column->addWidget(buildFoot());

    for (const auto signal :
         {&PhotoSession::selectedPhotoIDChanged, &PhotoSession::photosChanged, &PhotoSession::correctionsChanged})
        connect(&session_, signal, this, &PhotoDetails::refresh);
    connect(&Theme::current(), &Theme::changed, this, &PhotoDetails::place);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (isVisible() && now && pane_ && pane_->isAncestorOf(now))
            dismiss();
    });
    pane_->installEventFilter(this);
    page_->installEventFilter(this);
}

QWidget* PhotoDetails::buildHead()
{
    head_ = new QWidget;
    QVBoxLayout* column = columnOf(head_, Space::sidebar, Space::row);
    auto* title = new QHBoxLayout;
    auto* close = makeIconButton(IconName::close, QStringLiteral("Close Photo Details"));
    close->setObjectName(QStringLiteral("closeDetails"));
    setSmallControl(close);
    connect(close, &QPushButton::clicked, this, &PhotoDetails::dismiss);
    title->addWidget(makeLabel(QStringLiteral("Photo Details"), TextRole::section), 1);
    title->addWidget(close);
    column->addLayout(title);

    auto* photo = new QHBoxLayout;
    photo->setSpacing(Space::row);
    thumbnail_ = new QLabel;
    thumbnail_->setFixedSize(thumbnailRoom);
    thumbnail_->setAlignment(Qt::AlignCenter);
    name_ = new ElidedLabel(QString(), Qt::ElideMiddle);
    setTextRole(name_, TextRole::strong);
    size_ = makeLabel({}, TextRole::small, &ThemeColors::text2);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(Space::rowGap);
    texts->addStretch();
    texts->addWidget(name_);
    texts->addWidget(size_);
    texts->addStretch();
    photo->addWidget(thumbnail_);
    photo->addLayout(texts, 1);
    column->addLayout(photo);
    return head_;
}

QWidget* PhotoDetails::buildRows()
{
    page_ = new QWidget;
    QVBoxLayout* column = columnOf(page_, Space::iconEdge, Space::sidebar);
    column->setSpacing(Space::group);
    for (const MetadataField field : allCases<MetadataField>()) {
        auto* value = new CorrectionField(fullName(field));
        value->setObjectName(rawValue(field));
        const Row row{field, value, new FormRow(label(field), value)};
        connect(value, &CorrectionField::committed, this, [this, row](const QString& text) { correct(row, text); });
        // An error's message has taken the place of what the file says.
        connect(value, &CorrectionField::errorChanged, this, [this, row](const QString& message) {
            if (const ImportedPhoto* photo = session_.selectedPhoto(); photo && message.isEmpty())
                refreshRow(row, *photo);
        });
        connect(value, &CorrectionField::resetRequested, this, [this, row] {
            history_.correct(QStringLiteral("Reset ") + fullName(row.field), {*shownPhoto_},
                             [&row](MetadataCorrections& corrections) { corrections.erase(row.field); });
        });
        column->addWidget(row.row);
        rows_.push_back(row);
    }
    return page_;
}

QWidget* PhotoDetails::buildFoot()
{
    foot_ = new QWidget;
    auto* column = new QVBoxLayout(foot_);
    column->setContentsMargins(1, 0, 1, 0); // The line ends at the card's edge.
    column->setSpacing(0);
    column->addWidget(new HairLine);
    auto* content = new QWidget;
    QVBoxLayout* rows = columnOf(content, Space::sidebar, Space::sidebar);
    rows->setSpacing(Space::group);
    verbs_ = new QWidget;
    auto* verbs = new QHBoxLayout(verbs_);
    verbs->setContentsMargins(0, 0, 0, 0);
    verbs->setSpacing(Space::group);
    useForAll_ = new QPushButton(QStringLiteral("Use for All Photos"));
    useForAll_->setObjectName(QStringLiteral("useForAll"));
    connect(useForAll_, &QPushButton::clicked, this, &PhotoDetails::useForAll);
    auto* reset = new QPushButton(QStringLiteral("Reset All"));
    reset->setObjectName(QStringLiteral("resetAll"));
    reset->setToolTip(QStringLiteral("Captions of this photo say what the file says"));
    connect(reset, &QPushButton::clicked, this, [this] {
        history_.correct(QStringLiteral("Reset Values"), {*shownPhoto_},
                         [](MetadataCorrections& corrections) { corrections.clear(); });
    });
    verbs->addWidget(useForAll_, 1);
    verbs->addWidget(reset);
    note_ = makeLabel({}, TextRole::small, &ThemeColors::text2);
    note_->setWordWrap(true);
    rows->addWidget(verbs_);
    rows->addWidget(note_);
    column->addWidget(content);
    return foot_;
}

void PhotoDetails::toggle()
{
    isVisible() ? dismiss() : open();
}

void PhotoDetails::open()
{
    if (!session_.selectedPhoto())
        return;
    // A popover would lie over it and hold the focus.
    if (Overlay* popover = Overlay::topmost(this))
        popover->dismiss();
    if (!isVisible())
        returnFocus_ = window()->focusWidget();
    refresh();
    show();
    shadow_->show();
    place();
    shadow_->raise();
    raise();
    rows_.front().value->setFocus(Qt::ShortcutFocusReason);
}

void PhotoDetails::dismiss()
{
    if (isHidden())
        return;
    QWidget* focused = window()->focusWidget();
    const bool hasFocus = focused && isAncestorOf(focused);
    // What is being typed counts.
    if (hasFocus)
        focused->clearFocus();
    hide();
    shadow_->hide();
    if (hasFocus && returnFocus_ && returnFocus_->isVisible() && returnFocus_->isEnabled())
        returnFocus_->setFocus(Qt::OtherFocusReason);
    else if (hasFocus)
        pane_->window()->setFocus(Qt::OtherFocusReason);
    returnFocus_ = nullptr;
}

void PhotoDetails::setLocked(bool locked)
{
    page_->setEnabled(!locked);
    verbs_->setEnabled(!locked);
}

void PhotoDetails::place()
{
    if (isHidden())
        return;
    const QRect pane(pane_->mapTo(window(), QPoint()), pane_->size());
    const int width = std::min(Theme::current().scaled(widest), pane.width() - 2 * paneInset);
    const int natural = heightOf(*head_, width) + heightOf(*page_, width) + heightOf(*foot_, width);
    const int height = std::min(natural, pane.height() - 2 * paneInset);
    setGeometry(pane.left() + (pane.width() - width) / 2, pane.top() + paneInset, width, height);
    shadow_->setGeometry(geometry().adjusted(-shadowRoom, -shadowRoom, shadowRoom, shadowRoom));
}

void PhotoDetails::refresh()
{
    const ImportedPhoto* photo = session_.selectedPhoto();
    if (!photo) {
        for (const Row& row : rows_)
            row.value->restore();
        dismiss();
        shownPhoto_.reset();
        return;
    }
    if (shownPhoto_ != photo->id()) {
        shownPhoto_ = photo->id();
        // Half a word was meant for the photo before. A step can't be made here: an undo may have led to this photo.
        for (const Row& row : rows_)
            row.value->restore();
        const double ratio = devicePixelRatioF();
        QPixmap picture = QPixmap::fromImage(session_.thumbnail(photo->id()));
        if (!picture.isNull())
            picture = picture.scaled(thumbnailRoom * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(ratio);
        thumbnail_->setPixmap(picture);
        thumbnail_->setAccessibleName(QStringLiteral("Thumbnail of %1").arg(photo->filename()));
        name_->setText(photo->filename());
        size_->setText(QStringLiteral("%1 · %2").arg(photo->pixelSize.formatted(), inputType(photo->type).code));
    }
    for (const Row& row : rows_)
        refreshRow(row, *photo);
    refreshFoot(*photo);
    place();
}

void PhotoDetails::refreshRow(const Row& row, const ImportedPhoto& photo)
{
    const auto correction = photo.corrections.find(row.field);
    const bool isCorrected = correction != photo.corrections.end();
    const MetadataValue read = photo.metadata.value(row.field);
    const QString says = fileSays(read);
    row.value->showText(MetadataTexts::text(isCorrected ? correction->second : read));
    // Of what is too long for the field, its beginning.
    if (!row.value->hasFocus())
        row.value->setCursorPosition(0);
    row.value->setPlaceholderText(isCorrected ? QStringLiteral("Left out") : QStringLiteral("Not in the file"));
    row.value->setCorrected(isCorrected, says);
    if (!row.value->hasError())
        row.row->setMessage(Severity::plain, isCorrected ? says : QString());
}

void PhotoDetails::refreshFoot(const ImportedPhoto& photo)
{
    const std::size_t values = photo.corrections.size();
    const std::size_t photos = session_.photos().size();
    const bool hadFocus = verbs_->isAncestorOf(window()->focusWidget());
    verbs_->setVisible(values > 0);
    useForAll_->setVisible(photos > 1);
    if (hadFocus && values == 0)
        rows_.front().value->setFocus(Qt::OtherFocusReason);
    note_->setText(values > 0 && photos > 1
                       ? sets(values, photos)
                       : QStringLiteral("Change a value to correct it in captions. The file stays as it is."));
}

void PhotoDetails::correct(const Row& row, const QString& text)
{
    try {
        const MetadataValue value = MetadataTexts::parsed(row.field, text);
        history_.correct(QStringLiteral("Correct ") + fullName(row.field), {*shownPhoto_},
                         [&](MetadataCorrections& corrections) { corrections[row.field] = value; });
    } catch (MetadataTexts::Error error) {
        row.value->setError(UserFacingError::message(error));
        return;
    }
    // Where nothing has changed nobody else tells the field what counts.
    if (const ImportedPhoto* photo = session_.selectedPhoto())
        refreshRow(row, *photo);
}

void PhotoDetails::useForAll()
{
    std::vector<FileUrl> all;
    for (const ImportedPhoto& photo : session_.photos())
        all.push_back(photo.id());
    const MetadataCorrections corrections = session_.photo(*shownPhoto_)->corrections;
    history_.correct(QStringLiteral("Use Values for All Photos"), all, [&](MetadataCorrections& theirs) {
        for (const auto& [field, value] : corrections)
            theirs[field] = value;
    });
}

bool PhotoDetails::eventFilter(QObject* watched, QEvent* event)
{
    const bool moves = watched == pane_ && (event->type() == QEvent::Resize || event->type() == QEvent::Move);
    if (moves || (watched == page_ && event->type() == QEvent::LayoutRequest))
        QMetaObject::invokeMethod(
            this, [this] { place(); }, Qt::QueuedConnection);
    return QWidget::eventFilter(watched, event);
}

bool PhotoDetails::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest)
        place();
    return QWidget::event(event);
}

void PhotoDetails::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        dismiss();
    else
        QWidget::keyPressEvent(event);
}

void PhotoDetails::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(themeColor(&ThemeColors::popoverEdge), 1));
    painter.setBrush(themeColor(&ThemeColors::raised));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Radius::popover, Radius::popover);
}

} // namespace ferrow
