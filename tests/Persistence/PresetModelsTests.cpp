// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetModels.h"

#include "Persistence/Presets.h"
#include "Support/Files.h"

#include <QJsonDocument>
#include <QTimeZone>

#include <limits>

namespace ferrow {

using namespace Qt::StringLiterals;

namespace {

using Case = PresetCodingError::Case;

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
    const QDateTime created(QDate(2025, 3, 14), QTime(9, 26, 53), QTimeZone::utc());
    const QDateTime modified(QDate(2025, 12, 1), QTime(0, 0), QTimeZone::utc());
    const QUuid id(u"6f9619ff-8b86-4d01-b42d-00cf4fc964ff"_s);
    const PhotoPreset preset{id, u"Travel"_s, test::oddPayload(), created.addMSecs(999), modified.toLocalTime()};
    const QByteArray written = PresetDocument{.presets = {preset}}.encode();
    // Byte for byte: only what changed may differ for those who keep their presets under version control.
    EXPECT_EQ(written, QJsonDocument::fromJson(handWritten).toJson(QJsonDocument::Indented));
    EXPECT_TRUE(
        written.startsWith("{\n    \"presets\": [\n        {\n            \"createdAt\": \"2025-03-14T09:26:53Z\""));
    const PhotoPreset back{id, u"Travel"_s, test::oddPayload(), created, modified};
    EXPECT_EQ(PresetDocument::decode(handWritten).presets, std::vector{back});
}

TEST(PresetDocument, keepsWhatIsNewOfABorderOnlyWhereItIsSet)
{
    const QByteArray json =
        handWrittenWith(R"("borderUnit")", R"("borderSides": {"top": 1, "right": 2, "bottom": 3, "left": 4},
        "borderShape": {"width": 4, "height": 5.5, "turnsWithPhoto": true, "balance": -20},
        "borderBlurredBackground": {"blur": 12, "dim": 0},
        "borderLine": {"thickness": {"value": 6, "unit": "Pixels"}, "distance": {"value": 1.5, "unit": "Percent"},
                       "color": {"red": 0.9, "green": 0.8, "blue": 0.7, "alpha": 0.6}},
        "photoCornerRadius": {"value": 24, "unit": "Percent"}, "photoShadow": true,
        "borderUnit")");
    Border border = test::oddPayload().framing.border;
    border.sides = {1, 2, 3, 4};
    border.shape = {4, 5.5, true, -20};
    border.blurredBackground = {12, 0};
    border.line = {{6, BorderUnit::pixels}, {1.5, BorderUnit::percent}, {0.9, 0.8, 0.7, 0.6}};
    border.photoEdge = {{24, BorderUnit::percent}, true};
    const PresetDocument document = PresetDocument::decode(json);
    EXPECT_EQ(document.presets.at(0).payload.framing.border, border);
    EXPECT_EQ(document.encode(), QJsonDocument::fromJson(json).toJson(QJsonDocument::Indented));
}

TEST(PresetDocument, keepsWhatCaptionsHadLater)
{
    PresetPayload payload = test::oddPayload();
    Caption second = payload.framing.captions.front();
    second.setCaptionTemplate(u"{iso}"_s);
    second.face = FontFace{u"EB Garamond"_s, u"Medium Italic"_s};
    second.fontSize = {4, BorderUnit::percent};
    second.letterSpacing = -2.5;
    second.isUppercase = true;
    second.shrinksToFit = true;
    payload.framing.captions.resize(RenderRecipe::mostCaptions, second);
    payload.framing.captions.front().padding.unit = BorderUnit::percent;
    payload = PresetPayload::make(payload.framing, {ExportFormat::heic, 0.7}, {});
    const PhotoPreset preset{QUuid::createUuid(), u"x"_s, payload, QDateTime::fromSecsSinceEpoch(0).toUTC(),
                             QDateTime::fromSecsSinceEpoch(0).toUTC()};
    const QByteArray json = PresetDocument{.presets = {preset}}.encode();
    EXPECT_EQ(PresetDocument::decode(json).presets, std::vector{preset});
    // An older reader goes by the members it knows.
    EXPECT_TRUE(json.contains("\"captionPadding\": 1e-09,\n")) << json.constData();
    EXPECT_EQ(json.count("\"captionTemplate\""), 6);
    EXPECT_EQ(json.count("\"captionPaddingUnit\""), 1);
}

TEST(PresetDocument, readsTheLogosOfOlderDocuments)
{
    const qsizetype start = handWritten.indexOf("\"isEnabled\"");
    const QByteArray members = handWritten.mid(start, handWritten.indexOf('}', start) - start);
    const auto expectPaddings = [&](const QByteArray& older, double horizontal, double vertical) {
        const QByteArray json = handWrittenWith(members, older);
        const LogoConfiguration logo{test::oddPayload().framing.logo->asset,
                                     true,
                                     CaptionPosition::imageBottomRight,
                                     18,
                                     horizontal,
                                     vertical,
                                     1};
        EXPECT_EQ(PresetDocument::decode(json).presets.at(0).payload.framing.logo, logo) << older.toStdString();
    };
    expectPaddings(R"("padding": 7)", 7, 7);
    expectPaddings(R"("padding": 7, "horizontalPadding": 12)", 12, 7);
    expectPaddings(R"("unknown": null)", 30, 30);
}

TEST(PresetDocument, keepsTheOutputSizeWhereOneIsSet)
{
    const std::pair<OutputSize, QByteArray> rows[] = {
        {OutputSize::withLongSide(2048), R"({"limit": "Long Side", "pixels": 2048})"},
        {OutputSize::within({3840, 2160}), R"({"limit": "Fit Within", "width": 3840, "height": 2160})"},
        {OutputSize::ofMegapixels(0.75), R"({"limit": "Megapixels", "megapixels": 0.75})"}};
    for (const auto& [size, member] : rows) {
        const QByteArray json = handWrittenWith(R"("Skip Existing")", R"("Skip Existing", "outputSize": )" + member);
        const PresetDocument document = PresetDocument::decode(json);
        EXPECT_EQ(document.presets.at(0).payload.outputSize, size) << member.toStdString();
        EXPECT_EQ(document.encode(), QJsonDocument::fromJson(json).toJson(QJsonDocument::Indented));
        ExportSettings settings;
        BatchExportConfiguration configuration;
        document.presets.at(0).payload.applyTo(settings, configuration);
        EXPECT_EQ(PresetPayload::make({}, settings, configuration).outputSize, size);
    }
}

TEST(PresetDocument, holdsThatDataIsKeptAndTheDepthOnlyWhereTheyAreChosen)
{
    const QByteArray json =
        handWrittenWith(R"("Skip Existing")", R"("Skip Existing", "keepsPhotoData": true, "bitDepth": "16")");
    const PresetDocument document = PresetDocument::decode(json);
    ExportSettings settings;
    BatchExportConfiguration configuration;
    document.presets.at(0).payload.applyTo(settings, configuration);
    EXPECT_TRUE(settings.keepsPhotoData);
    EXPECT_EQ(settings.depth, BitDepth::sixteen);
    EXPECT_TRUE(PresetPayload::make({}, settings, configuration).keepsPhotoData);
    EXPECT_EQ(document.encode(), QJsonDocument::fromJson(json).toJson(QJsonDocument::Indented));
    for (const char* member : {"keepsPhotoData", "bitDepth"})
        EXPECT_FALSE(PresetDocument::decode(handWrittenWith("", "")).encode().contains(member));
}

TEST(PresetDocument, refusesWhatIsOddAndSaysWhere)
{
    const auto refusal = [](const QByteArray& from, const QByteArray& to) {
        return test::errorOf<PresetCodingError>([&] { return PresetDocument::decode(handWrittenWith(from, to)); });
    };
    EXPECT_EQ(refusal(R"("Skip Existing")", R"("Skip Existing", "logo": null, "unknown": [1])"), std::nullopt);
    EXPECT_EQ(refusal(R"(Version": 2)", R"(Version": 9.0)"), std::nullopt);
    EXPECT_EQ(refusal("00Z", "00+14:00"), std::nullopt);
    const std::tuple<QByteArray, QByteArray, Case, QString> rows[] = {
        {"Skip Existing\"}}]}", "Skip", Case::notJSON, {}},
        {"2.5", "1e400", Case::notJSON, {}},
        {R"("collisionRule")", R"("rule")", Case::missingMember, u"collisionRule"_s},
        {R"("asset")", R"("assets")", Case::missingMember, u"asset"_s},
        {R"(Version": 2)", R"(Version": 1.5)", Case::wrongType, u"schemaVersion"_s},
        {R"(Version": 2)", R"(Version": 1e300)", Case::wrongType, u"schemaVersion"_s},
        {R"(Width": 2.5)", R"(Width": "2.5")", Case::wrongType, u"borderWidth"_s},
        {R"(Width": 2.5)", R"(Width": true)", Case::wrongType, u"borderWidth"_s},
        {R"(Enabled": false)", R"(Enabled": 0)", Case::wrongType, u"captionEnabled"_s},
        {R"(name": "Travel")", R"(name": null)", Case::wrongType, u"name"_s},
        {R"("isEnabled": false)", R"("padding": "7")", Case::wrongType, u"padding"_s},
        {R"("borderUnit")", R"("borderSides": 4, "borderUnit")", Case::wrongType, u"borderSides"_s},
        {R"("borderUnit")", R"("borderLine": {"thickness": 6}, "borderUnit")", Case::wrongType, u"thickness"_s},
        {R"("borderUnit")", R"("borderShape": {"width": 4}, "borderUnit")", Case::missingMember, u"height"_s},
        {R"("borderUnit")", R"("photoShadow": 1, "borderUnit")", Case::wrongType, u"photoShadow"_s},
        {"Skip Existing", "skip existing", Case::unknownValue, u"collisionRule"_s},
        {R"("Skip Existing")", R"("Skip Existing", "outputSize": 2048)", Case::wrongType, u"outputSize"_s},
        {R"("Skip Existing")", R"("Skip Existing", "outputSize": {"limit": "Small"})", Case::unknownValue, u"limit"_s},
        {R"("Skip Existing")", R"("Skip Existing", "outputSize": {"limit": "Long Side", "pixels": 9.5})",
         Case::wrongType, u"pixels"_s},
        {"09:26:53Z", "09:26:53.25Z", Case::unknownValue, u"createdAt"_s},
        {"09:26:53Z", "09:26:53", Case::unknownValue, u"createdAt"_s},
        {"2025-03-14T09", "2025-02-30T09", Case::unknownValue, u"createdAt"_s},
        {"6F9619FF", "{6F9619FF", Case::unknownValue, u"id"_s},
        {"\"New York\"", R"("System", "captionFontSizeUnit": 7)", Case::wrongType, u"captionFontSizeUnit"_s},
        {"\"New York\"", R"("System", "captionPaddingUnit": "em")", Case::unknownValue, u"captionPaddingUnit"_s},
        {"\"New York\"", R"("System", "captionShrinkToFit": 1)", Case::wrongType, u"captionShrinkToFit"_s},
        {"\"New York\"", R"("System", "captionLetterSpacing": "4")", Case::wrongType, u"captionLetterSpacing"_s},
        {"\"New York\"", R"("System", "captionFontFace": "Inter")", Case::wrongType, u"captionFontFace"_s},
        {"\"New York\"", R"("System", "captionFontFace": {"family": "Inter"})", Case::missingMember, u"style"_s},
        {"\"New York\"", R"("System", "captionFontFace": {"family": "", "style": ""})", Case::unknownValue,
         u"family"_s},
        {"\"New York\"",
         "\"System\", \"captionFontFace\": {\"family\": \"" + QByteArray(10'000, 'x') + "\", \"style\": \"\"}",
         Case::tooLong, u"family"_s},
        {"\"New York\"", R"("System", "furtherCaptions": {})", Case::wrongType, u"furtherCaptions"_s},
        {"\"New York\"", R"("System", "furtherCaptions": [{}])", Case::missingMember, u"captionEnabled"_s},
        {"\"New York\"", "\"System\", \"furtherCaptions\": [{}" + QByteArray(",{}").repeated(999) + "]", Case::tooLong,
         u"furtherCaptions"_s},
    };
    for (const auto& [from, to, value, member] : rows)
        EXPECT_EQ(refusal(from, to), (PresetCodingError{value, member})) << to.toStdString();
    const auto odd = PresetDocument::decode(handWrittenWith("Travel", R"(Tra\ud800vel\u0000)"));
    EXPECT_TRUE(odd.presets.at(0).name.isValidUtf16());

    PresetPayload payload = test::oddPayload();
    payload.framing.captions.front().opacity =
        std::numeric_limits<double>::quiet_NaN(); // Nor is written what could not be read.
    const PresetDocument document{.presets = {{QUuid(), u"x"_s, payload, {}, {}}}};
    EXPECT_TRUE(test::errorOf<PresetCodingError>([&] { return document.encode(); }));
}

TEST(PresetPayload, carriesARecipeAndSettingsThereAndBack)
{
    const PresetPayload payload = test::oddPayload();
    ExportSettings settings;
    BatchExportConfiguration configuration{.maximumConcurrentExports = 7};
    payload.applyTo(settings, configuration);
    EXPECT_EQ(PresetPayload::make(payload.recipe(), settings, configuration), payload);
    EXPECT_EQ(configuration.maximumConcurrentExports, 7);
}

} // namespace ferrow
