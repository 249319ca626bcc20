// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/AccessibleText.h"

#include "Widgets/NumberField.h"

#include <QAccessibleWidget>
#include <QLineEdit>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <optional>
#include <vector>

namespace ferrow {

namespace {

constexpr int endOfText = -1; // As AT-SPI counts.
constexpr int atCaret = -2;

std::optional<QTextBoundaryFinder::BoundaryType> finderType(QAccessible::TextBoundaryType boundary)
{
    switch (boundary) {
    case QAccessible::CharBoundary:
        return QTextBoundaryFinder::Grapheme;
    case QAccessible::WordBoundary:
        return QTextBoundaryFinder::Word;
    case QAccessible::SentenceBoundary:
        return QTextBoundaryFinder::Sentence;
    case QAccessible::ParagraphBoundary:
    case QAccessible::LineBoundary:
    case QAccessible::NoBoundary:
        break;
    }
    return std::nullopt;
}

/// Where the pieces of a text that is not empty meet, its two ends included.
std::vector<int> cutsOf(const QString& text, QAccessible::TextBoundaryType boundary)
{
    std::vector<int> cuts{0};
    if (const auto type = finderType(boundary)) {
        QTextBoundaryFinder finder(*type, text);
        // Behind the end of the text the finder is at -1.
        for (auto at = finder.toNextBoundary(); at > 0 && at < text.size(); at = finder.toNextBoundary())
            if (finder.boundaryReasons() & (QTextBoundaryFinder::StartOfItem | QTextBoundaryFinder::EndOfItem))
                cuts.push_back(int(at));
    }
    cuts.push_back(int(text.size()));
    return cuts;
}

class LineEditInterface : public QAccessibleWidget,
                          public QAccessibleTextInterface,
                          public QAccessibleEditableTextInterface,
                          public QAccessibleValueInterface {
public:
    explicit LineEditInterface(QLineEdit* field) : QAccessibleWidget(field, QAccessible::EditableText) {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        switch (type) {
        case QAccessible::TextInterface:
            return static_cast<QAccessibleTextInterface*>(this);
        case QAccessible::EditableTextInterface:
            return static_cast<QAccessibleEditableTextInterface*>(this);
        case QAccessible::ValueInterface:
            return number() ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
        default:
            return QAccessibleWidget::interface_cast(type);
        }
    }

    // Asked each time: this object may have been made while the field was still being constructed.
    QAccessible::Role role() const override { return number() ? QAccessible::SpinBox : QAccessible::EditableText; }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Value)
            return shownText();
        if (kind == QAccessible::Description && number())
            return number()->format().unit;
        const QString text = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && text.isEmpty() ? field()->placeholderText() : text;
    }

    void setText(QAccessible::Text kind, const QString& text) override
    {
        kind == QAccessible::Value ? field()->setText(text) : QAccessibleWidget::setText(kind, text);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = !field()->isReadOnly();
        state.readOnly = field()->isReadOnly();
        state.passwordEdit = field()->echoMode() != QLineEdit::Normal;
        state.selectableText = true;
        return state;
    }

    // The text.
    QString text(int start, int end) const override
    {
        return start < end ? shownText().mid(start, end - start) : QString();
    }
    int characterCount() const override { return int(shownText().size()); }
    QString textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const override
    {
        return piece(offset, boundary, TextPiece::at, start, end);
    }
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const override
    {
        return piece(offset, boundary, TextPiece::before, start, end);
    }
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType boundary, int* start, int* end) const override
    {
        return piece(offset, boundary, TextPiece::after, start, end);
    }
    QString attributes(int, int* start, int* end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

    // The caret and what is selected.
    int cursorPosition() const override { return field()->cursorPosition(); }
    void setCursorPosition(int position) override { field()->setCursorPosition(position); }
    int selectionCount() const override { return field()->hasSelectedText() ? 1 : 0; }
    void selection(int index, int* start, int* end) const override
    {
        const bool isSelected = index == 0 && field()->hasSelectedText();
        *start = isSelected ? field()->selectionStart() : 0;
        *end = isSelected ? field()->selectionEnd() : 0;
    }
    void setSelection(int index, int start, int end) override
    {
        if (index == 0)
            field()->setSelection(start, end - start);
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int index) override
    {
        if (index == 0)
            field()->deselect();
    }
    void scrollToSubstring(int start, int end) override
    {
        field()->setCursorPosition(end);
        field()->setCursorPosition(start);
    }

    // Places, in screen coordinates.
    QRect characterRect(int offset) const override
    {
        const QString shown = shownText();
        if (offset < 0 || offset > shown.size())
            return {};
        // The caret says how far the text has been scrolled.
        const QFontMetrics metrics = field()->fontMetrics();
        QRect rect = field()->inputMethodQuery(Qt::ImCursorRectangle).toRect();
        rect.translate(metrics.horizontalAdvance(shown.left(offset)) -
                           metrics.horizontalAdvance(shown.left(field()->cursorPosition())),
                       0);
        rect.setWidth(metrics.horizontalAdvance(shown.mid(offset, 1)));
        return rect.translated(field()->mapToGlobal(QPoint()));
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return field()->cursorPositionAt(field()->mapFromGlobal(point));
    }

    // Editing.
    void deleteText(int start, int end) override { replaceText(start, end, {}); }
    void insertText(int offset, const QString& text) override { replaceText(offset, offset, text); }
    void replaceText(int start, int end, const QString& text) override
    {
        field()->setText(field()->text().replace(start, end - start, text));
    }

    // The value, in the unit that is shown.
    QVariant currentValue() const override { return shownValue(number()->value()); }
    void setCurrentValue(const QVariant& value) override
    {
        number()->enter(value.toDouble() / number()->format().factor);
    }
    QVariant maximumValue() const override { return shownValue(number()->format().greatest); }
    QVariant minimumValue() const override { return shownValue(number()->format().least); }
    QVariant minimumStepSize() const override { return number()->step(); }

private:
    [[nodiscard]] QLineEdit* field() const { return static_cast<QLineEdit*>(widget()); }
    [[nodiscard]] NumberField* number() const { return qobject_cast<NumberField*>(widget()); }
    [[nodiscard]] double shownValue(double value) const { return number()->format().shown(value); }
    /// With an echo mode of its own, no more than what is seen.
    [[nodiscard]] QString shownText() const { return field()->displayText(); }

    QString piece(int offset, QAccessible::TextBoundaryType boundary, TextPiece piece, int* start, int* end) const
    {
        const int from = offset == endOfText ? characterCount() : offset == atCaret ? cursorPosition() : offset;
        return textPiece(shownText(), from, boundary, piece, start, end);
    }
};

} // namespace

QString textPiece(const QString& text, int offset, QAccessible::TextBoundaryType boundary, TextPiece piece, int* start,
                  int* end)
{
    *start = *end = -1;
    if (text.isEmpty() || offset < 0 || offset > text.size())
        return {};
    const std::vector<int> cuts = cutsOf(text, boundary);
    const auto count = int(cuts.size()) - 1;
    int index = int(std::upper_bound(cuts.begin(), cuts.end(), offset) - cuts.begin()) - 1;
    if (boundary != QAccessible::CharBoundary)
        index = std::min(index, count - 1);
    index += int(piece);
    if (index < 0 || index >= count)
        return {};
    *start = cuts[std::size_t(index)];
    *end = cuts[std::size_t(index) + 1];
    return text.mid(*start, *end - *start);
}

QAccessibleInterface* makeLineEditInterface(QLineEdit* field)
{
    return new LineEditInterface(field);
}

} // namespace ferrow
