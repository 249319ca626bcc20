// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/PlanFile.h"

#include "Command/Corrections.h"
#include "Command/JsonLines.h"
#include "Command/Output.h"
#include "Platform/Files/FileAccess.h"
#include "Platform/Files/FilePlacement.h"
#include "Shared/UserFacingError.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <span>
#include <utility>

namespace ferrow::Command {

namespace {

/// A newer program may write other members; it must say so here where an older one would frame otherwise.
constexpr int currentVersion = 1;

/// In bytes: some millions of photos.
constexpr std::int64_t maximumSize = 1'900'000'000;

constexpr QLatin1StringView versionKey{"ferrowPlan"};
constexpr QLatin1StringView presetsKey{"presets"};
constexpr QLatin1StringView logoKey{"logo"};
constexpr QLatin1StringView photoKey{"photo"};
constexpr QLatin1StringView destinationKey{"destination"};
constexpr QLatin1StringView widthKey{"width"};
constexpr QLatin1StringView heightKey{"height"};
constexpr QLatin1StringView replaceKey{"replace"};
constexpr QLatin1StringView replacedSizeKey{"replacedSize"};
constexpr QLatin1StringView replacedModifiedKey{"replacedModified"};
constexpr QLatin1StringView correctionsKey{"corrections"};
constexpr QLatin1StringView failureKey{"failure"};

/// In a line of a plan. Caught by whoever knows its number.
struct Unreadable {
    QString reason;
};

[[noreturn]] void refuse(const QString& reason)
{
    throw Unreadable{reason};
}

FileUrl placeOf(const QJsonObject& object, QLatin1StringView key)
{
    const auto url = pathIn(object, key);
    if (!url)
        refuse(QStringLiteral("“%1” is no path.").arg(key));
    return *url;
}

/// JSON's numbers would cut nanoseconds.
QString number(std::int64_t value)
{
    return QString::number(qint64(value));
}

std::int64_t number(const QJsonObject& object, QLatin1StringView key)
{
    bool isNumber = false;
    const qint64 value = object.value(key).toVariant().toString().toLongLong(&isNumber);
    if (!isNumber || value < 0)
        refuse(QStringLiteral("“%1” is no number.").arg(key));
    return value;
}

QJsonObject encoded(const PlannedPhoto& photo)
{
    QJsonObject object;
    insertPath(object, photoKey, photo.source);
    if (!photo.failure.isEmpty())
        object.insert(failureKey, photo.failure);
    if (!photo.destination)
        return object;
    insertPath(object, destinationKey, *photo.destination);
    object.insert(widthKey, qint64(photo.size.width));
    object.insert(heightKey, qint64(photo.size.height));
    if (photo.replaceExisting)
        object.insert(replaceKey, true);
    if (!photo.corrections.empty())
        object.insert(correctionsKey, encodedCorrections(photo.corrections));
    if (photo.replaced) {
        object.insert(replacedSizeKey, number(photo.replaced->size));
        object.insert(replacedModifiedKey, number(photo.replaced->modifiedNanoseconds));
    }
    return object;
}

PlannedPhoto decodedPhoto(const QJsonObject& object)
{
    PlannedPhoto photo;
    photo.source = placeOf(object, photoKey);
    photo.failure = object.value(failureKey).toString();
    if (!object.contains(destinationKey))
        return photo;
    photo.destination = placeOf(object, destinationKey);
    photo.size = {number(object, widthKey), number(object, heightKey)};
    photo.replaceExisting = object.value(replaceKey).toBool();
    try {
        addCorrections(photo.corrections, object.value(correctionsKey).toObject(), correctionsKey);
    } catch (const UsageError& error) {
        refuse(error.message);
    }
    if (object.contains(replacedSizeKey))
        photo.replaced = {number(object, replacedSizeKey), number(object, replacedModifiedKey)};
    return photo;
}

QJsonObject encodedHead(const PlanHead& plan)
{
    PresetDocument document;
    // What tells presets apart is no part of a plan.
    constexpr QUuid id(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const QDateTime epoch = QDateTime::fromSecsSinceEpoch(0).toUTC();
    document.presets.push_back({id, QStringLiteral("Plan"), plan.payload, epoch, epoch});
    QJsonObject head{{versionKey, currentVersion}, {presetsKey, QJsonDocument::fromJson(document.encode()).object()}};
    if (plan.logo)
        insertPath(head, logoKey, *plan.logo);
    return head;
}

void readHead(const QJsonObject& head, PlanHead& plan)
{
    if (!head.contains(versionKey))
        refuse(QStringLiteral("this is no plan."));
    if (number(head, versionKey) > currentVersion)
        refuse(QStringLiteral("this plan was made by a newer version of Ferrow."));
    try {
        const auto document = PresetDocument::decode(QJsonDocument(head.value(presetsKey).toObject()).toJson());
        if (document.presets.size() != 1)
            refuse(QStringLiteral("it must have one preset."));
        plan.payload = document.presets.front().payload;
    } catch (const PresetCodingError& error) {
        refuse(onOneLine(UserFacingError::message(error)));
    }
    if (head.contains(logoKey))
        plan.logo = placeOf(head, logoKey);
}

} // namespace

std::optional<ReplacedFile> ReplacedFile::at(const FileUrl& file)
try {
    const OpenedFile opened = OpenedFile::open(file);
    return ReplacedFile{opened.size(), opened.identity().modifiedNanoseconds};
} catch (const SystemError&) {
    return std::nullopt;
}

PlanFile PlanFile::read(const FileUrl& file, const Shard& part)
{
    const QString place = file.displayPath();
    PlanFile plan;
    bool hasHead = false;
    std::int64_t photos = 0;
    readJsonLines(file, maximumSize, place, [&](const JsonLine& line) {
        try {
            if (!line.object)
                refuse(QStringLiteral("this is no plan."));
            if (!std::exchange(hasHead, true))
                readHead(*line.object, plan.head);
            else if (photos++ % part.count == part.number - 1)
                plan.photos.push_back(decodedPhoto(*line.object));
        } catch (const Unreadable& error) {
            refuseLine(place, line.number, error.reason);
        }
    });
    if (!hasHead)
        refuseLine(place, 1, QStringLiteral("this is no plan."));
    return plan;
}

void PlanFile::write(const FileUrl& file, const PlanHead& head, const std::function<void(const Add&)>& addPhotos)
{
    writeAtomically(file, [&](ByteSink& sink) {
        const auto addLine = [&](const QJsonObject& object) {
            const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
            sink.write(std::as_bytes(std::span(line.constData(), std::size_t(line.size()))));
        };
        addLine(encodedHead(head));
        addPhotos([&](const PlannedPhoto& photo) { addLine(encoded(photo)); });
    });
}

} // namespace ferrow::Command
