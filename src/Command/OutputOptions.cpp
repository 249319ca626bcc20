// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/OptionValues.h"

#include <cmath>

namespace ferrow::Command {

namespace {

using Kind = Completion::Kind;

const Words<CollisionRule>& collisionWords()
{
    static const Words<CollisionRule> words{
        {"number", CollisionRule::appendNumber}, {"skip", CollisionRule::skip}, {"replace", CollisionRule::replace}};
    return words;
}

const Words<PhotoOrder>& orderWords()
{
    using Key = PhotoOrder::Key;
    static const Words<PhotoOrder> words{{"name", {Key::name}},
                                         {"date", {Key::captureDate}},
                                         {"added", {Key::added}},
                                         {"name-down", {Key::name, true}},
                                         {"date-down", {Key::captureDate, true}},
                                         {"added-down", {Key::added, true}}};
    return words;
}

const Words<ExportFormat>& formatWords()
{
    static const Words<ExportFormat> words{{"jpeg", ExportFormat::jpeg},
                                           {"png", ExportFormat::png},
                                           {"tiff", ExportFormat::tiff},
                                           {"heic", ExportFormat::heic}};
    return words;
}

const Words<BitDepth>& depthWords()
{
    static const Words<BitDepth> words{{"8", BitDepth::eight}, {"10", BitDepth::ten}, {"16", BitDepth::sixteen}};
    return words;
}

const Words<OutputColorProfile>& profileWords()
{
    static const Words<OutputColorProfile> words{{"srgb", OutputColorProfile::sRGB},
                                                 {"p3", OutputColorProfile::displayP3},
                                                 {"source", OutputColorProfile::preserveSource}};
    return words;
}

void setOutputFolder(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    if (value.isEmpty())
        misuse(option, QStringLiteral("name a folder."));
    const FileUrl folder = FileUrl::fromPath(value).standardized();
    arguments.changes.emplace_back([folder](Settings& settings) {
        settings.configuration.destinationMode = ExportDestinationMode::chosenFolder;
        settings.configuration.chosenFolder = folder;
    });
}

void setJobs(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    const double jobs = number(option, value, 1, 64);
    if (jobs != std::floor(jobs))
        misuse(option, QStringLiteral("give a whole number."));
    arguments.changes.emplace_back(
        [jobs](Settings& settings) { settings.configuration.maximumConcurrentExports = std::int64_t(jobs); });
}

void setQuality(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    if (value == "keep") {
        arguments.changes.emplace_back([](Settings& settings) { settings.exportSettings.keepsPhotoData = true; });
        return;
    }
    const double quality = number(option, value, 0, 1);
    arguments.changes.emplace_back([quality](Settings& settings) {
        settings.exportSettings.quality = quality;
        settings.exportSettings.keepsPhotoData = false;
    });
}

void setDepth(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    const BitDepth depth = oneOf(option, value, depthWords());
    arguments.depth = depth;
    arguments.changes.emplace_back([depth](Settings& settings) { settings.exportSettings.depth = depth; });
}

std::int64_t pixels(const QByteArray& option, const QByteArray& word)
{
    const double value = number(option, word, 1, double(OutputSize::mostPixels));
    if (value != std::floor(value))
        misuse(option, QStringLiteral("give a whole number of pixels."));
    return std::int64_t(value);
}

PixelSize box(const QByteArray& option, const QByteArray& word)
{
    const qsizetype times = word.indexOf('x');
    if (times < 0)
        misuse(option, QStringLiteral("give a width and a height, such as 2048x1536."));
    return {pixels(option, word.left(times)), pixels(option, word.mid(times + 1))};
}

/// `parse` takes an option and its value.
template <typename Parse>
ApplyOption outputSize(Parse parse)
{
    return [parse](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const OutputSize size = parse(option, value);
        arguments.changes.emplace_back([size](Settings& settings) { settings.exportSettings.size = size; });
    };
}

Shard shard(const QByteArray& option, const QByteArray& word)
{
    constexpr double most = 1'000'000;
    const QList<QByteArray> numbers = word.split('/');
    if (numbers.size() != 2)
        misuse(option, QStringLiteral("give which part of how many, such as 3/16."));
    const double count = number(option, numbers[1], 1, most);
    const double which = number(option, numbers[0], 1, count);
    if (which != std::floor(which) || count != std::floor(count))
        misuse(option, QStringLiteral("give whole numbers."));
    return {std::int64_t(which), std::int64_t(count)};
}

/// For options that stand for a file.
ApplyOption file(std::optional<FileUrl> Arguments::*member)
{
    return [member](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.*member = FileUrl::fromPath(value);
    };
}

ApplyOption flag(bool Arguments::*member)
{
    return [member](Arguments& arguments, const QByteArray&, const QByteArray&) { arguments.*member = true; };
}

ApplyOption mode(Arguments::Mode mode)
{
    return [mode](Arguments& arguments, const QByteArray&, const QByteArray&) { arguments.mode = mode; };
}

} // namespace

OptionSection destinationOptions()
{
    return {
        "Where the framed copies go",
        {{.name = "--output",
          .value = "DIR",
          .help = "one folder for all, made where it is missing",
          .takers = takenByBatch,
          .completion = {Kind::folder},
          .apply = setOutputFolder},
         {.name = "--beside",
          .value = "[NAME]",
          .help = "a folder beside each photo (default \"Ferrow Export\"); --beside=NAME where NAME might be taken "
                  "for a PATH",
          .takers = takenByBatch},
         {.name = "--template",
          .value = "TEXT",
          .help = "file names, with {filename} and {index}",
          .takers = takenByBatch,
          .apply =
              [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
                  arguments.changes.emplace_back([text = QString::fromUtf8(value)](Settings& settings) {
                      settings.configuration.filenameTemplate = text;
                  });
              }},
         {.name = "--sort",
          .value = "ORDER",
          .help = "what {index} counts: name, date or added, each with -down for the other way",
          .takers = takenByBatch,
          .completion = offering(orderWords()),
          .apply = choice(orderWords(), [](Settings& s, const PhotoOrder& order) { s.order = order; })},
         {.name = "--on-collision",
          .value = "RULE",
          .help = "number, skip or replace",
          .takers = takenByBatch,
          .completion = offering(collisionWords()),
          .apply = choice(collisionWords(), [](Settings& s, CollisionRule r) { s.configuration.collisionRule = r; })},
         {.name = "--jobs",
          .value = "N",
          .help = "photos worked on at once (default 2)",
          .takers = takenByBatch | takenByRun,
          .apply = setJobs},
         {.name = "--check-written",
          .help = "read each file back before it gets its name",
          .takers = takenByFraming | takenByRun,
          .apply = change([](Settings& s) { s.exportSettings.checksWritten = true; })}}};
}

OptionSection pictureOptions()
{
    return {
        "What they are",
        {{.name = "--format",
          .value = "FORMAT",
          .help = "jpeg, png, tiff or heic",
          .completion = offering(formatWords()),
          .apply = choice(formatWords(), [](Settings& s, ExportFormat f) { s.exportSettings.format = f; })},
         {.name = "--quality",
          .value = "0..1|keep",
          .help = "for jpeg and heic; keep: JPEGs keep their data, and those that can't are coded at the quality set "
                  "before",
          .apply = setQuality},
         {.name = "--depth",
          .value = "BITS",
          .help = "bits a component: 8 (default) or 16 for png and tiff, 8 or 10 for heic",
          .completion = offering(depthWords()),
          .apply = setDepth},
         {.name = "--profile",
          .value = "PROFILE",
          .help = "srgb, p3 or source",
          .completion = offering(profileWords()),
          .apply = choice(profileWords(), [](Settings& s, OutputColorProfile p) { s.recipe.outputColorProfile = p; })},
         {.name = "--long-side",
          .value = "PX",
          .help = "size of the whole frame, never enlarged; like the next two",
          .apply = outputSize([](const QByteArray& option, const QByteArray& value) {
              return OutputSize::withLongSide(pixels(option, value));
          })},
         {.name = "--fit",
          .value = "WIDTHxHEIGHT",
          .help = "pixels a side at most",
          .apply = outputSize([](const QByteArray& option, const QByteArray& value) {
              return OutputSize::within(box(option, value));
          })},
         {.name = "--megapixels",
          .value = "N",
          .help = "millions of pixels at most",
          .apply = outputSize([](const QByteArray& option, const QByteArray& value) {
              return OutputSize::ofMegapixels(
                  number(option, value, OutputSize::leastMegapixels, OutputSize::mostMegapixels));
          })},
         {.name = "--full-size",
          .help = "as large as photo and frame are (default)",
          .apply = change([](Settings& settings) { settings.exportSettings.size = {}; })},
         {.name = "--preset",
          .value = "NAME",
          .help = "start from a saved preset",
          .apply = [](Arguments& arguments, const QByteArray&,
                      const QByteArray& value) { arguments.presetName = QString::fromUtf8(value); }},
         {.name = "--preset-file",
          .value = "FILE",
          .help = "start from the preset in FILE (with --preset: the one of that name in it)",
          .completion = {Kind::file},
          .apply = file(&Arguments::presetFile)},
         {.name = "--frame-from",
          .value = "FILE",
          .help = "border, captions and logo of the preset in FILE, and nothing else of it",
          .completion = {Kind::file},
          .apply = file(&Arguments::frameFile)}}};
}

OptionSection runningOptions()
{
    using Mode = Arguments::Mode;
    return {"Running",
            {{.name = "--filter", .help = "frame standard input to standard output", .apply = mode(Mode::filter)},
             {.name = "--dry-run",
              .help = "print the plan, write nothing",
              .takers = takenByBatch,
              .apply = flag(&Arguments::dryRun)},
             {.name = "--json",
              .help = "JSON Lines: an object per outcome, then the report",
              .takers = takenByAll & ~unsigned(takenByFilter),
              .apply = flag(&Arguments::json)},
             {.name = "--quiet",
              .help = "no progress on the terminal",
              .takers = takenByFraming | takenByRun,
              .apply = flag(&Arguments::quiet)},
             {.name = "--help", .letter = "-h", .help = "these lines", .takers = takenByAll, .apply = mode(Mode::help)},
             {.name = "--version",
              .letter = "-V",
              .help = "the version, and what confines the readers of photos",
              .apply = mode(Mode::version)}}};
}

OptionSection planOptions()
{
    return {"On several machines",
            {{.name = "--plan-to",
              .value = "PLAN",
              .help = "settle names for all photos, write them to PLAN, and frame none",
              .takers = takenByBatch,
              .completion = {Kind::file},
              .apply = file(&Arguments::planFile)},
             {.name = "--shard",
              .value = "K/N",
              .help = "the Kth of N parts of what run frames",
              .takers = takenByRun,
              .apply = [](Arguments& arguments, const QByteArray& option,
                          const QByteArray& value) { arguments.shard = shard(option, value); }},
             {.name = "--resume",
              .help = "leave what an earlier run has framed",
              .takers = takenByRun,
              .apply = flag(&Arguments::resumes)}}};
}

} // namespace ferrow::Command
