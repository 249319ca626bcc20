// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/ExportOptionsSheet.h"

#include "Export/ExportRequest.h"
#include "Features/ExportSheets/ExportCheckList.h"
#include "Features/ExportSheets/ExportTexts.h"
#include "Features/ExportSheets/FolderDisplay.h"
#include "Features/ExportSheets/SizeChoice.h"
#include "Session/WindowTexts.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/NumberField.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QThread>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr int labelWidth = 116;
constexpr int beforeCheckMilliseconds = 120;
constexpr int slowCheckMilliseconds = 150;

template <typename Enum>
QStringList rawValues()
{
    QStringList texts;
    for (const auto value : allCases<Enum>())
        texts << rawValue(value);
    return texts;
}

template <typename Enum>
int indexOf(Enum value)
{
    const auto cases = allCases<Enum>();
    return int(std::find(cases.begin(), cases.end(), value) - cases.begin());
}

template <typename Enum>
Enum caseAt(int index)
{
    return allCases<Enum>().at(std::size_t(index));
}

/// Each export holds a decoded photo or a band of it: more of them than cores gain nothing.
int mostConcurrentExports()
{
    return std::max(2, QThread::idealThreadCount());
}

FormRow* addRow(QVBoxLayout& form, const QString& label, QWidget* control)
{
    auto* row = new FormRow(label, control);
    row->setLabelWidth(labelWidth);
    form.addWidget(row);
    return row;
}

/// A row of widgets without margins; the first one takes the width.
QWidget* sideBySide(std::initializer_list<QWidget*> widgets)
{
    auto* box = new QWidget;
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins({});
    layout->setSpacing(Space::group);
    for (auto* widget : widgets)
        layout->addWidget(widget);
    layout->setStretch(0, 1);
    return box;
}

QVBoxLayout* addBlock(QVBoxLayout& page, int spacing)
{
    auto* block = new QWidget;
    auto* layout = new QVBoxLayout(block);
    layout->setContentsMargins(Space::sheet, 0, Space::sheet, Space::inspector);
    layout->setSpacing(spacing);
    page.addWidget(block);
    return layout;
}

void setTextKeepingCursor(QLineEdit& field, const QString& text)
{
    if (field.text() != text)
        field.setText(text);
}

} // namespace

ExportOptionsSheet::ExportOptionsSheet(PhotoSession& session, ExportSession& exportSession, Preferences& preferences,
                                       QWidget* window)
    : Sheet(window, QStringLiteral("Export Batch")), session_(session), exportSession_(exportSession),
      preferences_(preferences)
{
    setObjectName(QStringLiteral("exportOptionsSheet"));
    setBodyInset(0);
    body()->setSpacing(0);
    buildForm(*addBlock(*body(), Space::row));
    body()->addWidget(new HairLine);
    buildCheck(*body());
    buildFoot();
    connectModels();
    showSettings();
    showConfiguration();
    showPhotos();
}

void ExportOptionsSheet::open()
{
    const auto& configuration = exportSession_.configuration();
    const bool lacksFolder =
        configuration.destinationMode == ExportDestinationMode::chosenFolder && !configuration.chosenFolder;
    check();
    Sheet::open(lacksFolder ? chooseFolder_ : mainButton());
}

void ExportOptionsSheet::buildForm(QVBoxLayout& form)
{
    addFormat(form);
    addSize(form);
    addDestination(form);
    addFilename(form);
    addCollisionRule(form);
    addLastRow(form);
    addWrittenCheck(form);
}

void ExportOptionsSheet::addFormat(QVBoxLayout& form)
{
    format_ = new SegmentedControl(QStringLiteral("Format"), rawValues<ExportFormat>());
    format_->setObjectName(QStringLiteral("formatControl"));
    addRow(form, QStringLiteral("Format"), format_);
    connect(format_, &SegmentedControl::chosen, this, [this](int index) {
        editSettings([&](ExportSettings& settings) { settings.format = caseAt<ExportFormat>(index); });
    });

    quality_ = new SliderField(QStringLiteral("Export quality"));
    quality_->setRange(0, 1);
    quality_->setFormat({.decimals = 0, .factor = 100, .unit = QStringLiteral("%"), .least = 0, .greatest = 1});
    quality_->slider()->setObjectName(QStringLiteral("qualitySlider"));
    quality_->field()->setObjectName(QStringLiteral("qualityField"));
    keepsData_ =
        new SegmentedControl(QStringLiteral("Quality"), {QStringLiteral("Set"), QStringLiteral("Keep Photo’s Data")});
    keepsData_->setObjectName(QStringLiteral("keepsDataControl"));
    connect(keepsData_, &SegmentedControl::chosen, this, [this](int index) {
        editSettings([&](ExportSettings& settings) { settings.keepsPhotoData = index == 1; });
    });
    auto* both = sideBySide({keepsData_, quality_});
    static_cast<QHBoxLayout*>(both->layout())->setStretch(0, 0);
    static_cast<QHBoxLayout*>(both->layout())->setStretch(1, 1);
    qualityRow_ = addRow(form, QStringLiteral("Quality"), both);
    connect(quality_, &SliderField::valueEdited, this,
            [this](double value) { editSettings([&](ExportSettings& settings) { settings.quality = value; }); });

    depth_ = new SegmentedControl(QStringLiteral("Bit depth"), {QStringLiteral("8 bit"), QStringLiteral("16 bit")});
    depth_->setObjectName(QStringLiteral("depthControl"));
    connect(depth_, &SegmentedControl::chosen, this, [this](int index) {
        editSettings(
            [&](ExportSettings& settings) { settings.depth = index == 1 ? BitDepth::sixteen : BitDepth::eight; });
    });
    depthRow_ = addRow(form, QStringLiteral("Bit depth"), sideBySide({depth_, new QWidget}));
    static_cast<QHBoxLayout*>(depth_->parentWidget()->layout())->setStretch(1, 1);
    depthRow_->setMessage(Severity::plain, QStringLiteral("Keeps the depth of 16-bit photos; files are larger."));
}

void ExportOptionsSheet::addSize(QVBoxLayout& form)
{
    size_ = new SizeChoice;
    auto* row = addRow(form, QStringLiteral("Size"), size_);
    connect(size_, &SizeChoice::sizeEdited, this,
            [this](const OutputSize& size) { editSettings([&](ExportSettings& settings) { settings.size = size; }); });
    connect(size_, &SizeChoice::errorChanged, row,
            [row](const QString& message) { row->setMessage(Severity::error, message); });
}

void ExportOptionsSheet::addDestination(QVBoxLayout& form)
{
    destination_ = new SegmentedControl(QStringLiteral("Destination"), rawValues<ExportDestinationMode>());
    destination_->setObjectName(QStringLiteral("destinationControl"));
    addRow(form, QStringLiteral("Destination"), destination_);
    connect(destination_, &SegmentedControl::chosen, this, [this](int index) {
        editConfiguration(
            [&](auto& configuration) { configuration.destinationMode = caseAt<ExportDestinationMode>(index); });
    });

    folder_ = new FolderDisplay;
    chooseFolder_ = new QPushButton(QStringLiteral("Choose…"));
    chooseFolder_->setObjectName(QStringLiteral("chooseFolderButton"));
    chooseFolder_->setAccessibleName(QStringLiteral("Choose export folder"));
    folderRow_ = addRow(form, QStringLiteral("Folder"), sideBySide({folder_, chooseFolder_}));
    connect(chooseFolder_, &QPushButton::clicked, this, &ExportOptionsSheet::chooseFolderRequested);
    connect(folder_, &FolderDisplay::pressed, this, &ExportOptionsSheet::chooseFolderRequested);

    subfolder_ = new QLineEdit;
    subfolder_->setObjectName(QStringLiteral("subfolderField"));
    subfolder_->setAccessibleName(QStringLiteral("Subfolder name"));
    subfolderRow_ = addRow(form, QStringLiteral("Subfolder"), subfolder_);
    connect(subfolder_, &QLineEdit::textEdited, this, [this](const QString& text) {
        editConfiguration([&](auto& configuration) { configuration.sourceSubfolderName = text; });
    });
}

void ExportOptionsSheet::addFilename(QVBoxLayout& form)
{
    template_ = new QLineEdit;
    template_->setObjectName(QStringLiteral("templateField"));
    template_->setAccessibleName(QStringLiteral("File name template"));
    connect(template_, &QLineEdit::textEdited, this, [this](const QString& text) {
        editConfiguration([&](auto& configuration) { configuration.filenameTemplate = text; });
    });

    const auto placeholderButton = [this](const QString& placeholder, const QString& name) {
        auto* button = new QPushButton(placeholder);
        button->setObjectName(name);
        button->setAccessibleName(QStringLiteral("Insert %1").arg(placeholder));
        button->setToolTip(QStringLiteral("Insert %1 at the cursor").arg(placeholder));
        // A press must leave focus and selection in the field: what is selected there is replaced.
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QPushButton::clicked, this, [this, placeholder] { insertPlaceholder(placeholder); });
        return button;
    };
    auto* fieldAndButtons =
        sideBySide({template_, placeholderButton(QStringLiteral("{filename}"), QStringLiteral("insertFilenameButton")),
                    placeholderButton(QStringLiteral("{index}"), QStringLiteral("insertIndexButton"))});

    example_ = new ElidedLabel(QString(), Qt::ElideMiddle);
    example_->setObjectName(QStringLiteral("templateExample"));
    setTextRole(example_, TextRole::small, &ThemeColors::text2);
    auto* box = new QWidget;
    auto* lines = new QVBoxLayout(box);
    lines->setContentsMargins({});
    lines->setSpacing(Space::iconEdge);
    lines->addWidget(fieldAndButtons);
    lines->addWidget(example_);
    addRow(form, QStringLiteral("File name"), box);
}

void ExportOptionsSheet::addCollisionRule(QVBoxLayout& form)
{
    collisionRule_ = new QComboBox;
    collisionRule_->setObjectName(QStringLiteral("collisionCombo"));
    collisionRule_->setAccessibleName(QStringLiteral("If a file exists"));
    collisionRule_->addItems(rawValues<CollisionRule>());
    collisionRow_ = addRow(form, QStringLiteral("If a file exists"), collisionRule_);
    connect(collisionRule_, &QComboBox::activated, this, [this](int index) {
        editConfiguration([&](auto& configuration) { configuration.collisionRule = caseAt<CollisionRule>(index); });
    });
}

void ExportOptionsSheet::addLastRow(QVBoxLayout& form)
{
    concurrency_ = new NumberField(QStringLiteral("Photos at once"));
    concurrency_->setObjectName(QStringLiteral("concurrencyField"));
    concurrency_->setFormat(
        {.decimals = 0, .factor = 1, .unit = {}, .least = 1, .greatest = double(mostConcurrentExports())});
    connect(concurrency_, &NumberField::valueEdited, this, [this](double value) {
        editConfiguration([&](auto& configuration) { configuration.maximumConcurrentExports = std::int64_t(value); });
    });

    opensFolders_ = new ToggleSwitch(QStringLiteral("Open folders when finished"));
    opensFolders_->setText(opensFolders_->accessibleName());
    opensFolders_->setObjectName(QStringLiteral("openFoldersSwitch"));
    connect(opensFolders_, &ToggleSwitch::clicked, &preferences_, &Preferences::setOpensExportFolders);
    auto* both = new QWidget;
    auto* layout = new QHBoxLayout(both);
    layout->setContentsMargins({});
    layout->setSpacing(Space::row);
    layout->addWidget(concurrency_);
    layout->addStretch();
    layout->addWidget(opensFolders_);
    auto* row = addRow(form, QStringLiteral("Photos at once"), both);
    connect(concurrency_, &NumberField::errorChanged, row,
            [row](const QString& message) { row->setMessage(Severity::error, message); });
}

void ExportOptionsSheet::addWrittenCheck(QVBoxLayout& form)
{
    const QString text = QStringLiteral("Check every written file");
    checksWritten_ = new ToggleSwitch(text);
    checksWritten_->setObjectName(QStringLiteral("checkWrittenSwitch"));
    checksWritten_->setToolTip(QStringLiteral("Reads each file back from the disk before it gets its name"));
    connect(checksWritten_, &ToggleSwitch::clicked, this,
            [this](bool checks) { editSettings([&](ExportSettings& settings) { settings.checksWritten = checks; }); });
    auto* both = new QWidget;
    auto* layout = new QHBoxLayout(both);
    layout->setContentsMargins({});
    layout->addWidget(makeLabel(text, TextRole::body));
    layout->addStretch();
    layout->addWidget(checksWritten_);
    addRow(form, QStringLiteral("When written"), both);
}

void ExportOptionsSheet::buildCheck(QVBoxLayout& page)
{
    auto* block = addBlock(page, Space::row);
    block->setContentsMargins(Space::sheet, Space::inspector, Space::sheet, 0);
    block->addWidget(makeLabel(QStringLiteral("Check before start"), TextRole::section));
    findings_ = new ExportCheckList;
    findings_->setObjectName(QStringLiteral("checkList"));
    block->addWidget(findings_);
    connect(findings_, &ExportCheckList::showPhotosRequested, this, &ExportOptionsSheet::showPhotosRequested);
    connect(findings_, &ExportCheckList::remedyRequested, this, &ExportOptionsSheet::remedy);

    beforeCheck_.setSingleShot(true);
    beforeCheck_.setInterval(beforeCheckMilliseconds);
    slowCheck_.setSingleShot(true);
    slowCheck_.setInterval(slowCheckMilliseconds);
    connect(&beforeCheck_, &QTimer::timeout, this, &ExportOptionsSheet::check);
    connect(&slowCheck_, &QTimer::timeout, findings_, &ExportCheckList::showChecking);
    connect(&check_, &ExportCheck::spaceMeasured, this, &ExportOptionsSheet::showFindings);
    connect(&check_, &ExportCheck::isCheckingChanged, this, [this] {
        if (!check_.isChecking())
            showFindings();
    });
}

void ExportOptionsSheet::buildFoot()
{
    setLeaveButton(QStringLiteral("Cancel"))->setObjectName(QStringLiteral("leaveExportButton"));
    setMainButton(QString())->setObjectName(QStringLiteral("startExportButton"));
    connect(this, &Sheet::mainRequested, this, &ExportOptionsSheet::startWhenChecked);
    connect(this, &Overlay::closed, this, [this] {
        beforeCheck_.stop();
        slowCheck_.stop();
        check_.cancel();
        startsWhenChecked_ = false;
    });
}

void ExportOptionsSheet::connectModels()
{
    const auto settingsChanged = [this] {
        showSettings();
        showPhotos();
        checkSoon();
    };
    const auto configurationChanged = [this] {
        showConfiguration();
        checkSoon();
    };
    const auto photosChanged = [this] {
        showPhotos();
        checkSoon();
    };
    connect(&exportSession_, &ExportSession::settingsChanged, this, settingsChanged);
    connect(&exportSession_, &ExportSession::configurationChanged, this, configurationChanged);
    connect(&session_, &PhotoSession::photosChanged, this, photosChanged);
    connect(&session_, &PhotoSession::excludedPhotoIDsChanged, this, photosChanged);
    connect(&session_, &PhotoSession::batchRecipeChanged, this, photosChanged);
    connect(&session_, &PhotoSession::photoRecipesChanged, this, photosChanged);
    connect(&session_, &PhotoSession::correctionsChanged, this, photosChanged);
    connect(&session_, &PhotoSession::recipeScopeChanged, this, photosChanged);
    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &ExportOptionsSheet::showExample);
    const auto showSwitch = [this] { opensFolders_->setChecked(preferences_.opensExportFolders()); };
    connect(&preferences_, &Preferences::opensExportFoldersChanged, this, showSwitch);
    showSwitch();
}

void ExportOptionsSheet::editSettings(const std::function<void(ExportSettings&)>& edit)
{
    const auto keeps = [](const ExportSettings& settings) {
        return settings.keepsPhotoData && settings.format == ExportFormat::jpeg;
    };
    auto settings = exportSession_.settings();
    const bool kept = keeps(settings);
    edit(settings);
    // What is kept has its full size; the one set before comes back with the choice to set a quality.
    if (keeps(settings) && !kept)
        sizeBefore_ = std::exchange(settings.size, {});
    else if (kept && !keeps(settings) && settings.size.limit == SizeLimit::none)
        settings.size = sizeBefore_;
    exportSession_.setSettings(settings);
}

void ExportOptionsSheet::editConfiguration(const std::function<void(BatchExportConfiguration&)>& edit)
{
    auto configuration = exportSession_.configuration();
    edit(configuration);
    exportSession_.setConfiguration(configuration);
}

void ExportOptionsSheet::insertPlaceholder(const QString& placeholder)
{
    template_->insert(placeholder);
    template_->setFocus(Qt::OtherFocusReason);
    editConfiguration([&](auto& configuration) { configuration.filenameTemplate = template_->text(); });
}

void ExportOptionsSheet::showSettings()
{
    const auto& settings = exportSession_.settings();
    format_->setCurrentIndex(indexOf(settings.format));
    quality_->setValue(settings.quality);
    // One in the other's place, as high: rows that come and go would move those below under the pointer.
    qualityRow_->setVisible(supportsQuality(settings.format));
    depthRow_->setVisible(!supportsQuality(settings.format));
    depth_->setCurrentIndex(settings.writtenDepth() == BitDepth::sixteen ? 1 : 0);
    const bool isJpeg = settings.format == ExportFormat::jpeg;
    keepsData_->setEnabled(isJpeg);
    keepsData_->setCurrentIndex(isJpeg && settings.keepsPhotoData ? 1 : 0);
    size_->setSize(settings.size);
    checksWritten_->setChecked(settings.checksWritten);
    // A preset may ask for both: then the size counts, and can be taken back.
    const bool isFixed = isJpeg && settings.keepsPhotoData && settings.size.limit == SizeLimit::none;
    size_->restrictToFullSize(isFixed ? QStringLiteral("A photo that keeps its data keeps its size.") : QString());
}

void ExportOptionsSheet::showConfiguration()
{
    const auto& configuration = exportSession_.configuration();
    const bool isChosenFolder = configuration.destinationMode == ExportDestinationMode::chosenFolder;
    destination_->setCurrentIndex(indexOf(configuration.destinationMode));
    folder_->setFolder(configuration.chosenFolder);
    folderRow_->setVisible(isChosenFolder);
    subfolderRow_->setVisible(!isChosenFolder);
    setTextKeepingCursor(*subfolder_, configuration.sourceSubfolderName);
    const bool isValid = SafePathComponent::isValid(configuration.sourceSubfolderName);
    setErrorEdge(subfolder_, !isValid);
    subfolderRow_->setMessage(
        Severity::error,
        isValid ? QString() : QStringLiteral("Enter one folder name without slashes, colons, or control characters."));
    setTextKeepingCursor(*template_, configuration.filenameTemplate);
    collisionRule_->setCurrentIndex(indexOf(configuration.collisionRule));
    // The check says how many, but may lie below the fold.
    const bool replaces = configuration.collisionRule == CollisionRule::replace;
    collisionRow_->setMessage(Severity::warning,
                              replaces ? QStringLiteral("Files of the same name are overwritten.") : QString());
    concurrency_->setValue(double(configuration.maximumConcurrentExports));
    showExample();
}

void ExportOptionsSheet::showPhotos()
{
    setSubtitle(ExportTexts::subtitle(session_, exportSession_.settings()));
    mainButton()->setText(WindowTexts::exportButton(std::int64_t(session_.includedCount())));
    showExample();
    updateMainButton();
}

void ExportOptionsSheet::showExample()
{
    const auto name = ExportTexts::exampleName(session_, exportSession_);
    example_->setText(name.isEmpty() ? QString() : QStringLiteral("Example: %1").arg(name));
    const ExportSettings& settings = exportSession_.settings();
    size_->setExample(ExportTexts::exampleSize(session_, settings));
    qualityRow_->setMessage(Severity::plain, ExportTexts::keptDataHint(session_, settings));
}

void ExportOptionsSheet::showFindings()
{
    if (isCheckOutstanding() || !isOpen())
        return;
    slowCheck_.stop();
    findings_->showFindings(check_.findings());
    putFindingsInTabOrder();
    const bool couldStart = mainButton()->isEnabled();
    const bool hadFocus = window()->focusWidget() == mainButton();
    errorsAreMended_ = false;
    updateMainButton();
    if (couldStart && !mainButton()->isEnabled()) {
        announce(this, mainButton()->toolTip());
        if (hadFocus && chooseFolder_->isVisible())
            chooseFolder_->setFocus(Qt::OtherFocusReason);
    }
    const bool starts = std::exchange(startsWhenChecked_, false);
    if (starts && mainButton()->isEnabled())
        emit startRequested();
}

void ExportOptionsSheet::remedy(ExportFinding::Remedy remedy)
{
    switch (remedy) {
    case ExportFinding::Remedy::useOwnFraming:
        session_.useOwnFramings();
        break;
    case ExportFinding::Remedy::besideEachSource:
        editConfiguration(
            [](auto& configuration) { configuration.destinationMode = ExportDestinationMode::sourceSubfolder; });
        break;
    case ExportFinding::Remedy::none:
        break;
    }
    goOnToStart(); // The line with the button is about to go.
}

void ExportOptionsSheet::putFindingsInTabOrder()
{
    QWidget* before = checksWritten_;
    for (auto* button : findings_->findChildren<QPushButton*>()) {
        setTabOrder(before, button);
        before = button;
    }
}

void ExportOptionsSheet::updateMainButton()
{
    const auto& findings = check_.findings();
    mainButton()->setEnabled(session_.includedCount() > 0 && (errorsAreMended_ || !hasErrors(findings)));
    const auto first = inSheetOrder(findings);
    mainButton()->setToolTip(hasErrors(findings) ? first.front().title : QString());
}

void ExportOptionsSheet::goOnToStart()
{
    errorsAreMended_ = isCheckOutstanding();
    updateMainButton();
    if (mainButton()->isEnabled())
        mainButton()->setFocus(Qt::OtherFocusReason);
}

void ExportOptionsSheet::checkSoon()
{
    startsWhenChecked_ = false;
    if (isOpen())
        beforeCheck_.start();
}

void ExportOptionsSheet::check()
{
    slowCheck_.start();
    check_.start(exportSession_.requestFor(session_));
}

bool ExportOptionsSheet::isCheckOutstanding() const
{
    return beforeCheck_.isActive() || check_.isChecking();
}

void ExportOptionsSheet::startWhenChecked()
{
    if (isCheckOutstanding())
        startsWhenChecked_ = true;
    else
        emit startRequested();
}

} // namespace ferrow
