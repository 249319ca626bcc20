// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunProgram.h"

#include "Persistence/PresetModels.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

namespace ferrow {

using test::everythingBelow;
using test::Words;
using testing::HasSubstr;

namespace {

class FilterCommandTest : public testing::Test {
protected:
    /// A quarter of a megabyte once framed as TIFF: more than a pipe holds.
    FilterCommandTest() : photo(test::encoded(OutputType::jpeg, test::noise({300, 200}, rgb8)))
    {
        source = folder.write("photo.jpg", photo);
    }
    [[nodiscard]] test::Program start(
        Words words, const std::function<void()>& prepare = [] {}) const
    {
        words.insert(words.begin(), FERROW_BATCH_PROGRAM);
        return test::Program(words, environment, prepare);
    }

    test::TemporaryFolder folder;
    Words environment{"PATH=/usr/bin:/bin", "HOME=" + folder.file("home").path(), "TMPDIR=" + folder.url().path()};
    QByteArray photo;
    FileUrl source;
};

} // namespace

TEST_F(FilterCommandTest, givesTheBytesThatABatchWrites)
{
    const Words frame{"--format=tiff",         "--depth=16",       "--border=30px", "--caption={lens}",
                      "--set=lens=Two  words", "--caption-size=12"};
    Words batch{"--output", folder.file("out").path(), source.path()};
    batch.insert(batch.end(), frame.begin(), frame.end());
    ASSERT_EQ(start(batch).wait().status, 0);
    const QByteArray expected = test::readFile(folder.file("out/photo_framed.tiff"));
    EXPECT_EQ(test::decoded(expected).format(), rgb16);
    const auto before = everythingBelow(folder.url());

    Words filter{"--filter"};
    filter.insert(filter.end(), frame.begin(), frame.end());
    const auto fromFile = [this] { ::dup2(::open(source.path().constData(), O_RDONLY), 0); };
    for (const test::Ended& ended : {start(filter).wait(photo), start(filter, fromFile).wait()}) {
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.errors, "");
        EXPECT_TRUE(ended.output == expected) << ended.output.size();
    }
    EXPECT_EQ(everythingBelow(folder.url()), before);
}

TEST_F(FilterCommandTest, beginsWhereSomebodyStoppedReading)
{
    folder.write("behind.bin", "12345" + photo);
    const test::Ended ended = start({"--filter", "--no-caption"}, [this] {
                                  ::dup2(::open(folder.file("behind.bin").path().constData(), O_RDONLY), 0);
                                  ::lseek(0, 5, SEEK_SET);
                              }).wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(test::decoded(ended.output).size().width, 540); // The default border: 120 pixels.
}

TEST_F(FilterCommandTest, givesNothingInPlaceOfAPhoto)
{
    for (const QByteArray& input : {QByteArray(), QByteArray("GIF89a"), photo.left(photo.size() / 2)}) {
        const test::Ended ended = start({"--filter"}).wait(input);
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors.toStdString(), testing::StartsWith("ferrow-batch: "));
    }
}

TEST_F(FilterCommandTest, refusesWhatBatchesAloneHave)
{
    for (const Words& words :
         {Words{"--output", "/none"}, Words{"--beside"}, Words{"--template=x"}, Words{"--on-collision", "skip"},
          Words{"--jobs=2"}, Words{"--dry-run"}, Words{"--json"}, Words{"--corrections=x"}, Words{source.path()}}) {
        Words all{"--filter"};
        all.insert(all.end(), words.begin(), words.end());
        const test::Ended ended = start(all).wait(photo);
        EXPECT_EQ(ended.status, 2) << words.front().constData();
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors.toStdString(), HasSubstr("--filter: "));
    }
}

TEST_F(FilterCommandTest, refusesADepthThatTheFormatLacksWhereItIsAskedFor)
{
    const auto errorOf = [this](const Words& words) { return start(words).wait(photo).errors.toStdString(); };
    EXPECT_THAT(errorOf({"--filter", "--depth=16"}), HasSubstr("--depth: JPEG holds 8 bits a component, not 16."));
    EXPECT_THAT(errorOf({"--filter", "--depth=16", "--format=heic"}), HasSubstr("HEIC holds 8 or 10 bits"));
    EXPECT_THAT(errorOf({"--filter", "--depth=10", "--format=png"}), HasSubstr("PNG holds 8 or 16 bits"));
    EXPECT_EQ(errorOf({"--filter", "--depth=16", "--depth=8"}), "");
}

TEST_F(FilterCommandTest, takesTheFrameAloneOfAPreset)
{
    PresetDocument document;
    const QDateTime then = QDateTime::fromSecsSinceEpoch(0).toUTC();
    document.presets.push_back({QUuid::createUuid(), QStringLiteral("Wide"),
                                PresetPayload::make({.border = {.width = 20}, .captions = {{.isEnabled = false}}},
                                                    {.format = ExportFormat::tiff}, {}),
                                then, then});
    const QByteArray file = folder.write("presets.json", document.encode()).path();
    const test::Ended ended = start({"--filter", "--frame-from", file}).wait(photo);
    EXPECT_EQ(ended.status, 0) << ended.errors.constData();
    EXPECT_TRUE(ended.output.startsWith("\xff\xd8")); // Not the preset's format.
    EXPECT_EQ(test::decoded(ended.output).size(), (PixelSize{340, 240}));
}

TEST_F(FilterCommandTest, endsWithItsReaderOrWhenToldTo)
{
    const test::Ended lost = start({"--filter"}, [] { ::dup2(::open("/dev/full", O_WRONLY), 1); }).wait(photo);
    EXPECT_EQ(lost.status, 1);
    EXPECT_THAT(lost.errors.toStdString(), HasSubstr("not all of the output"));

    // Both ends of a pipe that nobody writes to, and errors where the test looks for them.
    test::Program waiting = start({"--filter", "--caption-font=Nobody’s Font"}, [] {
        int ends[2];
        if (::pipe(ends) == 0)
            ::dup2(ends[0], 0);
        ::dup2(1, 2);
    });
    ASSERT_TRUE(waiting.signalAfter("not installed", SIGTERM));
    EXPECT_EQ(waiting.wait().status, 130);
}

} // namespace ferrow
