// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Commands.h"
#include "Command/JsonLines.h"
#include "Command/Reporter.h"

#include <algorithm>
#include <unordered_map>

namespace ferrow::Command {

namespace {

constexpr std::int64_t mostBytes = 1'900'000'000;

/// What became of each photo over several runs.
class MergedOutcomes {
public:
    void read(const FileUrl& file)
    {
        const QString place = file.displayPath();
        readJsonLines(file, mostBytes, place, [&](const JsonLine& line) {
            const auto photo = line.object ? pathIn(*line.object, QStringLiteral("path")) : std::nullopt;
            const QString outcome = line.object ? line.object->value(QStringLiteral("outcome")).toString() : QString();
            if (photo && !outcome.isEmpty())
                add(*photo, outcome, *line.object);
            else if (!line.isCutOff && (!line.object || !line.object->contains(QStringLiteral("report"))))
                refuseLine(place, line.number, QStringLiteral("this is no line of a run’s --json."));
        });
    }

    /// In the order in which photos were first told of.
    [[nodiscard]] const std::vector<QJsonObject>& all() const { return outcomes_; }

private:
    /// The last word counts, but for a framed copy: a run that came later may have found it in its way.
    void add(const FileUrl& photo, const QString& outcome, const QJsonObject& object)
    {
        const auto [place, isNew] = places_.try_emplace(photo, outcomes_.size());
        if (isNew)
            outcomes_.push_back(object);
        else if (QJsonObject& known = outcomes_[place->second];
                 outcome == u"exported" || known.value(QStringLiteral("outcome")).toString() != u"exported")
            known = object;
    }

    std::vector<QJsonObject> outcomes_;
    std::unordered_map<FileUrl, std::size_t> places_;
};

void addFolder(std::vector<FileUrl>& folders, const QJsonObject& outcome)
{
    const auto destination = pathIn(outcome, QStringLiteral("destination"));
    if (!destination)
        return;
    const FileUrl folder = destination->deletingLastPathComponent();
    if (std::ranges::find(folders, folder) == folders.end())
        folders.push_back(folder);
}

} // namespace

int runReport(const Arguments& arguments)
{
    MergedOutcomes merged;
    for (const FileUrl& file : arguments.roots)
        merged.read(file);

    ProgressLine none(false);
    Reporter reporter(arguments.json, none, {});
    BatchExportReport report;
    report.total = std::int64_t(merged.all().size());
    for (const QJsonObject& object : merged.all()) {
        const QString outcome = object.value(QStringLiteral("outcome")).toString();
        const FileUrl photo = pathIn(object, QStringLiteral("path")).value();
        if (arguments.json)
            printJson(object);
        if (outcome == u"exported") {
            ++report.exported;
            addFolder(report.outputFolders, object);
        } else if (outcome == u"skipped") {
            ++report.skipped;
        } else if (outcome == u"failed") {
            report.failures.push_back({.filename = photo.lastPathComponent(),
                                       .message = object.value(QStringLiteral("message")).toString(),
                                       .source = photo});
            if (!arguments.json)
                reporter.failed(report.failures.back());
        } else {
            ++report.canceled;
        }
    }
    reporter.report(report);
    return report.failures.empty() && report.canceled == 0 ? allDone : somePhotoFailed;
}

} // namespace ferrow::Command
