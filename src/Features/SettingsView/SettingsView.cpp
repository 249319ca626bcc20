// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/SettingsView/SettingsView.h"

#include "Features/SettingsView/BackdropChoice.h"
#include "Session/Preferences.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/MessageLine.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int windowWidth = 560;
constexpr int labelWidth = 132;

FormRow* makeRow(const QString& label, QWidget* control)
{
    auto* row = new FormRow(label, control);
    row->setLabelWidth(labelWidth);
    return row;
}

} // namespace

SettingsView::SettingsView(Preferences& preferences, QWidget* parent) : QDialog(parent), preferences_(preferences)
{
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(QStringLiteral("Settings"));
    setAccessibleName(QStringLiteral("General settings"));
    setGround(this, &ThemeColors::raised);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->setSizeConstraint(QLayout::SetFixedSize);
    auto* page = new QVBoxLayout;
    page->setContentsMargins(Space::sheet, Space::inspector, Space::sheet, Space::sheet);
    page->setSpacing(Space::row);
    column->addLayout(page);
    column->addStrut(Theme::current().scaled(windowWidth));
    page->addWidget(makeLabel(QStringLiteral("General"), TextRole::title));
    page->addSpacing(Space::group);
    addAppearance(*page);
    page->addSpacing(Space::group);
    addPreview(*page);
    unsaved_ = new MessageLine(Severity::warning, {});
    unsaved_->setObjectName(QStringLiteral("unsavedNote"));
    page->addWidget(unsaved_);
    system_ = new MessageLine(Severity::info, {});
    system_->setObjectName(QStringLiteral("systemNote"));
    page->addWidget(system_);
    setSystemNote({});
    column->addWidget(new HairLine);
    column->addWidget(makeFoot());

    connect(&preferences_, &Preferences::appearanceChanged, this, &SettingsView::showStored);
    connect(&preferences_, &Preferences::previewBackdropChanged, this, &SettingsView::showStored);
    showStored();
}

void SettingsView::setSystemNote(const QString& note)
{
    system_->setMessage(Severity::info, note);
    system_->setVisible(!note.isEmpty());
}

void SettingsView::addAppearance(QVBoxLayout& page)
{
    theme_ = new SegmentedControl(QStringLiteral("Theme"));
    theme_->setObjectName(QStringLiteral("themeControl"));
    theme_->setToolTip(QStringLiteral("Choose System to follow the desktop's appearance"));
    for (const auto& entry : CodedCases<AppearancePreference>::table)
        theme_->addSegment(rawValue(entry.value));
    connect(theme_, &SegmentedControl::chosen, this, [this](int index) {
        preferences_.setAppearance(CodedCases<AppearancePreference>::table.at(std::size_t(index)).value);
    });
    page.addWidget(makeLabel(QStringLiteral("Appearance"), TextRole::section));
    page.addWidget(makeRow(QStringLiteral("Theme"), theme_));
}

void SettingsView::addPreview(QVBoxLayout& page)
{
    const auto make = [this](const QString& name, const QString& objectName, bool isDark) {
        auto* choice = new BackdropChoice(name);
        choice->setObjectName(objectName);
        connect(choice, &BackdropChoice::chosen, this,
                [this, isDark](PreviewBackdrop backdrop) { preferences_.setPreviewBackdrop(isDark, backdrop); });
        return choice;
    };
    lightBackdrop_ = make(QStringLiteral("Backdrop in light appearance"), QStringLiteral("lightBackdropChoice"), false);
    darkBackdrop_ = make(QStringLiteral("Backdrop in dark appearance"), QStringLiteral("darkBackdropChoice"), true);
    page.addWidget(makeLabel(QStringLiteral("Preview"), TextRole::section));
    page.addWidget(makeRow(QStringLiteral("Backdrop in light"), lightBackdrop_));
    page.addSpacing(Space::iconEdge);
    page.addWidget(makeRow(QStringLiteral("Backdrop in dark"), darkBackdrop_));
}

QWidget* SettingsView::makeFoot()
{
    auto* foot = new QWidget;
    setGround(foot, &ThemeColors::sidebar);
    auto* row = new QHBoxLayout(foot);
    row->setContentsMargins(Space::sheet, Space::row, Space::sheet, Space::row);
    row->setSpacing(Space::group);
    auto* note = makeLabel(QStringLiteral("Ferrow works offline and does not upload your images."), TextRole::body,
                           &ThemeColors::text2);
    note->setAccessibleName(QStringLiteral("Privacy: Ferrow works offline and never uploads your images"));
    row->addWidget(new IconLabel(IconName::info, Measure::fieldIcon, &ThemeColors::text2));
    row->addWidget(note, 1);
    return foot;
}

void SettingsView::showStored()
{
    const auto& themes = CodedCases<AppearancePreference>::table;
    for (std::size_t i = 0; i < themes.size(); ++i)
        if (themes[i].value == preferences_.appearance())
            theme_->setCurrentIndex(int(i));
    lightBackdrop_->setBackdrop(preferences_.previewBackdrop(false));
    darkBackdrop_->setBackdrop(preferences_.previewBackdrop(true));
    const QString note = preferences_.unsavedNote();
    unsaved_->setMessage(Severity::warning, note);
    unsaved_->setVisible(!note.isEmpty());
}

} // namespace ferrow
