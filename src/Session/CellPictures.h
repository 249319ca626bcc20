// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/PhotoSession.h"

#include <QCache>
#include <QImage>
#include <QObject>
#include <QSize>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <vector>

namespace ferrow {

/// The framed photos of a contact sheet: composed as exports are, at the size of a cell, for what is in sight alone.
/// What went out of sight before its turn is not composed; what is finished is kept compressed, the pictures used last
/// within a bound of bytes. A photo is read from its thumbnail where that has the pixels, else from the file once for
/// each size of cells; an edit composes from what was read. Lives on the main thread.
class CellPictures : public QObject {
    Q_OBJECT

public:
    /// Called on worker threads; both throw Canceled, and what their namesakes throw.
    struct Operations {
        std::function<Bitmap(const FileUrl&, std::int64_t maximumDimension, const std::stop_token&)> load;
        std::function<std::optional<Bitmap>(const std::optional<LogoConfiguration>&, const std::stop_token&)> loadLogo;

        /// The program's own photos and logos.
        [[nodiscard]] static Operations system();
    };

    /// Of finished pictures and of photos read for them, compressed: each.
    static constexpr qsizetype keptBytes = 40 << 20;

    explicit CellPictures(PhotoSession& session, Operations operations = Operations::system(),
                          QObject* parent = nullptr);
    ~CellPictures() override;

    /// Which photos are to be seen, first come first served, and the room for the picture of each in device pixels.
    /// What is on its way for others is given up; nothing is done for an empty list.
    void setInSight(std::vector<FileUrl> photoIDs, QSize room);

    /// The latest picture that is there, ready to paint, of the photo as it was framed then; null before the first one.
    [[nodiscard]] QImage image(const FileUrl& photoID) const;
    /// Whether anything in sight is still to come.
    [[nodiscard]] bool isBusy() const { return !running_.empty(); }

signals:
    /// image() has become another.
    void changed(const ferrow::FileUrl& photoID);
    /// It could not be read, and was not for want of threads or memory.
    void unreadable(const ferrow::FileUrl& photoID);

private:
    /// What a picture was made of.
    struct Origin {
        std::shared_ptr<const RenderRecipe> recipe;
        MetadataCorrections corrections;
        QSize room;
        bool isFinal = true; ///< Else of a thumbnail that has too few pixels: a better one follows.
    };
    struct Kept {
        CompressedPicture picture;
        Origin origin;
        std::int64_t usedAt = 0;
    };
    struct Reduced {
        CompressedPicture picture;
        std::int64_t dimension = 0; ///< That was asked for.
        std::int64_t usedAt = 0;
    };
    struct Job;
    struct Outcome;

    void renew();
    void startNext();
    [[nodiscard]] bool isCurrent(const FileUrl& photoID) const;
    [[nodiscard]] bool isWanted(const FileUrl& photoID) const;
    [[nodiscard]] std::optional<Job> jobFor(const FileUrl& photoID);
    [[nodiscard]] const std::shared_ptr<const RenderRecipe>& shared(const RenderRecipe& recipe);
    [[nodiscard]] static Outcome outcomeOf(const Job& job, const Operations& operations, const std::stop_token& stop);
    void finish(const FileUrl& photoID, Outcome outcome);
    void keep(const FileUrl& photoID, const Outcome& outcome);
    void forgetRemoved();

    PhotoSession& session_;
    Operations operations_;
    std::vector<FileUrl> inSight_;
    QSize room_;
    std::vector<FileUrl> waiting_;                          ///< Of those in sight, in reverse order of their turns.
    std::unordered_map<FileUrl, std::stop_source> running_; ///< At most one each.
    std::unordered_map<FileUrl, Kept> kept_;
    std::unordered_map<FileUrl, Reduced> reduced_;
    qsizetype keptNow_ = 0;                      ///< Bytes.
    qsizetype reducedNow_ = 0;                   ///< Bytes.
    mutable QCache<QByteArray, QImage> painted_; ///< Cost in kilobytes.
    std::shared_ptr<const RenderRecipe> recipe_; ///< The latest one that was shared.
    std::int64_t clock_ = 0;
    int threads_;
    MainThreadRelay relay_;
    std::unique_ptr<WorkQueue> work_;
};

} // namespace ferrow
