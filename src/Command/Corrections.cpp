// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Corrections.h"

#include "Command/Arguments.h"
#include "Command/Output.h"
#include "Metadata/MetadataTexts.h"
#include "Platform/Files/FileAccess.h"
#include "Shared/UserFacingError.h"

#include <QJsonDocument>
#include <QJsonObject>

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

QByteArray contents(const FileUrl& file, const QString& place)
{
    std::vector<std::byte> bytes;
    try {
        const OpenedFile opened = OpenedFile::open(file);
        const ByteSource source = opened.source();
        if (source.size() > CorrectionFile::maximumSize)
            misuse(place, QStringLiteral("this is larger than 16 MB."));
        bytes = source.bytesAt(0, std::size_t(source.size()));
    } catch (const SystemError&) {
        misuse(place, onOneLine(UserFacingError::message(std::current_exception())));
    } catch (const InputOutputError&) {
        misuse(place, onOneLine(UserFacingError::message(std::current_exception())));
    }
    return {reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())};
}

/// As insertPath() writes it.
FileUrl pathOf(const QJsonObject& object, const QString& place)
{
    const QJsonValue bytes = object.value(QStringLiteral("pathBytes"));
    const QByteArray path = bytes.isString() ? QByteArray::fromBase64(bytes.toString().toLatin1())
                                             : object.value(QStringLiteral("path")).toString().toUtf8();
    if (path.isEmpty())
        misuse(place, QStringLiteral("a path is missing."));
    return FileUrl::fromPath(path).standardized();
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

CorrectionFile::CorrectionFile(const FileUrl& file) : name_(QStringLiteral("--corrections: ") + file.displayPath())
{
    const QByteArray all = contents(file, name_);
    std::int64_t number = 0;
    for (qsizetype start = 0; start < all.size();) {
        const qsizetype end = all.indexOf('\n', start);
        const QByteArray line = all.mid(start, end < 0 ? -1 : end - start).trimmed();
        start = end < 0 ? all.size() : end + 1;
        ++number;
        if (!line.isEmpty())
            read(line, number);
    }
}

void CorrectionFile::read(const QByteArray& line, std::int64_t number)
{
    const QString place = name_ + QStringLiteral(", line %1").arg(number);
    const QJsonDocument document = QJsonDocument::fromJson(line);
    if (!document.isObject())
        misuse(place, QStringLiteral("this is no JSON object, such as {\"path\": \"a.jpg\", \"lens\": \"…\"}."));
    const QJsonObject object = document.object();
    Entry& entry = entries_.try_emplace(pathOf(object, place), Entry{number, {}}).first->second;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (member.key() == QLatin1StringView("path") || member.key() == QLatin1StringView("pathBytes"))
            continue;
        const QJsonValue value = member.value();
        if (!value.isString() && !value.isNull())
            misuse(place, shortened(member.key()) + QStringLiteral(": give a text, or null for missing."));
        addCorrection(entry.values, member.key(), value.toString(), place);
    }
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
