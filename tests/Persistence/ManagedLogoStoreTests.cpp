// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/ManagedLogoStore.h"

#include "Engine/Answerer.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Base/SystemErrors.h"
#include "Support/TestSupport.h"

#include <QDir>

#include <sys/stat.h>

namespace ferrow {

namespace {

using Case = LogoAssetError::Case;

/// Takes what stands in the file for the type: "png", "tiff", "pdf", or something that it refuses.
class FakeAnswerer : public Engine::Answerer {
public:
    Engine::InspectAnswer inspect(const Engine::InspectRequest&, const std::stop_token&) override { return {}; }
    void frame(const Engine::FrameRequest&, const std::stop_token&) override {}
    Bitmap composeRegion(const Engine::RegionRequest&, const std::stop_token&) override { return {}; }
    Engine::LogoAnswer rasteriseLogo(const Engine::LogoRequest& request, const std::stop_token&) override
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
    ManagedLogoStoreTest()
    {
        auto fake = std::make_unique<FakeAnswerer>();
        answerer = fake.get();
        Engine::setAnswerer(std::move(fake));
    }
    [[nodiscard]] QStringList managedFiles() const
    {
        return QDir(managed.displayPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    test::TemporaryFolder folder;
    FileUrl managed = folder.file("support/Logos");
    FakeAnswerer* answerer = nullptr;
};

FileUrl fileOfSize(const FileUrl& url, off_t size)
{
    EXPECT_EQ(::truncate(url.path().constData(), size), 0);
    return url;
}

} // namespace

TEST_F(ManagedLogoStoreTest, copiesALogoUnderAFreshNameOfItsOwnType)
{
    const FileUrl picked = folder.write("My l\xf6go.v2.pdf", "png");
    const LogoAssetReference first = ManagedLogoStore::importAsset(picked, managed);
    const LogoAssetReference second = ManagedLogoStore::importAsset(picked, managed);

    EXPECT_EQ(first.displayName, QStringLiteral("My l\ufffdgo.v2"));
    EXPECT_EQ(first.managedFilename, first.id.toString(QUuid::WithoutBraces).toUpper() + QStringLiteral(".png"));
    EXPECT_NE(first.id, second.id);
    EXPECT_EQ(test::readFile(managed.appending(first.managedFilename.toUtf8())), "png");
    EXPECT_EQ(managedFiles().size(), 2);
    EXPECT_EQ(answerer->requested, (std::vector<std::int64_t>{2'000, 2'000}));
    EXPECT_EQ(::unlink(picked.path().constData()), 0);
}

TEST_F(ManagedLogoStoreTest, refusesWithTheCauseAndLeavesNothingBehind)
{
    ASSERT_EQ(::mkfifo(folder.file("pipe.png").path().constData(), 0644), 0);
    const struct {
        const char* name;
        FileUrl url;
        LogoAssetError error;
    } rows[] = {
        {"folder", folder.url(), {Case::malformed}},
        {"pipe", folder.file("pipe.png"), {Case::malformed}},
        {"empty", folder.write("empty.png", ""), {Case::malformed}},
        {"another type", folder.write("logo.png", "svg"), {Case::unsupportedType}},
        {"a type that leads out of the folder", folder.write("evil.png", "../../png"), {Case::unsupportedType}},
        {"dimensions", folder.write("huge.png", "huge"), {Case::unreasonableDimensions}},
        {"a byte too large",
         fileOfSize(folder.write("large.png", "png"), 100'000'001),
         {Case::fileTooLarge, 100'000'001}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        try {
            static_cast<void>(ManagedLogoStore::importAsset(row.url, managed));
            ADD_FAILURE() << "accepted";
        } catch (const LogoAssetError& error) {
            EXPECT_EQ(error, row.error);
        }
    }
    EXPECT_THROW(static_cast<void>(ManagedLogoStore::importAsset(folder.file("none.png"), managed)), SystemError);
    EXPECT_TRUE(managedFiles().isEmpty());
}

TEST_F(ManagedLogoStoreTest, loadsByPlainNameAlone)
{
    folder.write("secret.png", "png");
    const LogoAssetReference asset = ManagedLogoStore::importAsset(folder.write("logo.png", "tiff"), managed);
    ASSERT_EQ(::mkdir(managed.appending("sub").path().constData(), 0755), 0);
    ::link(folder.file("secret.png").path().constData(), managed.appending("sub/logo.png").path().constData());
    answerer->requested.clear();
    const QString names[] = {QStringLiteral("../../secret.png"),
                             QStringLiteral("sub/logo.png"),
                             folder.file("secret.png").displayPath(),
                             asset.managedFilename + QChar(u'\0'),
                             QStringLiteral(".."),
                             QStringLiteral("."),
                             QStringLiteral("none.png"),
                             QString()};
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        try {
            static_cast<void>(ManagedLogoStore::load({asset.id, {}, name}, 100, managed));
            ADD_FAILURE() << "loaded";
        } catch (const LogoAssetError& error) {
            EXPECT_EQ(error.value, Case::missingManagedAsset);
        }
    }
    EXPECT_TRUE(answerer->requested.empty());
    EXPECT_FALSE(ManagedLogoStore::load(asset, 100, managed).isNull());
}

TEST_F(ManagedLogoStoreTest, clampsRemembersAndIsCancelled)
{
    const LogoAssetReference asset = ManagedLogoStore::importAsset(folder.write("logo.png", "pdf"), managed);
    answerer->requested.clear();
    for (const std::int64_t dimension : {-5, 100'000, 100'000})
        static_cast<void>(ManagedLogoStore::load(asset, dimension, managed));
    EXPECT_EQ(answerer->requested, (std::vector<std::int64_t>{1, 20'000}));

    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(static_cast<void>(ManagedLogoStore::load(asset, 50, managed, stopped.get_token())), Cancelled);
    EXPECT_FALSE(ManagedLogoStore::load(asset, 100'000, managed, stopped.get_token()).isNull());
    EXPECT_EQ(answerer->requested.size(), 2u);
}

TEST_F(ManagedLogoStoreTest, asksNothingOfADisabledLogo)
{
    LogoConfiguration logo{ManagedLogoStore::importAsset(folder.write("logo.png", "png"), managed)};
    answerer->requested.clear();
    EXPECT_TRUE(ManagedLogoStore::loadIfEnabled(logo, managed).has_value());
    EXPECT_EQ(answerer->requested, std::vector<std::int64_t>{4'000});
    logo.isEnabled = false;
    logo.asset.managedFilename = QStringLiteral("none.png");
    EXPECT_FALSE(ManagedLogoStore::loadIfEnabled(logo, managed).has_value());
    EXPECT_FALSE(ManagedLogoStore::loadIfEnabled(std::nullopt, managed).has_value());
    logo.isEnabled = true;
    EXPECT_THROW(static_cast<void>(ManagedLogoStore::loadIfEnabled(logo, managed)), LogoAssetError);
}

} // namespace ferrow
