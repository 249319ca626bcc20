// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Arguments.h"

#include "Command/OptionValues.h"
#include "Platform/Files/FileStatus.h"

#include <algorithm>

namespace ferrow::Command {

namespace {

/// The words of a command line, taken one after the other.
class Reader {
public:
    explicit Reader(const std::vector<QByteArray>& words) : words_(words) {}

    [[nodiscard]] bool atEnd() const { return next_ >= words_.size(); }
    [[nodiscard]] const QByteArray& peek() const { return words_[next_]; }
    QByteArray take() { return words_[next_++]; }

private:
    const std::vector<QByteArray>& words_;
    std::size_t next_ = 0;
};

void setBeside(Arguments& arguments, const std::optional<QByteArray>& name)
{
    if (name && !SafePathComponent::isValid(QString::fromUtf8(*name)))
        misuse("--beside", QStringLiteral("“%1” is not a folder name.").arg(QString::fromUtf8(*name)));
    arguments.changes.emplace_back([name](Settings& settings) {
        settings.configuration.destinationMode = ExportDestinationMode::sourceSubfolder;
        if (name)
            settings.configuration.sourceSubfolderName = QString::fromUtf8(*name);
    });
}

/// The word behind `--beside` is its name unless it must be a photo or a folder to frame: a file, a path with a slash,
/// or the one folder on the command line. Answers a folder's word, about which only the whole line can tell.
/// `--beside=NAME` leaves no doubt.
std::optional<QByteArray> applyBeside(Arguments& arguments, Reader& reader, const std::optional<QByteArray>& attached)
{
    std::optional<QByteArray> name = attached;
    if (!name && !reader.atEnd() && !reader.peek().startsWith('-') && !reader.peek().contains('/')) {
        const FileKind kind = fileKind(FileUrl::fromPath(reader.peek()));
        if (kind == FileKind::folder)
            return reader.take();
        if (kind == FileKind::missing)
            name = reader.take();
    }
    setBeside(arguments, name);
    return std::nullopt;
}

void settleBeside(Arguments& arguments, const QByteArray& folder)
{
    if (arguments.roots.empty()) {
        arguments.roots.push_back(FileUrl::fromPath(folder));
        setBeside(arguments, std::nullopt);
        return;
    }
    setBeside(arguments, folder);
}

/// A word that begins with dashes: an option, and its value where that is attached.
struct OptionWord {
    QByteArray name;
    std::optional<QByteArray> attached;
};

OptionWord split(const QByteArray& word)
{
    const qsizetype equals = word.indexOf('=');
    if (equals < 0)
        return {word, std::nullopt};
    return {word.left(equals), word.mid(equals + 1)};
}

/// Refuses what there is not, and what is of no use to the command; null for framing.
const Option& optionFor(const OtherCommand* command, const QByteArray& name)
{
    const Option* option = findOption(name);
    if (command && !(option && (option->takers & command->taker)))
        misuse(name, QStringLiteral("%1 has no such option.").arg(QString::fromLatin1(command->name)));
    if (!option)
        misuse(name, QStringLiteral("there is no such option."));
    if (!command && !(option->takers & takenByFraming))
        misuse(name, QStringLiteral("it is for “run”, which frames what a plan says."));
    return *option;
}

void applyOption(Arguments& arguments, Reader& reader, const Option& option, const OptionWord& word)
{
    if (option.value && !word.attached && reader.atEnd())
        misuse(word.name, QStringLiteral("a value is missing."));
    if (!option.value && word.attached)
        misuse(word.name, QStringLiteral("it takes no value."));
    option.apply(arguments, word.name, word.attached ? *word.attached : option.value ? reader.take() : QByteArray());
}

const OtherCommand* takeCommand(Reader& reader)
{
    const auto commands = otherCommands();
    const auto command = std::ranges::find_if(
        commands, [&](const OtherCommand& each) { return !reader.atEnd() && reader.peek() == each.name; });
    if (command == commands.end())
        return nullptr;
    reader.take();
    return &*command;
}

void checkFilter(const Arguments& arguments, const std::optional<QByteArray>& batchOption)
{
    if (batchOption)
        misuse(
            "--filter",
            QStringLiteral("it has one photo and standard output: leave out %1.").arg(QString::fromUtf8(*batchOption)));
    if (!arguments.roots.empty())
        misuse("--filter", QStringLiteral("it reads standard input: name no photo."));
}

void checkPaths(const Arguments& arguments)
{
    if (arguments.mode == Arguments::Mode::plan && arguments.roots.size() != 1)
        throw UsageError{QStringLiteral("PLAN: name one plan.")};
    if (arguments.mode == Arguments::Mode::report && arguments.roots.empty())
        throw UsageError{QStringLiteral("FILE: name what runs have printed with --json.")};
    if (arguments.roots.empty())
        throw UsageError{QStringLiteral("PATH: name at least one photo or folder.")};
}

} // namespace

Arguments parseArguments(const std::vector<QByteArray>& words)
{
    Arguments arguments;
    Reader reader(words);
    const OtherCommand* command = takeCommand(reader);
    if (command)
        arguments.mode = command->mode;
    bool onlyPaths = false;
    std::optional<QByteArray> batchOption;
    std::optional<QByteArray> besideFolder;
    while (!reader.atEnd()) {
        const QByteArray word = reader.take();
        if (onlyPaths || !word.startsWith('-') || word == "-") {
            arguments.roots.push_back(FileUrl::fromPath(word));
            continue;
        }
        onlyPaths = word == "--";
        if (onlyPaths)
            continue;
        const OptionWord parts = split(word);
        const Option& option = optionFor(command, parts.name);
        if (!(option.takers & takenByFilter))
            batchOption = word;
        if (option.apply)
            applyOption(arguments, reader, option, parts);
        else
            besideFolder = applyBeside(arguments, reader, parts.attached);
    }
    if (besideFolder)
        settleBeside(arguments, *besideFolder);
    if (arguments.mode == Arguments::Mode::help || arguments.mode == Arguments::Mode::version)
        return arguments;
    if (arguments.mode == Arguments::Mode::filter)
        checkFilter(arguments, batchOption);
    else
        checkPaths(arguments);
    return arguments;
}

} // namespace ferrow::Command
