// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/NumberField.h"

#include "Platform/Base/Localization.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/InputRules.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ferrow {

namespace {

constexpr int notch = 120;
constexpr int unitGap = 6;
constexpr QChar minusSign(0x2212);

QLocale fieldLocale()
{
    QLocale locale = Localization::numberLocale();
    locale.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
    return locale;
}

/// Digits of whatever script become those that are parsed, and so does the minus sign of good typography; marks of the
/// writing direction, which some locales put around signs, go.
QString withPlainDigits(const QString& text)
{
    QString plain;
    for (const char32_t letter : text.toUcs4())
        if (QChar::category(letter) == QChar::Number_DecimalDigit)
            plain += QLatin1Char(char('0' + QChar::digitValue(letter)));
        else if (letter == minusSign.unicode())
            plain += QLatin1Char('-');
        else if (QChar::category(letter) != QChar::Other_Format)
            plain += QString::fromUcs4(&letter, 1);
    return plain;
}

/// Most locales write a hyphen.
QString withMinusSign(QString text)
{
    return text.replace(QLatin1Char('-'), minusSign);
}

/// One decimal separator, whichever of the usual ones it is, becomes a point.
QString withPoint(QString text)
{
    const QString separator = fieldLocale().decimalPoint();
    text.replace(separator, QStringLiteral("."));
    text.replace(QChar(0x066B), QLatin1Char('.')); // The Arabic one.
    return text.count(QLatin1Char(',')) == 1 && !text.contains(QLatin1Char('.'))
               ? text.replace(QLatin1Char(','), QLatin1Char('.'))
               : text;
}

} // namespace

QString NumberFormat::text(double value) const
{
    const QLocale locale = fieldLocale();
    if (dropsZeros)
        return withMinusSign(locale.toString(shown(value), 'f', QLocale::FloatingPointShortest));
    const QString text = locale.toString(value * factor, 'f', decimals);
    const QString negativeZero = locale.negativeSign() + locale.toString(0.0, 'f', decimals);
    return text == negativeZero ? locale.toString(0.0, 'f', decimals) : withMinusSign(text);
}

double NumberFormat::shown(double value) const
{
    const double scale = std::pow(10, decimals);
    const double rounded = std::round(value * factor * scale) / scale;
    return std::isfinite(rounded) ? rounded : value * factor; // The limits of a field without limits.
}

std::optional<double> NumberFormat::value(const QString& text) const
{
    QString digits = text.trimmed();
    if (!unit.isEmpty() && digits.endsWith(unit))
        digits.chop(unit.size());
    bool isNumber = false;
    const double shown = QLocale::c().toDouble(withPoint(withPlainDigits(digits.trimmed())), &isNumber);
    const double value = shown / factor;
    if (!isNumber || !std::isfinite(value) || value < least || value > greatest)
        return std::nullopt;
    return value;
}

int wheelNotches(const QWheelEvent& event, int& rest)
{
    const QPoint delta = event.angleDelta();
    rest += delta.y() != 0 ? delta.y() : delta.x();
    const int notches = rest / notch;
    rest -= notches * notch;
    return notches;
}

NumberField::NumberField(const QString& name, QWidget* parent) : CommitField(name, parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &CommitField::committed, this, &NumberField::take);
    connect(&Theme::current(), &Theme::changed, this, &NumberField::updateMargins);
    updateMargins();
    setValue(0);
}

void NumberField::setFormat(const NumberFormat& format)
{
    format_ = format;
    updateMargins();
    setValue(value_);
}

void NumberField::setValue(double value)
{
    const bool isNew = std::exchange(value_, value) != value;
    showText(format_.text(value));
    if (isNew) {
        QAccessibleValueChangeEvent event(this, format_.shown(value));
        sendAccessible(event);
    }
}

void NumberField::take(const QString& text)
{
    const std::optional<double> typed = format_.value(text);
    if (!typed) {
        setError(QStringLiteral("This can’t be used as a number here."));
        return;
    }
    const bool isNew = *typed != value_;
    setValue(*typed);
    restore();
    if (isNew)
        emit valueEdited(*typed);
}

void NumberField::stepBy(double steps)
{
    commit();
    if (hasError())
        return;
    const double delta = steps * step_ / format_.factor;
    emit stepped(delta);
    if (steps_ == Steps::areTold)
        return;
    const double value =
        std::clamp(value_ + delta, std::min(format_.least, value_), std::max(format_.greatest, value_));
    if (value != value_) {
        setValue(value);
        emit valueEdited(value);
    }
}

void NumberField::keyPressEvent(QKeyEvent* event)
{
    const double steps = event->modifiers() & Qt::ShiftModifier ? 10 : 1;
    switch (event->key()) {
    case Qt::Key_Up:
        return stepBy(steps);
    case Qt::Key_Down:
        return stepBy(-steps);
    default:
        CommitField::keyPressEvent(event);
    }
}

void NumberField::wheelEvent(QWheelEvent* event)
{
    if (!wheelIsFor(*this, *event)) {
        event->ignore();
        return;
    }
    event->accept();
    if (const int notches = wheelNotches(*event, wheelRest_))
        stepBy(event->modifiers() & Qt::ShiftModifier ? notches * 10 : notches);
}

void NumberField::paintEvent(QPaintEvent* event)
{
    CommitField::paintEvent(event);
    if (format_.unit.isEmpty())
        return;
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QRect inside = style()->subElementRect(QStyle::SE_LineEditContents, &option, this).adjusted(2, 0, -2, 0);
    QPainter painter(this);
    painter.setPen(themeColor(isEnabled() ? &ThemeColors::text2 : &ThemeColors::disabled));
    painter.drawText(inside, Qt::AlignVCenter | Qt::AlignRight, format_.unit);
}

void NumberField::changeEvent(QEvent* event)
{
    CommitField::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateMargins();
}

void NumberField::updateMargins()
{
    const int unit = format_.unit.isEmpty() ? 0 : fontMetrics().horizontalAdvance(format_.unit) + unitGap;
    setTextMargins(0, 0, unit, 0);
}

QSize NumberField::sizeHint() const
{
    return QSize(Theme::current().scaled(Measure::numberField), CommitField::sizeHint().height());
}

QSize NumberField::minimumSizeHint() const
{
    return sizeHint();
}

} // namespace ferrow
