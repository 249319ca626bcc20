// SPDX-License-Identifier: GPL-3.0-or-later
// File name templates: the input's first line, with a source named by the rest.
#include "FuzzSupport.h"

#include "Models/BatchExportModels.h"
#include "Platform/Base/ByteText.h"

using namespace ferrow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray input = fuzz::bytesOf(data, size);
    const qsizetype end = std::max<qsizetype>(0, input.indexOf('\n'));
    const QString nameTemplate = ByteText::decode(input.left(end));
    QByteArray source = input.mid(end);
    source.replace('\0', "").replace('/', "");
    const FileUrl url = FileUrl::fromPath(QByteArray("/") + (source.isEmpty() ? QByteArray("a") : source));

    const QString extension = QStringLiteral("jpg");
    const QByteArray name = FilenameTemplate::filename(nameTemplate, url, qint64(size), extension);
    fuzz::require(name.size() > 4 && name.size() <= 255, "1 to 255 bytes");
    fuzz::require(!name.contains('/') && !name.contains('\0'), "a name, not a path");
    fuzz::require(name == FilenameTemplate::filename(nameTemplate, url, qint64(size), extension), "stable");

    const FileUrl out = FileUrl::fromPath(QByteArray("/out"));
    ReservedDestinations reserved;
    const auto isTaken = [&](const FileUrl& place) { return place.lastPathComponentBytes() == name; };
    const auto free =
        BatchCollisionResolver::destination(out.appending(name), CollisionRule::appendNumber, reserved, isTaken);
    fuzz::require(free && free->url.lastPathComponentBytes().size() <= 255, "room for a number");
    fuzz::require(free->url.deletingLastPathComponent() == out, "in the folder");
    return 0;
}
