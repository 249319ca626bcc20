// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/IccMending.h"

#include <QtEndian>

#include <algorithm>

namespace ferrow {

namespace {

// Places in the header, and its fixed values (ICC.1:2022, 7.2).
constexpr qsizetype sizeAt = 0;
constexpr qsizetype majorVersionAt = 8;
constexpr qsizetype intentAt = 64;
constexpr qsizetype illuminantAt = 68;
constexpr qsizetype identifierAt = 84;
constexpr qsizetype tagCountAt = 128;
constexpr qsizetype tagsAt = 132;
constexpr qsizetype tagLength = 12;
constexpr quint32 lastIntent = 3;
const QByteArray d50("\0\0\xf6\xd6\0\1\0\0\0\0\xd3\x2d", 12);

quint32 numberAt(const QByteArray& icc, qsizetype at)
{
    return qFromBigEndian<quint32>(icc.constData() + at);
}

void setNumber(QByteArray& icc, qsizetype at, qsizetype number)
{
    qToBigEndian(quint32(number), icc.data() + at);
}

void padAsVersion4Asks(QByteArray& icc)
{
    if (quint8(icc[majorVersionAt]) < 4 || icc.size() % 4 == 0)
        return;
    icc.append(4 - icc.size() % 4, '\0');
    setNumber(icc, sizeAt, icc.size());
}

/// The entries that are left move up; the room behind them belongs to no tag.
void dropTagsOutside(QByteArray& icc)
{
    const qsizetype room = (icc.size() - tagsAt) / tagLength;
    const qsizetype count = std::min<qsizetype>(numberAt(icc, tagCountAt), room);
    QByteArray kept;
    for (qsizetype i = 0; i < count; ++i) {
        const QByteArray tag = icc.mid(tagsAt + i * tagLength, tagLength);
        if (qint64(numberAt(tag, 4)) + numberAt(tag, 8) <= icc.size())
            kept += tag;
    }
    setNumber(icc, tagCountAt, kept.size() / tagLength);
    icc.replace(tagsAt, kept.size(), kept);
}

} // namespace

QByteArray mendedIcc(const QByteArray& icc)
{
    QByteArray mended = icc;
    padAsVersion4Asks(mended);
    if (numberAt(mended, intentAt) > lastIntent)
        setNumber(mended, intentAt, 0);
    mended.replace(illuminantAt, d50.size(), d50);
    dropTagsOutside(mended);
    if (mended != icc)
        mended.replace(identifierAt, 16, QByteArray(16, '\0')); // A checksum of what was there.
    return mended;
}

} // namespace ferrow
