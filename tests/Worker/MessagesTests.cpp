// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Pictures.h"
#include "Worker/Messages.h"

#include <functional>

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

} // namespace

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
          Answer{7, LogoRefused{LogoAssetError::Case::malformed}}}) {
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
    refused("a type of logos alone", [](Inspected& a) { a.answer.type = FileType::pdf; });
    const ImagePipelineError steersTerminal = ImagePipelineError::UnsupportedType{QStringLiteral("\x1b[2J")};
    for (const Answer& answer :
         {Answer{1, PhotoRefused{steersTerminal}}, Answer{2, HeaderRead{-1, false, 0, false}},
          Answer{3, LogoRasterized{"svg", {}}}, Answer{4, LogoRefused{LogoAssetError::Case::missingManagedAsset}}})
        EXPECT_FALSE(parseAnswer(encode(answer).bytes)) << answer.job;
}

} // namespace ferrow::Worker
