// SPDX-License-Identifier: GPL-3.0-or-later
// Caption templates: first line of the input, with a photo of which the rest says everything.
#include "FuzzSupport.h"

#include "Metadata/MetadataTemplateExpander.h"

using namespace ferrow;

namespace {

/// Options that are written out are read again as they are, by whatever text they hold, and as one text by whoever does
/// not know options.
void checkOptions(const QString& pattern, const QString& text)
{
    CaptionToken token(MetadataToken::captureDate, {DateStyle::iso}, text);
    if (DateFormat::patternFault(pattern).isEmpty())
        token.date = {DateStyle::custom, pattern};
    const QString written = token.templateValue();
    const std::vector<CaptionSegment> chips = CaptionSegment::parse(written);
    fuzz::require(chips.size() == 1 && chips.front().content == CaptionSegment::Content(token), "options round-trip");
    fuzz::require(written.count(u'{') == 1 && written.indexOf(u'}') == written.size() - 1, "one pair of braces");
    fuzz::require(CaptionSegment::faultOf(written).isEmpty(), "what is written has no fault");

    PhotoMetadata metadata;
    metadata.captureDate = QDateTime::fromSecsSinceEpoch(1'792'000'000);
    const auto date = MetadataTemplateExpander::tokenValue(token, metadata);
    fuzz::require(date && date->size() <= 2'000, "a date of a bounded length");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString input = QString::fromUtf8(fuzz::bytesOf(data, size));
    const QString captionTemplate = input.section(u'\x1e', 0, 0);
    const QString parsed = CaptionSegment::templateOf(CaptionSegment::parse(captionTemplate));
    fuzz::require(CaptionSegment::templateOf(CaptionSegment::parse(parsed)) == parsed,
                  "chips written out and read again stay");

    checkOptions(captionTemplate, input.section(u'\x1e', 1));

    PhotoMetadata metadata;
    metadata.captureDate = QDateTime::fromSecsSinceEpoch(1'792'000'000);
    metadata.filename = input;
    metadata.title = metadata.caption = metadata.lens = input.section(u'\x1e', 1);
    const QString caption = MetadataTemplateExpander::expand(captionTemplate, metadata);
    fuzz::require(caption.size() <= 100'000, "a bounded length");
    for (const QString& line : caption.isEmpty() ? QStringList() : caption.split(u'\n')) {
        fuzz::require(!line.isEmpty() && line == line.trimmed(), "no line is empty or has blanks around it");
        fuzz::require(!line.contains(u'\r') && !line.contains(QChar::LineSeparator), "one kind of line end");
    }
    // Of a photo that says nothing only the template's own words remain.
    fuzz::require(MetadataTemplateExpander::expand(captionTemplate, {}).size() <= captionTemplate.size(),
                  "nothing comes of nothing");
    return 0;
}
