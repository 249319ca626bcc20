// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/WarmUpText.h"

#include "Platform/Base/Releaser.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/PdfPage.h"
#include "Platform/Codecs/SvgPicture.h"
#include "Platform/Files/MemoryFile.h"

#include <fontconfig/fontconfig.h>

#include <filesystem>
#include <memory>
#include <set>
#include <span>
#include <system_error>

namespace ferrow::Worker {

namespace {

constexpr std::int64_t side = 16;

/// A page of one line in a font that is not part of it.
constexpr const char page[] = R"(%PDF-1.4
1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj
2 0 obj <</Type/Pages/Kids[3 0 R]/Count 1>> endobj
3 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 16 16]/Resources<</Font<</F 4 0 R>>>>/Contents 5 0 R>> endobj
4 0 obj <</Type/Font/Subtype/Type1/BaseFont/Helvetica>> endobj
5 0 obj <</Length 29>> stream
BT /F 8 Tf 1 4 Td (Aa) Tj ET
endstream endobj
trailer <</Root 1 0 R>>
)";

/// A shape, a gradient and a picture within: what the library loads for each of them.
constexpr const char drawing[] =
    R"svg(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16"><linearGradient id="g"><stop/></linearGradient>)svg"
    R"svg(<path fill="url(#g)" d="M1 1h9v9z"/><image width="8" height="8" href="data:image/png;base64,)svg"
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR4nGP4z8DwHwAFAAH/iZk9HQAAAABJRU5ErkJggg=="
    R"svg("/></svg>)svg";

/// Font folders, caches and the files that say where they are. The list may be null.
void collect(std::set<std::string>& places, FcStrList* given)
{
    const std::unique_ptr<FcStrList, Releaser<FcStrListDone>> list(given);
    while (const FcChar8* path = list ? FcStrListNext(list.get()) : nullptr)
        places.insert(reinterpret_cast<const char*>(path));
}

bool liesBelow(const std::filesystem::path& file, const std::set<std::string>& places)
{
    for (std::filesystem::path folder = file.parent_path(); folder.has_relative_path(); folder = folder.parent_path())
        if (places.contains(folder.string()))
            return true;
    return false;
}

/// Fonts that the folders only link to: these files alone, for what lies beside them may be anything.
void collectLinkedFonts(std::set<std::string>& places)
{
    std::set<std::string> linked;
    const FcFontSet* fonts = FcConfigGetFonts(nullptr, FcSetSystem);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8* path = nullptr;
        if (FcPatternGetString(fonts->fonts[i], FC_FILE, 0, &path) != FcResultMatch)
            continue;
        std::error_code error;
        const auto file = std::filesystem::canonical(reinterpret_cast<const char*>(path), error);
        if (!error && !liesBelow(file, places))
            linked.insert(file.string());
    }
    places.merge(linked);
}

} // namespace

std::vector<std::string> warmUpText()
{
    const Descriptor file = openMemoryFile("ferrow-warm-up");
    try {
        ByteSink sink(file.get());
        sink.write(std::as_bytes(std::span(page, sizeof page - 1)));
        sink.flush();
        static_cast<void>(rasterizePdf(ByteSource(file.get(), sizeof page - 1), side));
    } catch (const InputOutputError&) {
    } catch (const CodecError&) {
    }
    try {
        static_cast<void>(rasterizeSvg(QByteArray::fromRawData(drawing, sizeof drawing - 1), side));
    } catch (const CodecError&) {
    }
    // Character sets of fonts that are not in the file come with the PDF library's own data.
    std::set<std::string> places{"/usr/share/poppler"};
    collect(places, FcConfigGetFontDirs(nullptr));
    collect(places, FcConfigGetCacheDirs(nullptr));
    collect(places, FcConfigGetConfigFiles(nullptr));
    collectLinkedFonts(places);
    places.erase(std::string());
    return {places.begin(), places.end()};
}

} // namespace ferrow::Worker
