// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/XmpReader.h"

#include "Platform/Base/ByteText.h"
#include "Platform/Base/Releaser.h"
#include "Platform/Properties/MetadataBlocks.h"
#include "Platform/Properties/MetadataText.h"

#include <QStringConverter>

#include <expat.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ferrow {

namespace {

constexpr int maximumDepth = 64;
constexpr std::size_t maximumItems = 256;

// Names as the parser gives them: namespace, blank, local name.
constexpr std::string_view rdfName = "http://www.w3.org/1999/02/22-rdf-syntax-ns# RDF";
constexpr std::string_view altName = "http://www.w3.org/1999/02/22-rdf-syntax-ns# Alt";
constexpr std::string_view seqName = "http://www.w3.org/1999/02/22-rdf-syntax-ns# Seq";
constexpr std::string_view bagName = "http://www.w3.org/1999/02/22-rdf-syntax-ns# Bag";
constexpr std::string_view itemName = "http://www.w3.org/1999/02/22-rdf-syntax-ns# li";
constexpr std::string_view valueName = "http://www.w3.org/1999/02/22-rdf-syntax-ns# value";
constexpr std::string_view languageName = "http://www.w3.org/XML/1998/namespace lang";

struct ListedProperty {
    std::string_view name;
    QLatin1StringView key;
};

constexpr std::array listedProperties{
    ListedProperty{"http://purl.org/dc/elements/1.1/ title", QLatin1StringView("dc:title")},
    ListedProperty{"http://purl.org/dc/elements/1.1/ description", QLatin1StringView("dc:description")},
    ListedProperty{"http://ns.adobe.com/photoshop/1.0/ DateCreated", QLatin1StringView("photoshop:DateCreated")},
    ListedProperty{"http://ns.adobe.com/exif/1.0/aux/ Lens", QLatin1StringView("aux:Lens")},
    ListedProperty{"http://cipa.jp/exif/1.0/ LensModel", QLatin1StringView("exifEX:LensModel")},
};

const ListedProperty* listed(std::string_view name)
{
    const auto found = std::find_if(listedProperties.begin(), listedProperties.end(),
                                    [&](const auto& property) { return property.name == name; });
    return found == listedProperties.end() ? nullptr : &*found;
}

/// Collects the listed properties from the elements of a packet as they open and close. Only properties of the photo
/// itself count: those directly below a description that is directly below rdf:RDF, not those of its ingredients.
class PropertyCollector {
public:
    enum class Verdict { goOn, stop };

    Verdict open(std::string_view name, const XML_Char** attributes)
    {
        if (++depth_ > maximumDepth)
            return Verdict::stop;
        holdsText_[depth_] = false;
        if (rdfDepth_ == 0) {
            rdfDepth_ = name == rdfName ? depth_ : 0;
            return Verdict::goOn;
        }
        switch (depth_ - rdfDepth_) {
        case descriptionLevel:
            readAttributes(attributes);
            break;
        case propertyLevel:
            property_ = listed(name);
            container_ = Container::none;
            items_.clear();
            text_.clear();
            holdsText_[depth_] = true;
            break;
        case containerLevel:
            container_ = name == altName                      ? Container::alternatives
                         : name == seqName || name == bagName ? Container::list
                                                              : container_;
            holdsText_[depth_] = name == valueName;
            break;
        case itemLevel:
            text_.clear();
            language_ = attribute(attributes, languageName);
            holdsText_[depth_] = name == itemName;
            break;
        default:
            holdsText_[depth_] = name == valueName;
        }
        return Verdict::goOn;
    }

    void characters(std::string_view characters)
    {
        if (property_ && holdsText_[depth_] && text_.size() <= MetadataText::maximumLength)
            text_.append(characters.data(), qsizetype(characters.size()));
    }

    void close(std::string_view name)
    {
        if (property_ && depth_ == rdfDepth_ + itemLevel && name == itemName && items_.size() < maximumItems)
            items_.push_back({language_, MetadataText::decoded(text_)});
        if (property_ && depth_ == rdfDepth_ + propertyLevel) {
            keep(*property_, finishedValue());
            property_ = nullptr;
        }
        if (depth_ == rdfDepth_)
            rdfDepth_ = 0;
        --depth_;
    }

    [[nodiscard]] PropertyMap takeProperties() { return std::move(properties_); }

private:
    // Below rdf:RDF.
    static constexpr int descriptionLevel = 1;
    static constexpr int propertyLevel = 2;
    static constexpr int containerLevel = 3;
    static constexpr int itemLevel = 4;

    enum class Container { none, list, alternatives };
    struct Item {
        QString language;
        QString text;
    };

    static QString attribute(const XML_Char** attributes, std::string_view name)
    {
        for (; *attributes; attributes += 2)
            if (name == attributes[0])
                return MetadataText::decoded(attributes[1]);
        return {};
    }

    /// Texts may stand in a description's tag instead of elements of their own.
    void readAttributes(const XML_Char** attributes)
    {
        for (; *attributes; attributes += 2)
            if (const ListedProperty* property = listed(attributes[0]))
                keep(*property, {MetadataText::decoded(attributes[1])});
    }

    [[nodiscard]] PropertyValue finishedValue() const
    {
        if (container_ == Container::none)
            return {MetadataText::decoded(text_)};
        const bool haveLanguages =
            std::none_of(items_.begin(), items_.end(), [](const Item& item) { return item.language.isEmpty(); });
        if (container_ == Container::alternatives && haveLanguages)
            return {alternatives()};
        TextList texts;
        for (const Item& item : items_)
            texts.push_back(item.text);
        return {std::move(texts)};
    }

    [[nodiscard]] PropertyMap alternatives() const
    {
        std::vector<Item> sorted = items_;
        std::stable_partition(sorted.begin(), sorted.end(), [](const Item& item) {
            return item.language.compare(QLatin1StringView("x-default"), Qt::CaseInsensitive) == 0;
        });
        PropertyMap texts;
        for (const Item& item : sorted)
            if (!texts.find(item.language))
                texts.set(item.language, {item.text});
        return texts;
    }

    void keep(const ListedProperty& property, PropertyValue value)
    {
        if (!properties_.find(QString(property.key)))
            properties_.set(property.key, std::move(value));
    }

    PropertyMap properties_;
    int depth_ = 0;
    int rdfDepth_ = 0;                               ///< 0 outside of it.
    std::array<bool, maximumDepth + 1> holdsText_{}; ///< By depth: whether text directly inside belongs to a value.
    const ListedProperty* property_ = nullptr;
    Container container_ = Container::none;
    std::vector<Item> items_;
    QString language_;
    QByteArray text_;
};

using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, Releaser<XML_ParserFree>>;

/// What the parser's callbacks are handed. They are called from C, which no exception may cross.
struct Reading {
    XML_Parser parser = nullptr;
    PropertyCollector collector;
};

template <typename Step>
void guarded(void* userData, Step step)
{
    auto& reading = *static_cast<Reading*>(userData);
    try {
        step(reading);
    } catch (...) {
        XML_StopParser(reading.parser, XML_FALSE);
    }
}

void onOpen(void* userData, const XML_Char* name, const XML_Char** attributes)
{
    guarded(userData, [&](Reading& reading) {
        if (reading.collector.open(name, attributes) == PropertyCollector::Verdict::stop)
            XML_StopParser(reading.parser, XML_FALSE);
    });
}

void onClose(void* userData, const XML_Char* name)
{
    guarded(userData, [&](Reading& reading) { reading.collector.close(name); });
}

void onCharacters(void* userData, const XML_Char* characters, int length)
{
    guarded(userData, [&](Reading& reading) { reading.collector.characters({characters, std::size_t(length)}); });
}

/// No XMP writer declares a document type; who does means to blow up entities or to have other files opened.
void onDocumentType(void* userData, const XML_Char*, const XML_Char*, const XML_Char*, int)
{
    XML_StopParser(static_cast<Reading*>(userData)->parser, XML_FALSE);
}

/// Packets outside of JPEG may be UTF-16 or UTF-32, with or without a byte order mark.
QByteArray asUtf8(const QByteArray& packet)
{
    const auto encoding = QStringConverter::encodingForData(packet, u'<');
    if (encoding && *encoding != QStringConverter::Utf8) {
        const QString text = QStringDecoder(*encoding).decode(packet);
        return text.toUtf8();
    }
    const QByteArray text = packet.isValidUtf8() ? packet : ByteText::fromMetadata(packet).toUtf8();
    const qsizetype end = text.indexOf('\0');
    return (end < 0 ? text : text.left(end)).trimmed();
}

} // namespace

PropertyMap readXmpPacket(const QByteArray& packet)
{
    if (packet.isEmpty() || packet.size() > MetadataBlocks::maximumLength)
        return {};
    const QByteArray text = asUtf8(packet);
    // The encoding is given, since a declaration inside names the one before the conversion.
    const Parser parser(XML_ParserCreateNS("UTF-8", ' '));
    if (!parser)
        return {};
    Reading reading;
    reading.parser = parser.get();
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), onOpen, onClose);
    XML_SetCharacterDataHandler(parser.get(), onCharacters);
    XML_SetStartDoctypeDeclHandler(parser.get(), onDocumentType);
    // Its verdict does not matter: what was read before the damage is whole.
    XML_Parse(parser.get(), text.constData(), int(text.size()), XML_TRUE);
    return reading.collector.takeProperties();
}

} // namespace ferrow
