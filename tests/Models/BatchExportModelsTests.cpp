// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/BatchExportModels.h"

#include "Platform/Base/ByteText.h"
#include "Support/TestSupport.h"

#include <limits>
#include <random>
#include <set>

namespace ferrow {

using namespace Qt::StringLiterals;

namespace {

FileUrl place(const QByteArray& name)
{
    return FileUrl::fromPath("/out/" + name + ".jpg");
}

QByteArray nameOf(const QString& nameTemplate, const QByteArray& source, std::int64_t index = 0)
{
    return FilenameTemplate::filename(nameTemplate, FileUrl::fromPath("/photos/" + source), index, u"jpg"_s);
}

/// The name of a source whose stem is `part` so many times, when it is taken over.
QByteArray takenOver(const QByteArray& start, const QByteArray& part, int times)
{
    return nameOf(u"{filename}"_s, start + part.repeated(times) + ".png");
}

const char* const flag = "\U0001F1E9\U0001F1EA"; // Two code points, four bytes each, one character.

} // namespace

TEST(SafePathComponent, acceptsOneFolderName)
{
    for (const QString& name :
         {u"Ferrow Export"_s, u"\U0001F4F7"_s, u' ' + QString(180, u'a') + u' ', QString(60, u'€')})
        EXPECT_TRUE(SafePathComponent::isValid(name)) << name.toStdString();
    // White space of all kinds, dots, separators, controls, format characters (the last beyond 16 bits), too many
    // bytes.
    for (const QString& name : {QString(), u" \t\n\u00A0\u2003\u2028"_s, u"."_s, u" .. "_s, u"a/b"_s, u"a\\b"_s,
                                u"a:b"_s, u"a\tb"_s, u"a\0b"_s, u"a\u0085b"_s, u"a\u200Db"_s, u"a\u202Egpj"_s,
                                u"a\U000E0041"_s, QString(181, u'a'), QString(61, u'€')})
        EXPECT_FALSE(SafePathComponent::isValid(name)) << name.toStdString();
}

TEST(FilenameTemplate, namesOutputs)
{
    EXPECT_EQ(nameOf(BatchExportConfiguration{}.filenameTemplate, "IMG_0001.HEIC"), "IMG_0001_framed.jpg");
    EXPECT_EQ(nameOf(u"{index}-{index}{Filename}"_s, "a.png", 9), "10-10{Filename}.jpg");
    // An index in the source's name counts, a filename does not.
    EXPECT_EQ(nameOf(u"{filename}"_s, "shot{index}{filename}.jpg"), "shot1{filename}.jpg");
    EXPECT_EQ(nameOf(u"{in{filename}"_s, "dex}.jpg", 6), "7.jpg");
    EXPECT_EQ(nameOf(u"{filename}/{index}..\\:x"_s, "a.png", 4), "a-5..--x.jpg");
    EXPECT_EQ(nameOf(u"a\r\nb\U0001F468\u200D\U0001F469"_s, "a.png"), "a--b\U0001F468-\U0001F469.jpg");
    EXPECT_EQ(nameOf(u"\u2003{filename} \u2028"_s, " a .png"), "a.jpg");
    EXPECT_EQ(nameOf(u"\ta"_s, "a.png"), "-a.jpg");
    EXPECT_EQ(nameOf(u"  "_s, "a.png"), "framed.jpg");
    // Stray bytes stay, and those that would make a control together are kept apart.
    EXPECT_EQ(takenOver("caf\xE9 ", "\xFF", 1), "caf\xE9 \xFF.jpg");
    EXPECT_EQ(nameOf(u"{filename}{filename}"_s, "\x85\xC2.png"), "\x85-\xC2.jpg");
    EXPECT_DEATH((void)nameOf({}, "a.png", std::numeric_limits<std::int64_t>::max()), "ran over");
}

TEST(FilenameTemplate, cutsBetweenCharacters)
{
    EXPECT_EQ(takenOver("", "a", 200), QByteArray(180, 'a') + ".jpg");
    EXPECT_EQ(takenOver("a", "€", 60), "a" + QByteArray("€").repeated(59) + ".jpg");
    EXPECT_EQ(takenOver("abc", flag, 23), "abc" + QByteArray(flag).repeated(22) + ".jpg");
    EXPECT_EQ(takenOver("", "\xE9", 181), QByteArray(180, '\xE9') + ".jpg");
    EXPECT_EQ(takenOver("a", "\u0301", 100), "framed.jpg"); // One endless character.
    EXPECT_EQ(FilenameTemplate::truncatedUTF8(u"e\u0301x"_s, 3), u"e\u0301"_s);
    EXPECT_EQ(FilenameTemplate::truncatedUTF8(u"e\u0301x"_s, 2), u"framed"_s);
}

TEST(FilenameTemplate, alwaysGivesAUsableName)
{
    std::mt19937 random(20240305);
    const QByteArray pieces[] = {
        "{filename}", "{index}",      "{",        "/", ":",      "\t",     " ",  ".",      "a",         "\xC2",
        "\x85",       "\xED\xA0\x80", "\xF0\x9F", "€", "\u0301", "\u200D", flag, "\u2028", "\U000E0041"};
    const auto any = [&](std::size_t most) {
        QByteArray bytes;
        for (auto count = random() % most; count > 0; --count)
            bytes += pieces[random() % std::size(pieces)];
        return bytes;
    };
    for (int round = 0; round < 3000; ++round) {
        const QByteArray source = "s" + any(60).replace('/', '_') + ".png";
        const QByteArray name = nameOf(ByteText::decode(any(8)), source, round);
        SCOPED_TRACE(name.toPercentEncoding().toStdString());
        ASSERT_TRUE(name.size() >= 5 && name.size() <= 184);
        ASSERT_FALSE(name.contains('/') || name.contains('\0') || name.contains("\xC2\x85"));
    }
}

TEST(BatchCollisionResolver, followsTheRule)
{
    using enum CollisionRule;
    // What comes of "a" where some names exist and others are reserved: "+" that it replaces, "" that it is skipped.
    using Places = std::set<FileUrl>;
    const auto chosen = [](CollisionRule rule, const Places& existing, const Places& taken) {
        ReservedDestinations reserved{.keys = {taken.begin(), taken.end()}};
        const auto exists = [&](const FileUrl& url) { return existing.contains(url); };
        const auto result = BatchCollisionResolver::destination(place("a"), rule, reserved, exists);
        EXPECT_EQ(reserved.keys.size(), taken.size() + (result ? 1 : 0));
        EXPECT_TRUE(!result || reserved.contains(result->url));
        return result ? result->url.stem() + (result->replaceExisting ? "+" : "") : QByteArray();
    };
    const FileUrl a = place("a");
    EXPECT_EQ(chosen(replace, {}, {}), "a");
    EXPECT_EQ(chosen(appendNumber, {a}, {}), "a 2");
    EXPECT_EQ(chosen(skip, {a}, {}), "");
    EXPECT_EQ(chosen(replace, {a}, {}), "a+");
    EXPECT_EQ(chosen(skip, {}, {a}), "a 2");
    EXPECT_EQ(chosen(skip, {a}, {a}), "a 2");
    EXPECT_EQ(chosen(replace, {place("a 2")}, {a}), "a 3"); // Numbered, and so never replacing.
    EXPECT_EQ(chosen(appendNumber, {a, place("a 3")}, {place("a 2")}), "a 4");
}

TEST(BatchCollisionResolver, givesEachJobTheFirstFreePlaceOfItsOwn)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        // Few names, some of them numbered already, so that the numbers of one run into the names of another.
        const auto anyPlace = [&] {
            QByteArray name = random() % 2 == 0 ? "a" : "b";
            for (auto depth = random() % 3; depth > 0; --depth)
                name += ' ' + QByteArray::number(int(2 + random() % 3));
            return place(name);
        };
        std::set<FileUrl> taken;
        for (int i = 0; i < 6; ++i)
            taken.insert(anyPlace());
        const auto exists = [existing = taken](const FileUrl& url) { return existing.contains(url); };
        ReservedDestinations reserved;
        for (int i = 0; i < 30; ++i) {
            const FileUrl proposed = anyPlace();
            const auto result =
                BatchCollisionResolver::destination(proposed, CollisionRule::appendNumber, reserved, exists);
            // Counted anew each time, as the numbering would be without a memory.
            FileUrl expected = proposed;
            for (int number = 2; !taken.insert(expected).second; ++number)
                expected = place(proposed.stem() + ' ' + QByteArray::number(number));
            ASSERT_TRUE(result && result->url == expected) << expected.path().toStdString();
        }
    }
}

TEST(BatchCollisionResolver, asksForEachNumberOnce)
{
    int questions = 0;
    const auto exists = [&](const FileUrl& url) {
        ++questions;
        return url.stem().mid(2).toInt() <= 500;
    };
    ReservedDestinations reserved;
    for (int i = 0; i < 2000; ++i)
        (void)BatchCollisionResolver::destination(place("a"), CollisionRule::appendNumber, reserved, exists);
    EXPECT_TRUE(reserved.contains(place("a 2500")));
    EXPECT_LE(questions, 2000 + 2500); // Each photo asks for its own name, and for no number twice.
}

} // namespace ferrow
