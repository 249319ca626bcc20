// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CaptionEditing.h"
#include "Widgets/Popover.h"

class QLabel;

namespace ferrow {

class CommitField;
class FormRow;
class RadioList;
class SegmentedControl;
class WrappedLabel;

/// The options of one token chip. Each choice applies at once and is a step of its own; so is a text that is typed,
/// once it is committed. Goes when the chip goes or becomes another.
class TokenPopover : public Popover {
    Q_OBJECT

public:
    /// `chip` is a token of `editing`, which must outlive it.
    TokenPopover(QWidget* opener, CaptionEditing& editing, const QUuid& chip);

    void present();

private:
    [[nodiscard]] const CaptionToken* token() const;
    void buildChange();
    void buildStyles();
    void buildMissing();
    void follow();
    void showStyles(const DateFormat& format, const CaptionEditing::Survey& survey);
    void showMissing(const QString& ifMissing, const CaptionEditing::Survey& survey);
    void setDate(const DateFormat& format);
    void setIfMissing(const QString& text);
    void takePattern(const QString& pattern);

    CaptionEditing& editing_;
    QUuid chip_;
    MetadataToken kind_;
    QString pattern_;        ///< The last one, also while another style is chosen.
    QString text_;           ///< The last one, also while missing values are left out.
    bool wantsText_ = false; ///< Chosen, though there is none yet.
    WrappedLabel* value_ = nullptr;
    RadioList* styles_ = nullptr; ///< Of dates alone, like the two below.
    CommitField* patternField_ = nullptr;
    SegmentedControl* missing_ = nullptr;
    CommitField* textField_ = nullptr;
    FormRow* textRow_ = nullptr;
    QLabel* exampleName_ = nullptr;
    WrappedLabel* example_ = nullptr;
};

} // namespace ferrow
