// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PresetManager/PresetManagerView.h"

#include "Features/PresetManager/PresetList.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/MessageLine.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int cardWidth = 640;
constexpr int bodyInset = 12; // Rows reach nearer to the sides than texts.
constexpr int emptyTextWidth = 320;

} // namespace

PresetManagerView::PresetManagerView(PresetLibrary& library, Actions actions, QWidget* window)
    : Sheet(window, QStringLiteral("Presets")), library_(library), actions_(std::move(actions))
{
    setObjectName(QStringLiteral("presetSheet"));
    setCardWidth(cardWidth);
    setBodyInset(bodyInset);
    body()->setSpacing(Space::row);
    buildBody();
    buildFoot();
    connect(&library_, &PresetLibrary::presetsChanged, this, [this] {
        list_->renew();
        // Several at once are the first ones: the button that asked for them is about to go.
        const bool handsFocusOn = !library_.presets().empty() && empty_->isAncestorOf(this->window()->focusWidget());
        showLibrary();
        if (!handsFocusOn)
            return;
        list_->selectFirst();
        list_->setFocus(Qt::OtherFocusReason);
    });
    showLibrary();
    updateActions();
}

void PresetManagerView::open()
{
    if (library_.presets().empty()) {
        Sheet::open(save_);
        return;
    }
    list_->selectFirst(); // So that what can be done with a preset is in sight.
    Sheet::open(list_);
}

void PresetManagerView::buildBody()
{
    warning_ = new MessageLine(Severity::warning, QString(), MessageLine::Ground::tinted);
    warning_->setObjectName(QStringLiteral("presetWarning"));
    auto* warningRow = new QHBoxLayout;
    warningRow->setContentsMargins(Space::sheet - bodyInset, 0, Space::sheet - bodyInset, 0);
    warningRow->addWidget(warning_);
    body()->addLayout(warningRow);

    empty_ = makeEmptyState();
    body()->addWidget(empty_);

    list_ = new PresetList(library_);
    rowActions_ = makeRowActions();
    list_->setActions(rowActions_);
    body()->addWidget(list_);
    connect(list_, &PresetList::selectedPresetChanged, this, &PresetManagerView::updateActions);
    connect(list_, &PresetList::applyRequested, this, actions_.apply);
    connect(list_, &PresetList::duplicateRequested, this, actions_.duplicate);
    connect(list_, &PresetList::removeRequested, this, actions_.remove);
    connect(list_, &PresetList::renamed, this, actions_.renameInPlace);
}

QWidget* PresetManagerView::makeEmptyState()
{
    auto* block = new QWidget;
    auto* layout = new QVBoxLayout(block);
    layout->setContentsMargins(0, Space::preview, 0, Space::emptyBlocks);
    layout->setSpacing(Space::group);
    layout->addWidget(new IconLabel(IconName::presets, Measure::emptyIcon, &ThemeColors::text2), 0, Qt::AlignHCenter);
    layout->addSpacing(Space::iconEdge);
    layout->addWidget(makeLabel(QStringLiteral("No Presets"), TextRole::title), 0, Qt::AlignHCenter);
    auto* text = makeLabel(QStringLiteral("Save the current frame, caption, logo, and export settings for reuse."),
                           TextRole::body, &ThemeColors::text2);
    text->setWordWrap(true);
    text->setAlignment(Qt::AlignHCenter);
    text->setFixedWidth(Theme::current().scaled(emptyTextWidth));
    auto* centered = new QHBoxLayout;
    centered->addStretch();
    centered->addWidget(text);
    centered->addStretch();
    layout->addLayout(centered);
    layout->addSpacing(Space::group);
    auto* starters = new QPushButton(QStringLiteral("Add Starter Frames"));
    starters->setObjectName(QStringLiteral("addStartersButton"));
    starters->setAccessibleDescription(QStringLiteral("Saves three frames to begin with as presets"));
    connect(starters, &QPushButton::clicked, this, actions_.addStarters);
    layout->addWidget(starters, 0, Qt::AlignHCenter);
    return block;
}

QWidget* PresetManagerView::makeRowActions()
{
    auto* bar = new QWidget;
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins({});
    layout->setSpacing(Space::group);
    const auto add = [&](const QString& text, const QString& name, ButtonRole role,
                         const std::function<void(const QUuid&)>& action) {
        auto* button = new QPushButton(text);
        button->setObjectName(name);
        setButtonRole(button, role);
        setSmallControl(button);
        layout->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, action] { callForSelected(action); });
    };
    add(QStringLiteral("Apply"), QStringLiteral("applyPresetButton"), ButtonRole::main, actions_.apply);
    add(QStringLiteral("Rename…"), QStringLiteral("renamePresetButton"), ButtonRole::raised, actions_.rename);
    add(QStringLiteral("Duplicate"), QStringLiteral("duplicatePresetButton"), ButtonRole::raised, actions_.duplicate);
    add(QStringLiteral("Delete"), QStringLiteral("deletePresetButton"), ButtonRole::raised, actions_.remove);
    return bar;
}

void PresetManagerView::buildFoot()
{
    save_ = addHelperButton(QStringLiteral("Save Current…"));
    save_->setObjectName(QStringLiteral("savePresetButton"));
    save_->setIcon(icon(IconName::add, &ThemeColors::onInk));
    setButtonRole(save_, ButtonRole::main);
    connect(save_, &QPushButton::clicked, this, actions_.saveCurrent);
    setLeaveButton(QStringLiteral("Done"))->setObjectName(QStringLiteral("presetsDoneButton"));
}

void PresetManagerView::callForSelected(const std::function<void(const QUuid&)>& action)
{
    if (const auto selected = list_->selectedPreset())
        action(*selected);
}

void PresetManagerView::showLibrary()
{
    const auto& message = library_.loadErrorMessage();
    warning_->setVisible(message.has_value());
    if (message)
        warning_->setMessage(Severity::warning,
                             QStringLiteral("Preset library warning: %1").arg(message->simplified()));
    const bool isEmpty = library_.presets().empty();
    empty_->setVisible(isEmpty);
    list_->setVisible(!isEmpty);
    list_->updateGeometry();
}

void PresetManagerView::updateActions()
{
    rowActions_->setEnabled(list_->selectedPreset().has_value());
}

} // namespace ferrow
