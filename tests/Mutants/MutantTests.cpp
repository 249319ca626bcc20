// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ImageExporter.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Support/Files.h"
#include "Support/Pictures.h"
#include "WorkerPool/WorkerPool.h"

#include <random>

namespace ferrow {

namespace {

using namespace test;

/// Cuts and changes of each kind, for each of four formats: 2,000 in all.
constexpr int cuts = 200;
constexpr int changesOfOneLength = 100;

enum class Outcome { refusedAtImport, refusedAtExport, exported };

/// Both roads of one photo, as a batch goes them.
struct Roads {
    TemporaryFolder folder;
    FileUrl output = folder.file("framed.png");

    Outcome go(const QByteArray& name, const QByteArray& bytes) const
    {
        const FileUrl source = folder.write(name, bytes);
        std::optional<ImportedPhoto> photo;
        const auto refusal = [&](const auto& step) { return errorOf<ImagePipelineError>(step).has_value(); };
        if (refusal([&] { photo = ImageLoader::loadBatchThumbnail(source); }))
            return Outcome::refusedAtImport;
        RenderRecipe recipe;
        recipe.captions.front().isEnabled = false;
        const BatchExportJob job{*photo, recipe, {ExportFormat::png, 1}, output, true};
        const bool isRefused = refusal([&] { ImageExporter::exportPhoto(job, {}); });
        return isRefused ? Outcome::refusedAtExport : Outcome::exported;
    }
    /// What the last export left: a picture, or nothing.
    [[nodiscard]] Bitmap takeOutput() const
    {
        const Bitmap picture = decoded(readFile(output));
        ::unlink(output.path().constData());
        return picture;
    }
};

struct Sample {
    const char* name;
    OutputType type;
};

constexpr Sample samples[]{{"photo.jpg", OutputType::jpeg},
                           {"photo.png", OutputType::png},
                           {"photo.tif", OutputType::tiff},
                           {"photo.heic", OutputType::heif}};

QByteArray makeFile(const Sample& sample)
{
    const OutputMetadata metadata{QStringLiteral("Make"),
                                  QStringLiteral("Model"),
                                  QStringLiteral("Artist"),
                                  {},
                                  QStringLiteral("2024:07:19 09:14:31")};
    return encoded(sample.type, noise({48, 36}, rgb8), metadata, 0.8);
}

/// In confined processes, as in the programs: there each job has a clock, and no fault ends more than its process.
class Mutants : public testing::TestWithParam<Sample> {
protected:
    void expectGoodPhoto() { ASSERT_EQ(roads.go(GetParam().name, good), Outcome::exported); }

    const WorkerPool::Installation workers = WorkerPool::installWorkers(FERROW_WORKER_PROGRAM);
    Roads roads;
    const QByteArray good = makeFile(GetParam());
};

} // namespace

TEST_P(Mutants, givePicturesWholeOrNotAtAll)
{
    expectGoodPhoto();
    const Bitmap whole = roads.takeOutput();
    for (int i = 0; i < cuts; ++i) {
        const qsizetype length = good.size() * i / cuts;
        const Outcome outcome = roads.go(GetParam().name, good.left(length));
        EXPECT_EQ(exists(roads.output), outcome == Outcome::exported) << "cut to " << length;
        const bool isSame = outcome != Outcome::exported || samePixels(roads.takeOutput(), whole);
        EXPECT_TRUE(isSame) << "cut to " << length << " of " << good.size();
    }
    expectGoodPhoto();
}

TEST_P(Mutants, endNobodyAndLeaveNothing)
{
    std::mt19937 random(20'240'719);
    int refused = 0;
    for (const int length : {1, 8, 64})
        for (int i = 0; i < changesOfOneLength; ++i) {
            QByteArray bytes = good;
            const auto at = qsizetype(random() % std::uint32_t(bytes.size() - length));
            for (int k = 0; k < length; ++k)
                bytes[at + k] = char(random());
            const Outcome outcome = roads.go(GetParam().name, bytes);
            refused += outcome == Outcome::exported ? 0 : 1;
            EXPECT_TRUE(outcome != Outcome::exported || !roads.takeOutput().isNull());
        }
    // A change amid compressed pixels often gives others: a HEIC library of 2025 takes some that one of 2022 refuses.
    EXPECT_GT(refused, 10);
    EXPECT_EQ(namesIn(roads.folder.url()), QStringList(QString::fromLatin1(GetParam().name)));
    expectGoodPhoto();
}

INSTANTIATE_TEST_SUITE_P(Formats, Mutants, testing::ValuesIn(samples),
                         [](const auto& sample) { return std::string(sample.param.name).substr(6); });

} // namespace ferrow
