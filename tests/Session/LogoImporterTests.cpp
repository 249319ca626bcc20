// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/LogoImporter.h"

#include "Persistence/ManagedLogoStore.h"
#include "SessionTestSupport.h"
#include "Support/Files.h"
#include "Support/Pictures.h"

#include <QDir>

#include <unistd.h>

#include <atomic>
#include <thread>

namespace ferrow {

namespace {

/// What one import came to; a case that is none of the logo's own stands for the system's word.
struct Outcome {
    std::optional<LogoAssetReference> asset;
    std::optional<LogoAssetError::Case> refusal;
    bool hasEnded = false;
};

void import(LogoImporter& importer, const FileUrl& url, Outcome& outcome)
{
    importer.importLogo(
        url,
        [&](const LogoAssetReference& asset) {
            outcome.hasEnded = true;
            outcome.asset = asset;
        },
        [&](const std::exception_ptr& error) {
            outcome.hasEnded = true;
            try {
                std::rethrow_exception(error);
            } catch (const LogoAssetError& refused) {
                outcome.refusal = refused.value;
            } catch (const SystemError&) {
            }
        });
}

} // namespace

TEST(LogoImporter, keepsAGoodLogoOnceAndNothingOfABadOne)
{
    const test::TemporaryFolder folder;
    const FileUrl managed = folder.file("Logos");
    LogoImporter importer([&](const FileUrl& url, const std::stop_token& stop) {
        return ManagedLogoStore::importAsset(url, managed, stop);
    });
    const QByteArray png = test::encoded(OutputType::png, test::noise({30, 20}, rgba8));
    const FileUrl huge = folder.write("huge.png", png);
    ASSERT_EQ(::truncate(huge.path().constData(), ManagedLogoStore::maximumFileSize + 1), 0);
    const struct {
        const char* name;
        FileUrl url;
        std::optional<LogoAssetError::Case> refusal;
        int kept;
    } rows[] = {{"too large", huge, LogoAssetError::Case::fileTooLarge, 0},
                {"not there", folder.file("none.png"), std::nullopt, 0},
                {"no picture", folder.write("text.png", "just words"), LogoAssetError::Case::malformed, 0},
                {"good", folder.write("mark.png", png), std::nullopt, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Outcome outcome;
        import(importer, row.url, outcome);
        EXPECT_TRUE(importer.isImporting());
        ASSERT_TRUE(test::waitUntil([&] { return outcome.hasEnded; }));
        EXPECT_FALSE(importer.isImporting());
        EXPECT_EQ(outcome.refusal, row.refusal);
        EXPECT_EQ(outcome.asset.has_value(), row.kept > 0);
        EXPECT_EQ(test::namesIn(managed).size(), row.kept);
        if (outcome.asset) {
            EXPECT_EQ(outcome.asset->displayName, QStringLiteral("mark"));
            EXPECT_EQ(test::readFile(managed.appending(outcome.asset->managedFilename.toUtf8())), png);
        }
    }
}

TEST(LogoImporter, stopsForANewerLogo)
{
    std::atomic<bool> hasStarted = false;
    LogoImporter importer([&](const FileUrl& url, const std::stop_token& stop) {
        hasStarted = true;
        while (url == test::photoUrl("endless")) {
            throwIfCanceled(stop);
            std::this_thread::yield();
        }
        return LogoAssetReference{.displayName = url.lastPathComponent()};
    });
    Outcome first;
    import(importer, test::photoUrl("endless"), first);
    ASSERT_TRUE(test::waitUntil([&] { return hasStarted.load(); }));
    Outcome second;
    import(importer, test::photoUrl("b"), second);
    ASSERT_TRUE(test::waitUntil([&] { return second.hasEnded; }));
    EXPECT_EQ(second.asset->displayName, QStringLiteral("b"));
    EXPECT_FALSE(first.hasEnded || importer.isImporting());
}

} // namespace ferrow
