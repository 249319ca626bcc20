// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/ErrorTexts.h"

#include "Shared/UserFacingError.h"
#include "Support/TestSupport.h"

#include <new>

namespace ferrow {

using namespace Qt::StringLiterals;

namespace {

/// As a room above would define its own.
struct LaterError {};
LocalizedErrorTexts localizedTexts(const LaterError& /*error*/)
{
    return {std::nullopt, std::nullopt, u"Try later."_s, {}};
}

template <typename Error>
std::string messageOf(const Error& error)
{
    return UserFacingError::message(error).toStdString();
}

} // namespace

TEST(ErrorTexts, joinWithoutEmptyAndRepeatedParts)
{
    const auto joined = [](const QString& description, const QString& reason, const QString& suggestion) {
        return messageOf(LocalizedErrorTexts{description, reason, suggestion, u"generic"_s});
    };
    EXPECT_EQ(joined(u"what"_s, u"why"_s, u"do"_s), "what\n\nwhy\n\ndo");
    EXPECT_EQ(joined(u"\n what\t"_s, {}, u"do\u00A0\n"_s), "what\n\ndo");
    EXPECT_EQ(joined(u"same "_s, {}, u" same"_s), "same");
    EXPECT_EQ(joined(u"same"_s, {}, u"Same"_s), "same\n\nSame");
    EXPECT_EQ(joined(u"a"_s, u"b"_s, u"a"_s), "a\n\nb");
    EXPECT_EQ(joined(u" "_s, {}, u"\n"_s), "generic");
    EXPECT_EQ(messageOf(LocalizedErrorTexts{{}, {}, {}, u"generic"_s}), "generic");
}

TEST(ErrorTexts, insertTheirValues)
{
    using Error = ImagePipelineError;
    const std::pair<Error, std::string> rows[] = {
        {Error::FileTooLarge{512'300'000}, "This file is too large to inspect safely (512.3 MB).\n\nUse a smaller"},
        {Error::UnreasonableDimensions{30000, 20000}, "The image dimensions (30000 × 20000) are too large to process"},
        {Error::UnreasonableOutputDimensions{70000, 1}, "The framed output dimensions (70000 × 1) are too large"},
        {Error::FullResolutionMismatch{{6000, 4000}, {3000, 2000}},
         "Ferrow decoded this image at 3000 × 2000 instead of"},
        {Error::UnsupportedType{}, "is not supported. Choose a JPEG, PNG, TIFF, or HEIC image.\n\nExport the source"},
        {Error::UnsupportedType{u"%1 %L2"_s}, "%1 %L2 is not supported. Choose a JPEG"},
        {Error::OutputWriteFailed{u"PNG"_s, SystemError{ENOSPC, FileUrl::fromPath(QByteArray("/a.png"))}},
         "The PNG image was created, but it could not be written to the selected location. No output file was "
         "written.\n\n“a.png” could not be written because there is no space left on its disk.\n\nCheck available"},
        {Error::encoderMissing, "This system has no HEVC encoder, which HEIC images need. No output"},
        {Error::renderingFailed, "Ferrow could not render the framed image.\n\nReduce the frame or logo size"},
    };
    for (const auto& [error, beginning] : rows)
        EXPECT_EQ(messageOf(error).substr(0, beginning.size()), beginning);
    EXPECT_EQ(messageOf(Error(Error::OutputWriteFailed{u"PNG"_s})),
              "The PNG image was created, but it could not be written to the selected location. No output file was "
              "written.\n\nCheck available disk space and folder permissions, then try again.");
    EXPECT_NE(Error(Error::EncodingFailed{u"PNG"_s}), Error(Error::OutputWriteFailed{u"PNG"_s}));
    EXPECT_NE(Error(Error::FileTooLarge{1}), Error(Error::FileTooLarge{2}));
}

TEST(ErrorTexts, tellAnyErrorInFlight)
{
    const auto kept = [](const auto& error) { return std::make_exception_ptr(error); };
    const SystemError missing{ENOENT, FileUrl::fromPath(QByteArray("/photos/gone.jpg"))};
    const std::pair<std::exception_ptr, std::string> rows[] = {
        {kept(ImagePipelineError(ImagePipelineError::destinationExists)), "A file already exists at that location."},
        {kept(LogoAssetError{LogoAssetError::Case::fileTooLarge, 26'000'000}),
         "The logo file is too large to import safely (26 MB)."},
        {kept(LogoAssetError{LogoAssetError::Case::textInDrawing}),
         "The SVG holds text, which would be drawn in another font.\n\nConvert text to paths"},
        {kept(BatchPlanningError::missingDestination), "Choose an export folder."},
        {kept(PresetPersistenceError{PresetPersistenceError::Case::unsupportedVersion, 3}),
         "These presets were saved by a newer Ferrow format (version 3).\n\nUpdate Ferrow"},
        {kept(missing), missing.description().toStdString()},
        {kept(std::bad_alloc()), "There is not enough memory"},
        {kept(std::runtime_error("png_read_row: /home/me")), "Something unexpected went wrong."},
        {kept(7), "Something unexpected went wrong."},
    };
    for (const auto& [error, beginning] : rows)
        EXPECT_EQ(messageOf(error).substr(0, beginning.size()), beginning);
    EXPECT_EQ(messageOf(LaterError{}), "Try later.");
}

} // namespace ferrow
