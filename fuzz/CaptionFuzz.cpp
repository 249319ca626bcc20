// SPDX-License-Identifier: GPL-3.0-or-later
// Caption templates: first line of the input, with a photo of which the rest says everything.
#include "FuzzSupport.h"

#include "Metadata/MetadataTemplateExpander.h"

using namespace ferrow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString input = QString::fromUtf8(fuzz::bytesOf(data, size));
    const QString captionTemplate = input.section(u'\x1e', 0, 0);
    const QString parsed = CaptionSegment::templateOf(CaptionSegment::parse(captionTemplate));
    fuzz::require(CaptionSegment::templateOf(CaptionSegment::parse(parsed)) == parsed,
                  "chips written out and read again stay");

    PhotoMetadata metadata;
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
