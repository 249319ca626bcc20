// SPDX-License-Identifier: GPL-3.0-or-later
// Processor time of framing ten 24-megapixel JPEGs with the whole companion, over that of the codec library alone.
#include "BenchSupport.h"

#include "Platform/Pixels/ColorProfile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include <lcms2.h>

namespace {

using namespace ferrow::bench;

constexpr int photoCount = 10;
constexpr int border = 120;
constexpr int rounds = 3;

/// The reference runs as a process of its own too, so that both pay for starting.
int runBareLoop(const std::string& sources, const std::string& destination)
{
    for (const auto& entry : std::filesystem::directory_iterator(sources))
        bareFrameLoop(entry.path().string(), destination + "/" + entry.path().filename().string(), border);
    return 0;
}

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;

/// Adobe RGB as a scanner's profile would say it: by a table of 33 points a side.
QByteArray tableProfile()
{
    const QByteArray adobeRGB = ferrow::ColorProfile::of(ferrow::WellKnown::adobeRGB).icc();
    const Profile source(cmsOpenProfileFromMem(adobeRGB.constData(), cmsUInt32Number(adobeRGB.size())),
                         cmsCloseProfile);
    const Profile lab(cmsCreateLab4Profile(nullptr), cmsCloseProfile);
    const std::unique_ptr<void, decltype(&cmsDeleteTransform)> toLab(
        cmsCreateTransform(source.get(), TYPE_RGB_16, lab.get(), TYPE_Lab_16, INTENT_RELATIVE_COLORIMETRIC,
                           cmsFLAGS_NOOPTIMIZE),
        cmsDeleteTransform);
    cmsStage* const table = cmsStageAllocCLut16bit(nullptr, 33, 3, 3, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number* in, cmsUInt16Number* out, void* transform) {
            cmsDoTransform(transform, in, out, 1);
            return cmsInt32Number{1};
        },
        toLab.get(), 0);
    const std::unique_ptr<cmsPipeline, decltype(&cmsPipelineFree)> pipeline(cmsPipelineAlloc(nullptr, 3, 3),
                                                                            cmsPipelineFree);
    cmsPipelineInsertStage(pipeline.get(), cmsAT_END, table);

    const Profile profile(cmsCreateProfilePlaceholder(nullptr), cmsCloseProfile);
    cmsSetDeviceClass(profile.get(), cmsSigInputClass);
    cmsSetColorSpace(profile.get(), cmsSigRgbData);
    cmsSetPCS(profile.get(), cmsSigLabData);
    cmsWriteTag(profile.get(), cmsSigMediaWhitePointTag, cmsD50_XYZ());
    cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline.get());
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile.get(), nullptr, &size);
    QByteArray bytes(qsizetype(size), '\0');
    cmsSaveProfileToMem(profile.get(), bytes.data(), &size);
    return bytes;
}

void measure(const char* label, const QByteArray& icc, const std::string& self, const char* target,
             const char* quality = "0.9")
{
    const ScratchFolder sources;
    const ScratchFolder outputs;
    const std::string first = sources.file("photo-0.jpg");
    writeSourceJpeg(first, {.icc = icc});
    for (int i = 1; i < photoCount; ++i)
        std::filesystem::copy_file(first, sources.file("photo-" + std::to_string(i) + ".jpg"));

    double bare = 1e9;
    double framed = 1e9;
    for (int round = 0; round < rounds; ++round) {
        bare = std::min(bare, processorSeconds({self, "--bare", sources.path(), outputs.path()}));
        framed = std::min(framed, processorSeconds({batchProgram(), "--quiet", "--output", outputs.path(),
                                                    "--on-collision", "replace", "--profile", "srgb", "--quality",
                                                    quality, "--caption", "{camera} · {year}", sources.path()}));
    }
    std::printf("%-28s bare codec %.2f s, framed %.2f s, ratio %.3f (target %s)\n", label, bare, framed, framed / bare,
                target);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--bare") == 0)
        return runBareLoop(argv[2], argv[3]);
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    std::printf("Best of %d rounds, %d photos of 24 megapixels each, processor time of all processes\n", rounds,
                photoCount);
    measure("sRGB to sRGB", ferrow::ColorProfile::sRGB().icc(), self, "1.15");
    measure("no profile to sRGB", {}, self, "1.15");
    measure("Display P3 to sRGB", ferrow::ColorProfile::displayP3().icc(), self, "1.25");
    measure("Adobe RGB to sRGB", ferrow::ColorProfile::of(ferrow::WellKnown::adobeRGB).icc(), self, "none");
    measure("table profile to sRGB", tableProfile(), self, "none");
    measure("the photo's data kept", ferrow::ColorProfile::sRGB().icc(), self, "0.70", "keep");
    return 0;
}
