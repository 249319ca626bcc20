// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Corrections.h"

#include "Command/Arguments.h"
#include "Command/Output.h"
#include "Metadata/MetadataTexts.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <unordered_set>

namespace ferrow::Command {

namespace {

/// Lines that are named one by one before the rest is counted.
constexpr std::size_t mostTold = 5;

[[noreturn]] void misuse(const QString& place, const QString& reason)
{
    throw UsageError{place + QStringLiteral(": ") + reason};
}

/// What a file calls a field, for an error: a name may be as long as the file.
QString shortened(const QString& name)
{
    constexpr qsizetype most = 60;
    return name.size() <= most ? name : name.left(most) + QStringLiteral("…");
}

} // namespace

void addCorrection(MetadataCorrections& corrections, const QString& name, const QString& text, const QString& place)
{
    const auto field = fromRawValue<MetadataField>(name);
    if (!field) {
        QStringList known;
        for (const MetadataField each : allCases<MetadataField>())
            known << rawValue(each);
        misuse(place, QStringLiteral("“%1” is not one of %2.").arg(shortened(name), known.join(QStringLiteral(", "))));
    }
    try {
        corrections[*field] = MetadataTexts::parsed(*field, text);
    } catch (MetadataTexts::Error error) {
        misuse(place, name + QStringLiteral(": ") + UserFacingError::message(error));
    }
}

void addCorrections(MetadataCorrections& corrections, const QJsonObject& object, const QString& place)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!member->isString() && !member->isNull())
            misuse(place, shortened(member.key()) + QStringLiteral(": give a text, or null for missing."));
        addCorrection(corrections, member.key(), member->toString(), place);
    }
}

QJsonObject encodedCorrections(const MetadataCorrections& corrections)
{
    QJsonObject object;
    for (const auto& [field, value] : corrections) {
        const QString text = MetadataTexts::text(value);
        object.insert(rawValue(field), text.isEmpty() ? QJsonValue() : QJsonValue(text));
    }
    return object;
}

CorrectionFile::CorrectionFile(const FileUrl& file) : name_(QStringLiteral("--corrections: ") + file.displayPath())
{
    readJsonLines(file, maximumSize, name_, [this](const JsonLine& line) { read(line); });
}

void CorrectionFile::read(const JsonLine& line)
{
    const QString place = name_ + QStringLiteral(", line %1").arg(line.number);
    if (!line.object)
        misuse(place, QStringLiteral("this is no JSON object, such as {\"path\": \"a.jpg\", \"lens\": \"…\"}."));
    QJsonObject values = *line.object;
    const QByteArray path = pathBytes(values, QStringLiteral("path"));
    if (path.isEmpty())
        misuse(place, QStringLiteral("a path is missing."));
    values.remove(QStringLiteral("path"));
    values.remove(QStringLiteral("pathBytes"));
    const FileUrl photo = FileUrl::fromPath(path).standardized();
    addCorrections(entries_.try_emplace(photo, Entry{line.number, {}}).first->second.values, values, place);
}

const MetadataCorrections& CorrectionFile::of(const FileUrl& photo) const
{
    static const MetadataCorrections none;
    const auto entry = entries_.find(photo);
    return entry == entries_.end() ? none : entry->second.values;
}

void CorrectionFile::tellUnused(const std::vector<FileUrl>& photos) const
{
    const std::unordered_set<FileUrl> known(photos.begin(), photos.end());
    std::vector<std::pair<std::int64_t, FileUrl>> unused;
    for (const auto& [url, entry] : entries_)
        if (!known.contains(url))
            unused.emplace_back(entry.line, url);
    std::ranges::sort(unused);
    for (std::size_t i = 0; i < std::min(unused.size(), mostTold); ++i)
        printError(name_ + QStringLiteral(", line %1: none of the photos is ").arg(unused[i].first) +
                   unused[i].second.displayPath());
    if (unused.size() > mostTold)
        printError(name_ + QStringLiteral(": %1 more lines name none of the photos.").arg(unused.size() - mostTold));
}

} // namespace ferrow::Command
