// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Batch/BatchImporter.h"
#include "Batch/PhotoOrder.h"
#include "Models/BatchExportModels.h"
#include "Models/BatchFraming.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Persistence/SandboxAccessBroker.h"
#include "Session/Background.h"
#include "Session/CompressedPicture.h"

#include <QImage>
#include <QObject>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ferrow {

/// What became of one import.
struct ImportOutcome {
    std::int64_t added = 0;
    std::vector<BatchExportFailure> failures; ///< In the file browser's order of their names.
    bool hadNothingNew = false;               ///< Nothing new was found, and nothing failed.

    /// The answer of an import that did not run.
    static const ImportOutcome none;

    bool operator==(const ImportOutcome&) const = default;
};

/// Photos taken out of the list, with all that is needed to put them back.
struct RemovedPhotos {
    struct Entry {
        ImportedPhoto photo;
        CompressedPicture thumbnail;
        std::size_t index = 0; ///< In the list before any of them was removed; ascending.
        std::optional<RenderRecipe> recipe;
        bool isExcluded = false;
    };

    std::vector<Entry> entries;
    std::optional<FileUrl> selectedPhotoID; ///< Before the removal.
    std::optional<FileUrl> selectedAfter;   ///< What the removal left selected.
    std::vector<FileUrl> accessedRoots;     ///< Given back with them: where they were opened from.
};

/// What the captions of one photo say in place of what its file says; nothing takes all of it back.
struct PhotoCorrections {
    FileUrl photoID;
    MetadataCorrections values;
};

/// The working set: the photos in the order of the user's choice, the selected one, those left out of export,
/// and the recipes. Lives on the main thread. Every signal comes after all fields of a change have their new values,
/// and only where the value differs. The photos carry no previewSource: their thumbnails are kept compressed and come
/// from thumbnail().
class PhotoSession : public QObject {
    Q_OBJECT

public:
    /// Both run on worker threads; empty ones are the importer's own.
    struct Operations {
        std::function<BatchImportScan(const std::vector<FileUrl>&)> scan;
        BatchImporter::Loader load; ///< Leaves the thumbnail in previewSource.
    };
    using ImportDone = std::function<void(const ImportOutcome&)>;

    explicit PhotoSession(SandboxAccessBroker accessBroker = SandboxAccessBroker(), Operations operations = {},
                          QObject* parent = nullptr);
    /// Stops an import and waits at most about a second for the files in hand.
    ~PhotoSession() override;

    [[nodiscard]] const std::vector<ImportedPhoto>& photos() const { return photos_; }
    [[nodiscard]] const std::optional<FileUrl>& selectedPhotoID() const { return selectedPhotoID_; }
    [[nodiscard]] const std::unordered_set<FileUrl>& excludedPhotoIDs() const { return excludedPhotoIDs_; }
    [[nodiscard]] const PhotoOrder& order() const { return order_; }
    [[nodiscard]] const BatchFraming& framing() const { return framing_; }
    [[nodiscard]] const RenderRecipe& batchRecipe() const { return framing_.batch; }
    [[nodiscard]] const std::unordered_map<FileUrl, RenderRecipe>& photoRecipes() const { return framing_.own; }
    [[nodiscard]] RecipeScope recipeScope() const { return framing_.scope; }
    [[nodiscard]] bool isImporting() const { return isImporting_; }
    [[nodiscard]] SandboxAccessBroker& accessBroker() { return accessBroker_; }

    /// Null when nothing is selected, or no such photo is in the list. Valid until the list changes.
    [[nodiscard]] const ImportedPhoto* selectedPhoto() const;
    /// The photos to export, in list order. Copies: for counting, includedCount().
    [[nodiscard]] std::vector<ImportedPhoto> includedPhotos() const;
    [[nodiscard]] std::size_t includedCount() const;
    /// What the inspector shows and edits.
    [[nodiscard]] const RenderRecipe& activeRecipe() const;
    /// What frames this photo in preview and export.
    [[nodiscard]] const RenderRecipe& resolvedRecipe(const FileUrl& photoID) const;
    /// Position of the first photo with this id. Costs one look-up by hash.
    [[nodiscard]] std::optional<std::size_t> indexOf(const FileUrl& photoID) const;
    [[nodiscard]] const ImportedPhoto* photo(const FileUrl& photoID) const;
    [[nodiscard]] bool isIncluded(const FileUrl& photoID) const { return !excludedPhotoIDs_.contains(photoID); }
    [[nodiscard]] bool hasOwnRecipe(const FileUrl& photoID) const { return framing_.own.contains(photoID); }
    /// How many photos of the list have a framing of their own and are framed like the batch all the same.
    [[nodiscard]] std::size_t unusedOwnFramings() const;

    /// The photo's thumbnail in sRGB, at most 280 pixels long, decoded anew at each call: views keep those they show.
    [[nodiscard]] QImage thumbnail(const FileUrl& photoID) const;
    /// The same still compressed, to be decoded on another thread or rendered as a stand-in for the preview.
    [[nodiscard]] CompressedPicture compressedThumbnail(const FileUrl& photoID) const;

    /// Scans and reads on worker threads; the new photos join the list together at the end, and where nothing was
    /// selected the first of them is. `done` is called on the main thread, at once with ImportOutcome::none when `urls`
    /// is empty or an import runs already, and never once the session has gone.
    void importPhotos(const std::vector<FileUrl>& urls, ImportDone done = {});
    /// Ends the import early. Photos read until then join the list, as finished files stay when an export is
    /// canceled: whoever does not want them finds them together, while reading thousands again would take minutes.
    void cancelImport();

    /// Any id: also one that is not, or no longer, in the list.
    void setSelectedPhotoID(const std::optional<FileUrl>& photoID);
    void setBatchRecipe(const RenderRecipe& recipe);
    /// Changes what is shown and edited, and no photo: that gets a framing of its own by its first edit.
    void setRecipeScope(RecipeScope scope);
    /// Stores the photo's own recipe, or takes it away.
    void setPhotoRecipe(const FileUrl& photoID, const std::optional<RenderRecipe>& recipe);
    /// Photos that are not in the list are passed over: corrections come and go with their photos.
    void setCorrections(const std::vector<PhotoCorrections>& corrections);
    void setIncluded(const std::vector<FileUrl>& photoIDs, bool included);
    void toggleIncluded(const FileUrl& photoID);
    /// Each becomes the opposite of what it is.
    void toggleIncluded(const std::vector<FileUrl>& photoIDs);
    /// Of the list, of what an export numbers, and of photos that join later.
    void setOrder(const PhotoOrder& order);

    /// Stores an edited recipe where the scope says.
    void applyRecipe(const RenderRecipe& recipe);
    /// Goes to the scope in which own framings count, and to a photo that has one where none is selected.
    void useOwnFramings();

    /// Then selects the photo that followed, else the last.
    RemovedPhotos removeSelected();
    /// Unknown ids are passed over. The selection moves only when its photo goes: to the next that stays, else the
    /// last.
    RemovedPhotos remove(const std::vector<FileUrl>& photoIDs);
    /// Puts photos back at their places with recipe and inclusion, and the selection unless another photo was chosen
    /// since. One that was imported anew meanwhile is not doubled.
    void restore(const RemovedPhotos& removed);
    /// Removes all. Keeps batch recipe and scope. An import that runs ends, and none of its photos joins the list.
    RemovedPhotos clearAll();

signals:
    void photosChanged();
    void selectedPhotoIDChanged();
    void excludedPhotoIDsChanged();
    void batchRecipeChanged();
    void photoRecipesChanged();
    void recipeScopeChanged();
    void correctionsChanged();
    void orderChanged();
    void isImportingChanged();
    /// While an import runs: files read so far, and of how many.
    void importProgressed(std::size_t read, std::size_t total);

private:
    class Change;
    struct Import;

    void loadNew(const std::shared_ptr<Import>& import);
    void showProgress(const std::shared_ptr<Import>& import);
    void addLoaded(const std::shared_ptr<Import>& import);
    void endImport(const ImportOutcome& outcome);
    void abandonImport();
    [[nodiscard]] RemovedPhotos::Entry takeOut(std::size_t index, Change& change);
    void reselect(std::size_t index);
    void rebuildIndex();

    SandboxAccessBroker accessBroker_;
    Operations operations_;
    std::vector<ImportedPhoto> photos_;
    std::unordered_map<FileUrl, std::size_t> index_; ///< First position of each id in photos_.
    std::unordered_map<FileUrl, CompressedPicture> thumbnails_;
    std::optional<FileUrl> selectedPhotoID_;
    std::unordered_set<FileUrl> excludedPhotoIDs_;
    BatchFraming framing_;
    PhotoOrder order_;
    std::int64_t added_ = 0; ///< Photos that have ever joined.
    bool isImporting_ = false;
    std::shared_ptr<Import> import_; ///< The one that runs.
    MainThreadRelay relay_;
    std::unique_ptr<WorkQueue> work_;
};

} // namespace ferrow
