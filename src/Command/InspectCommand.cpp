// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Commands.h"

#include "Batch/BatchImporter.h"
#include "Command/Output.h"
#include "Imaging/ImageLoader.h"
#include "Shared/UserFacingError.h"

#include <exception>

namespace ferrow::Command {

namespace {

using Field = std::pair<QString, QString>;

/// The metadata's texts under their names, absent ones left out.
std::vector<Field> fields(const PhotoMetadata& metadata)
{
    std::vector<Field> present{{QStringLiteral("filename"), metadata.filename}};
    if (metadata.captureDate) {
        const QDateTime local = metadata.captureDate->toLocalTime();
        present.emplace_back(QStringLiteral("captureDate"),
                             local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate));
    }
    for (const MetadataField field : allCases<MetadataField>()) {
        const MetadataValue value = metadata.value(field);
        if (const auto* text = std::get_if<QString>(&value))
            present.emplace_back(rawValue(field), *text);
    }
    return present;
}

void printPhotoJson(const ImportedPhoto& photo)
{
    QJsonObject metadata;
    for (const auto& [name, value] : fields(photo.metadata))
        metadata.insert(name, value);
    QJsonObject object = pathObject(photo.url);
    object.insert(QStringLiteral("ok"), true);
    object.insert(QStringLiteral("type"), inputType(photo.type).code);
    object.insert(QStringLiteral("width"), qint64(photo.pixelSize.width));
    object.insert(QStringLiteral("height"), qint64(photo.pixelSize.height));
    object.insert(QStringLiteral("colorProfile"), photo.colorProfileName);
    object.insert(QStringLiteral("metadata"), metadata);
    printJson(object);
}

void printPhoto(const ImportedPhoto& photo)
{
    printLine(photo.url.displayPath());
    printLine(QStringLiteral("  %1, %2, %3")
                  .arg(inputType(photo.type).code, photo.pixelSize.formatted(), photo.colorProfileName));
    for (const auto& [name, value] : fields(photo.metadata))
        if (name != QLatin1StringView("filename"))
            printLine(QStringLiteral("  %1: %2").arg(name, onOneLine(value)));
}

void printFailure(const BatchExportFailure& failure, bool json)
{
    if (!json) {
        printError(QStringLiteral("%1: %2").arg(failure.source.displayPath(), onOneLine(failure.message)));
        return;
    }
    QJsonObject object = pathObject(failure.source);
    object.insert(QStringLiteral("ok"), false);
    object.insert(QStringLiteral("message"), failure.message);
    printJson(object);
}

} // namespace

int runInspect(const Arguments& arguments, const std::stop_token& stop)
{
    const BatchImportScan scan = BatchImporter::scan(arguments.roots);
    int status = allDone;
    for (const FileUrl& url : scan.candidates) {
        if (stop.stop_requested())
            return interrupted;
        if (standardOutputFailed())
            return somePhotoFailed;
        try {
            const ImportedPhoto photo = ImageLoader::load(url, 0);
            arguments.json ? printPhotoJson(photo) : printPhoto(photo);
        } catch (...) {
            BatchExportFailure failure;
            failure.source = url;
            failure.message = UserFacingError::message(std::current_exception());
            printFailure(failure, arguments.json);
            status = somePhotoFailed;
        }
    }
    for (const BatchExportFailure& failure : BatchImporter::refused(scan)) {
        printFailure(failure, arguments.json);
        status = somePhotoFailed;
    }
    return status;
}

} // namespace ferrow::Command
