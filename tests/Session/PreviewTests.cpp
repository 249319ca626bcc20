// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PreviewLoader.h"
#include "Session/PreviewRenderQueue.h"
#include "Session/RegionLoader.h"

#include "SessionTestSupport.h"
#include "Support/Pictures.h"

#include <QSignalSpy>

#include <atomic>
#include <latch>
#include <thread>

namespace ferrow {

using testing::ElementsAre;

namespace {

RegionSubject subject(double border)
{
    return {test::photoAt(test::photoUrl("a")), test::border(border), {1000, 800}};
}

} // namespace

TEST(PreviewLoader, publishesTheNewestAloneHoweverLateAnOlderOneEnds)
{
    std::latch slow(1);
    PreviewLoader loader([&](const FileUrl& url, const std::stop_token&) {
        if (url == test::photoUrl("slow"))
            slow.wait();
        if (url == test::photoUrl("slow") || url == test::photoUrl("bad"))
            throw ImagePipelineError(ImagePipelineError::malformedImage);
        return test::photoAt(url);
    });
    int failures = 0;
    const auto failed = [&](const std::exception_ptr&) { ++failures; };
    loader.load(test::photoAt(test::photoUrl("slow")), failed);
    loader.load(test::photoAt(test::photoUrl("b")), failed);
    EXPECT_TRUE(loader.isLoading());
    EXPECT_TRUE(test::waitUntil([&] { return !loader.isLoading(); }));
    EXPECT_EQ(loader.photo()->url, test::photoUrl("b"));
    slow.count_down();
    EXPECT_TRUE(test::waitUntil([&] { return failures == 1; })) << "told although overtaken";

    loader.load(test::photoAt(test::photoUrl("bad")), failed).request_stop();
    loader.load(test::photoAt(test::photoUrl("c")), failed);
    loader.clear();
    EXPECT_FALSE(loader.photo().has_value());
    loader.load(test::photoAt(test::photoUrl("d")), failed);
    EXPECT_TRUE(test::waitUntil([&] { return loader.photo() && loader.photo()->url == test::photoUrl("d"); }));
    loader.load(std::nullopt);
    QTest::qWait(0);
    EXPECT_FALSE(loader.photo() || loader.isLoading());
    EXPECT_EQ(failures, 1);
}

TEST(PreviewLoader, givesUpWhatWasOvertaken)
{
    std::atomic<int> decoding = 0;
    PreviewLoader loader([&](const FileUrl& url, const std::stop_token& stop) {
        ++decoding;
        while (url == test::photoUrl("endless")) {
            throwIfCanceled(stop);
            std::this_thread::yield();
        }
        return test::photoAt(url);
    });
    const auto failed = [](const std::exception_ptr&) { ADD_FAILURE(); };
    // As many as decode at once.
    std::stop_source first = loader.load(test::photoAt(test::photoUrl("endless")), failed);
    std::stop_source second = loader.load(test::photoAt(test::photoUrl("endless")), failed);
    ASSERT_TRUE(test::waitUntil([&] { return decoding == 2; }));
    first.request_stop();
    second.request_stop();
    loader.load(test::photoAt(test::photoUrl("a")), failed);
    EXPECT_TRUE(test::waitUntil([&] { return loader.photo().has_value() && !loader.isLoading(); }));
    // Mostly before the decode has begun.
    for (int i = 0; i < 20; ++i) {
        loader.load(test::photoAt(test::photoUrl("endless")), failed).request_stop();
        ASSERT_TRUE(test::waitUntil([&] { return !loader.isLoading(); }));
    }
}

namespace {

/// A queue whose clock and timer are the test's, and whose renders wait for it.
class PreviewRenderQueueTest : public testing::Test {
protected:
    PreviewRenderQueueTest()
    {
        operations.render = [this](const PreviewRequest& request, const Bitmap&, const std::stop_token&) {
            ++started;
            while (ended < started)
                std::this_thread::yield();
            return request.source;
        };
        operations.loadLogo = [this](const std::optional<LogoConfiguration>& logo,
                                     const std::stop_token&) -> std::optional<Bitmap> {
            if (logo && !isLogoThere)
                throw LogoAssetError{LogoAssetError::Case::missingManagedAsset};
            return logo ? std::optional(test::noise({4, 4}, rgba8)) : std::nullopt;
        };
        operations.now = [this] { return now; };
        operations.callLater = [this](std::chrono::milliseconds delay, std::function<void()> call) {
            delays.push_back(int(delay.count()));
            later = std::move(call);
        };
    }

    static PreviewRequest request(const char* name, double width)
    {
        return {test::photoUrl(name), test::noise({60, 40}, rgb8), {600, 400}, test::border(width), {}};
    }
    std::atomic<int> started = 0;
    std::atomic<int> ended = 0;
    std::atomic<bool> isLogoThere = false;
    PreviewRenderQueue::Clock::time_point now;
    std::vector<int> delays;
    std::function<void()> later;
    PreviewRenderQueue::Operations operations;
};

} // namespace

TEST_F(PreviewRenderQueueTest, coalescesAndKeepsItsDistance)
{
    PreviewRenderQueue queue(operations);
    std::vector<double> shown;
    QObject::connect(&queue, &PreviewRenderQueue::rendered, &queue,
                     [&](const PreviewResult& result) { shown.push_back(result.recipe.border.width); });
    const auto passInterval = [&] {
        now += PreviewRenderQueue::minimumInterval;
        std::exchange(later, nullptr)();
    };

    queue.request(request("a", 1));
    ASSERT_TRUE(test::waitUntil([&] { return started == 1; }));
    queue.request(request("a", 2));
    queue.request(request("a", 3));
    now += std::chrono::milliseconds(10);
    ended = 1;
    ASSERT_TRUE(test::waitUntil([&] { return shown.size() == 1; }));
    EXPECT_THAT(delays, ElementsAre(23));
    EXPECT_EQ(started, 1);
    queue.request(request("a", 4));
    EXPECT_EQ(delays.size(), 1u) << "one wait serves all";
    passInterval();
    ASSERT_TRUE(test::waitUntil([&] { return started == 2; }));

    // What was on its way when another photo came is not shown.
    queue.request(request("b", 5));
    ended = 2;
    ASSERT_TRUE(test::waitUntil([&] { return later != nullptr; }));
    passInterval();
    ended = 3;
    ASSERT_TRUE(test::waitUntil([&] { return shown.size() == 2; }));
    EXPECT_THAT(shown, ElementsAre(1, 5));
    now += std::chrono::seconds(1);
    queue.request(request("b", 6));
    ASSERT_TRUE(test::waitUntil([&] { return started == 4; }));
    queue.clear();
    ended = 4;
    ASSERT_TRUE(test::waitUntil([&] { return !queue.isBusy(); }));
    EXPECT_EQ(shown.size(), 2u);
}

TEST_F(PreviewRenderQueueTest, tellsOfEachLogoOnceAndOfFramesThatCannotBe)
{
    ended = 100;
    PreviewRenderQueue queue(operations);
    QSignalSpy logoFailed(&queue, &PreviewRenderQueue::logoFailed);
    QSignalSpy failed(&queue, &PreviewRenderQueue::failed);
    QSignalSpy rendered(&queue, &PreviewRenderQueue::rendered);
    const auto show = [&](double width, const char* logo) {
        now += std::chrono::seconds(1);
        PreviewRequest wanted = request("a", width);
        if (logo)
            wanted.recipe.logo = LogoConfiguration{.asset = {.managedFilename = QString::fromLatin1(logo)}};
        queue.request(wanted);
        return test::waitUntil([&] { return !queue.isBusy(); });
    };
    EXPECT_TRUE(show(1, "x.png") && show(2, "x.png") && show(3, "y.png"));
    EXPECT_EQ(logoFailed.size(), 2);
    EXPECT_EQ(rendered.size(), 3);
    QSignalSpy logoFound(&queue, &PreviewRenderQueue::logoFound);
    EXPECT_TRUE(show(4, nullptr) && show(5, "y.png"));
    EXPECT_EQ(logoFailed.size(), 2) << "a photo without the logo says nothing of it";
    isLogoThere = true;
    EXPECT_TRUE(show(6, "x.png"));
    EXPECT_EQ(logoFound.size(), 0) << "another one";
    isLogoThere = false;
    EXPECT_TRUE(show(7, "y.png"));
    isLogoThere = true;
    EXPECT_TRUE(show(8, "y.png") && show(9, "y.png"));
    EXPECT_EQ(logoFound.size(), 1);
    rendered.clear();
    EXPECT_TRUE(show(60'000, "y.png"));
    EXPECT_EQ(failed.size(), 1);
    EXPECT_TRUE(rendered.isEmpty());
    now += std::chrono::seconds(1);
    PreviewRequest reduced = request("a", 60'000);
    reduced.outputSize = OutputSize::withLongSide(1'000);
    queue.request(reduced);
    EXPECT_TRUE(test::waitUntil([&] { return !queue.isBusy(); }));
    ASSERT_EQ(rendered.size(), 1) << "it is exported at that size";
    EXPECT_EQ(rendered[0][0].value<PreviewResult>().outputSize.longestSide(), 1'000);
}

TEST(PreviewRender, framesAsAnExportDoesWithinTheScreensMeasure)
{
    PreviewRenderQueue queue;
    std::optional<PreviewResult> result;
    QObject::connect(&queue, &PreviewRenderQueue::rendered, &queue,
                     [&](const PreviewResult& given) { result = given; });
    const auto show = [&](const Bitmap& source, double width) {
        result.reset();
        RenderRecipe recipe = test::border(width);
        recipe.captions.front().isEnabled = false;
        recipe.border.color = {1, 0, 0, 1};
        recipe.outputColorProfile = OutputColorProfile::displayP3;
        queue.request({test::photoUrl("a"), source, {600, 400}, recipe, {}});
        return test::waitUntil([&] { return result.has_value(); });
    };
    ASSERT_TRUE(show(test::flat({300, 200}, rgb8, {10, 200, 30}), 100));
    EXPECT_EQ(result->picture.size(), (PixelSize{400, 300}));
    EXPECT_EQ(result->photoRect, QRectF(50, 50, 300, 200));
    EXPECT_EQ(result->outputSize, (PixelSize{800, 600}));
    // Display P3 values would be painted too dull: red as 234, 51, 35.
    const auto shade = [&](std::int64_t x, std::int64_t y, int channel) {
        return test::component(result->picture, x, y, channel);
    };
    EXPECT_LE(std::abs(shade(5, 5, 0) - 255) + shade(5, 5, 1) + shade(5, 5, 2), 6);
    EXPECT_LE(
        std::abs(shade(200, 150, 0) - 10) + std::abs(shade(200, 150, 1) - 200) + std::abs(shade(200, 150, 2) - 30), 9);

    ASSERT_TRUE(show(test::flat({600, 400}, rgb8, {0, 0, 0}), 6'000));
    EXPECT_EQ(result->outputSize, (PixelSize{12'600, 12'400}));
    EXPECT_NEAR(double(result->picture.size().width), PreviewRenderQueue::maximumSide, 30);
}

TEST(PreviewRender, showsPhotosThatAreThinnerThanAPixel)
{
    RenderRecipe bare = test::border(0);
    bare.captions.front().isEnabled = false;
    struct Row {
        PixelSize photo;
        PixelSize preview;
    };
    PreviewRenderQueue queue;
    std::optional<PreviewResult> result;
    QObject::connect(&queue, &PreviewRenderQueue::rendered, &queue,
                     [&](const PreviewResult& given) { result = given; });
    for (const Row& row : {Row{{20'000, 2}, {1'600, 1}}, Row{{2, 20'000}, {1, 1'600}}, Row{{20'000, 9}, {1'600, 1}}}) {
        SCOPED_TRACE(row.photo.formatted().toStdString());
        result.reset();
        queue.request({test::photoUrl("a"), test::flat(row.preview, rgb8, {10, 200, 30}), row.photo, bare, {}});
        ASSERT_TRUE(test::waitUntil([&] { return result.has_value(); }));
        EXPECT_TRUE(test::samePixels(result->picture, test::flat(row.preview, rgb8, {10, 200, 30})));
    }
}

TEST(RegionLoader, dropsWhatBelongsToAnotherFramingAndAsksNoMoreThanItMust)
{
    std::latch first(1);
    std::atomic<int> asked = 0;
    RegionLoader loader(
        [&](const RegionRequest& request, const std::stop_token&) {
            ++asked;
            if (request.subject.recipe.border.width == 1)
                first.wait();
            return test::flat({1, 1}, rgb8, {1, 2, 3});
        },
        std::chrono::milliseconds(0));
    const QSignalSpy loaded(&loader, &RegionLoader::loaded);
    const QRect visible(0, 200, 400, 400);

    loader.setSubject(subject(1));
    loader.want(visible, 2);
    EXPECT_TRUE(test::waitUntil([&] { return asked == 1; }));
    loader.setSubject(subject(2));
    loader.want(visible, 2);
    first.count_down();
    EXPECT_TRUE(test::waitUntil([&] { return loader.region().has_value(); }));
    EXPECT_EQ(loaded.size(), 1) << "the answer to the first framing came in and was dropped";
    EXPECT_EQ(loader.region()->region, QRect(0, 100, 500, 600)) << "a quarter more, not beyond the picture";

    loader.want(visible.translated(50, -50), 2);
    EXPECT_EQ(asked, 2) << "it is there already";
    loader.want(visible.translated(200, 0), 2);
    EXPECT_TRUE(test::waitUntil([&] { return loaded.size() == 2; }));

    RegionSubject otherCaption = subject(2);
    otherCaption.photo.corrections[MetadataField::lens] = QStringLiteral("x");
    loader.setSubject(otherCaption);
    EXPECT_FALSE(loader.region().has_value());
}

TEST(CompressedPicture, keepsTheLookInAFractionOfTheBytes)
{
    const Bitmap wide = test::flat({280, 187}, rgb8, {234, 51, 35}, ColorProfile::displayP3());
    const CompressedPicture compressed = CompressedPicture::compress(wide);
    EXPECT_LT(compressed.byteCount(), 10'000);
    const Bitmap decoded = compressed.decoded();
    ASSERT_EQ(decoded.size(), wide.size());
    EXPECT_GE(test::component(decoded, 100, 100, 0), 250);
    EXPECT_LE(test::component(decoded, 100, 100, 1), 10);
    EXPECT_TRUE(test::samePixels(CompressedPicture::compress(test::noise({9, 7}, rgba8)).decoded(),
                                 test::noise({9, 7}, rgba8)));
    EXPECT_TRUE(CompressedPicture::compress(Bitmap()).decoded().isNull());
}

} // namespace ferrow
