// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/ManagedLogoStore.h"

#include "Engine/Answerer.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FilePlacement.h"
#include "Support/Files.h"

namespace ferrow {

using namespace test;
using namespace Qt::StringLiterals;

namespace {

using Case = LogoAssetError::Case;

/// Takes what stands in the file for the type: "png", "tiff", "pdf", or something that it refuses.
class FakeAnswerer : public Engine::Answerer {
public:
    Engine::InspectAnswer inspect(const Engine::InspectRequest&, const std::stop_token&) override { return {}; }
    std::optional<Engine::PictureSummary> frame(const Engine::FrameRequest&, const std::stop_token&) override
    {
        return {};
    }
    Engine::PictureSummary readBack(const Engine::ReadBackRequest&, const std::stop_token&) override { return {}; }
    Bitmap composeRegion(const Engine::RegionRequest&, const std::stop_token&) override { return {}; }
    Engine::LogoAnswer rasterizeLogo(const Engine::LogoRequest& request, const std::stop_token&) override
    {
        requested.push_back(request.maximumDimension);
        char text[16]{};
        const ssize_t length = ::pread(request.source.descriptor, text, sizeof text, 0);
        if (length == 0)
            throw LogoAssetError{Case::malformed};
        if (QByteArray(text) == "huge")
            throw LogoAssetError{Case::unreasonableDimensions};
        return {QByteArray(text, length), Bitmap({1, 1}, {})};
    }
    std::vector<std::int64_t> requested;
};

class ManagedLogoStoreTest : public testing::Test {
protected:
    ManagedLogoStoreTest() { Engine::setAnswerer(std::unique_ptr<Engine::Answerer>(answerer)); }

    LogoAssetReference imported(const QByteArray& type)
    {
        const LogoAssetReference asset =
            ManagedLogoStore::importAsset(folder.write("My l\xf6go.v2.pdf", type), managed);
        answerer->requested.clear();
        return asset;
    }
    std::optional<LogoAssetError> refusalOf(const FileUrl& picked)
    {
        return errorOf<LogoAssetError>([&] { return ManagedLogoStore::importAsset(picked, managed); });
    }

    TemporaryFolder folder;
    FileUrl managed = folder.file("support/Logos");
    FakeAnswerer* answerer = new FakeAnswerer;
};

} // namespace

TEST_F(ManagedLogoStoreTest, copiesALogoUnderAFreshNameOfItsOwnType)
{
    const LogoAssetReference first = imported("png");
    EXPECT_EQ(first.displayName, u"My l\ufffdgo.v2"_s);
    EXPECT_EQ(first.managedFilename, first.id.toString(QUuid::WithoutBraces).toUpper() + u".png"_s);
    EXPECT_NE(first.id, imported("png").id);
    EXPECT_EQ(readFile(managed.appending(first.managedFilename.toUtf8())), "png");
    EXPECT_EQ(namesIn(managed).size(), 2);
}

TEST_F(ManagedLogoStoreTest, refusesWithTheCauseAndLeavesNothingBehind)
{
    makePipe(folder.file("pipe"));
    ASSERT_EQ(::truncate(folder.write("large", "png").path().constData(), 100'000'001), 0);
    EXPECT_EQ(refusalOf(folder.url()), LogoAssetError{Case::malformed});
    EXPECT_EQ(refusalOf(folder.file("pipe")), LogoAssetError{Case::malformed});
    EXPECT_EQ(refusalOf(folder.write("empty", "")), LogoAssetError{Case::malformed});
    EXPECT_EQ(refusalOf(folder.write("logo.png", "gif")), LogoAssetError{Case::unsupportedType});
    EXPECT_EQ(refusalOf(folder.write("evil", "../../png")), LogoAssetError{Case::unsupportedType});
    EXPECT_EQ(refusalOf(folder.write("huge", "huge")), LogoAssetError{Case::unreasonableDimensions});
    EXPECT_EQ(refusalOf(folder.file("large")), (LogoAssetError{Case::fileTooLarge, 100'000'001}));
    EXPECT_EQ(errnoOf([&] { return ManagedLogoStore::importAsset(folder.file("none"), managed); }), ENOENT);
    EXPECT_TRUE(namesIn(managed).isEmpty());
}

TEST_F(ManagedLogoStoreTest, loadsByPlainNameAlone)
{
    const LogoAssetReference asset = imported("tiff");
    folder.write("secret.png", "png");
    createFolder(managed.appending("sub"));
    makeLink(managed.appending("sub/logo.png"), folder.file("secret.png").path());
    for (const QString& name : {u"../../secret.png"_s, u"sub/logo.png"_s, folder.file("secret.png").displayPath(),
                                asset.managedFilename + QChar(u'\0'), u".."_s, u"."_s, u"none.png"_s, QString()}) {
        const auto loading = [&] { return ManagedLogoStore::load({asset.id, {}, name}, 100, managed); };
        EXPECT_EQ(errorOf<LogoAssetError>(loading), LogoAssetError{Case::missingManagedAsset}) << name.toStdString();
    }
    EXPECT_TRUE(answerer->requested.empty());
    EXPECT_FALSE(ManagedLogoStore::load(asset, 100, managed).isNull());
}

TEST_F(ManagedLogoStoreTest, clampsRemembersAndIsCanceled)
{
    const LogoAssetReference asset = imported("pdf");
    for (const std::int64_t dimension : {-5, 100'000, 100'000})
        static_cast<void>(ManagedLogoStore::load(asset, dimension, managed));
    EXPECT_EQ(answerer->requested, (std::vector<std::int64_t>{1, 20'000}));

    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(static_cast<void>(ManagedLogoStore::load(asset, 50, managed, stopped.get_token())), Canceled);
    EXPECT_FALSE(ManagedLogoStore::load(asset, 100'000, managed, stopped.get_token()).isNull());
    EXPECT_EQ(answerer->requested.size(), 2u);
}

TEST_F(ManagedLogoStoreTest, asksNothingOfADisabledLogo)
{
    LogoConfiguration logo{imported("png")};
    EXPECT_TRUE(ManagedLogoStore::loadIfEnabled(logo, managed).has_value());
    EXPECT_EQ(answerer->requested, std::vector<std::int64_t>{4'000});
    logo.asset.managedFilename = u"none.png"_s;
    EXPECT_THROW(static_cast<void>(ManagedLogoStore::loadIfEnabled(logo, managed)), LogoAssetError);
    logo.isEnabled = false;
    EXPECT_FALSE(ManagedLogoStore::loadIfEnabled(logo, managed).has_value());
    EXPECT_FALSE(ManagedLogoStore::loadIfEnabled(std::nullopt, managed).has_value());
}

} // namespace ferrow
