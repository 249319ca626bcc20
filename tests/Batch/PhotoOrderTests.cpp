// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/PhotoOrder.h"

#include "Support/TestSupport.h"

namespace ferrow {

TEST(PhotoOrder, standsEqualOnesByNameAndUndatedOnesLast)
{
    using Key = PhotoOrder::Key;
    const auto photo = [](const char* name, int year, std::int64_t addedAt) {
        ImportedPhoto made;
        made.url = FileUrl::fromPath(QByteArray("/photos/") + name);
        if (year > 0)
            made.metadata.captureDate = QDateTime(QDate(year, 5, 1), QTime(12, 0));
        made.addedAt = addedAt;
        return made;
    };
    std::vector<ImportedPhoto> photos{photo("img10", 1999, 1), photo("img2", 0, 4), photo("b", 1950, 3),
                                      photo("IMG1", 1999, 2), photo("a", 1987, 5)};
    photos.back().corrections[MetadataField::captureDate] = MetadataValue(); // Said to be missing.
    photos[1].corrections[MetadataField::captureDate] = QDateTime(QDate(2001, 1, 1), QTime(0, 0));
    struct Row {
        PhotoOrder order;
        const char* expected;
    };
    for (const Row& row : {Row{{Key::name}, "a b IMG1 img2 img10 "},
                           {{Key::name, true}, "img10 img2 IMG1 b a "},
                           {{Key::captureDate}, "b IMG1 img10 img2 a "},
                           {{Key::captureDate, true}, "img2 IMG1 img10 b a "},
                           {{Key::added}, "img10 IMG1 b img2 a "},
                           {{Key::added, true}, "a img2 b IMG1 img10 "}}) {
        std::vector<ImportedPhoto> sorted = photos;
        sortPhotos(sorted, row.order);
        std::string names;
        for (const ImportedPhoto& each : sorted)
            names += each.filename().toStdString() + ' ';
        EXPECT_EQ(names, row.expected);
        for (std::size_t i = 1; i < sorted.size(); ++i) {
            EXPECT_TRUE(precedes(sorted[i - 1], sorted[i], row.order)) << names << i;
            EXPECT_FALSE(precedes(sorted[i], sorted[i - 1], row.order)) << names << i;
        }
    }
}

} // namespace ferrow
