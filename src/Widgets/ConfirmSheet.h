// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Sheet.h"

#include <functional>
#include <optional>
#include <vector>

class QLineEdit;

namespace ferrow {

/// A question or a message over the window or over another sheet. All texts plain.
struct Question {
    /// A line to type into, for names.
    struct Field {
        QString name; ///< For assistive technology.
        QString placeholder;
        QString text; ///< What it starts with, selected.
    };
    /// One of several things that it is about.
    struct Item {
        QString name;
        QString text;
        QString detail; ///< May be empty.
    };
    enum class Kind { plain, destructive };

    QString title;
    std::vector<Item> items; ///< Above the message.
    QString message;         ///< May have several lines; it scrolls when long.
    QString accept;          ///< "Replace and Export"; the default button.
    QString leave;           ///< "Cancel"; empty for a message that can only be left by `accept`.
    Kind kind = Kind::plain;
    std::optional<Field> field;
};

struct Answer {
    bool accepted = false;
    QString text; ///< Of the field.
};

/// Asks without waiting: the answer comes by callback, once, on the main thread, after the sheet has been given up.
/// With a field, the accept button is disabled while the text is blank.
class ConfirmSheet : public Sheet {
    Q_OBJECT

public:
    /// `answered` is not called when `context` is gone by then; null stands for `window`.
    static ConfirmSheet* ask(QWidget* window, const Question& question, QObject* context,
                             std::function<void(const Answer&)> answered);
    /// A message, which may be about several things, with the one button "OK".
    static ConfirmSheet* alert(QWidget* window, const QString& title, const QString& message,
                               QObject* context = nullptr, std::function<void()> left = {},
                               std::vector<Question::Item> items = {});

    [[nodiscard]] QLineEdit* field() const { return field_; }

protected:
    bool handleEnter() override;

private:
    ConfirmSheet(QWidget* window, const Question& question);
    void addItem(const Question::Item& item);
    void addField(const Question::Field& field);
    [[nodiscard]] QWidget* firstFocus() const;

    QLineEdit* field_ = nullptr;
    Question::Kind kind_ = Question::Kind::plain;
    bool accepted_ = false;
};

} // namespace ferrow
