// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/ErrorTexts.h"

#include "Shared/UserFacingError.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>

#include <new>

namespace ferrow {

namespace {

/// As a room above would define its own.
struct LaterError {};
LocalizedErrorTexts localizedTexts(const LaterError& /*error*/)
{
    return {std::nullopt, std::nullopt, QStringLiteral("Try later."), {}};
}

QString messageOf(const ImagePipelineError& error)
{
    return UserFacingError::message(error);
}

} // namespace

TEST(ErrorTexts, joinWithoutEmptyAndRepeatedParts)
{
    using Text = std::optional<QString>;
    struct Row {
        const char* name;
        Text description;
        Text reason;
        Text suggestion;
        const char* message;
    };
    const Row rows[] = {
        {"in their order", QStringLiteral("what"), QStringLiteral("why"), QStringLiteral("do"), "what\n\nwhy\n\ndo"},
        {"trimmed", QStringLiteral("\n what\t"), {}, QStringLiteral("do\u00A0\n"), "what\n\ndo"},
        {"blank description", QStringLiteral("  "), {}, QStringLiteral("do"), "do"},
        {"the same after trimming", QStringLiteral("same "), {}, QStringLiteral(" same"), "same"},
        {"another case is another text", QStringLiteral("same"), {}, QStringLiteral("Same"), "same\n\nSame"},
        {"repeated apart", QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a"), "a\n\nb"},
        {"nothing", {}, {}, {}, "generic"},
        {"nothing visible", QStringLiteral(" "), QString(), QStringLiteral("\n"), "generic"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(UserFacingError::message(
                      LocalizedErrorTexts{row.description, row.reason, row.suggestion, QStringLiteral("generic")}),
                  QString::fromUtf8(row.message));
    }
}

TEST(ErrorTexts, insertTheirValues)
{
    struct Row {
        const char* name;
        ImagePipelineError error;
        const char* message;
    };
    const Row rows[] = {
        {"file size", ImagePipelineError::FileTooLarge{512'300'000},
         "This file is too large to inspect safely (512.3 MB).\n\n"
         "Use a smaller exported copy of the image. The original file was not changed."},
        {"dimensions without grouping", ImagePipelineError::UnreasonableDimensions{30000, 20000},
         "The image dimensions (30000 \u00D7 20000) are too large to process safely.\n\n"
         "Use a smaller exported copy of the image. The original file was not changed."},
        {"output dimensions advise on the frame", ImagePipelineError::UnreasonableOutputDimensions{70000, 1},
         "The framed output dimensions (70000 \u00D7 1) are too large to render safely.\n\n"
         "Reduce the frame width or restore a known-good preset."},
        {"decoded before expected", ImagePipelineError::FullResolutionMismatch{{6000, 4000}, {3000, 2000}},
         "Ferrow decoded this image at 3000 \u00D7 2000 instead of its full 6000 \u00D7 4000. No output file was "
         "written.\n\nExport a fresh copy of the image from Preview, then add that copy and try again."},
        {"no type name", ImagePipelineError::UnsupportedType{},
         "is not supported. Choose a JPEG, PNG, TIFF, or HEIC image.\n\n"
         "Export the source as JPEG, PNG, TIFF, or HEIC, then add that copy."},
        {"a type name that looks like a place marker", ImagePipelineError::UnsupportedType{QStringLiteral("%1 %L2")},
         "%1 %L2 is not supported. Choose a JPEG, PNG, TIFF, or HEIC image.\n\n"
         "Export the source as JPEG, PNG, TIFF, or HEIC, then add that copy."},
        {"recipe advises on the frame", ImagePipelineError::invalidRenderRecipe,
         "These framing settings contain an invalid numeric value.\n\n"
         "Reduce the frame width or restore a known-good preset."},
        {"rendering advises on frame and logo", ImagePipelineError::renderingFailed,
         "Ferrow could not render the framed image.\n\nReduce the frame or logo size and try again."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(messageOf(row.error), QString::fromUtf8(row.message));
    }
    EXPECT_EQ(ImagePipelineError(ImagePipelineError::UnsupportedType{}).errorDescription().at(0), u' ');
    EXPECT_EQ(UserFacingError::message(LogoAssetError{LogoAssetError::Case::fileTooLarge, 26'000'000}),
              QStringLiteral("The logo file is too large to import safely (26 MB).\n\n"
                             "Resize or simplify the logo, then import the smaller copy."));
}

TEST(ErrorTexts, compareTheirValues)
{
    EXPECT_EQ(ImagePipelineError(ImagePipelineError::malformedImage), ImagePipelineError::malformedImage);
    EXPECT_NE(ImagePipelineError(ImagePipelineError::EncodingFailed{QStringLiteral("PNG")}),
              ImagePipelineError(ImagePipelineError::OutputWriteFailed{QStringLiteral("PNG")}));
    EXPECT_NE(ImagePipelineError(ImagePipelineError::FileTooLarge{1}),
              ImagePipelineError(ImagePipelineError::FileTooLarge{2}));
}

TEST(ErrorTexts, tellAnyErrorInFlight)
{
    struct Row {
        const char* name;
        std::exception_ptr error;
        const char* beginning;
    };
    const auto kept = [](const auto& error) { return std::make_exception_ptr(error); };
    const Row rows[] = {
        {"pipeline", kept(ImagePipelineError(ImagePipelineError::destinationExists)),
         "A file already exists at that location. Choose a new filename.\n\nChoose Append a Number,"},
        {"logo", kept(LogoAssetError{LogoAssetError::Case::missingManagedAsset}), "The saved logo asset is missing."},
        {"planning", kept(BatchPlanningError::missingDestination), "Choose an export folder."},
        {"presets", kept(PresetPersistenceError{PresetPersistenceError::Case::unsupportedVersion, 3}),
         "These presets were saved by a newer Ferrow format (version 3).\n\nUpdate Ferrow"},
        {"memory", kept(std::bad_alloc()), "There is not enough memory"},
        {"a library's", kept(std::runtime_error("png_read_row: /home/me")), "Something unexpected went wrong."},
        {"no exception type at all", kept(7), "Something unexpected went wrong."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_THAT(UserFacingError::message(row.error).toStdString(), testing::StartsWith(row.beginning));
    }
    EXPECT_EQ(UserFacingError::message(BatchPlanningError::invalidSubfolder),
              QStringLiteral("Enter a valid source subfolder name."));
    EXPECT_EQ(UserFacingError::message(LaterError{}), QStringLiteral("Try later."));
    const SystemError missing{ENOENT, FileUrl::fromPath(QByteArray("/photos/gone.jpg"))};
    EXPECT_EQ(UserFacingError::message(kept(missing)), missing.description());
    EXPECT_THAT(missing.description().toStdString(), testing::HasSubstr("gone.jpg"));
}

} // namespace ferrow
