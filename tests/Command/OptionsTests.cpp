// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Options.h"

#include "Support/TestSupport.h"

#include <QFile>
#include <QRegularExpression>

namespace ferrow::Command {

using namespace Qt::StringLiterals;

namespace {

QStringList optionNames(unsigned takers)
{
    QStringList names;
    for (const OptionSection& section : optionSections())
        for (const Option& option : section.options)
            if (option.takers & takers)
                names += QString::fromLatin1(option.name);
    return names;
}

QStringList wordsIn(const QString& text)
{
    QStringList words;
    for (auto match = QRegularExpression(u"(?<![-\\w])--[a-z][-a-z]*"_s).globalMatch(text); match.hasNext();)
        words += match.next().captured();
    return words;
}

QStringList sorted(QStringList list)
{
    list.removeDuplicates();
    list.sort();
    return list;
}

} // namespace

TEST(Options, areAllInTheHelpAndInTheManualAndNoOthers)
{
    const QStringList all = sorted(optionNames(takenByAll));
    EXPECT_EQ(sorted(wordsIn(helpText())), all);
    QFile manual(QStringLiteral(FERROW_PACKAGING "/man/ferrow-batch.1"));
    ASSERT_TRUE(manual.open(QIODevice::ReadOnly));
    EXPECT_EQ(sorted(wordsIn(QString::fromUtf8(manual.readAll()).replace(u"\\-"_s, u"-"_s))), all);
    for (const QString& line : helpText().split(u'\n'))
        EXPECT_LE(line.size(), 79) << line.toStdString();
}

TEST(Options, takeEveryWordThatShellsOffer)
{
    for (const OptionSection& section : optionSections())
        for (const Option& option : section.options)
            for (const QByteArray& word : option.completion.words)
                EXPECT_NO_THROW((void)parseArguments({option.name, word, "photo.jpg"}))
                    << option.name << word.toStdString();
}

} // namespace ferrow::Command
