// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Completions.h"

#include "Command/Options.h"

#include <QStringList>

namespace ferrow::Command {

namespace {

using Kind = Completion::Kind;

/// Calls `visit` with each option that one of `takers` takes.
template <typename Visit>
void forEachOption(unsigned takers, Visit visit)
{
    for (const OptionSection& section : optionSections())
        for (const Option& option : section.options)
            if (option.takers & takers)
                visit(option);
}

/// The long and, where it has one, the short.
QStringList namesOf(const Option& option)
{
    QStringList names{QString::fromLatin1(option.name)};
    if (*option.letter)
        names << QString::fromLatin1(option.letter);
    return names;
}

QString joined(const std::vector<QByteArray>& words)
{
    QStringList texts;
    for (const QByteArray& word : words)
        texts << QString::fromLatin1(word);
    return texts.join(u' ');
}

/// What fits beside a name in a shell's list.
QString summary(const Option& option)
{
    return QString::fromUtf8(option.help).section(u';', 0, 0);
}

QString commandNames(const QString& separator)
{
    QStringList names;
    for (const OtherCommand& command : otherCommands())
        names << QString::fromLatin1(command.name);
    return names.join(separator);
}

/// A value may be missing, so that what follows may be a path as well.
bool mayStandAlone(const Option& option)
{
    return !option.value || !option.apply;
}

QString bashNames(unsigned takers)
{
    QStringList names;
    forEachOption(takers, [&](const Option& option) { names += namesOf(option); });
    return names.join(u' ');
}

/// What to do about the value of an option.
QString bashAction(const Completion& completion)
{
    switch (completion.kind) {
    case Kind::nothing:
        break;
    case Kind::words:
        return QStringLiteral("_ferrow_batch_words '%1'; ").arg(joined(completion.words));
    case Kind::file:
        return QStringLiteral("_ferrow_batch_paths default; ");
    case Kind::folder:
        return QStringLiteral("_ferrow_batch_paths dirnames; ");
    }
    return {};
}

QString zshQuoted(QString text)
{
    for (const QString& special : {QStringLiteral("\\"), QStringLiteral(":"), QStringLiteral("["), QStringLiteral("]")})
        text.replace(special, u'\\' + special);
    return text.replace(u'\'', QStringLiteral("'\\''"));
}

QString zshAction(const Completion& completion)
{
    switch (completion.kind) {
    case Kind::nothing:
        return QStringLiteral(" ");
    case Kind::words:
        // A word that goes on behind its "=" has no blank after it.
        return (completion.words.front().endsWith('=') ? QStringLiteral("{compadd -S \"\" -- %1}")
                                                       : QStringLiteral("(%1)"))
            .arg(joined(completion.words));
    case Kind::file:
        return QStringLiteral("_files");
    case Kind::folder:
        return QStringLiteral("_files -/");
    }
    return {};
}

/// Every option may come again: the last one counts, and captions have theirs each.
QStringList zshSpecs(const Option& option)
{
    QStringList specs;
    for (const QString& name : namesOf(option)) {
        QString spec = QStringLiteral("'*") + name;
        if (option.value)
            spec += mayStandAlone(option) ? QStringLiteral("=-") : QStringLiteral("=");
        spec += u'[' + zshQuoted(summary(option)) + u']';
        if (option.value)
            spec += (mayStandAlone(option) ? QStringLiteral("::") : QStringLiteral(":")) +
                    zshQuoted(QString::fromLatin1(option.value)) + u':' + zshAction(option.completion);
        specs << spec + u'\'';
    }
    return specs;
}

QString zshArguments(unsigned takers, const QString& operands)
{
    QStringList specs;
    forEachOption(takers, [&](const Option& option) { specs += zshSpecs(option); });
    specs << operands;
    return QStringLiteral("    _arguments \\\n        ") + specs.join(QStringLiteral(" \\\n        ")) + u'\n';
}

QString fishQuoted(QString text)
{
    return u'\'' + text.replace(u'\\', QStringLiteral("\\\\")).replace(u'\'', QStringLiteral("\\'")) + u'\'';
}

QString fishOption(const Option& option)
{
    QStringList takers;
    if (option.takers & takenByFraming)
        takers << QStringLiteral("frame");
    for (const OtherCommand& command : otherCommands())
        if (option.takers & command.taker)
            takers << QString::fromLatin1(command.name);
    QString line = QStringLiteral("complete -c ferrow-batch -n '__ferrow_batch_is %1' -l %2")
                       .arg(takers.join(u' '), QString::fromLatin1(option.name + 2));
    if (*option.letter)
        line += QStringLiteral(" -s ") + QString::fromLatin1(option.letter + 1);
    line += QStringLiteral(" -d ") + fishQuoted(summary(option));
    if (mayStandAlone(option))
        return line + u'\n';
    switch (option.completion.kind) {
    case Kind::nothing:
        line += QStringLiteral(" -x");
        break;
    case Kind::words:
        line += QStringLiteral(" -x -a ") + fishQuoted(joined(option.completion.words));
        break;
    case Kind::file:
        line += QStringLiteral(" -r -F");
        break;
    case Kind::folder:
        line += QStringLiteral(" -x -a '(__fish_complete_directories (commandline -ct))'");
        break;
    }
    return line + u'\n';
}

} // namespace

QString bashCompletion()
{
    QString values;
    forEachOption(takenByAll, [&](const Option& option) {
        if (!mayStandAlone(option))
            values +=
                QStringLiteral("    %1) %2return ;;\n").arg(namesOf(option).join(u'|'), bashAction(option.completion));
    });
    QString names;
    for (const OtherCommand& command : otherCommands())
        names += QStringLiteral("        %1) _ferrow_batch_words '%2' ;;\n")
                     .arg(QString::fromLatin1(command.name), bashNames(command.taker));
    names += QStringLiteral("        *) _ferrow_batch_words '%1' ;;\n").arg(bashNames(takenByFraming));
    return QStringLiteral(R"(# bash completion for ferrow-batch, made of its options' table.

_ferrow_batch_words()
{
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
    [[ ${COMPREPLY[0]} != *= ]] || compopt -o nospace
}

# Paths are left to the shell, which knows about tildes and quotes.
_ferrow_batch_paths()
{
    compopt -o "$1"
}

_ferrow_batch()
{
    local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} command= word
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ $word == -- ]]; then
            _ferrow_batch_paths default
            return
        fi
    done
    # Words come taken apart at their "=".
    if [[ $current == = ]]; then
        current=
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $option in
%1    esac
    [[ $COMP_CWORD -lt 2 ]] || command=${COMP_WORDS[1]}
    if [[ $current == -* ]]; then
        case $command in
%2        esac
        return
    fi
    _ferrow_batch_paths default
    if [[ -z $command ]]; then
        _ferrow_batch_words '%3'
        compopt -o filenames
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -F _ferrow_batch ferrow-batch
)")
        .arg(values, names, commandNames(QStringLiteral(" ")));
}

QString zshCompletion()
{
    QString text = QStringLiteral("#compdef ferrow-batch\n# Made of the options' table.\n\ncase $words[2] in\n");
    for (const OtherCommand& command : otherCommands())
        text +=
            QStringLiteral("%1)\n").arg(QString::fromLatin1(command.name)) +
            zshArguments(
                command.taker,
                QStringLiteral("'1: : ' '*:%1:_files'").arg(QString::fromLatin1(command.operand).section(u'.', 0, 0))) +
            QStringLiteral("    ;;\n");
    return text + QStringLiteral("*)\n") +
           zshArguments(takenByFraming, QStringLiteral("'1:PATH:{compadd -- %1; _files}' '*:PATH:_files'")
                                            .arg(commandNames(QStringLiteral(" ")))) +
           QStringLiteral("    ;;\nesac\n");
}

QString fishCompletion()
{
    QString text = QStringLiteral(R"(# fish completion for ferrow-batch, made of its options' table.

function __ferrow_batch_is
    set -l words (commandline -opc)
    if contains -- "$words[2]" %1
        contains -- $words[2] $argv
    else
        contains -- frame $argv
    end
end

)")
                       .arg(commandNames(QStringLiteral(" ")));
    for (const OtherCommand& command : otherCommands())
        text += QStringLiteral("complete -c ferrow-batch -n 'test (count (commandline -opc)) -eq 1' -a %1 -d %2\n")
                    .arg(QString::fromLatin1(command.name), fishQuoted(QString::fromUtf8(command.help)));
    forEachOption(takenByAll, [&](const Option& option) { text += fishOption(option); });
    return text;
}

} // namespace ferrow::Command
