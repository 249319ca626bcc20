// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Pictures.h"
#include "Worker/Messages.h"

#include <cmath>
#include <functional>
#include <limits>

namespace ferrow::Worker {

namespace {

Inspected inspected()
{
    Inspected result;
    result.answer.storedSize = result.answer.uprightSize = {30, 20};
    result.answer.properties.image = {
        {QStringLiteral("a"), {NumberList{1, 2}}},
        {QStringLiteral("b"), {PropertyMap{{QStringLiteral("c"), {TextList{QString(QChar(0xd800))}}}}}}};
    const Bitmap pixels = test::noise({5, 7}, rgba8);
    result.picture = {pixels.size(), pixels.format(), WellKnown::adobeRGB, pixels};
    return result;
}

Engine::PictureSummary summary()
{
    return {{300, 200}, 8, true, 1ULL << 63, true, {7, {{{1, 2, 3, 4}, 5}, {{0, 0, 65'280, 9}, 65'535}}}};
}

/// A request to frame with all that a composition may have.
Request framing(const std::function<void(Engine::Composition&)>& change = [](Engine::Composition&) {})
{
    Engine::FrameRequest frame;
    frame.source = {3, 100};
    frame.outputDescriptor = 4;
    frame.expectedSize = {40, 30};
    frame.composition.canvasSize = {60, 50};
    frame.composition.photoArea = {10, 9.5, 50, 40, 7.25};
    frame.composition.blurredPhoto = Engine::BlurredPhoto{5, 0.75};
    frame.composition.shadow = Engine::PhotoShadow{2.5, 1, 0.5};
    frame.composition.line = Engine::PhotoLine{4, 0.5, {0.1, 0.2, 0.3, 0.4}};
    frame.composition.overlays.push_back({test::noise({3, 2}, rgba8Premultiplied), -1, 2, 0.5});
    change(frame.composition);
    return {7, frame};
}

std::optional<Request> parsed(const Request& request)
{
    const Message message = encode(request);
    return parseRequest(message.bytes, message.descriptors);
}

} // namespace

TEST(Messages, carryWhatSurroundsAPhoto)
{
    using Engine::Composition;
    const auto same = [](const std::function<void(Composition&)>& change) {
        const Request sent = framing(change);
        const std::optional<Request> received = parsed(sent);
        ASSERT_TRUE(received);
        const auto& from = std::get<Engine::FrameRequest>(sent.content).composition;
        const auto& to = std::get<Engine::FrameRequest>(received->content).composition;
        EXPECT_EQ(to.photoArea, from.photoArea);
        EXPECT_EQ(to.blurredPhoto, from.blurredPhoto);
        EXPECT_EQ(to.shadow, from.shadow);
        EXPECT_EQ(to.line, from.line);
        ASSERT_EQ(to.overlays.size(), 1U);
        EXPECT_TRUE(test::samePixels(to.overlays[0].picture, from.overlays[0].picture));
    };
    same([](Composition&) {});
    same([](Composition& c) { c.blurredPhoto.reset(); });
    same([](Composition& c) { c.shadow.reset(); });
    same([](Composition& c) { c.line.reset(); });

    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::function<void(Composition&)> refused[] = {
        [](Composition& c) { c.photoArea.left = -2; },
        [](Composition& c) { c.photoArea.left = 51; },
        [](Composition& c) { c.photoArea.right = 62; },
        [](Composition& c) { c.photoArea.bottom = std::nan(""); },
        [](Composition& c) { c.photoArea.radius = infinity; },
        [](Composition& c) { c.blurredPhoto->sigma = -1; },
        [](Composition& c) { c.blurredPhoto->light = 1.5; },
        [](Composition& c) { c.shadow->sigma = 1e20; },
        [](Composition& c) { c.shadow->offset = -infinity; },
        [](Composition& c) { c.shadow->opacity = 2; },
        [](Composition& c) { c.line->distance = -0.5; },
        [](Composition& c) { c.line->thickness = std::nan(""); },
    };
    for (const auto& change : refused)
        EXPECT_FALSE(parsed(framing(change))) << &change - refused;

    const Message whole = encode(framing());
    for (std::size_t length = headerLength; length < whole.bytes.size(); ++length) {
        std::vector<std::byte> cut(whole.bytes.begin(), whole.bytes.begin() + std::ptrdiff_t(length));
        const auto body = std::uint32_t(length - headerLength);
        std::memcpy(cut.data() + 8, &body, sizeof body);
        EXPECT_FALSE(parseRequest(cut, whole.descriptors)) << length;
    }
}

TEST(Messages, carrySummariesWhole)
{
    for (const auto& sent : {std::optional(summary()), std::optional<Engine::PictureSummary>()}) {
        const std::optional<Answer> framed = parseAnswer(encode(Answer{1, Framed{sent}}).bytes);
        ASSERT_TRUE(framed);
        EXPECT_EQ(std::get<Framed>(framed->content).summary, sent);
    }
    const std::optional<Answer> read = parseAnswer(encode(Answer{1, SummaryRead{summary()}}).bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(std::get<SummaryRead>(read->content).summary, summary());
}

TEST(Messages, carryWhatKeepsAPhotosData)
{
    Request request = framing();
    std::get<Engine::FrameRequest>(request.content).keepsPhotoData = true;
    std::get<Engine::FrameRequest>(request.content).depth = BitDepth::sixteen;
    const std::optional<Request> received = parsed(request);
    ASSERT_TRUE(received);
    EXPECT_TRUE(std::get<Engine::FrameRequest>(received->content).keepsPhotoData);
    EXPECT_EQ(std::get<Engine::FrameRequest>(received->content).depth, BitDepth::sixteen);
    Inspected sent = inspected();
    sent.answer.codedData = CodedData{{16, 8, 3, 7}, {true, false, true}};
    EXPECT_EQ(std::get<Inspected>(parseAnswer(encode(Answer{1, sent}).bytes)->content).answer.codedData,
              sent.answer.codedData);
    EXPECT_TRUE(
        std::holds_alternative<KeepingRefused>(parseAnswer(encode(Answer{1, KeepingRefused{}}).bytes)->content));
}

TEST(Messages, tellAMissingEncoderApart)
{
    const ImagePipelineError missing = ImagePipelineError::encoderMissing;
    const std::optional<Answer> parsed = parseAnswer(encode(Answer{1, PhotoRefused{missing}}).bytes);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(std::get<PhotoRefused>(parsed->content).error, missing);
}

TEST(Messages, areNotBelievedWhenCutOrLonger)
{
    using Error = ImagePipelineError;
    for (const Answer& answer :
         {Answer{0, Hello{}}, Answer{1, HeaderRead{}}, Answer{2, inspected()}, Answer{3, RegionComposed{}},
          Answer{4, LogoRasterized{"pdf", {}}},
          Answer{5, PhotoRefused{Error::UnsupportedType{QStringLiteral("GIF image")}}},
          Answer{6, PhotoRefused{Error::OutputWriteFailed{QStringLiteral("PNG"), SystemError{ENOSPC, {}}}}},
          Answer{6, PhotoRefused{Error::FullResolutionMismatch{{4, 4}, {4, 5}}}},
          Answer{7, LogoRefused{LogoAssetError::Case::malformed}}, Answer{8, Framed{summary()}},
          Answer{9, SummaryRead{summary()}}}) {
        SCOPED_TRACE(answer.job);
        const std::vector<std::byte> whole = encode(answer).bytes;
        EXPECT_TRUE(parseAnswer(whole));
        for (std::size_t length = 0; length <= whole.size() + 1; ++length) {
            std::vector<std::byte> other = whole;
            other.resize(length);
            if (length >= headerLength) { // The header says so too.
                const auto body = std::uint32_t(length - headerLength);
                std::memcpy(other.data() + 8, &body, sizeof body);
            }
            EXPECT_EQ(parseAnswer(other).has_value(), length == whole.size()) << length;
        }
    }
}

TEST(Messages, areNotBelievedBeyondTheirLimits)
{
    const auto refused = [](const char* name, const std::function<void(Inspected&)>& change) {
        Inspected answer = inspected();
        change(answer);
        EXPECT_FALSE(parseAnswer(encode(Answer{1, answer}).bytes)) << name;
    };
    refused("empty photo", [](Inspected& a) { a.answer.storedSize = a.answer.uprightSize = {0, 5}; });
    refused("too many pixels", [](Inspected& a) { a.answer.storedSize = a.answer.uprightSize = {50'000, 4'001}; });
    refused("picture without height", [](Inspected& a) { a.picture = {{5, 0}, rgb8, WellKnown::sRGB, {}}; });
    refused("picture of another size", [](Inspected& a) { a.picture.size = {5, 6}; });
    refused("gray space", [](Inspected& a) { a.picture.space = WellKnown::sGray; });
    refused("a type beyond the last", [](Inspected& a) { a.answer.type = FileType(5); });
    refused("blocks without a side", [](Inspected& a) { a.answer.codedData = CodedData{.grid = {0, 8}}; });
    refused("blocks too large", [](Inspected& a) { a.answer.codedData = CodedData{.grid = {8, 33}}; });
    refused("a place beyond a block", [](Inspected& a) { a.answer.codedData = CodedData{.grid = {8, 8, 0, 8}}; });
    refused("a type of logos alone", [](Inspected& a) { a.answer.type = FileType::pdf; });
    const ImagePipelineError steersTerminal = ImagePipelineError::UnsupportedType{QStringLiteral("\x1b[2J")};
    for (const Answer& answer :
         {Answer{1, PhotoRefused{steersTerminal}}, Answer{2, HeaderRead{-1, false, 0, false}},
          Answer{3, LogoRasterized{"gif", {}}}, Answer{4, LogoRefused{LogoAssetError::Case::missingManagedAsset}}})
        EXPECT_FALSE(parseAnswer(encode(answer).bytes)) << answer.job;
}

} // namespace ferrow::Worker
