// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Options.h"

#include "Command/Completions.h"
#include "Support/TestSupport.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

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

/// The lines that `program` prints.
QStringList linesOf(const QString& program, const QStringList& words)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(u"env"_s, QStringList{u"LC_ALL=C.UTF-8"_s, program} + words);
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0);
    return QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

/// What bash offers for the last of `words`, and behind it the ways of completing that it is told of, each with a "+".
QStringList bashOffers(const QStringList& words)
{
    const QString script = bashCompletion() + uR"(
        compopt() { ways+=("+$2"); }
        COMP_WORDS=(ferrow-batch "$@") COMP_CWORD=$# ways=()
        _ferrow_batch
        printf '%s\n' "${COMPREPLY[@]}" "${ways[@]}")"_s;
    return linesOf(u"bash"_s, QStringList{u"--norc"_s, u"-c"_s, script, u"bash"_s} + words);
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

TEST(Completion, isOfferedByBash)
{
    const std::pair<QStringList, QStringList> rows[] = {
        {{u"--fo"_s}, {u"--format"_s}},
        {{u"a.jpg"_s, u"--form"_s}, {u"--format"_s}},
        {{u"--format"_s, u""_s}, {u"jpeg"_s, u"png"_s, u"tiff"_s, u"heic"_s}},
        // Bash takes words apart at their "=".
        {{u"--format"_s, u"="_s}, {u"jpeg"_s, u"png"_s, u"tiff"_s, u"heic"_s}},
        {{u"--format"_s, u"="_s, u"p"_s}, {u"png"_s}},
        {{u"--caption-font"_s, u"g"_s}, {u"geometric"_s}},
        {{u"--set"_s, u"l"_s}, {u"lens="_s, u"+nospace"_s}},
        {{u"--set"_s, u"lens"_s, u"="_s, u"H"_s}, {u"+default"_s}},
        {{u"--quality"_s, u""_s}, {}},
        {{u"--output"_s, u""_s}, {u"+dirnames"_s}},
        {{u"--logo"_s, u"x"_s}, {u"+default"_s}},
        {{u"--beside"_s, u"x"_s}, {u"+default"_s}},
        {{u"insp"_s}, {u"inspect"_s, u"+default"_s, u"+filenames"_s}},
        {{u"a.jpg"_s, u"insp"_s}, {u"+default"_s}},
        {{u"run"_s, u"--"_s}, optionNames(takenByRun)},
        {{u"inspect"_s, u"--"_s}, optionNames(takenByInspect)},
        {{u"--"_s}, optionNames(takenByFraming)},
        {{u"--"_s, u"--form"_s}, {u"+default"_s}},
    };
    for (const auto& [words, offered] : rows)
        EXPECT_EQ(bashOffers(words), offered) << words.join(u' ').toStdString();
}

TEST(Completion, isOfferedByFish)
{
    const QString fish = QStandardPaths::findExecutable(u"fish"_s);
    if (fish.isEmpty())
        GTEST_SKIP() << "NOT TESTED: completion in fish, which is not here.";
    const std::pair<QString, QStringList> rows[] = {
        {u"--format p"_s, {u"png"_s}},
        {u"--format=p"_s, {u"--format=png"_s}},
        {u"--caption-font g"_s, {u"geometric"_s}},
        {u"--set l"_s, {u"lens="_s}},
        {u"run --sh"_s, {u"--shard"_s}},
        {u"--sh"_s, {u"--shape"_s, u"--shape-turns"_s}},
        {u"insp"_s, {u"inspect"_s}},
    };
    test::TemporaryFolder home;
    for (const auto& [line, offered] : rows) {
        const QString script =
            fishCompletion() + u"set -e fish_complete_path\ncomplete -C 'ferrow-batch %1'"_s.arg(line);
        QStringList words;
        for (const QString& each :
             linesOf(u"env"_s, {u"HOME="_s + QString::fromUtf8(home.url().path()), fish, u"-N"_s, u"-c"_s, script}))
            words += each.section(u'\t', 0, 0);
        EXPECT_EQ(words, offered) << line.toStdString();
    }
}

} // namespace ferrow::Command
