// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/BatchExportModels.h"

#include "Platform/Base/ByteText.h"

#include <QTextBoundaryFinder>

#include <limits>

namespace ferrow {

namespace {

/// Bytes of UTF-8 that a name may take. A number and an extension come on top within the 255 bytes of a file name.
constexpr qsizetype maximumNameBytes = 180;

QString fallbackName()
{
    return QStringLiteral("framed");
}

/// What no name may hold: separators of paths here and elsewhere, and characters that are not seen.
bool isForbidden(char32_t character)
{
    if (character == U'/' || character == U':' || character == U'\\')
        return true;
    const QChar::Category category = QChar::category(character);
    return category == QChar::Other_Control || category == QChar::Other_Format;
}

/// The first code point at `position`, and how many UTF-16 units it takes. A surrogate that stands alone is itself.
std::pair<char32_t, qsizetype> codePointAt(const QString& text, qsizetype position)
{
    const QChar unit = text.at(position);
    if (unit.isHighSurrogate() && position + 1 < text.size() && text.at(position + 1).isLowSurrogate())
        return {QChar::surrogateToUcs4(unit, text.at(position + 1)), 2};
    return {unit.unicode(), 1};
}

QString withHyphensForForbidden(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype position = 0; position < text.size();) {
        const auto [character, length] = codePointAt(text, position);
        if (isForbidden(character))
            result += u'-';
        else
            result += QStringView(text).mid(position, length);
        position += length;
    }
    return result;
}

std::int64_t incremented(std::int64_t number)
{
    if (number == std::numeric_limits<std::int64_t>::max())
        qFatal("A number ran over.");
    return number + 1;
}

FileUrl numbered(const FileUrl& proposed, std::int64_t number)
{
    QByteArray name = proposed.stem() + ' ' + QByteArray::number(qint64(number));
    if (const QByteArray extension = proposed.pathExtension(); !extension.isEmpty())
        name += '.' + extension;
    return proposed.deletingLastPathComponent().appending(name);
}

FileUrl firstFreeNumbered(const FileUrl& proposed, ReservedDestinations& reserved,
                          const std::function<bool(const FileUrl&)>& fileExists)
{
    std::int64_t& number = reserved.nextNumbers.try_emplace(reserved.key(proposed), 2).first->second;
    while (true) {
        FileUrl candidate = numbered(proposed, number);
        number = incremented(number);
        if (!reserved.contains(candidate) && !fileExists(candidate))
            return candidate;
    }
}

} // namespace

QString BatchExportOutcome::filename() const
{
    if (const auto* failed = std::get_if<Failed>(&result))
        return failed->failure.filename;
    if (const auto* exported = std::get_if<Exported>(&result))
        return exported->filename;
    return std::get<Canceled>(result).filename;
}

bool SafePathComponent::isValid(const QString& name)
{
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty() || trimmed == QStringLiteral(".") || trimmed == QStringLiteral(".."))
        return false;
    if (trimmed.toUtf8().size() > maximumNameBytes)
        return false;
    for (qsizetype position = 0; position < trimmed.size();) {
        const auto [character, length] = codePointAt(trimmed, position);
        if (isForbidden(character))
            return false;
        position += length;
    }
    return true;
}

QByteArray FilenameTemplate::filename(const QString& nameTemplate, const FileUrl& sourceURL, std::int64_t index,
                                      const QString& extension)
{
    QString name = nameTemplate;
    name.replace(QStringLiteral("{filename}"), ByteText::decode(sourceURL.stem()));
    name.replace(QStringLiteral("{index}"), QString::number(qint64(incremented(index))));
    // Stray bytes of two parts can together spell a character, which the check below must see.
    name = ByteText::decode(ByteText::encode(name));
    name = withHyphensForForbidden(name).trimmed();
    if (name.isEmpty())
        name = fallbackName();
    return ByteText::encode(truncatedUTF8(name, maximumNameBytes)) + '.' + extension.toUtf8();
}

QString FilenameTemplate::truncatedUTF8(const QString& text, std::int64_t maximumBytes)
{
    if (ByteText::encode(text).size() <= maximumBytes)
        return text;
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    qsizetype taken = 0;
    std::int64_t bytes = 0;
    for (qsizetype next = boundaries.toNextBoundary(); next > taken; next = boundaries.toNextBoundary()) {
        bytes += ByteText::encode(text.mid(taken, next - taken)).size();
        if (bytes > maximumBytes)
            break;
        taken = next;
    }
    return taken > 0 ? text.left(taken) : fallbackName();
}

bool ReservedDestinations::claimFile(const FileUrl& url)
{
    const std::optional<FileNumber> number = fileNumber(url);
    return !number || files.insert(*number).second;
}

std::optional<BatchCollisionResolver::Resolution>
BatchCollisionResolver::destination(const FileUrl& proposed, CollisionRule rule, ReservedDestinations& reserved,
                                    const std::function<bool(const FileUrl&)>& fileExists)
{
    const auto take = [&](const FileUrl& url, bool replaceExisting) {
        reserved.add(url);
        return Resolution{url, replaceExisting};
    };
    // Two photos of one batch never share an output, whatever the rule says about files that were there before.
    if (!reserved.contains(proposed)) {
        if (!fileExists(proposed))
            return take(proposed, false);
        if (rule == CollisionRule::skip)
            return std::nullopt;
        if (rule == CollisionRule::replace && reserved.claimFile(proposed))
            return take(proposed, true);
    }
    return take(firstFreeNumbered(proposed, reserved, fileExists), false);
}

void feed(ValueHash& hash, const BatchExportConfiguration& configuration)
{
    feed(hash, configuration.destinationMode);
    feed(hash, configuration.chosenFolder.has_value());
    if (configuration.chosenFolder)
        hash.add(std::hash<FileUrl>{}(*configuration.chosenFolder));
    feed(hash, configuration.sourceSubfolderName);
    feed(hash, configuration.filenameTemplate);
    feed(hash, configuration.collisionRule);
    feed(hash, configuration.maximumConcurrentExports);
}

} // namespace ferrow
