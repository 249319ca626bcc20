// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/BatchExportModels.h"

#include "Platform/Base/ByteText.h"
#include "Support/TestSupport.h"

#include <limits>
#include <random>
#include <set>

namespace ferrow {

namespace {

FileUrl place(const char* path)
{
    return FileUrl::fromPath(QByteArray(path));
}

QByteArray nameOf(const QString& nameTemplate, const QByteArray& source, std::int64_t index = 0)
{
    return FilenameTemplate::filename(nameTemplate, FileUrl::fromPath("/photos/" + source), index,
                                      QStringLiteral("jpg"));
}

QByteArray repeated(const char* text, int times)
{
    return QByteArray(text).repeated(times);
}

const char* const flag = "\U0001F1E9\U0001F1EA"; // Two code points, four bytes each, one character.

} // namespace

TEST(SafePathComponent, acceptsOneFolderName)
{
    struct Row {
        const char* name;
        QString component;
        bool valid;
    };
    const Row rows[] = {
        {"plain", QStringLiteral("Ferrow Export"), true},
        {"empty", {}, false},
        {"white space of all kinds", QStringLiteral(" \t\n\u00A0\u2003\u2028"), false},
        {"one dot", QStringLiteral("."), false},
        {"two dots in spaces", QStringLiteral(" .. "), false},
        {"slash", QStringLiteral("a/b"), false},
        {"backslash", QStringLiteral("a\\b"), false},
        {"colon", QStringLiteral("a:b"), false},
        {"tab inside", QStringLiteral("a\tb"), false},
        {"NUL", QStringLiteral("a\0b"), false},
        {"C1 control", QStringLiteral("a\u0085b"), false},
        {"zero-width joiner", QStringLiteral("a\u200Db"), false},
        {"right-to-left override", QStringLiteral("a\u202Egpj"), false},
        {"format character beyond 16 bits", QStringLiteral("a\U000E0041"), false},
        {"emoji beyond 16 bits", QStringLiteral("\U0001F4F7"), true},
        {"180 bytes", QString(180, u'a'), true},
        {"181 bytes", QString(181, u'a'), false},
        {"60 characters of three bytes", QString(60, QChar(0x20AC)), true},
        {"61 characters of three bytes", QString(61, QChar(0x20AC)), false},
        {"180 bytes within spaces", u' ' + QString(180, u'a') + u' ', true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(SafePathComponent::isValid(row.component), row.valid);
    }
}

TEST(FilenameTemplate, namesOutputs)
{
    const QString named = QStringLiteral("{filename}");
    struct Row {
        const char* name;
        QString nameTemplate;
        QByteArray source;
        std::int64_t index;
        QByteArray expected;
    };
    const Row rows[] = {
        {"default", BatchExportConfiguration{}.filenameTemplate, "IMG_0001.HEIC", 0, "IMG_0001_framed.jpg"},
        {"no placeholder", QStringLiteral("Output"), "a.png", 3, "Output.jpg"},
        {"count from one, unpadded", QStringLiteral("{index}-{index}"), "a.png", 9, "10-10.jpg"},
        {"placeholders are case-sensitive", QStringLiteral("{Filename}{INDEX}"), "a.png", 0, "{Filename}{INDEX}.jpg"},
        {"an index in the source's name counts", named, "shot{index}.jpg", 0, "shot1.jpg"},
        {"a filename in the source's name does not", named, "{filename}.jpg", 0, "{filename}.jpg"},
        {"a placeholder put together", QStringLiteral("{in{filename}"), "dex}.jpg", 6, "7.jpg"},
        {"slash", QStringLiteral("{filename}/{index}"), "a.png", 4, "a-5.jpg"},
        {"neighbours each get their hyphen", QStringLiteral("..\\/:x"), "a.png", 0, "..---x.jpg"},
        {"controls within a cluster", QStringLiteral("a\r\nb"), "a.png", 0, "a--b.jpg"},
        {"joined emoji come apart", QStringLiteral("\U0001F468\u200D\U0001F469"), "a.png", 0,
         "\U0001F468-\U0001F469.jpg"},
        {"trimmed", QStringLiteral("\u2003{filename} \u2028"), " a .png", 0, "a.jpg"},
        {"a tab is a hyphen before it is white space", QStringLiteral("\ta"), "a.png", 0, "-a.jpg"},
        {"only spaces", QStringLiteral("  "), "a.png", 0, "framed.jpg"},
        {"bytes that are no text", named, "caf\xE9 \xFF.png", 0, "caf\xE9 \xFF.jpg"},
        {"stray bytes that make a control together", QStringLiteral("{filename}{filename}"), "\x85\xC2.png", 0,
         "\x85-\xC2.jpg"},
        {"cut at 180", named, repeated("a", 200) + ".png", 0, repeated("a", 180) + ".jpg"},
        {"cut between characters", named, "a" + repeated("\u20AC", 60) + ".png", 0,
         "a" + repeated("\u20AC", 59) + ".jpg"},
        {"cut between flags, not within", named, "abc" + repeated(flag, 23) + ".png", 0,
         "abc" + repeated(flag, 22) + ".jpg"},
        {"stray bytes count one each", named, repeated("\xE9", 181) + ".png", 0, repeated("\xE9", 180) + ".jpg"},
        {"one endless character", named, "a" + repeated("\u0301", 100) + ".png", 0, "framed.jpg"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(nameOf(row.nameTemplate, row.source, row.index), row.expected);
    }
    EXPECT_DEATH((void)nameOf(named, "a.png", std::numeric_limits<std::int64_t>::max()), "ran over");
}

TEST(FilenameTemplate, cutsBetweenCharacters)
{
    EXPECT_EQ(FilenameTemplate::truncatedUTF8(QStringLiteral("abc"), 3), QStringLiteral("abc"));
    EXPECT_EQ(FilenameTemplate::truncatedUTF8(QStringLiteral("abc"), 2), QStringLiteral("ab"));
    EXPECT_EQ(FilenameTemplate::truncatedUTF8(QStringLiteral("e\u0301x"), 3), QStringLiteral("e\u0301"));
    EXPECT_EQ(FilenameTemplate::truncatedUTF8(QStringLiteral("e\u0301x"), 2), QStringLiteral("framed"));
    EXPECT_EQ(FilenameTemplate::truncatedUTF8({}, 0), QString());
}

TEST(FilenameTemplate, alwaysGivesAUsableName)
{
    std::mt19937 random(20240305);
    const QByteArray pieces[] = {
        "{filename}", "{index}",      "{",        "/",      ":",      "\t",     " ",  ".",      "a",         "\xC2",
        "\x85",       "\xED\xA0\x80", "\xF0\x9F", "\u20AC", "\u0301", "\u200D", flag, "\u2028", "\U000E0041"};
    const auto any = [&](int count) {
        QByteArray bytes;
        for (int i = 0; i < count; ++i)
            bytes += pieces[random() % std::size(pieces)];
        return bytes;
    };
    for (int round = 0; round < 3000; ++round) {
        const QByteArray source = "s" + any(int(random() % 60)).replace('/', '_') + ".png";
        const QString nameTemplate = ByteText::decode(any(int(random() % 8)));
        const QByteArray name = nameOf(nameTemplate, source, round);
        SCOPED_TRACE(name.toPercentEncoding().toStdString());
        ASSERT_GE(name.size(), 5);
        ASSERT_LE(name.size(), 184);
        ASSERT_FALSE(name.contains('/') || name.contains('\0') || name.contains("\xC2\x85"));
        ASSERT_EQ(ByteText::encode(ByteText::decode(name)), name);
    }
}

TEST(BatchCollisionResolver, followsTheRule)
{
    using Resolution = BatchCollisionResolver::Resolution;
    const CollisionRule append = CollisionRule::appendNumber;
    const CollisionRule skip = CollisionRule::skip;
    const CollisionRule replace = CollisionRule::replace;
    const FileUrl first = place("/out/a.jpg");
    struct Row {
        const char* name;
        CollisionRule rule;
        std::set<FileUrl> existing;
        std::unordered_set<FileUrl> reserved;
        std::optional<Resolution> expected;
    };
    const Row rows[] = {
        {"free", replace, {}, {}, Resolution{first, false}},
        {"exists: numbered", append, {first}, {}, Resolution{place("/out/a 2.jpg"), false}},
        {"exists: skipped", skip, {first}, {}, std::nullopt},
        {"exists: replaced", replace, {first}, {}, Resolution{first, true}},
        {"reserved: numbered under skip", skip, {}, {first}, Resolution{place("/out/a 2.jpg"), false}},
        {"reserved and existing: numbered under skip",
         skip,
         {first},
         {first},
         Resolution{place("/out/a 2.jpg"), false}},
        {"reserved: numbered under replace, never replacing",
         replace,
         {place("/out/a 2.jpg")},
         {first},
         Resolution{place("/out/a 3.jpg"), false}},
        {"both kinds of taken",
         append,
         {first, place("/out/a 3.jpg")},
         {place("/out/a 2.jpg")},
         Resolution{place("/out/a 4.jpg"), false}},
        {"same name in another folder",
         append,
         {place("/other/a.jpg")},
         {place("/third/a.jpg")},
         Resolution{first, false}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ReservedDestinations reserved{.urls = row.reserved, .nextNumbers = {}};
        const auto result = BatchCollisionResolver::destination(
            first, row.rule, reserved, [&](const FileUrl& url) { return row.existing.contains(url); });
        EXPECT_EQ(result, row.expected);
        EXPECT_TRUE(!result || reserved.urls.contains(result->url));
        EXPECT_EQ(reserved.urls.size(), row.reserved.size() + (row.expected ? 1 : 0));
    }
}

TEST(BatchCollisionResolver, givesEachJobTheFirstFreePlaceOfItsOwn)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        // Few names, some of them numbered already, so that the numbers of one run into the names of another.
        const auto anyPlace = [&] {
            QByteArray name = random() % 2 == 0 ? "a" : "b";
            for (int depth = int(random() % 3); depth > 0; --depth)
                name += ' ' + QByteArray::number(int(2 + random() % 3));
            return FileUrl::fromPath("/out/" + name + ".jpg");
        };
        std::set<FileUrl> existing;
        for (int i = 0; i < 6; ++i)
            existing.insert(anyPlace());
        const auto exists = [&](const FileUrl& url) { return existing.contains(url); };

        ReservedDestinations reserved;
        std::set<FileUrl> given;
        for (int i = 0; i < 30; ++i) {
            const FileUrl proposed = anyPlace();
            const auto result =
                BatchCollisionResolver::destination(proposed, CollisionRule::appendNumber, reserved, exists);
            ASSERT_TRUE(result);
            ASSERT_FALSE(exists(result->url));
            // Counted anew each time, as the numbering would be without a memory.
            FileUrl expected = proposed;
            for (int number = 2; exists(expected) || given.contains(expected); ++number)
                expected = FileUrl::fromPath("/out/" + proposed.stem() + ' ' + QByteArray::number(number) + ".jpg");
            ASSERT_EQ(result->url, expected);
            ASSERT_TRUE(given.insert(result->url).second);
        }
    }
}

TEST(BatchCollisionResolver, asksForEachNumberOnce)
{
    std::set<FileUrl> existing{place("/out/a.jpg")};
    for (int number = 2; number <= 500; ++number)
        existing.insert(FileUrl::fromPath("/out/a " + QByteArray::number(number) + ".jpg"));
    int questions = 0;
    const auto exists = [&](const FileUrl& url) { return ++questions, existing.contains(url); };

    ReservedDestinations reserved;
    for (int i = 0; i < 2000; ++i)
        (void)BatchCollisionResolver::destination(place("/out/a.jpg"), CollisionRule::appendNumber, reserved, exists);
    EXPECT_TRUE(reserved.urls.contains(place("/out/a 2500.jpg")));
    EXPECT_EQ(reserved.urls.size(), 2000U);
    EXPECT_LE(questions, 2000 + 2500); // Each photo asks for its own name, and for no number twice.
}

} // namespace ferrow
