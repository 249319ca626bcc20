// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetModels.h"

#include "Persistence/Presets.h"
#include "Support/TestSupport.h"

#include <cmath>
#include <limits>

namespace ferrow {

namespace {

using Case = PresetCodingError::Case;

QDateTime utc(int year, int month, int day, int hour, int minute, int second)
{
    return {QDate(year, month, day), QTime(hour, minute, second), Qt::UTC};
}

/// A document as an older version wrote it by hand: one preset, logo with a single padding.
const QByteArray handWritten = R"({
    "schemaVersion": 1,
    "presets": [{
        "createdAt": "2025-03-14T09:26:53Z", "modifiedAt": "2025-03-14T11:26:54+02:00",
        "id": "6f9619ff-8b86-4d01-b42d-00cf4fc964ff", "name": "Travel",
        "payload": {
            "borderUnit": "Pixels", "borderWidth": 120,
            "borderColor": {"red": 1, "green": 1, "blue": 1, "alpha": 1},
            "captionEnabled": true, "captionTemplate": "{camera}", "captionPosition": "Border · Bottom Right",
            "captionFont": "New York", "captionFontSize": 48.5,
            "captionColor": {"red": 0, "green": 0, "blue": 0, "alpha": 1},
            "captionAlignment": "Right", "captionLineSpacing": 8, "captionPadding": 36,
            "captionVerticalPadding": 16, "captionOpacity": 0.9,
            "logo": {"asset": {"id": "6F9619FF-8B86-4D01-B42D-00CF4FC964FF", "displayName": "L", "managedFilename": "l"},
                     "padding": 7},
            "outputColorProfile": "Preserve source profile", "exportFormat": "JPEG", "exportQuality": 0.9,
            "destinationMode": "Beside Each Source", "sourceSubfolderName": "Out", "filenameTemplate": "{filename}",
            "collisionRule": "Replace Existing", "fromTheFuture": [1, 2]
        }
    }]
})";

} // namespace

TEST(PresetDocument, writesEveryFieldInSortedOrder)
{
    const PresetDocument document{
        .presets = {{QUuid(QStringLiteral("6f9619ff-8b86-4d01-b42d-00cf4fc964ff")), QStringLiteral("Travel"),
                     test::oddPayload(), utc(2025, 3, 14, 9, 26, 53).addMSecs(999),
                     utc(2025, 12, 1, 0, 0, 0).toLocalTime()}}};
    const QByteArray expected = R"({
    "presets": [
        {
            "createdAt": "2025-03-14T09:26:53Z",
            "id": "6F9619FF-8B86-4D01-B42D-00CF4FC964FF",
            "modifiedAt": "2025-12-01T00:00:00Z",
            "name": "Travel",
            "payload": {
                "borderColor": {
                    "alpha": 0.4,
                    "blue": 0.3,
                    "green": 0.2,
                    "red": 0.1
                },
                "borderUnit": "Percent",
                "borderWidth": 2.5,
                "captionAlignment": "Center",
                "captionColor": {
                    "alpha": 0.8,
                    "blue": 0.7,
                    "green": 0.6,
                    "red": 0.5
                },
                "captionEnabled": false,
                "captionFont": "New York",
                "captionFontSize": 31.25,
                "captionLineSpacing": -1,
                "captionOpacity": 0.3333333333333333,
                "captionPadding": 1e-09,
                "captionPosition": "Image · Center Left",
                "captionTemplate": "{title} · „x“\n{year}",
                "captionVerticalPadding": 12345678.5,
                "collisionRule": "Skip Existing",
                "destinationMode": "Beside Each Source",
                "exportFormat": "HEIC",
                "exportQuality": 0.7,
                "filenameTemplate": "{filename}-x",
                "logo": {
                    "asset": {
                        "displayName": "Lögo",
                        "id": "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0",
                        "managedFilename": "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0.png"
                    },
                    "horizontalPadding": 8,
                    "isEnabled": false,
                    "opacity": 0.25,
                    "position": "Border · Top Left",
                    "verticalPadding": 9,
                    "widthPercent": 7
                },
                "outputColorProfile": "Display P3",
                "sourceSubfolderName": "Rahmen"
            }
        }
    ],
    "schemaVersion": 2
}
)";
    EXPECT_EQ(document.encode().toStdString(), expected.toStdString());
    const PresetDocument back = PresetDocument::decode(document.encode());
    ASSERT_EQ(back.presets.size(), 1u);
    EXPECT_EQ(back.presets[0].payload, document.presets[0].payload);
    EXPECT_EQ(back.presets[0].createdAt, utc(2025, 3, 14, 9, 26, 53));
}

TEST(PresetDocument, readsOlderDocuments)
{
    const PresetDocument document = PresetDocument::decode(handWritten);
    EXPECT_EQ(document.schemaVersion, 1);
    const PhotoPreset& preset = document.presets.at(0);
    EXPECT_EQ(preset.id, QUuid(QStringLiteral("6f9619ff-8b86-4d01-b42d-00cf4fc964ff")));
    EXPECT_EQ(preset.modifiedAt, utc(2025, 3, 14, 9, 26, 54));
    EXPECT_EQ(preset.payload.captionFont, CaptionFont::serif);
    EXPECT_EQ(preset.payload.collisionRule, CollisionRule::replace);
    const LogoConfiguration expected{
        {preset.id, QStringLiteral("L"), QStringLiteral("l")}, true, CaptionPosition::imageBottomRight, 18, 7, 7, 1};
    EXPECT_EQ(preset.payload.logo, expected);
}

TEST(PresetDocument, readsLogosTolerantlyAndRefusesEverythingElseThatIsOdd)
{
    const struct {
        const char* name;
        const char* from;
        const char* to;
        std::optional<Case> error;
        const char* member = "";
    } rows[] = {
        {"one new padding wins over the old", R"("padding": 7)", R"("padding": 7, "horizontalPadding": 12)", {}},
        {"logo null", R"("padding": 7})", R"("padding": 7}, "logo": null)", {}},
        {"whole number written as 1.0", R"("schemaVersion": 1)", R"("schemaVersion": 1.0)", {}},
        {"version as wide as 64 bits", R"("schemaVersion": 1)", R"("schemaVersion": 9223372036854775807)", {}},
        {"half a surrogate pair", R"("Travel")", R"("Tra\ud800vel")", {}},
        {"empty list", R"("fromTheFuture": [1, 2])", R"("fromTheFuture": [])", {}},

        {"cut short", "\"Replace Existing\"", "\"Replace", Case::notJSON},
        {"no finite number", R"("borderWidth": 120)", R"("borderWidth": 1e400)", Case::notJSON},
        {"not a number", R"("borderWidth": 120)", R"("borderWidth": NaN)", Case::notJSON},
        {"missing rule", R"("collisionRule")", R"("rule")", Case::missingMember, "collisionRule"},
        {"missing colour component", R"("alpha": 1)", R"("beta": 1)", Case::missingMember, "alpha"},
        {"missing version", R"("schemaVersion")", R"("version")", Case::missingMember, "schemaVersion"},
        {"missing asset", R"("asset")", R"("assets")", Case::missingMember, "asset"},
        {"broken version", R"("schemaVersion": 1)", R"("schemaVersion": 1.5)", Case::wrongType, "schemaVersion"},
        {"version beyond 64 bits", R"("schemaVersion": 1)", R"("schemaVersion": 1e300)", Case::wrongType,
         "schemaVersion"},
        {"text for a number", R"("borderWidth": 120)", R"("borderWidth": "120")", Case::wrongType, "borderWidth"},
        {"truth for a number", R"("borderWidth": 120)", R"("borderWidth": true)", Case::wrongType, "borderWidth"},
        {"number for a truth", R"("captionEnabled": true)", R"("captionEnabled": 1)", Case::wrongType,
         "captionEnabled"},
        {"null for a text", R"("captionTemplate": "{camera}")", R"("captionTemplate": null)", Case::wrongType,
         "captionTemplate"},
        {"odd logo padding", R"("padding": 7)", R"("padding": "7")", Case::wrongType, "padding"},
        {"odd optional logo member", R"("padding": 7)", R"("isEnabled": 0)", Case::wrongType, "isEnabled"},
        {"logo as a list", R"("padding": 7})", R"("padding": 7}, "logo": [])", Case::wrongType, "logo"},
        {"letter case of a raw value", "Replace Existing", "replace existing", Case::unknownValue, "collisionRule"},
        {"date with fractions", "09:26:53Z", "09:26:53.25Z", Case::unknownValue, "createdAt"},
        {"date without a zone", "09:26:53Z", "09:26:53", Case::unknownValue, "createdAt"},
        {"no such day", "2025-03-14T09", "2025-02-30T09", Case::unknownValue, "createdAt"},
        {"identifier in braces", "6f9619ff-8b86-4d01-b42d-00cf4fc964ff", "{6f9619ff-8b86-4d01-b42d-00cf4fc964ff}",
         Case::unknownValue, "id"},
        {"identifier too long", "00cf4fc964ff\"", "00cf4fc964ff0\"", Case::unknownValue, "id"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QByteArray json = handWritten;
        const qsizetype place = json.indexOf(row.from);
        ASSERT_GE(place, 0);
        json.replace(place, qsizetype(std::strlen(row.from)), row.to);
        std::optional<PresetCodingError> error;
        try {
            static_cast<void>(PresetDocument::decode(json));
        } catch (const PresetCodingError& thrown) {
            error = thrown;
        }
        ASSERT_EQ(error.has_value(), row.error.has_value());
        if (error) {
            EXPECT_EQ(error->value, *row.error);
            EXPECT_EQ(error->member, QLatin1StringView(row.member));
            EXPECT_FALSE(localizedTexts(*error).genericDescription.contains(QLatin1Char('%')));
        }
    }
    QByteArray split = handWritten;
    split.replace(R"("padding": 7)", R"("padding": 7, "horizontalPadding": 12)");
    const auto logo = PresetDocument::decode(split).presets.at(0).payload.logo;
    EXPECT_EQ(logo->horizontalPadding, 12);
    EXPECT_EQ(logo->verticalPadding, 7);
}

TEST(PresetDocument, neverWritesWhatItCannotRead)
{
    PresetPayload payload = test::oddPayload();
    payload.captionOpacity = std::numeric_limits<double>::quiet_NaN();
    const PresetDocument document{.presets = {{QUuid(), QStringLiteral("x"), payload, {}, {}}}};
    EXPECT_THROW(static_cast<void>(document.encode()), PresetCodingError);
}

TEST(PresetPayload, carriesARecipeAndSettingsThereAndBack)
{
    const PresetPayload payload = test::oddPayload();
    ExportSettings settings;
    const FileUrl folder = FileUrl::fromPath(QByteArray("/chosen"));
    BatchExportConfiguration configuration{.chosenFolder = folder, .maximumConcurrentExports = 7};
    payload.applyTo(settings, configuration);

    EXPECT_EQ(PresetPayload::make(payload.recipe(), settings, configuration), payload);
    EXPECT_EQ(configuration.chosenFolder, folder);
    EXPECT_EQ(configuration.maximumConcurrentExports, 7);
}

} // namespace ferrow
