// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/PhotoMetadata.h"

#include "Support/TestSupport.h"

namespace ferrow {

TEST(PhotoMetadata, namesTheCameraByMakeAndModel)
{
    struct Row {
        const char* name;
        std::optional<QString> make;
        std::optional<QString> model;
        std::optional<QString> camera;
    };
    const Row rows[] = {
        {"neither", std::nullopt, std::nullopt, std::nullopt},
        {"only white space", QStringLiteral(" \n"), QStringLiteral("\t"), std::nullopt},
        {"the same twice", QStringLiteral("FUJIFILM"), QStringLiteral("FUJIFILM"), QStringLiteral("FUJIFILM")},
        {"the same after trimming", QStringLiteral("Nikon "), QStringLiteral("Nikon"), QStringLiteral("Nikon")},
        {"another case is another text", QStringLiteral("NIKON"), QStringLiteral("Nikon"),
         QStringLiteral("NIKON Nikon")},
        {"make opens the model", QStringLiteral("Canon"), QStringLiteral("Canon EOS R5"),
         QStringLiteral("Canon Canon EOS R5")},
        {"blank make", QStringLiteral("  "), QStringLiteral("X100V"), QStringLiteral("X100V")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        PhotoMetadata metadata;
        metadata.cameraMake = row.make;
        metadata.cameraModel = row.model;
        EXPECT_EQ(metadata.camera(), row.camera);
    }
}

TEST(PhotoMetadata, takesTheYearOfTheLocalCalendar)
{
    // The tests run in Berlin, an hour before UTC in winter.
    PhotoMetadata metadata;
    EXPECT_EQ(metadata.captureYear(), std::nullopt);
    metadata.captureDate = QDateTime(QDate(2023, 12, 31), QTime(23, 30), Qt::UTC);
    EXPECT_EQ(metadata.captureYear(), QStringLiteral("2024"));
    metadata.captureDate = metadata.captureDate->addSecs(-3600);
    EXPECT_EQ(metadata.captureYear(), QStringLiteral("2023"));
}

TEST(PhotoMetadata, hashesLikeItCompares)
{
    const std::hash<PhotoMetadata> hash;
    PhotoMetadata utc;
    utc.captureDate = QDateTime(QDate(2024, 3, 5), QTime(12, 0), Qt::UTC);
    PhotoMetadata local;
    local.captureDate = utc.captureDate->toLocalTime();
    EXPECT_EQ(utc, local);
    EXPECT_EQ(hash(utc), hash(local));

    PhotoMetadata titled;
    titled.title = QStringLiteral("x");
    PhotoMetadata captioned;
    captioned.caption = QStringLiteral("x");
    EXPECT_NE(titled, captioned);
    EXPECT_NE(hash(titled), hash(captioned));
}

} // namespace ferrow
