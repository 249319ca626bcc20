// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/PhotoMetadata.h"

#include "Support/TestSupport.h"

#include <QTimeZone>

namespace ferrow {

using namespace Qt::StringLiterals;

TEST(PhotoMetadata, namesTheCameraByMakeAndModel)
{
    const auto camera = [](const QString& make, const QString& model) {
        PhotoMetadata metadata;
        metadata.cameraMake = make;
        metadata.cameraModel = model;
        return metadata.camera();
    };
    EXPECT_EQ(PhotoMetadata().camera(), std::nullopt);
    EXPECT_EQ(camera(u" \n"_s, u"\t"_s), std::nullopt);
    EXPECT_EQ(camera(u"Nikon "_s, u"Nikon"_s), u"Nikon"_s);
    EXPECT_EQ(camera(u"NIKON"_s, u"Nikon"_s), u"NIKON Nikon"_s);
    EXPECT_EQ(camera(u"Canon"_s, u"Canon EOS R5"_s), u"Canon Canon EOS R5"_s);
    EXPECT_EQ(camera(u"  "_s, u"X100V"_s), u"X100V"_s);
}

TEST(PhotoMetadata, takesTheYearOfTheLocalCalendar)
{
    PhotoMetadata metadata;
    EXPECT_EQ(metadata.captureYear(), std::nullopt);
    metadata.captureDate = QDateTime(QDate(2023, 12, 31), QTime(23, 30), QTimeZone::utc());
    EXPECT_EQ(metadata.captureYear(), u"2024"_s); // The tests run in Berlin, an hour before UTC in winter.
}

TEST(PhotoMetadata, hashesLikeItCompares)
{
    const std::hash<PhotoMetadata> hash;
    PhotoMetadata utc;
    utc.captureDate = QDateTime(QDate(2024, 3, 5), QTime(12, 0), QTimeZone::utc());
    PhotoMetadata local;
    local.captureDate = utc.captureDate->toLocalTime();
    EXPECT_EQ(utc, local);
    EXPECT_EQ(hash(utc), hash(local));
    local.title = u"x"_s;
    utc.caption = u"x"_s;
    EXPECT_NE(utc, local);
    EXPECT_NE(hash(utc), hash(local));
}

} // namespace ferrow
