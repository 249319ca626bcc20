// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ConfirmSheet.h"

#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace ferrow {

namespace {

constexpr int cardWidth = 440;

} // namespace

ConfirmSheet::ConfirmSheet(QWidget* window, const Question& question)
    : Sheet(window, question.title), kind_(question.kind)
{
    setCardWidth(cardWidth);
    setDeletedAfterClose(true);
    QStringList spoken;
    for (const Question::Item& item : question.items) {
        addItem(item);
        spoken << QStringLiteral("%1: %2 %3").arg(item.name, item.text, item.detail).trimmed();
    }
    setAccessibleDescription((spoken << question.message).join(u'\n').trimmed());
    if (!question.message.isEmpty()) {
        QLabel* message = makeLabel(question.message, TextRole::body);
        message->setWordWrap(true);
        message->setTextInteractionFlags(Qt::TextSelectableByMouse);
        body()->addWidget(message);
    }
    if (question.field)
        addField(*question.field);
    if (!question.leave.isEmpty())
        setLeaveButton(question.leave);
    QPushButton* accept = setMainButton(question.accept);
    if (kind_ == Question::Kind::destructive)
        setButtonRole(accept, ButtonRole::destructive);
    connect(this, &Sheet::mainRequested, this, [this] {
        accepted_ = true;
        dismiss();
    });
}

/// Name, what happened and what to do stand together, apart from the next one.
void ConfirmSheet::addItem(const Question::Item& item)
{
    auto* lines = new QVBoxLayout;
    lines->setSpacing(Space::rowGap);
    auto* name = new ElidedLabel(item.name, Qt::ElideMiddle);
    setTextRole(name, TextRole::strong);
    lines->addWidget(name);
    for (const auto& [text, color] : {std::pair{item.text, &ThemeColors::text}, {item.detail, &ThemeColors::text2}}) {
        if (text.isEmpty())
            continue;
        QLabel* line = makeLabel(text, TextRole::body, color);
        line->setWordWrap(true);
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
        lines->addWidget(line);
    }
    body()->addLayout(lines);
}

void ConfirmSheet::addField(const Question::Field& field)
{
    field_ = new QLineEdit(field.text);
    field_->setAccessibleName(field.name);
    field_->setPlaceholderText(field.placeholder);
    field_->selectAll();
    body()->addWidget(field_);
    const auto allow = [this](const QString& text) { mainButton()->setEnabled(!text.trimmed().isEmpty()); };
    connect(field_, &QLineEdit::textChanged, this, allow);
}

ConfirmSheet* ConfirmSheet::ask(QWidget* window, const Question& question, QObject* context,
                                std::function<void(const Answer&)> answered)
{
    auto* sheet = new ConfirmSheet(window, question);
    connect(sheet, &Overlay::closed, context ? context : window, [sheet, answered = std::move(answered)] {
        if (answered)
            answered({sheet->accepted_, sheet->field_ ? sheet->field_->text() : QString()});
    });
    if (sheet->field_)
        sheet->mainButton()->setEnabled(!sheet->field_->text().trimmed().isEmpty());
    sheet->open(sheet->firstFocus());
    return sheet;
}

ConfirmSheet* ConfirmSheet::alert(QWidget* window, const QString& title, const QString& message, QObject* context,
                                  std::function<void()> left, std::vector<Question::Item> items)
{
    Question question;
    question.title = title;
    question.items = std::move(items);
    question.message = message;
    question.accept = QStringLiteral("OK");
    return ask(window, question, context, [left = std::move(left)](const Answer&) {
        if (left)
            left();
    });
}

/// What can't be taken back wants a deliberate press: there the focus starts on leaving.
QWidget* ConfirmSheet::firstFocus() const
{
    if (field_)
        return field_;
    return kind_ == Question::Kind::destructive && leaveButton() ? leaveButton() : mainButton();
}

bool ConfirmSheet::handleEnter()
{
    return kind_ == Question::Kind::plain && Sheet::handleEnter();
}

} // namespace ferrow
