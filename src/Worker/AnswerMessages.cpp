// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/MessageParts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace ferrow::Worker {

namespace {

/// Longest text of a property, in UTF-16 units: what the readers of metadata keep of a field.
constexpr qsizetype maximumText = 64 * 1024;
/// Longest text that is shown as it stands.
constexpr qsizetype maximumLabel = 256;
/// Entries of one map or list. Languages of a title are the longest list that files hold; nobody reads the
/// hundredth.
constexpr std::size_t maximumEntries = 256;
/// Maps within maps: {Exif} and a map of languages make two.
constexpr int maximumDepth = 4;
/// Sides in a refusal may be absurd, since that is why it was refused.
constexpr std::int64_t largestNumber = std::int64_t(1) << 40;

/// A side of what JPEG codes together: four blocks.
constexpr std::int64_t largestMcu = 32;

enum class Tag : std::uint8_t { number, text, numbers, texts, map };

void write(ByteWriter& writer, const PropertyMap& map, int depth);

/// Numbers of no value say nothing.
NumberList finite(NumberList numbers)
{
    std::erase_if(numbers, [](double number) { return !std::isfinite(number); });
    return numbers;
}

template <typename List, typename WriteOne>
void writeList(ByteWriter& writer, const List& list, WriteOne writeOne)
{
    const std::size_t count = std::min(list.size(), maximumEntries);
    writer.number(std::uint32_t(count));
    for (std::size_t i = 0; i < count; ++i)
        writeOne(list[i]);
}

void write(ByteWriter& writer, const PropertyValue& value, int depth)
{
    writer.enumerator(Tag(value.value.index()));
    if (const auto* number = std::get_if<double>(&value.value))
        writer.number(*number);
    else if (const auto* text = std::get_if<QString>(&value.value))
        writer.text(*text, maximumText);
    else if (const auto* numbers = std::get_if<NumberList>(&value.value))
        writeList(writer, finite(*numbers), [&](double each) { writer.number(each); });
    else if (const auto* texts = std::get_if<TextList>(&value.value))
        writeList(writer, *texts, [&](const QString& each) { writer.text(each, maximumText); });
    else if (const auto* map = std::get_if<PropertyMap>(&value.value))
        write(writer, *map, depth + 1);
}

bool canTravel(const PropertyMap::Entry& entry, int depth)
{
    const auto* number = std::get_if<double>(&entry.second.value);
    const bool isMap = std::holds_alternative<PropertyMap>(entry.second.value);
    return !(number && !std::isfinite(*number)) && !(isMap && depth + 1 >= maximumDepth);
}

void write(ByteWriter& writer, const PropertyMap& map, int depth)
{
    std::vector<const PropertyMap::Entry*> entries;
    for (const auto& entry : map.entries())
        if (canTravel(entry, depth))
            entries.push_back(&entry);
    writeList(writer, entries, [&](const PropertyMap::Entry* entry) {
        writer.text(entry->first, maximumLabel);
        write(writer, entry->second, depth);
    });
}

PropertyMap readMap(ByteReader& reader, int depth);

double readNumber(ByteReader& reader)
{
    return reader.number<double>(std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max());
}

template <typename ReadOne>
auto readList(ByteReader& reader, ReadOne readOne)
{
    std::vector<std::invoke_result_t<ReadOne>> list;
    const auto count = reader.number<std::uint32_t>(0, maximumEntries);
    for (std::uint32_t i = 0; i < count && reader.isSound(); ++i)
        list.push_back(readOne());
    return list;
}

PropertyValue readValue(ByteReader& reader, int depth)
{
    switch (reader.enumerator<Tag>()) {
    case Tag::number:
        return {readNumber(reader)};
    case Tag::text:
        return {reader.text(maximumText)};
    case Tag::numbers:
        return {readList(reader, [&] { return readNumber(reader); })};
    case Tag::texts:
        return {readList(reader, [&] { return reader.text(maximumText); })};
    case Tag::map:
        return {readMap(reader, depth + 1)};
    }
    return {};
}

PropertyMap readMap(ByteReader& reader, int depth)
{
    PropertyMap map;
    if (depth >= maximumDepth) {
        reader.fail();
        return map;
    }
    const auto count = reader.number<std::uint32_t>(0, maximumEntries);
    for (std::uint32_t i = 0; i < count && reader.isSound(); ++i) {
        const QString key = reader.text(maximumLabel);
        map.set(key, readValue(reader, depth));
    }
    return map;
}

void write(ByteWriter& writer, const AnsweredPicture& picture)
{
    const bool isInline = !picture.pixels.isNull();
    write(writer, picture.size);
    writer.enumerator(picture.format.alpha);
    writer.enumerator(picture.space);
    writer.flag(isInline);
    if (isInline)
        writePixels(writer, picture.pixels);
}

AnsweredPicture readPicture(ByteReader& reader)
{
    AnsweredPicture picture;
    picture.size = readSize(reader, 0, Engine::maximumSourceSide);
    picture.format.alpha = reader.enumerator<Alpha>();
    picture.space = readSpace(reader);
    const bool isEmpty = picture.size == PixelSize{};
    if (!isEmpty &&
        (picture.size.shorterSide() < 1 || picture.size.width * picture.size.height > Engine::maximumSourcePixels))
        reader.fail();
    if (!reader.flag() || !reader.isSound())
        return picture;
    if (isEmpty || byteCount(picture.size, picture.format) > inlinePictureBytes) {
        reader.fail();
        return picture;
    }
    picture.pixels = Bitmap(picture.size, picture.format, ColorProfile::of(picture.space));
    readPixels(reader, picture.pixels);
    return picture;
}

void write(ByteWriter& writer, const std::optional<CodedData>& data)
{
    writer.flag(data.has_value());
    if (!data)
        return;
    for (const std::int64_t number : {data->grid.width, data->grid.height, data->grid.x, data->grid.y})
        writer.number(number);
    for (const bool keeps : data->keepsColors)
        writer.flag(keeps);
}

std::optional<CodedData> readCodedData(ByteReader& reader)
{
    if (!reader.flag())
        return std::nullopt;
    CodedData data;
    data.grid.width = reader.number<std::int64_t>(1, largestMcu);
    data.grid.height = reader.number<std::int64_t>(1, largestMcu);
    data.grid.x = reader.number<std::int64_t>(0, data.grid.width - 1);
    data.grid.y = reader.number<std::int64_t>(0, data.grid.height - 1);
    for (bool& keeps : data.keepsColors)
        keeps = reader.flag();
    return data;
}

void write(ByteWriter& writer, const Inspected& inspected)
{
    const Engine::InspectAnswer& answer = inspected.answer;
    writer.enumerator(answer.type);
    write(writer, answer.storedSize);
    writer.flag(answer.uprightSize != answer.storedSize);
    writer.text(answer.colorProfileName, maximumLabel);
    write(writer, answer.codedData);
    write(writer, answer.properties.image, 0);
    write(writer, answer.properties.xmp, 0);
    write(writer, inspected.picture);
}

Inspected readInspected(ByteReader& reader)
{
    Inspected inspected;
    Engine::InspectAnswer& answer = inspected.answer;
    answer.type = reader.enumerator<FileType>();
    if (!inputType(answer.type).isPhoto)
        reader.fail();
    answer.storedSize = readSize(reader, 1, Engine::maximumSourceSide);
    if (answer.storedSize.width * answer.storedSize.height > Engine::maximumSourcePixels)
        reader.fail();
    answer.uprightSize = reader.flag() ? answer.storedSize.transposed() : answer.storedSize;
    answer.colorProfileName = reader.text(maximumLabel);
    answer.codedData = readCodedData(reader);
    answer.properties.image = readMap(reader, 0);
    answer.properties.xmp = readMap(reader, 0);
    inspected.picture = readPicture(reader);
    return inspected;
}

void write(ByteWriter& writer, const Engine::PictureSummary& summary)
{
    write(writer, summary.size);
    writer.number(std::uint8_t(summary.orientation));
    writer.flag(summary.hasAlpha);
    writer.number(summary.profile);
    writer.flag(summary.mayHoldPosition);
    writer.number(summary.pixels.digest);
    writer.number(std::uint32_t(summary.pixels.cells.size()));
    for (const PictureSums::Cell& cell : summary.pixels.cells) {
        for (const std::uint16_t mean : cell.means)
            writer.number(mean);
        writer.number(cell.activity);
    }
}

Engine::PictureSummary readSummary(ByteReader& reader)
{
    constexpr std::uint32_t mostCells = PictureSummer::gridSide * PictureSummer::gridSide;
    Engine::PictureSummary summary;
    summary.size = readSize(reader, 1, Engine::maximumSourceSide);
    summary.orientation = reader.number<std::uint8_t>(1, 8);
    summary.hasAlpha = reader.flag();
    summary.profile = reader.number<std::uint64_t>();
    summary.mayHoldPosition = reader.flag();
    summary.pixels.digest = reader.number<std::uint64_t>();
    const auto count = reader.number<std::uint32_t>(0, mostCells);
    for (std::uint32_t i = 0; i < count && reader.isSound(); ++i) {
        PictureSums::Cell cell;
        for (std::uint16_t& mean : cell.means)
            mean = reader.number<std::uint16_t>();
        cell.activity = reader.number<std::uint16_t>();
        summary.pixels.cells.push_back(cell);
    }
    return summary;
}

void write(ByteWriter& writer, const Framed& framed)
{
    writer.flag(framed.summary.has_value());
    if (framed.summary)
        write(writer, *framed.summary);
}

Framed readFramed(ByteReader& reader)
{
    return {reader.flag() ? std::optional(readSummary(reader)) : std::nullopt};
}

/// Only these are what an answer can be refused with; the rest is for the caller to find out.
constexpr std::array plainRefusals{ImagePipelineError::unreadableFile, ImagePipelineError::malformedImage,
                                   ImagePipelineError::decodingFailed, ImagePipelineError::renderingFailed,
                                   ImagePipelineError::encoderMissing};
enum class Refusal : std::uint8_t {
    plain,
    unsupportedType,
    unreasonableDimensions,
    mismatch,
    encodingFailed,
    outputWriteFailed
};
constexpr int largestErrorNumber = 4095; // MAX_ERRNO of the kernel.

void write(ByteWriter& writer, const PhotoRefused& refused)
{
    using Error = ImagePipelineError;
    if (const auto* type = std::get_if<Error::UnsupportedType>(&refused.error.value)) {
        writer.enumerator(Refusal::unsupportedType);
        writer.text(type->type, maximumLabel);
    } else if (const auto* size = std::get_if<Error::UnreasonableDimensions>(&refused.error.value)) {
        writer.enumerator(Refusal::unreasonableDimensions);
        write(writer, PixelSize{size->width, size->height});
    } else if (const auto* mismatch = std::get_if<Error::FullResolutionMismatch>(&refused.error.value)) {
        writer.enumerator(Refusal::mismatch);
        write(writer, mismatch->expected);
        write(writer, mismatch->decoded);
    } else if (const auto* encoding = std::get_if<Error::EncodingFailed>(&refused.error.value)) {
        writer.enumerator(Refusal::encodingFailed);
        writer.text(encoding->format, maximumLabel);
    } else if (const auto* writing = std::get_if<Error::OutputWriteFailed>(&refused.error.value)) {
        writer.enumerator(Refusal::outputWriteFailed);
        writer.text(writing->format, maximumLabel);
        writer.number(std::int32_t(writing->reason ? writing->reason->errorNumber : 0));
    } else {
        const auto* plain = std::get_if<Error::Plain>(&refused.error.value);
        const auto found = std::ranges::find(plainRefusals, plain ? *plain : Error::decodingFailed);
        writer.enumerator(Refusal::plain);
        writer.number(std::uint8_t(found == plainRefusals.end() ? 2 : found - plainRefusals.begin()));
    }
}

/// A text that is printed must not steer the terminal.
QString readLabel(ByteReader& reader)
{
    QString label = reader.text(maximumLabel);
    if (std::ranges::any_of(label, [](QChar c) { return c.category() == QChar::Other_Control; }))
        reader.fail();
    return label;
}

ImagePipelineError readRefusal(ByteReader& reader)
{
    using Error = ImagePipelineError;
    switch (reader.enumerator<Refusal>()) {
    case Refusal::plain:
        return plainRefusals[reader.number<std::uint8_t>(0, plainRefusals.size() - 1)];
    case Refusal::unsupportedType:
        return Error::UnsupportedType{readLabel(reader)};
    case Refusal::unreasonableDimensions: {
        const PixelSize size = readSize(reader, 0, largestNumber);
        return Error::UnreasonableDimensions{size.width, size.height};
    }
    case Refusal::mismatch: {
        const PixelSize expected = readSize(reader, 0, largestNumber);
        return Error::FullResolutionMismatch{expected, readSize(reader, 0, largestNumber)};
    }
    case Refusal::encodingFailed:
        return Error::EncodingFailed{readLabel(reader)};
    case Refusal::outputWriteFailed: {
        Error::OutputWriteFailed failed{readLabel(reader)};
        if (const auto number = reader.number<std::int32_t>(0, largestErrorNumber); number != 0)
            failed.reason = SystemError{number, {}};
        return failed;
    }
    }
    return Error::decodingFailed;
}

LogoAssetError::Case readLogoRefusal(ByteReader& reader)
{
    using Case = LogoAssetError::Case;
    const auto error = reader.enumerator<Case>();
    // The rest is for the caller to find out.
    constexpr std::array refusals{Case::malformed,     Case::unsupportedType,     Case::unreasonableDimensions,
                                  Case::textInDrawing, Case::referencesInDrawing, Case::tooComplexDrawing};
    if (std::ranges::find(refusals, error) == refusals.end())
        reader.fail();
    return error;
}

void write(ByteWriter& writer, const Hello& hello)
{
    writer.number(hello.landlockVersion);
    writer.flag(hello.hasNamespaces);
    writer.flag(hello.filtersSystemCalls);
    writer.flag(hello.limitsResources);
    writer.number(hello.addressSpace);
}

Hello readHello(ByteReader& reader)
{
    Hello hello;
    hello.landlockVersion = reader.number<std::int32_t>(0, 1000);
    hello.hasNamespaces = reader.flag();
    hello.filtersSystemCalls = reader.flag();
    hello.limitsResources = reader.flag();
    hello.addressSpace = reader.number<std::int64_t>(0, std::int64_t(1) << 46);
    return hello;
}

void write(ByteWriter& writer, const HeaderRead& header)
{
    writer.number(header.pixels);
    writer.flag(header.isHeif);
    writer.number(header.bytes);
    writer.flag(header.waits);
}

HeaderRead readHeaderRead(ByteReader& reader)
{
    HeaderRead header;
    header.pixels = reader.number<std::int64_t>(0, Engine::maximumSourcePixels);
    header.isHeif = reader.flag();
    header.bytes = reader.number<std::int64_t>(0, largestNumber);
    header.waits = reader.flag();
    return header;
}

void write(ByteWriter& writer, const LogoRasterized& logo)
{
    writer.number(std::uint8_t(logo.fileExtension.size()));
    writer.raw(std::as_bytes(std::span(logo.fileExtension.constData(), std::size_t(logo.fileExtension.size()))));
    write(writer, logo.picture);
}

LogoRasterized readLogo(ByteReader& reader)
{
    LogoRasterized logo;
    const auto extension = reader.raw(reader.number<std::uint8_t>(1, 8));
    logo.fileExtension = QByteArray(reinterpret_cast<const char*>(extension.data()), qsizetype(extension.size()));
    if (!ImageTypes::isLogoExtension(logo.fileExtension))
        reader.fail();
    logo.picture = readPicture(reader);
    return logo;
}

} // namespace

Message encode(const Answer& answer)
{
    ByteWriter writer = beginMessage();
    std::vector<int> descriptors;
    const auto* hello = std::get_if<Hello>(&answer.content);
    if (hello && hello->process >= 0)
        descriptors.push_back(hello->process);
    const MessageKind kind = std::visit(
        [&]<typename Content>(const Content& content) {
            if constexpr (std::is_same_v<Content, RegionComposed>)
                write(writer, content.picture);
            else if constexpr (std::is_same_v<Content, SummaryRead>)
                write(writer, content.summary);
            else if constexpr (std::is_same_v<Content, LogoRefused>)
                writer.enumerator(content.error);
            else if constexpr (!std::is_empty_v<Content>)
                write(writer, content);

            if constexpr (std::is_same_v<Content, Hello>)
                return MessageKind::hello;
            else if constexpr (std::is_same_v<Content, HeaderRead>)
                return MessageKind::headerRead;
            else if constexpr (std::is_same_v<Content, LastRowComposed>)
                return MessageKind::lastRowComposed;
            else if constexpr (std::is_same_v<Content, Inspected>)
                return MessageKind::inspected;
            else if constexpr (std::is_same_v<Content, Framed>)
                return MessageKind::framed;
            else if constexpr (std::is_same_v<Content, SummaryRead>)
                return MessageKind::summaryRead;
            else if constexpr (std::is_same_v<Content, RegionComposed>)
                return MessageKind::regionComposed;
            else if constexpr (std::is_same_v<Content, LogoRasterized>)
                return MessageKind::logoRasterized;
            else if constexpr (std::is_same_v<Content, PhotoRefused>)
                return MessageKind::photoRefused;
            else if constexpr (std::is_same_v<Content, LogoRefused>)
                return MessageKind::logoRefused;
            else if constexpr (std::is_same_v<Content, KeepingRefused>)
                return MessageKind::keepingRefused;
            else
                return MessageKind::canceled;
        },
        answer.content);
    return sealed(std::move(writer), kind, answer.job, std::move(descriptors));
}

std::optional<Answer> parseAnswer(std::span<const std::byte> message)
{
    if (message.size() < headerLength)
        return std::nullopt;
    const auto header = parseHeader(message.first<headerLength>());
    if (!header || header->bodyLength != message.size() - headerLength ||
        (header->descriptorCount != 0 && header->kind != MessageKind::hello))
        return std::nullopt;
    ByteReader reader(message.subspan(headerLength));
    Answer answer{header->job, {}};
    switch (header->kind) {
    case MessageKind::hello:
        answer.content = readHello(reader);
        break;
    case MessageKind::headerRead:
        answer.content = readHeaderRead(reader);
        break;
    case MessageKind::lastRowComposed:
        answer.content = LastRowComposed{};
        break;
    case MessageKind::inspected:
        answer.content = readInspected(reader);
        break;
    case MessageKind::framed:
        answer.content = readFramed(reader);
        break;
    case MessageKind::summaryRead:
        answer.content = SummaryRead{readSummary(reader)};
        break;
    case MessageKind::regionComposed:
        answer.content = RegionComposed{readPicture(reader)};
        break;
    case MessageKind::logoRasterized:
        answer.content = readLogo(reader);
        break;
    case MessageKind::photoRefused:
        answer.content = PhotoRefused{readRefusal(reader)};
        break;
    case MessageKind::logoRefused:
        answer.content = LogoRefused{readLogoRefusal(reader)};
        break;
    case MessageKind::canceled:
        answer.content = WasCanceled{};
        break;
    case MessageKind::keepingRefused:
        answer.content = KeepingRefused{};
        break;
    default:
        return std::nullopt;
    }
    if (!reader.isWhole())
        return std::nullopt;
    return answer;
}

} // namespace ferrow::Worker
