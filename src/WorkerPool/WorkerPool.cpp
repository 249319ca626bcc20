// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/WorkerPool.h"

#include "Models/ErrorTexts.h"
#include "WorkerPool/JobRun.h"
#include "WorkerPool/WorkerAnswerer.h"

#include <QStringList>

#include <signal.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

/// The same place relative to this program, whether installed, moved as a whole, or in the build tree.
QByteArray installedProgram()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return QByteArray::fromStdString(
        (self.parent_path() / FERROW_WORKER_PLACE / "ferrow-worker").lexically_normal().string());
}

/// Whoever started us may have had the system forget about ended children. Their numbers could then belong to others
/// by the time we use them.
void keepEndedChildren()
{
    struct sigaction inherited {};
    if (::sigaction(SIGCHLD, nullptr, &inherited) == 0 && inherited.sa_handler == SIG_IGN)
        ::signal(SIGCHLD, SIG_DFL);
}

QStringList missingWalls(const Worker::Hello& hello)
{
    QStringList missing;
    if (!hello.hasNamespaces)
        missing << QStringLiteral("namespaces");
    if (hello.landlockVersion == 0)
        missing << QStringLiteral("Landlock");
    if (!hello.filtersSystemCalls)
        missing << QStringLiteral("system call filters");
    return missing;
}

QString described(const Worker::Hello& hello)
{
    QStringList walls;
    if (hello.hasNamespaces)
        walls << QStringLiteral("namespaces");
    if (hello.landlockVersion > 0)
        walls << QStringLiteral("Landlock %1").arg(hello.landlockVersion);
    if (hello.filtersSystemCalls)
        walls << QStringLiteral("a system call filter");
    if (hello.limitsResources)
        walls << QStringLiteral("resource limits");
    const QStringList missing = missingWalls(hello);
    QString line = QStringLiteral("Photos are read in separate processes");
    if (!walls.isEmpty())
        line += QStringLiteral(", confined by ") + walls.join(QStringLiteral(", "));
    if (!missing.isEmpty())
        line += QStringLiteral("; this system does not offer ") + missing.join(QStringLiteral(" or "));
    return line + QLatin1Char('.');
}

} // namespace

Installation::Installation(std::shared_ptr<Pool> pool, WorkerAnswerer& answerer)
    : pool_(std::move(pool)), answerer_(&answerer)
{
}

Installation::Installation(Installation&&) noexcept = default;

Installation::~Installation()
{
    if (pool_)
        pool_->close();
}

QString Installation::confinementInForce() const
try {
    return described(answerer_->confinement());
} catch (const NoAnswer&) {
    return ImagePipelineError(ImagePipelineError::workerUnavailable).errorDescription();
}

QString Installation::missingWallsNote() const
{
    const auto hello = pool_->lastHello();
    const QStringList missing = hello ? missingWalls(*hello) : QStringList();
    if (missing.isEmpty())
        return {};
    return QStringLiteral("Photos are read in separate processes. This system does not offer all that confines them: "
                          "without %1.")
        .arg(missing.join(QStringLiteral(", ")));
}

Installation installWorkers(const QByteArray& program)
{
    keepEndedChildren();
    auto pool = std::make_shared<Pool>(program.isEmpty() ? installedProgram() : program);
    auto answerer = std::make_unique<WorkerAnswerer>(pool);
    WorkerAnswerer& borrowed = *answerer;
    Engine::setAnswerer(std::move(answerer));
    return {std::move(pool), borrowed};
}

} // namespace ferrow::WorkerPool
