// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/IptcReader.h"

#include "Platform/Properties/MetadataText.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <optional>

namespace ferrow {

namespace {

constexpr char datasetMarker = 0x1C;
constexpr int envelopeRecord = 1;
constexpr int applicationRecord = 2;
constexpr int characterSetNumber = 90;
constexpr std::size_t maximumRepeats = 64;

struct ListedDataset {
    int number;
    const QString& key;
};

const std::array listedDatasets{
    ListedDataset{5, PropertyKey::iptcObjectName},
    ListedDataset{80, PropertyKey::iptcByline},
    ListedDataset{116, PropertyKey::iptcCopyrightNotice},
    ListedDataset{120, PropertyKey::iptcCaptionAbstract},
};

struct Dataset {
    int record = 0;
    int number = 0;
    QByteArray value; ///< Refers to the block's bytes.
};

/// Takes datasets off the front of a block.
class DatasetWalk {
public:
    explicit DatasetWalk(const QByteArray& bytes) : bytes_(bytes) {}

    std::optional<Dataset> next()
    {
        // Some writers pad between datasets.
        while (position_ < bytes_.size() && bytes_.at(position_) != datasetMarker)
            ++position_;
        if (bytes_.size() - position_ < 5)
            return std::nullopt;
        Dataset dataset;
        dataset.record = uchar(bytes_.at(position_ + 1));
        dataset.number = uchar(bytes_.at(position_ + 2));
        qint64 length = qFromBigEndian<quint16>(bytes_.constData() + position_ + 3);
        position_ += 5;
        if (length & 0x8000) {
            const auto extended = extendedLength(length & 0x7FFF);
            if (!extended)
                return std::nullopt;
            length = *extended;
        }
        if (length > bytes_.size() - position_)
            return std::nullopt;
        dataset.value = QByteArray::fromRawData(bytes_.constData() + position_, length);
        position_ += length;
        return dataset;
    }

private:
    /// The length proper, which follows in `width` bytes when the highest bit of the short one is set.
    std::optional<qint64> extendedLength(qint64 width)
    {
        if (width < 1 || width > 4 || width > bytes_.size() - position_)
            return std::nullopt;
        qint64 length = 0;
        for (; width > 0; --width)
            length = length << 8 | uchar(bytes_.at(position_++));
        return length;
    }

    const QByteArray& bytes_;
    qsizetype position_ = 0;
};

/// The escape sequences that ISO 2022 has for ISO 8859-1; writers use all three.
bool declaresLatin1(const QByteArray& characterSet)
{
    return characterSet == "\x1B.A" || characterSet == "\x1B,A" || characterSet == "\x1B-A";
}

/// Every other declaration, and none, leaves it to the bytes: writers who declare UTF-8 keep to it, and many write it
/// without saying so.
QString decodedText(const QByteArray& value, bool isLatin1)
{
    return isLatin1
               ? QString::fromLatin1(value.constData(), qsizetype(qstrnlen(value.constData(), size_t(value.size()))))
               : MetadataText::decoded(value);
}

void append(PropertyMap& iptc, const QString& key, const QString& text)
{
    const PropertyValue* present = iptc.find(key);
    if (!present) {
        iptc.set(key, {text});
        return;
    }
    TextList texts;
    if (const auto* only = std::get_if<QString>(&present->value))
        texts = {*only};
    else
        texts = std::get<TextList>(present->value);
    if (texts.size() == maximumRepeats)
        return;
    texts.push_back(text);
    iptc.set(key, {std::move(texts)});
}

} // namespace

PropertyMap readIptc(const QByteArray& datasets)
{
    PropertyMap iptc;
    bool isLatin1 = false;
    DatasetWalk walk(datasets);
    while (const auto dataset = walk.next()) {
        if (dataset->record == envelopeRecord && dataset->number == characterSetNumber)
            isLatin1 = declaresLatin1(dataset->value);
        if (dataset->record != applicationRecord)
            continue;
        const auto listed = std::find_if(listedDatasets.begin(), listedDatasets.end(),
                                         [&](const auto& candidate) { return candidate.number == dataset->number; });
        if (listed == listedDatasets.end())
            continue;
        const QString text = decodedText(dataset->value, isLatin1);
        if (!text.isEmpty())
            append(iptc, listed->key, text);
    }
    return iptc;
}

QByteArray iptcOfPhotoshopResources(const QByteArray& resources)
{
    constexpr quint16 iptcResource = 0x0404;
    // A resource: signature, number, name (length byte and text, padded to an even length), length, data padded
    // likewise.
    qsizetype position = 0;
    while (resources.size() - position >= 12) {
        const quint16 number = qFromBigEndian<quint16>(resources.constData() + position + 4);
        const qsizetype nameLength = uchar(resources.at(position + 6)) + 1;
        const qsizetype lengthAt = position + 6 + nameLength + nameLength % 2;
        if (lengthAt + 4 > resources.size())
            break;
        const qint64 length = qFromBigEndian<quint32>(resources.constData() + lengthAt);
        const qsizetype dataAt = lengthAt + 4;
        if (length > resources.size() - dataAt)
            break;
        if (number == iptcResource)
            return resources.mid(dataAt, length);
        position = dataAt + length + length % 2;
    }
    return {};
}

} // namespace ferrow
