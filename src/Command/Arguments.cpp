// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Arguments.h"

#include "Command/Corrections.h"
#include "Platform/Files/FileStatus.h"

#include <charconv>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace ferrow::Command {

namespace {

template <typename Value>
using Words = std::vector<std::pair<const char*, Value>>;

const Words<CaptionPosition>& positionWords()
{
    static const Words<CaptionPosition> words{{"image-top-left", CaptionPosition::imageTopLeft},
                                              {"image-top-center", CaptionPosition::imageTopCenter},
                                              {"image-top-right", CaptionPosition::imageTopRight},
                                              {"image-center-left", CaptionPosition::imageCenterLeft},
                                              {"image-center", CaptionPosition::imageCenter},
                                              {"image-center-right", CaptionPosition::imageCenterRight},
                                              {"image-bottom-left", CaptionPosition::imageBottomLeft},
                                              {"image-bottom-center", CaptionPosition::imageBottomCenter},
                                              {"image-bottom-right", CaptionPosition::imageBottomRight},
                                              {"border-top-left", CaptionPosition::borderTopLeft},
                                              {"border-top-center", CaptionPosition::borderTopCenter},
                                              {"border-top-right", CaptionPosition::borderTopRight},
                                              {"border-bottom-left", CaptionPosition::borderBottomLeft},
                                              {"border-bottom-center", CaptionPosition::borderBottomCenter},
                                              {"border-bottom-right", CaptionPosition::borderBottomRight}};
    return words;
}

const Words<CaptionFont>& fontWords()
{
    static const Words<CaptionFont> words{{"system", CaptionFont::system},
                                          {"rounded", CaptionFont::rounded},
                                          {"serif", CaptionFont::serif},
                                          {"monospaced", CaptionFont::monospaced},
                                          {"geometric", CaptionFont::avenirNext},
                                          // What scripts may say from before it was called so.
                                          {"avenir-next", CaptionFont::avenirNext}};
    return words;
}

[[noreturn]] void misuse(const QByteArray& option, const QString& reason)
{
    throw UsageError{QStringLiteral("%1: %2").arg(QString::fromUtf8(option), reason)};
}

template <typename Value>
Value oneOf(const QByteArray& option, const QByteArray& word, const Words<Value>& words)
{
    QStringList known;
    for (const auto& [name, value] : words) {
        if (word == name)
            return value;
        known << QString::fromLatin1(name);
    }
    misuse(option,
           QStringLiteral("“%1” is not one of %2.").arg(QString::fromUtf8(word), known.join(QStringLiteral(", "))));
}

/// Plain decimal numbers with a point, whatever the locale.
double number(const QByteArray& option, const QByteArray& word, double least, double most)
{
    double value = 0;
    const char* end = word.constData() + word.size();
    const auto [stop, error] = std::from_chars(word.constData(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value))
        misuse(option, QStringLiteral("“%1” is not a number.").arg(QString::fromUtf8(word)));
    if (value < least || value > most)
        misuse(option,
               QStringLiteral("%1 is not between %2 and %3.").arg(QString::fromUtf8(word)).arg(least).arg(most));
    return value;
}

/// Longest length that any setting may name, in pixels.
constexpr double mostPixels = 50'000;

/// What captions may name of the photo's shorter side.
constexpr double leastPercent = 0.01;
constexpr double mostPercent = 100;

RGBAColor color(const QByteArray& option, const QByteArray& word)
{
    const bool wellFormed = word.startsWith('#') && (word.size() == 7 || word.size() == 9);
    std::array<unsigned, 4> parts{0, 0, 0, 255};
    for (int i = 0; wellFormed && i < (word.size() - 1) / 2; ++i) {
        bool ok = false;
        const QByteArray digits = word.mid(1 + 2 * i, 2);
        parts[std::size_t(i)] = digits.toUInt(&ok, 16);
        if (!ok || !isxdigit(digits[0]))
            misuse(option, QStringLiteral("“%1” is not a color such as #ffcc00.").arg(QString::fromUtf8(word)));
    }
    if (!wellFormed)
        misuse(option, QStringLiteral("“%1” is not a color such as #ffcc00.").arg(QString::fromUtf8(word)));
    return {parts[0] / 255.0, parts[1] / 255.0, parts[2] / 255.0, parts[3] / 255.0};
}

Length length(const QByteArray& option, const QByteArray& word)
{
    const bool percent = word.endsWith('%');
    if (!percent && !word.endsWith("px"))
        misuse(option, QStringLiteral("“%1” is no length in pixels or percent, such as 120px or 4%.")
                           .arg(QString::fromUtf8(word)));
    return {number(option, word.chopped(percent ? 1 : 2), 0, mostPixels),
            percent ? BorderUnit::percent : BorderUnit::pixels};
}

std::function<void(Settings&)> borderChange(const QByteArray& option, const QByteArray& word)
{
    const Length width = length(option, word);
    return [width](Settings& settings) {
        settings.recipe.border.unit = width.unit;
        settings.recipe.border.width = width.value;
        settings.recipe.border.sides.reset();
    };
}

std::function<void(Settings&)> borderSidesChange(const QByteArray& option, const QByteArray& word)
{
    const QList<QByteArray> words = word.split(',');
    if (words.size() != 4)
        misuse(option, QStringLiteral("give four widths, top, right, bottom and left, such as 4%,4%,16%,4%."));
    std::array<Length, 4> lengths;
    for (int i = 0; i < 4; ++i)
        lengths[std::size_t(i)] = length(option, words[i]);
    const auto [top, right, bottom, left] = lengths;
    for (const Length& side : lengths)
        if (side.unit != top.unit)
            misuse(option, QStringLiteral("the four widths must all be in pixels or all in percent."));
    return [sides = SideLengths{top.value, right.value, bottom.value, left.value}, unit = top.unit](Settings& s) {
        s.recipe.border.unit = unit;
        s.recipe.border.width = sides.top; // It must not be read in another unit once the sides are linked again.
        s.recipe.border.sides = sides;
    };
}

/// "4:5", or "photo" for none.
std::function<void(Settings&)> shapeChange(const QByteArray& option, const QByteArray& word)
{
    if (word == "photo")
        return [](Settings& settings) { settings.recipe.border.shape.reset(); };
    constexpr double least = 0.01;
    constexpr double most = 10'000;
    const QList<QByteArray> numbers = word.split(':');
    if (numbers.size() != 2)
        misuse(option, QStringLiteral("give a ratio of width and height, such as 4:5, or photo."));
    const double width = number(option, numbers[0], least, most);
    const double height = number(option, numbers[1], least, most);
    return [width, height](Settings& settings) {
        FrameShape shape = settings.recipe.border.shape.value_or(FrameShape());
        shape.width = width;
        shape.height = height;
        settings.recipe.border.shape = shape;
    };
}

/// "6px,48px,#c8a96a", or "none".
std::function<void(Settings&)> lineChange(const QByteArray& option, const QByteArray& word)
{
    if (word == "none")
        return [](Settings& settings) { settings.recipe.border.line.reset(); };
    const QList<QByteArray> words = word.split(',');
    if (words.size() != 3)
        misuse(option, QStringLiteral("give thickness, distance from the photo and color, such as 6px,48px,#c8a96a, or "
                                      "none."));
    const FrameLine line{length(option, words[0]), length(option, words[1]), color(option, words[2])};
    return [line](Settings& settings) { settings.recipe.border.line = line; };
}

/// "color", or "blur" with what differs from the defaults.
std::function<void(Settings&)> backgroundChange(const QByteArray& option, const QByteArray& word)
{
    if (word == "color")
        return [](Settings& settings) { settings.recipe.border.blurredBackground.reset(); };
    const qsizetype colon = word.indexOf(':');
    if ((colon < 0 ? word : word.left(colon)) != "blur")
        misuse(option, QStringLiteral("give color, or blur with blur and dim from 0 to 100, such as blur:40,25."));
    BlurredBackground background;
    if (colon >= 0) {
        const QList<QByteArray> numbers = word.mid(colon + 1).split(',');
        background.blur = number(option, numbers[0], 0, 100);
        if (numbers.size() > 1)
            background.dim = number(option, numbers[1], 0, 100);
        if (numbers.size() > 2)
            misuse(option, QStringLiteral("“%1” is one number too many.").arg(QString::fromUtf8(numbers[2])));
    }
    return [background](Settings& settings) { settings.recipe.border.blurredBackground = background; };
}

/// The words of a command line, taken one after the other.
class Reader {
public:
    explicit Reader(const std::vector<QByteArray>& words) : words_(words) {}

    [[nodiscard]] bool atEnd() const { return next_ >= words_.size(); }
    [[nodiscard]] const QByteArray& peek() const { return words_[next_]; }
    QByteArray take() { return words_[next_++]; }

private:
    const std::vector<QByteArray>& words_;
    std::size_t next_ = 0;
};

using Handler = std::function<void(Arguments&, const QByteArray& option, const QByteArray& value)>;

/// The caption that the options are about.
Caption& captionOf(Settings& settings)
{
    return settings.recipe.captions[settings.caption];
}

/// Goes on to the caption at `index`, be it the preset's or a new one, and shows it.
void beginCaption(Settings& settings, std::size_t index)
{
    std::vector<Caption>& captions = settings.recipe.captions;
    while (captions.size() <= index) {
        const Caption place = settings.recipe.captionLike(captions.size() - 1);
        captions.push_back({.position = place.position, .alignment = place.alignment});
    }
    settings.caption = index;
    captions[index].isEnabled = true;
}

/// Pixels ("48" or "48px") or percent ("4%").
Handler captionLength(Length Caption::*member, double least, double most)
{
    return [=](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const bool percent = value.endsWith('%');
        const QByteArray digits = value.chopped(percent ? 1 : value.endsWith("px") ? 2 : 0);
        const Length length{
            number(option, digits, percent ? std::min(least, leastPercent) : least, percent ? mostPercent : most),
            percent ? BorderUnit::percent : BorderUnit::pixels};
        arguments.changes.emplace_back([=](Settings& settings) { captionOf(settings).*member = length; });
    };
}

/// One of the five words, or a family with the style behind a colon where it is not the regular one.
void setCaptionFont(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    for (const auto& [word, font] : fontWords())
        if (value == word) {
            arguments.changes.emplace_back([chosen = font](Settings& settings) {
                captionOf(settings).font = chosen;
                captionOf(settings).face.reset();
            });
            return;
        }
    const QString text = QString::fromUtf8(value);
    const FontFace face{text.section(u':', 0, 0).trimmed(), text.section(u':', 1).trimmed()};
    if (face.family.isEmpty())
        misuse(option, QStringLiteral("name a font, such as serif or \"EB Garamond:Medium Italic\"."));
    if (face.family.size() > FontFace::longestName || face.style.size() > FontFace::longestName)
        misuse(option, QStringLiteral("this is longer than any font’s name."));
    arguments.changes.emplace_back([face](Settings& settings) { captionOf(settings).face = face; });
}

Handler captionNumber(double Caption::*member, double least, double most)
{
    return [=](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double parsed = number(option, value, least, most);
        arguments.changes.emplace_back([=](Settings& settings) { captionOf(settings).*member = parsed; });
    };
}

template <typename Value, typename Apply>
Handler choice(Words<Value> words, Apply apply)
{
    return [words = std::move(words), apply](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const Value chosen = oneOf(option, value, words);
        arguments.changes.emplace_back([=](Settings& settings) { apply(settings, chosen); });
    };
}

Handler logoNumber(double LogoConfiguration::*member, double least, double most)
{
    return [=](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double parsed = number(option, value, least, most);
        arguments.logoChanges.emplace_back([=](LogoConfiguration& logo) { logo.*member = parsed; });
    };
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
Handler outputSize(Parse parse)
{
    return [parse](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const OutputSize size = parse(option, value);
        arguments.changes.emplace_back([size](Settings& settings) { settings.exportSettings.size = size; });
    };
}

void addDestinationHandlers(std::unordered_map<QByteArray, Handler>& handlers)
{
    handlers["--output"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        if (value.isEmpty())
            misuse(option, QStringLiteral("name a folder."));
        const FileUrl folder = FileUrl::fromPath(value).standardized();
        arguments.changes.emplace_back([folder](Settings& settings) {
            settings.configuration.destinationMode = ExportDestinationMode::chosenFolder;
            settings.configuration.chosenFolder = folder;
        });
    };
    handlers["--template"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        const QString text = QString::fromUtf8(value);
        arguments.changes.emplace_back([text](Settings& s) { s.configuration.filenameTemplate = text; });
    };
    handlers["--on-collision"] = choice<CollisionRule>(
        {{"number", CollisionRule::appendNumber}, {"skip", CollisionRule::skip}, {"replace", CollisionRule::replace}},
        [](Settings& s, CollisionRule rule) { s.configuration.collisionRule = rule; });
    handlers["--jobs"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double jobs = number(option, value, 1, 64);
        if (jobs != std::floor(jobs))
            misuse(option, QStringLiteral("give a whole number."));
        arguments.changes.emplace_back(
            [jobs](Settings& s) { s.configuration.maximumConcurrentExports = std::int64_t(jobs); });
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

void addPlanHandlers(std::unordered_map<QByteArray, Handler>& handlers)
{
    handlers["--plan-to"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.planFile = FileUrl::fromPath(value);
    };
    handlers["--shard"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.shard = shard(option, value);
    };
}

void addOutputHandlers(std::unordered_map<QByteArray, Handler>& handlers)
{
    handlers["--format"] = choice<ExportFormat>({{"jpeg", ExportFormat::jpeg},
                                                 {"png", ExportFormat::png},
                                                 {"tiff", ExportFormat::tiff},
                                                 {"heic", ExportFormat::heic}},
                                                [](Settings& s, ExportFormat f) { s.exportSettings.format = f; });
    handlers["--quality"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double quality = number(option, value, 0, 1);
        arguments.changes.emplace_back([quality](Settings& s) { s.exportSettings.quality = quality; });
    };
    handlers["--long-side"] = outputSize([](const QByteArray& option, const QByteArray& value) {
        return OutputSize::withLongSide(pixels(option, value));
    });
    handlers["--fit"] = outputSize(
        [](const QByteArray& option, const QByteArray& value) { return OutputSize::within(box(option, value)); });
    handlers["--megapixels"] = outputSize([](const QByteArray& option, const QByteArray& value) {
        return OutputSize::ofMegapixels(number(option, value, OutputSize::leastMegapixels, OutputSize::mostMegapixels));
    });
    handlers["--profile"] =
        choice<OutputColorProfile>({{"srgb", OutputColorProfile::sRGB},
                                    {"p3", OutputColorProfile::displayP3},
                                    {"source", OutputColorProfile::preserveSource}},
                                   [](Settings& s, OutputColorProfile p) { s.recipe.outputColorProfile = p; });
    handlers["--preset"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.presetName = QString::fromUtf8(value);
    };
    handlers["--preset-file"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.presetFile = FileUrl::fromPath(value);
    };
    handlers["--frame-from"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.frameFile = FileUrl::fromPath(value);
    };
}

void addFrameHandlers(std::unordered_map<QByteArray, Handler>& handlers)
{
    handlers["--border"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.changes.push_back(borderChange(option, value));
    };
    handlers["--border-sides"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.changes.push_back(borderSidesChange(option, value));
    };
    handlers["--shape"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.changes.push_back(shapeChange(option, value));
    };
    handlers["--balance"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double balance = number(option, value, -100, 100);
        arguments.shapeChanges.emplace_back([balance](FrameShape& shape) { shape.balance = balance; });
    };
    handlers["--background"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.changes.push_back(backgroundChange(option, value));
    };
    handlers["--line"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.changes.push_back(lineChange(option, value));
    };
    handlers["--corners"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const Length radius = length(option, value);
        arguments.changes.emplace_back([radius](Settings& s) { s.recipe.border.photoEdge.cornerRadius = radius; });
    };
    handlers["--border-color"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const RGBAColor parsed = color(option, value);
        arguments.changes.emplace_back([parsed](Settings& s) { s.recipe.border.color = parsed; });
    };
    handlers["--caption"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        if (arguments.captions == RenderRecipe::mostCaptions)
            misuse(option, QStringLiteral("a photo has at most %1 captions.").arg(RenderRecipe::mostCaptions));
        const QString text = QString::fromUtf8(value);
        if (const QString fault = CaptionSegment::faultOf(text); !fault.isEmpty())
            misuse(option, fault);
        arguments.changes.emplace_back([text, index = arguments.captions++](Settings& s) {
            beginCaption(s, index);
            captionOf(s).setCaptionTemplate(text);
        });
    };
    handlers["--caption-color"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const RGBAColor parsed = color(option, value);
        arguments.changes.emplace_back([parsed](Settings& s) { captionOf(s).color = parsed; });
    };
    handlers["--caption-position"] =
        choice<CaptionPosition>(positionWords(), [](Settings& s, CaptionPosition p) { captionOf(s).position = p; });
    handlers["--caption-font"] = setCaptionFont;
    handlers["--caption-align"] = choice<CaptionAlignment>(
        {{"left", CaptionAlignment::left}, {"center", CaptionAlignment::center}, {"right", CaptionAlignment::right}},
        [](Settings& s, CaptionAlignment a) { captionOf(s).alignment = a; });
    handlers["--caption-size"] = captionLength(&Caption::fontSize, 1, 10'000);
    handlers["--caption-spacing"] = captionLength(&Caption::lineSpacing, 0, mostPixels);
    handlers["--caption-padding"] = captionLength(&Caption::padding, 0, mostPixels);
    handlers["--caption-vertical-padding"] = captionLength(&Caption::verticalPadding, 0, mostPixels);
    handlers["--caption-letter-spacing"] =
        captionNumber(&Caption::letterSpacing, -Caption::mostLetterSpacing, Caption::mostLetterSpacing);
    handlers["--caption-opacity"] = captionNumber(&Caption::opacity, 0, 1);
}

void addLogoHandlers(std::unordered_map<QByteArray, Handler>& handlers)
{
    handlers["--logo"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.logoFile = FileUrl::fromPath(value);
    };
    handlers["--logo-position"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const CaptionPosition position = oneOf(option, value, positionWords());
        arguments.logoChanges.emplace_back([position](LogoConfiguration& logo) { logo.position = position; });
    };
    handlers["--logo-padding"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const qsizetype comma = value.indexOf(',');
        const double horizontal = number(option, comma < 0 ? value : value.left(comma), 0, mostPixels);
        const double vertical = comma < 0 ? horizontal : number(option, value.mid(comma + 1), 0, mostPixels);
        arguments.logoChanges.emplace_back([=](LogoConfiguration& logo) {
            logo.horizontalPadding = horizontal;
            logo.verticalPadding = vertical;
        });
    };
    handlers["--logo-width"] = logoNumber(&LogoConfiguration::widthPercent, 1, 100);
    handlers["--logo-opacity"] = logoNumber(&LogoConfiguration::opacity, 0, 1);
}

void addCorrectionHandlers(std::unordered_map<QByteArray, Handler>& handlers)
{
    handlers["--set"] = [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const qsizetype equals = value.indexOf('=');
        if (equals < 0)
            misuse(option, QStringLiteral("give a name and a value, such as lens=\"Helios 44-2\"."));
        addCorrection(arguments.corrections, QString::fromUtf8(value.left(equals)),
                      QString::fromUtf8(value.mid(equals + 1)), QString::fromUtf8(option));
    };
    handlers["--corrections"] = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
        arguments.correctionsFile = FileUrl::fromPath(value);
    };
}

const std::unordered_map<QByteArray, Handler>& valueHandlers()
{
    static const auto handlers = [] {
        std::unordered_map<QByteArray, Handler> all;
        addDestinationHandlers(all);
        addPlanHandlers(all);
        addOutputHandlers(all);
        addFrameHandlers(all);
        addLogoHandlers(all);
        addCorrectionHandlers(all);
        return all;
    }();
    return handlers;
}

/// Options that stand alone. Answers whether `option` is one.
bool applyFlag(Arguments& arguments, const QByteArray& option)
{
    if (option == "--help" || option == "-h")
        arguments.mode = Arguments::Mode::help;
    else if (option == "--version" || option == "-V")
        arguments.mode = Arguments::Mode::version;
    else if (option == "--filter")
        arguments.mode = Arguments::Mode::filter;
    else if (option == "--dry-run")
        arguments.dryRun = true;
    else if (option == "--resume")
        arguments.resumes = true;
    else if (option == "--check-written")
        arguments.changes.emplace_back([](Settings& s) { s.exportSettings.checksWritten = true; });
    else if (option == "--json")
        arguments.json = true;
    else if (option == "--quiet")
        arguments.quiet = true;
    else if (option == "--shape-turns")
        arguments.shapeChanges.emplace_back([](FrameShape& shape) { shape.turnsWithPhoto = true; });
    else if (option == "--full-size")
        arguments.changes.emplace_back([](Settings& settings) { settings.exportSettings.size = {}; });
    else if (option == "--photo-shadow" || option == "--no-photo-shadow")
        arguments.changes.emplace_back([hasShadow = option == "--photo-shadow"](Settings& settings) {
            settings.recipe.border.photoEdge.hasShadow = hasShadow;
        });
    else if (option == "--caption-fit")
        arguments.changes.emplace_back([](Settings& settings) { captionOf(settings).shrinksToFit = true; });
    else if (option == "--caption-uppercase")
        arguments.changes.emplace_back([](Settings& settings) { captionOf(settings).isUppercase = true; });
    else if (option == "--no-caption")
        arguments.changes.emplace_back([](Settings& settings) {
            for (Caption& caption : settings.recipe.captions)
                caption.isEnabled = false;
        });
    else
        return false;
    return true;
}

void setBeside(Arguments& arguments, const std::optional<QByteArray>& name)
{
    if (name && !SafePathComponent::isValid(QString::fromUtf8(*name)))
        misuse("--beside", QStringLiteral("“%1” is not a folder name.").arg(QString::fromUtf8(*name)));
    arguments.changes.emplace_back([name](Settings& settings) {
        settings.configuration.destinationMode = ExportDestinationMode::sourceSubfolder;
        if (name)
            settings.configuration.sourceSubfolderName = QString::fromUtf8(*name);
    });
}

/// The word behind `--beside` is its name unless it must be a photo or a folder to frame: a file, a path with a slash,
/// or the one folder on the command line. Answers a folder's word, about which only the whole line can tell.
/// `--beside=NAME` leaves no doubt.
std::optional<QByteArray> applyBeside(Arguments& arguments, Reader& reader, const std::optional<QByteArray>& attached)
{
    std::optional<QByteArray> name = attached;
    if (!name && !reader.atEnd() && !reader.peek().startsWith('-') && !reader.peek().contains('/')) {
        const FileKind kind = fileKind(FileUrl::fromPath(reader.peek()));
        if (kind == FileKind::folder)
            return reader.take();
        if (kind == FileKind::missing)
            name = reader.take();
    }
    setBeside(arguments, name);
    return std::nullopt;
}

void settleBeside(Arguments& arguments, const QByteArray& folder)
{
    if (arguments.roots.empty()) {
        arguments.roots.push_back(FileUrl::fromPath(folder));
        setBeside(arguments, std::nullopt);
        return;
    }
    setBeside(arguments, folder);
}

void applyOption(Arguments& arguments, Reader& reader, const QByteArray& word)
{
    const qsizetype equals = word.indexOf('=');
    const QByteArray option = equals < 0 ? word : word.left(equals);
    const std::optional<QByteArray> attached = equals < 0 ? std::nullopt : std::optional(word.mid(equals + 1));
    Arguments ignored;
    if (attached && applyFlag(ignored, option))
        misuse(option, QStringLiteral("it takes no value."));
    if (!attached && applyFlag(arguments, option))
        return;
    const auto handler = valueHandlers().find(option);
    if (handler == valueHandlers().end())
        misuse(option, QStringLiteral("there is no such option."));
    if (!attached && reader.atEnd())
        misuse(option, QStringLiteral("a value is missing."));
    handler->second(arguments, option, attached ? *attached : reader.take());
}

/// What is done in place of framing, when the first word says so.
struct OtherCommand {
    const char* name;
    Arguments::Mode mode;
    QList<QByteArray> options;
};

const std::vector<OtherCommand>& otherCommands()
{
    static const std::vector<OtherCommand> commands{
        {"inspect", Arguments::Mode::inspect, {"--json"}},
        {"run", Arguments::Mode::plan, {"--shard", "--resume", "--check-written", "--jobs", "--json", "--quiet"}},
        {"report", Arguments::Mode::report, {"--json"}},
    };
    return commands;
}

/// The option of `word`, "--jobs" of "--jobs=2".
QByteArray optionOf(const QByteArray& word)
{
    return word.split('=').first();
}

/// Refuses options that the command has no use for.
void checkOption(const OtherCommand* command, const QByteArray& word)
{
    const QByteArray option = optionOf(word);
    if (command && option != "--help" && option != "-h" && !command->options.contains(option))
        misuse(option, QStringLiteral("%1 has no such option.").arg(QString::fromLatin1(command->name)));
    if (!command && (option == "--shard" || option == "--resume"))
        misuse(option, QStringLiteral("it is for “run”, which frames what a plan says."));
}

/// Options that a run of one photo to standard output has no use for.
bool isAboutBatches(const QByteArray& word)
{
    return QList<QByteArray>{"--output",  "--beside",  "--template", "--on-collision", "--jobs",
                             "--dry-run", "--plan-to", "--json",     "--corrections"}
        .contains(optionOf(word));
}

void checkFilter(const Arguments& arguments, const std::optional<QByteArray>& batchOption)
{
    if (batchOption)
        misuse(
            "--filter",
            QStringLiteral("it has one photo and standard output: leave out %1.").arg(QString::fromUtf8(*batchOption)));
    if (!arguments.roots.empty())
        misuse("--filter", QStringLiteral("it reads standard input: name no photo."));
}

void checkPaths(const Arguments& arguments)
{
    if (arguments.mode == Arguments::Mode::plan && arguments.roots.size() != 1)
        throw UsageError{QStringLiteral("PLAN: name one plan.")};
    if (arguments.mode == Arguments::Mode::report && arguments.roots.empty())
        throw UsageError{QStringLiteral("FILE: name what runs have printed with --json.")};
    if (arguments.roots.empty())
        throw UsageError{QStringLiteral("PATH: name at least one photo or folder.")};
}

} // namespace

Arguments parseArguments(const std::vector<QByteArray>& words)
{
    Arguments arguments;
    Reader reader(words);
    const OtherCommand* command = nullptr;
    for (const OtherCommand& other : otherCommands())
        if (!reader.atEnd() && reader.peek() == other.name)
            command = &other;
    if (command) {
        reader.take();
        arguments.mode = command->mode;
    }
    bool onlyPaths = false;
    std::optional<QByteArray> batchOption;
    std::optional<QByteArray> besideFolder;
    while (!reader.atEnd()) {
        const QByteArray word = reader.take();
        const bool isPath = onlyPaths || !word.startsWith('-') || word == "-";
        if (!isPath && word != "--")
            checkOption(command, word);
        if (!isPath && isAboutBatches(word))
            batchOption = word;
        if (!onlyPaths && word == "--")
            onlyPaths = true;
        else if (isPath)
            arguments.roots.push_back(FileUrl::fromPath(word));
        else if (word == "--beside" || word.startsWith("--beside="))
            besideFolder = applyBeside(arguments, reader,
                                       word == "--beside" ? std::nullopt : std::optional(word.mid(sizeof "--beside")));
        else
            applyOption(arguments, reader, word);
    }
    if (besideFolder)
        settleBeside(arguments, *besideFolder);
    if (arguments.mode == Arguments::Mode::help || arguments.mode == Arguments::Mode::version)
        return arguments;
    if (arguments.mode == Arguments::Mode::filter)
        checkFilter(arguments, batchOption);
    else
        checkPaths(arguments);
    return arguments;
}

QString helpText()
{
    return QStringLiteral(R"(Usage: ferrow-batch [options] PATH...
       ferrow-batch --filter [options] < photo.jpg > framed.jpg
       ferrow-batch --plan-to PLAN [options] PATH...
       ferrow-batch run [--shard K/N] [--resume] PLAN
       ferrow-batch report [--json] FILE...
       ferrow-batch inspect [--json] PATH...

Frames photos: files, and folders recursively. Originals are never changed.

Where the framed copies go
  --output DIR             one folder for all, made where it is missing
  --beside [NAME]          a folder beside each photo (default "Ferrow Export");
                           --beside=NAME where NAME might be taken for a PATH
  --template TEXT          file names, with {filename} and {index}
  --on-collision RULE      number, skip or replace
  --jobs N                 photos worked on at once (default 2)
  --check-written          read each file back before it gets its name

What they are
  --format FORMAT          jpeg, png, tiff or heic
  --quality 0..1           for jpeg and heic
  --profile PROFILE        srgb, p3 or source
  --long-side PX           size of the whole frame, never enlarged;
  --fit WIDTHxHEIGHT       pixels a side at most
  --megapixels N           millions of pixels at most
  --full-size              as large as photo and frame are (default)
  --preset NAME            start from a saved preset
  --preset-file FILE       start from the preset in FILE (with --preset: the one
                           of that name in it)
  --frame-from FILE        border, captions and logo of the preset in FILE, and
                           nothing else of it

Frame
  --border WIDTH           pixels (120px) or percent of the shorter side (4%)
  --border-sides T,R,B,L   a width for each side: top, right, bottom, left
  --border-color COLOR     #rrggbb or #rrggbbaa
  --shape W:H              the frame grows to this ratio (4:5); photo for none
  --shape-turns            5:4 in place of 4:5 for photos that lie the other way
  --balance -100..100      where the photo stands in the room that the shape
                           adds: -100 top or left, 100 bottom or right
  --background KIND        color, or the photo: blur or blur:40,25 (blur and
                           dim, 0 to 100 each)
  --line T,D,COLOR         a line around the photo: thickness, distance from
                           the photo, color (6px,48px,#c8a96a); none
  --corners RADIUS         round corners of the photo (24px or 2%)
  --photo-shadow           a shadow below the photo; --no-photo-shadow

Caption
  --caption TEMPLATE       text with tokens such as {camera}, {lens}, {iso};
                           another one begins another caption (up to 6), and the
                           options after it are its own; {lens|TEXT} has a TEXT
                           for photos without one, {captureDate:STYLE} is
                           short, medium, long, iso, or a pattern: d MMMM y
  --no-caption
  --caption-position POSITION
  --caption-font FONT      system, rounded, serif, monospaced, geometric, or a
                           family and its style: "EB Garamond:Medium Italic"
  --caption-size LENGTH    pixels (48) or percent of the shorter side (4%)
  --caption-fit            smaller where it would be cut off otherwise
  --caption-uppercase      --caption-letter-spacing -20..20 (percent of the size)
  --caption-color COLOR    --caption-opacity 0..1
  --caption-align SIDE     left, center or right     --caption-spacing LENGTH
  --caption-padding LENGTH --caption-vertical-padding LENGTH

Values in captions (files keep theirs, also framed copies)
  --set FIELD=VALUE        what captions say of every photo, such as
                           lens="Helios 44-2"; nothing behind = for missing
  --corrections FILE       the same for single photos: an object a line, such as
                           {"path": "a.jpg", "captureDate": "1987-06-21"}

Logo
  --logo FILE              PNG, TIFF, PDF or SVG
  --logo-position POSITION --logo-width PERCENT      --logo-opacity 0..1
  --logo-padding H[,V]

Positions: image-top-left, image-top-center, image-top-right, image-center-left,
  image-center, image-center-right, image-bottom-left, image-bottom-center,
  image-bottom-right, border-top-left, border-top-center, border-top-right,
  border-bottom-left, border-bottom-center, border-bottom-right

Fields: cameraMake, cameraModel, lens, focalLength, aperture, shutterSpeed, iso,
  exposureCompensation, captureDate, artist, copyright, title, caption

Running
  --filter                 frame standard input to standard output
  --dry-run                print the plan, write nothing
  --json                   JSON Lines: an object per outcome, then the report
  --quiet                  no progress on the terminal
  -h, --help               these lines
  -V, --version            the version, and what confines the readers of photos

On several machines
  --plan-to PLAN           settle names for all photos, write them to PLAN, and
                           frame none
  run PLAN                 frame what a plan says
  --shard K/N              the Kth of N parts of it
  --resume                 leave what an earlier run of it has framed
  report FILE...           add up what runs have printed with --json

inspect prints what is read of each photo.

Exit status: 0 all done, 1 some photo or the output folder failed,
  2 wrong usage, 130 interrupted.
)");
}

} // namespace ferrow::Command
