// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Arguments.h"

#include "Command/OptionValues.h"
#include "Models/PhotoMetadata.h"

namespace ferrow::Command {

namespace {

/// What fits a terminal of the usual width.
constexpr qsizetype lineWidth = 79;
/// Where what an option does is told.
constexpr qsizetype helpColumn = 27;

/// `text` behind `start`, with what does not fit in further lines that begin at `column`.
QString paragraph(const QString& start, qsizetype column, const QString& text)
{
    QString all;
    QString line = start;
    for (const QString& word : text.split(u' ')) {
        const bool isBegun = line.size() > column;
        if (line.size() >= lineWidth || (isBegun && line.size() + 1 + word.size() > lineWidth)) {
            all += line + u'\n';
            line.clear();
        }
        line = line.size() > column ? line + u' ' + word : line.leftJustified(column) + word;
    }
    return all + line + u'\n';
}

/// A name, and behind it or, where it is long, below it what it does.
QString entry(const QString& name, const QString& help)
{
    const QString start = QStringLiteral("  ") + name;
    if (start.size() < helpColumn)
        return paragraph(start, helpColumn, help);
    return start + u'\n' + paragraph({}, helpColumn, help);
}

QString entryOf(const Option& option)
{
    QString name = QString::fromLatin1(option.name);
    if (*option.letter)
        name.prepend(QString::fromLatin1(option.letter) + QStringLiteral(", "));
    if (option.value)
        name += u' ' + QString::fromLatin1(option.value);
    return entry(name, QString::fromUtf8(option.help));
}

/// "Positions: …", with its further lines two to the right.
QString listing(const QString& title, const QStringList& words)
{
    return paragraph(title, 2, words.join(QStringLiteral(", ")));
}

} // namespace

QString helpText()
{
    QString text = QStringLiteral(R"(Usage: ferrow-batch [options] PATH...
       ferrow-batch --filter [options] < photo.jpg > framed.jpg
       ferrow-batch --plan-to PLAN [options] PATH...
       ferrow-batch run [--shard K/N] [--resume] PLAN
       ferrow-batch report [--json] FILE...
       ferrow-batch inspect [--json] PATH...

Frames photos: files, and folders recursively. Originals are never changed.
)");
    for (const OptionSection& section : optionSections()) {
        text += u'\n' + QString::fromUtf8(section.title) + u'\n';
        for (const Option& option : section.options)
            text += entryOf(option);
    }
    text += QStringLiteral("\nIn place of framing\n");
    for (const OtherCommand& command : otherCommands())
        text += entry(QString::fromLatin1(command.name) + u' ' + QString::fromLatin1(command.operand),
                      QString::fromUtf8(command.help));
    QStringList positions;
    for (const auto& [word, position] : positionWords())
        positions << QString::fromLatin1(word);
    QStringList fields;
    for (const MetadataField field : allCases<MetadataField>())
        fields << rawValue(field);
    text += u'\n' + listing(QStringLiteral("Positions:"), positions);
    text += u'\n' + listing(QStringLiteral("Fields:"), fields);
    text += QStringLiteral(R"(
Exit status: 0 all done, 1 some photo or the output folder failed,
  2 wrong usage, 130 interrupted.
)");
    return text;
}

} // namespace ferrow::Command
