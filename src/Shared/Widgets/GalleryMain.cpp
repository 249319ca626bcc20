// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/Widgets/ColorWell.h"
#include "Shared/Widgets/ConfirmSheet.h"
#include "Shared/Widgets/FerrowStyle.h"
#include "Shared/Widgets/FormRow.h"
#include "Shared/Widgets/Gallery.h"
#include "Shared/Widgets/Popover.h"
#include "Shared/Widgets/SegmentedControl.h"
#include "Shared/Widgets/Sheet.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

using namespace ferrow;

Sheet* makeExportSheet(QWidget* window)
{
    auto* sheet = new Sheet(window, QStringLiteral("Export Batch"));
    sheet->setSubtitle(QStringLiteral("11 photos · JPEG, quality 92 · Preserve source profile"));
    auto* destination = new SegmentedControl(QStringLiteral("Destination"),
                                             {QStringLiteral("Chosen Folder"), QStringLiteral("Beside Each Source")});
    auto* collision = new QComboBox;
    collision->setAccessibleName(QStringLiteral("If a file exists"));
    collision->addItems(
        {QStringLiteral("Append a Number"), QStringLiteral("Skip"), QStringLiteral("Replace Existing")});
    for (auto* row : {new FormRow(QStringLiteral("Destination"), destination),
                      new FormRow(QStringLiteral("If a file exists"), collision)}) {
        row->setLabelWidth(116);
        sheet->body()->addWidget(row);
    }
    sheet->body()->addWidget(makeLabel(QStringLiteral("Check before start"), TextRole::section));
    sheet->body()->addWidget(new MessageLine(Severity::success, QStringLiteral("All 11 photos can be read")));
    auto* warning = new MessageLine(Severity::warning, QString());
    warning->setMessage(Severity::warning, QStringLiteral("3 photos have no Camera"),
                        QStringLiteral("Their captions leave it out."));
    warning->setButton(QStringLiteral("Show"));
    sheet->body()->addWidget(warning);
    sheet->setLeaveButton(QStringLiteral("Cancel"));
    sheet->setMainButton(QStringLiteral("Export 11 Photos"));
    return sheet;
}

Popover* makeColorPopover(QWidget* window)
{
    auto* well = window->findChild<ColorWell*>(QStringLiteral("borderColor"));
    auto* popover = new Popover(well->swatch(), QStringLiteral("Border Color"));
    popover->setPane(window->findChild<QWidget*>(QStringLiteral("inspector")));
    auto* other = new ColorWell(QStringLiteral("Another color"));
    popover->body()->addWidget(other);
    QLabel* note = makeLabel(QStringLiteral("What is changed stays in sight, whatever is chosen here."),
                             TextRole::small, &ThemeColors::text2);
    note->setWordWrap(true);
    popover->body()->addWidget(note);
    return popover;
}

void askForName(QWidget* window)
{
    Question question;
    question.title = QStringLiteral("Save Preset");
    question.message = QStringLiteral("Enter a name for this reusable collection of settings.");
    question.accept = QStringLiteral("Save");
    question.leave = QStringLiteral("Cancel");
    question.field = Question::Field{QStringLiteral("Preset name"), QStringLiteral("Preset name"), QString()};
    ConfirmSheet::ask(window, question, window, [](const Answer&) {});
}

} // namespace

/// Shows the gallery, or saves a picture of it and ends.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption dark(QStringLiteral("dark"), QStringLiteral("Dark appearance."));
    const QCommandLineOption contrast(QStringLiteral("contrast"), QStringLiteral("More contrast."));
    const QCommandLineOption over(QStringLiteral("open"), QStringLiteral("What to open: popover, sheet, question."),
                                  QStringLiteral("name"));
    const QCommandLineOption save(QStringLiteral("save"), QStringLiteral("Saves a picture."), QStringLiteral("file"));
    parser.addOptions({dark, contrast, over, save});
    parser.process(application);

    FerrowStyle::install(application);
    Theme::current().setReducedMotion(parser.isSet(save));
    Theme::current().setAppearance(parser.isSet(dark) ? Appearance::dark : Appearance::light);
    Theme::current().setContrast(parser.isSet(contrast) ? Contrast::more : Contrast::normal);
    const std::unique_ptr<QWidget> window(makeGallery());
    window->resize(1120, 900);
    window->show();

    auto* sheet = makeExportSheet(window.get());
    auto* popover = makeColorPopover(window.get());
    auto* well = window->findChild<ColorWell*>(QStringLiteral("borderColor"));
    QObject::connect(well, &ColorWell::openRequested, popover, [popover] { popover->open(); });
    QObject::connect(window->findChild<QPushButton*>(QStringLiteral("sheetButton")), &QPushButton::clicked, sheet,
                     [sheet] { sheet->open(); });
    const QString opened = parser.value(over);
    QTimer::singleShot(200, window.get(), [&window, opened, sheet, popover] {
        opened == QStringLiteral("sheet") || opened == QStringLiteral("question") ? sheet->open(sheet->mainButton())
                                                                                  : void();
        opened == QStringLiteral("popover") ? popover->open() : void();
        opened == QStringLiteral("question") ? askForName(window.get()) : void();
    });
    if (parser.isSet(save)) {
        QTimer::singleShot(600, window.get(), [&window, &parser, &save] {
            const bool isSaved = window->grab().save(parser.value(save));
            QApplication::exit(isSaved ? 0 : 1);
        });
    }
    return QApplication::exec();
}
