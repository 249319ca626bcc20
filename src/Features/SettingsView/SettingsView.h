// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QVBoxLayout;

namespace ferrow {

class BackdropChoice;
class MessageLine;
class Preferences;
class SegmentedControl;

/// The settings as an ordinary window: changes hold at once, there is no button to confirm them.
class SettingsView : public QDialog {
    Q_OBJECT

public:
    /// `preferences` must outlive the window.
    explicit SettingsView(Preferences& preferences, QWidget* parent = nullptr);

    /// What there is to know of this system; an empty one shows no line.
    void setSystemNote(const QString& note);

private:
    void addAppearance(QVBoxLayout& page);
    void addPreview(QVBoxLayout& page);
    QWidget* makeFoot();
    void showStored();

    Preferences& preferences_;
    SegmentedControl* theme_ = nullptr;
    BackdropChoice* lightBackdrop_ = nullptr;
    BackdropChoice* darkBackdrop_ = nullptr;
    MessageLine* unsaved_ = nullptr;
    MessageLine* system_ = nullptr;
};

} // namespace ferrow
