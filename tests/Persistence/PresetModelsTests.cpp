// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetModels.h"

#include "Persistence/Presets.h"
#include "Support/TestSupport.h"

#include <QJsonDocument>

#include <limits>

namespace ferrow {

namespace {

using Case = PresetCodingError::Case;

QDateTime utc(int year, int month, int day, int hour, int minute, int second)
{
    return {QDate(year, month, day), QTime(hour, minute, second), Qt::UTC};
}

/// test::oddPayload() in a preset, typed by hand.
const QByteArray handWritten = R"({"schemaVersion": 2, "presets": [{
    "createdAt": "2025-03-14T09:26:53Z", "modifiedAt": "2025-12-01T00:00:00Z", "name": "Travel",
    "id": "6F9619FF-8B86-4D01-B42D-00CF4FC964FF",
    "payload": {
        "borderUnit": "Percent", "borderWidth": 2.5,
        "borderColor": {"red": 0.1, "green": 0.2, "blue": 0.3, "alpha": 0.4},
        "captionEnabled": false, "captionTemplate": "{title} · „x“\n{year}", "captionPosition": "Image · Center Left",
        "captionFont": "New York", "captionFontSize": 31.25,
        "captionColor": {"red": 0.5, "green": 0.6, "blue": 0.7, "alpha": 0.8}, "captionAlignment": "Center",
        "captionLineSpacing": -1, "captionPadding": 1e-9, "captionVerticalPadding": 12345678.5,
        "captionOpacity": 0.3333333333333333,
        "logo": {"asset": {"id": "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0", "displayName": "Lögo",
                           "managedFilename": "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0.png"},
                 "isEnabled": false, "position": "Border · Top Left", "widthPercent": 7, "horizontalPadding": 8,
                 "verticalPadding": 9, "opacity": 0.25},
        "outputColorProfile": "Display P3", "exportFormat": "HEIC", "exportQuality": 0.7,
        "destinationMode": "Beside Each Source", "sourceSubfolderName": "Rahmen", "filenameTemplate": "{filename}-x",
        "collisionRule": "Skip Existing"}}]})";

QByteArray handWrittenWith(const QByteArray& from, const QByteArray& to)
{
    QByteArray json = handWritten;
    const qsizetype place = json.indexOf(from);
    EXPECT_GE(place, 0) << from.toStdString();
    return json.replace(place, from.size(), to);
}

} // namespace

TEST(PresetDocument, writesAndReadsEveryField)
{
    const PresetDocument document{
        .presets = {{QUuid(QStringLiteral("6f9619ff-8b86-4d01-b42d-00cf4fc964ff")), QStringLiteral("Travel"),
                     test::oddPayload(), utc(2025, 3, 14, 9, 26, 53).addMSecs(999),
                     utc(2025, 12, 1, 0, 0, 0).toLocalTime()}}};
    const QByteArray written = document.encode();
    EXPECT_EQ(QJsonDocument::fromJson(written), QJsonDocument::fromJson(handWritten));
    const QByteArray start = "{\n    \"presets\": [\n        {\n            \"createdAt\": \"2025-03-14T09:26:53Z\",\n";
    EXPECT_EQ(written.first(start.size()), start);

    const PhotoPreset back = PresetDocument::decode(handWritten).presets.at(0);
    EXPECT_EQ(back.payload, document.presets[0].payload);
    EXPECT_EQ(back.createdAt, utc(2025, 3, 14, 9, 26, 53));
    EXPECT_EQ(back.id, document.presets[0].id);
}

TEST(PresetDocument, readsTheLogosOfOlderDocuments)
{
    const qsizetype asset = handWritten.indexOf("\"isEnabled\"");
    const QByteArray members = handWritten.mid(asset, handWritten.indexOf('}', asset) - asset);
    const LogoAssetReference reference = test::oddPayload().logo->asset;
    const auto logo = [&](double horizontal, double vertical) {
        return LogoConfiguration{reference, true, CaptionPosition::imageBottomRight, 18, horizontal, vertical, 1};
    };
    const struct {
        QByteArray members;
        LogoConfiguration logo;
    } rows[] = {{R"("padding": 7)", logo(7, 7)},
                {R"("padding": 7, "horizontalPadding": 12)", logo(12, 7)},
                {R"("unknown": null)", logo(30, 30)}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.members.toStdString());
        const QByteArray json = handWrittenWith(members, row.members);
        EXPECT_EQ(PresetDocument::decode(json).presets.at(0).payload.logo, row.logo);
    }
}

TEST(PresetDocument, refusesWhatIsOddAndSaysWhere)
{
    const struct {
        const char* from;
        const char* to;
        std::optional<Case> error; ///< Absent: read all the same.
        const char* member = "";
    } rows[] = {
        {R"("Skip Existing")", R"("Skip Existing", "logo": null, "unknown": [1])", {}},
        {R"("schemaVersion": 2)", R"("schemaVersion": 9.0)", {}},
        {R"("Travel")", R"("Tra\ud800vel\u0000")", {}},
        {"00Z", "00+14:00", {}},
        {"Skip Existing\"}}]}", "Skip", Case::notJSON},
        {"2.5", "1e400", Case::notJSON},
        {R"("collisionRule")", R"("rule")", Case::missingMember, "collisionRule"},
        {R"("alpha")", R"("beta")", Case::missingMember, "alpha"},
        {R"("asset")", R"("assets")", Case::missingMember, "asset"},
        {R"("schemaVersion": 2)", R"("schemaVersion": 1.5)", Case::wrongType, "schemaVersion"},
        {R"("schemaVersion": 2)", R"("schemaVersion": 1e300)", Case::wrongType, "schemaVersion"},
        {R"("borderWidth": 2.5)", R"("borderWidth": "2.5")", Case::wrongType, "borderWidth"},
        {R"("borderWidth": 2.5)", R"("borderWidth": true)", Case::wrongType, "borderWidth"},
        {R"("captionEnabled": false)", R"("captionEnabled": 0)", Case::wrongType, "captionEnabled"},
        {R"("name": "Travel")", R"("name": null)", Case::wrongType, "name"},
        {R"("isEnabled": false)", R"("padding": "7")", Case::wrongType, "padding"},
        {R"("isEnabled": false)", R"("isEnabled": 0)", Case::wrongType, "isEnabled"},
        {"Skip Existing", "skip existing", Case::unknownValue, "collisionRule"},
        {"09:26:53Z", "09:26:53.25Z", Case::unknownValue, "createdAt"},
        {"09:26:53Z", "09:26:53", Case::unknownValue, "createdAt"},
        {"2025-03-14T09", "2025-02-30T09", Case::unknownValue, "createdAt"},
        {"6F9619FF", "{6F9619FF", Case::unknownValue, "id"},
        {"00CF4FC964FF", "00CF4FC964FF0", Case::unknownValue, "id"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.to);
        std::optional<PresetCodingError> expected;
        if (row.error)
            expected = PresetCodingError{*row.error, QLatin1StringView(row.member)};
        std::optional<PresetCodingError> error;
        try {
            const PresetDocument document = PresetDocument::decode(handWrittenWith(row.from, row.to));
            EXPECT_TRUE(document.presets.at(0).name.isValidUtf16());
        } catch (const PresetCodingError& thrown) {
            error = thrown;
        }
        EXPECT_EQ(error, expected);
    }
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
