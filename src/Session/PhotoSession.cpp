// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoSession.h"

#include "Imaging/ImageLoader.h"
#include "Session/PhotoImport.h"
#include "Session/ScreenImage.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ferrow {

const ImportOutcome ImportOutcome::none{};

/// Compares the fields after a change with those before and tells of those that differ, at the end of the scope: no
/// observer sees a half-made change.
class PhotoSession::Change {
public:
    explicit Change(PhotoSession& session)
        : session_(session), selectedPhotoID_(session.selectedPhotoID_), recipeScope_(session.recipeScope())
    {
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change()
    {
        if (photos)
            emit session_.photosChanged();
        if (excludedPhotoIDs)
            emit session_.excludedPhotoIDsChanged();
        if (photoRecipes)
            emit session_.photoRecipesChanged();
        if (batchRecipe)
            emit session_.batchRecipeChanged();
        if (corrections)
            emit session_.correctionsChanged();
        if (recipeScope_ != session_.recipeScope())
            emit session_.recipeScopeChanged();
        if (selectedPhotoID_ != session_.selectedPhotoID_)
            emit session_.selectedPhotoIDChanged();
    }

    // Too large to be compared: whoever changes them sets these.
    bool photos = false;
    bool excludedPhotoIDs = false;
    bool photoRecipes = false;
    bool batchRecipe = false;
    bool corrections = false;

private:
    PhotoSession& session_;
    std::optional<FileUrl> selectedPhotoID_;
    RecipeScope recipeScope_;
};

/// One import on its way. The main thread has it but for `work`, which the worker fills until it posts the end.
struct PhotoSession::Import {
    ImportDone done;
    BatchImportScan scan;
    std::shared_ptr<PhotoImport::Work> work;
};

PhotoSession::PhotoSession(SandboxAccessBroker accessBroker, Operations operations, QObject* parent)
    : QObject(parent), accessBroker_(std::move(accessBroker)), operations_(std::move(operations)),
      work_(std::make_unique<WorkQueue>(1))
{
    if (!operations_.scan)
        operations_.scan = BatchImporter::scan;
    if (!operations_.load)
        operations_.load = &ImageLoader::loadBatchThumbnail;
}

PhotoSession::~PhotoSession()
{
    if (!import_)
        return;
    import_->work->stop.request_stop();
    import_->done = {};
}

const ImportedPhoto* PhotoSession::photo(const FileUrl& photoID) const
{
    const auto index = indexOf(photoID);
    return index ? &photos_[*index] : nullptr;
}

const ImportedPhoto* PhotoSession::selectedPhoto() const
{
    return selectedPhotoID_ ? photo(*selectedPhotoID_) : nullptr;
}

std::vector<ImportedPhoto> PhotoSession::includedPhotos() const
{
    std::vector<ImportedPhoto> included;
    included.reserve(photos_.size());
    std::ranges::copy_if(photos_, std::back_inserter(included),
                         [this](const ImportedPhoto& photo) { return isIncluded(photo.id()); });
    return included;
}

std::size_t PhotoSession::includedCount() const
{
    if (excludedPhotoIDs_.empty())
        return photos_.size();
    return std::size_t(
        std::ranges::count_if(photos_, [this](const ImportedPhoto& photo) { return isIncluded(photo.id()); }));
}

const RenderRecipe& PhotoSession::activeRecipe() const
{
    return framing_.recipeFor(selectedPhotoID_);
}

const RenderRecipe& PhotoSession::resolvedRecipe(const FileUrl& photoID) const
{
    return framing_.recipeFor(photoID);
}

std::optional<std::size_t> PhotoSession::indexOf(const FileUrl& photoID) const
{
    const auto found = index_.find(photoID);
    return found == index_.end() ? std::nullopt : std::optional(found->second);
}

QImage PhotoSession::thumbnail(const FileUrl& photoID) const
{
    return screenImage(compressedThumbnail(photoID).decoded());
}

CompressedPicture PhotoSession::compressedThumbnail(const FileUrl& photoID) const
{
    const auto found = thumbnails_.find(photoID);
    return found == thumbnails_.end() ? CompressedPicture() : found->second;
}

void PhotoSession::importPhotos(const std::vector<FileUrl>& urls, ImportDone done)
{
    if (urls.empty() || isImporting_) {
        if (done)
            done(ImportOutcome::none);
        return;
    }
    accessBroker_.retainAccess(urls);
    const auto import = std::make_shared<Import>();
    import->done = std::move(done);
    import->work = std::make_shared<PhotoImport::Work>();
    import_ = import;
    isImporting_ = true;
    emit isImportingChanged();
    try {
        work_->post([this, urls, import, scan = operations_.scan, sender = relay_.sender()] {
            // The import is this thread's until it is posted back; `this` is only carried along.
            import->scan = scan(urls);
            sender.post([this, import] {
                if (import == import_)
                    loadNew(import);
            });
        });
    } catch (...) {
        // The system allows no thread.
        const QString message = UserFacingError::message(std::current_exception());
        for (const FileUrl& url : urls)
            import->work->result.failures.push_back(
                {.filename = url.lastPathComponent(), .message = message, .source = url});
        relay_.sender().post([this, import] { addLoaded(import); });
    }
}

void PhotoSession::loadNew(const std::shared_ptr<Import>& import)
{
    PhotoImport::Work& work = *import->work;
    std::unordered_set<FileUrl> known;
    known.reserve(photos_.size());
    for (const ImportedPhoto& photo : photos_)
        known.insert(photo.id());
    work.scan = std::move(import->scan);
    std::erase_if(work.scan.candidates, [&](const FileUrl& url) { return known.contains(url.standardized()); });
    emit importProgressed(0, work.scan.candidates.size());
    work_->post([this, import, load = operations_.load, sender = relay_.sender()] {
        PhotoImport::run(*import->work, load, [&] { sender.post([this, import] { showProgress(import); }); });
        sender.post([this, import] { addLoaded(import); });
    });
}

void PhotoSession::showProgress(const std::shared_ptr<Import>& import)
{
    if (import == import_)
        emit importProgressed(import->work->takeProgress(), import->work->scan.candidates.size());
}

void PhotoSession::addLoaded(const std::shared_ptr<Import>& import)
{
    if (import != import_)
        return;
    PhotoImport::Work& work = *import->work;
    BatchImportResult& result = work.result;
    // An undo may have brought some back since the reading began.
    std::erase_if(result.photos, [this](const ImportedPhoto& photo) { return index_.contains(photo.id()); });
    ImportOutcome outcome;
    outcome.added = std::int64_t(result.photos.size());
    outcome.failures = std::move(result.failures);
    outcome.hadNothingNew = outcome.failures.empty() && work.scan.candidates.empty();
    {
        Change change(*this);
        if (!result.photos.empty()) {
            if (!selectedPhotoID_)
                selectedPhotoID_ = result.photos.front().id();
            for (ImportedPhoto& photo : result.photos)
                photo.addedAt = ++added_;
            if (order_ != PhotoOrder())
                sortPhotos(result.photos, order_);
            // As if they were appended and the whole sorted stably, in the time of one walk.
            std::vector<ImportedPhoto> merged;
            merged.reserve(photos_.size() + result.photos.size());
            std::merge(std::move_iterator(photos_.begin()), std::move_iterator(photos_.end()),
                       std::move_iterator(result.photos.begin()), std::move_iterator(result.photos.end()),
                       std::back_inserter(merged), [this](const ImportedPhoto& left, const ImportedPhoto& right) {
                           return precedes(left, right, order_);
                       });
            photos_ = std::move(merged);
            for (auto& [id, thumbnail] : work.thumbnails)
                thumbnails_.try_emplace(id, std::move(thumbnail));
            rebuildIndex();
            change.photos = true;
        }
        if (!selectedPhotoID_ && !photos_.empty())
            selectedPhotoID_ = photos_.front().id();
    }
    endImport(outcome);
}

void PhotoSession::endImport(const ImportOutcome& outcome)
{
    // Not left to the import: a worker may be the last to hold that, and what views hand over ends on this thread.
    const ImportDone done = std::move(import_->done);
    import_.reset();
    isImporting_ = false;
    emit isImportingChanged();
    if (done)
        done(outcome);
}

void PhotoSession::cancelImport()
{
    if (!import_ || import_->work->stop.stop_requested())
        return;
    import_->work->stop.request_stop();
    // Walking folders can't be stopped, and may take minutes on a network.
    if (import_->work->scan.candidates.empty())
        abandonImport();
}

/// What the worker still does is for nobody.
void PhotoSession::abandonImport()
{
    import_->work->stop.request_stop();
    work_->leaveBehind();
    work_ = std::make_unique<WorkQueue>(1);
    endImport(ImportOutcome::none);
}

void PhotoSession::setSelectedPhotoID(const std::optional<FileUrl>& photoID)
{
    const Change change(*this);
    selectedPhotoID_ = photoID;
}

void PhotoSession::setBatchRecipe(const RenderRecipe& recipe)
{
    Change change(*this);
    change.batchRecipe = recipe != framing_.batch;
    framing_.batch = recipe;
}

void PhotoSession::setRecipeScope(RecipeScope scope)
{
    const Change change(*this);
    framing_.scope = scope;
}

void PhotoSession::setPhotoRecipe(const FileUrl& photoID, const std::optional<RenderRecipe>& recipe)
{
    Change change(*this);
    const auto found = framing_.own.find(photoID);
    if (!recipe) {
        change.photoRecipes = framing_.own.erase(photoID) > 0;
        return;
    }
    change.photoRecipes = found == framing_.own.end() || found->second != *recipe;
    framing_.own.insert_or_assign(photoID, *recipe);
}

void PhotoSession::setCorrections(const std::vector<PhotoCorrections>& corrections)
{
    Change change(*this);
    for (const auto& [photoID, values] : corrections)
        if (const auto index = indexOf(photoID); index && photos_[*index].corrections != values) {
            photos_[*index].corrections = values;
            change.corrections = true;
        }
    if (change.corrections && order_.key == PhotoOrder::Key::captureDate) {
        sortPhotos(photos_, order_);
        rebuildIndex();
        change.photos = true;
    }
}

void PhotoSession::setIncluded(const std::vector<FileUrl>& photoIDs, bool included)
{
    Change change(*this);
    for (const FileUrl& id : photoIDs)
        change.excludedPhotoIDs |= included ? excludedPhotoIDs_.erase(id) > 0 : excludedPhotoIDs_.insert(id).second;
}

void PhotoSession::toggleIncluded(const FileUrl& photoID)
{
    setIncluded({photoID}, !isIncluded(photoID));
}

void PhotoSession::toggleIncluded(const std::vector<FileUrl>& photoIDs)
{
    Change change(*this);
    for (const FileUrl& id : photoIDs) {
        if (excludedPhotoIDs_.erase(id) == 0)
            excludedPhotoIDs_.insert(id);
        change.excludedPhotoIDs = true;
    }
}

void PhotoSession::setOrder(const PhotoOrder& order)
{
    if (std::exchange(order_, order) == order)
        return;
    {
        Change change(*this);
        sortPhotos(photos_, order_);
        rebuildIndex();
        change.photos = true;
    }
    emit orderChanged();
}

void PhotoSession::applyRecipe(const RenderRecipe& recipe)
{
    if (framing_.scope == RecipeScope::selected && selectedPhotoID_)
        setPhotoRecipe(*selectedPhotoID_, recipe);
    else
        setBatchRecipe(recipe);
}

void PhotoSession::useOwnFramings()
{
    const Change change(*this);
    framing_.scope = RecipeScope::selected;
    const auto own = std::ranges::find_if(photos_, [this](const auto& photo) { return hasOwnRecipe(photo.id()); });
    if (!selectedPhoto() && own != photos_.end())
        selectedPhotoID_ = own->id();
}

std::size_t PhotoSession::unusedOwnFramings() const
{
    if (framing_.scope == RecipeScope::selected)
        return 0;
    return std::size_t(
        std::ranges::count_if(framing_.own, [this](const auto& own) { return index_.contains(own.first); }));
}

RemovedPhotos PhotoSession::removeSelected()
{
    return selectedPhotoID_ ? remove({*selectedPhotoID_}) : RemovedPhotos{};
}

RemovedPhotos PhotoSession::remove(const std::vector<FileUrl>& photoIDs)
{
    RemovedPhotos removed;
    removed.selectedPhotoID = selectedPhotoID_;
    std::vector<std::size_t> places;
    for (const FileUrl& id : photoIDs)
        if (const auto index = indexOf(id))
            places.push_back(*index);
    std::ranges::sort(places);
    places.erase(std::unique(places.begin(), places.end()), places.end());
    if (places.empty())
        return removed;

    Change change(*this);
    const std::size_t selected =
        (selectedPhotoID_ ? indexOf(*selectedPhotoID_) : std::nullopt).value_or(photos_.size());
    const bool selectedGoes = std::ranges::binary_search(places, selected);
    for (const std::size_t place : places)
        removed.entries.push_back(takeOut(place, change));
    // From the first gap on, those that stay close up.
    auto gap = places.begin();
    std::size_t to = places.front();
    for (std::size_t from = to; from < photos_.size(); ++from)
        if (gap != places.end() && *gap == from)
            ++gap;
        else
            photos_[to++] = std::move(photos_[from]);
    photos_.resize(to);
    rebuildIndex();
    change.photos = true;
    if (selectedGoes)
        reselect(selected - std::size_t(std::ranges::lower_bound(places, selected) - places.begin()));
    removed.selectedAfter = selectedPhotoID_;
    return removed;
}

/// All that belongs to the photo; of the list itself its place stays, emptied.
RemovedPhotos::Entry PhotoSession::takeOut(std::size_t index, Change& change)
{
    ImportedPhoto& photo = photos_[index];
    RemovedPhotos::Entry entry;
    entry.index = index;
    if (const auto recipe = framing_.own.extract(photo.id()); !recipe.empty()) {
        entry.recipe = recipe.mapped();
        change.photoRecipes = true;
    }
    entry.isExcluded = excludedPhotoIDs_.erase(photo.id()) > 0;
    change.excludedPhotoIDs |= entry.isExcluded;
    if (auto thumbnail = thumbnails_.extract(photo.id()); !thumbnail.empty())
        entry.thumbnail = thumbnail.mapped();
    entry.photo = std::move(photo);
    return entry;
}

void PhotoSession::reselect(std::size_t index)
{
    if (photos_.empty())
        selectedPhotoID_.reset();
    else
        selectedPhotoID_ = photos_[std::min(index, photos_.size() - 1)].id();
}

void PhotoSession::restore(const RemovedPhotos& removed)
{
    if (removed.entries.empty())
        return;
    accessBroker_.retainAccess(removed.accessedRoots);
    Change change(*this);
    std::vector<ImportedPhoto> merged;
    merged.reserve(photos_.size() + removed.entries.size());
    std::vector<std::size_t> places;
    std::size_t next = 0;
    for (const RemovedPhotos::Entry& entry : removed.entries) {
        if (index_.contains(entry.photo.id()))
            continue; // Imported anew.
        while (next < photos_.size() && merged.size() < entry.index)
            merged.push_back(std::move(photos_[next++]));
        places.push_back(merged.size());
        merged.push_back(entry.photo);
        thumbnails_[entry.photo.id()] = entry.thumbnail;
        change.photos = true;
    }
    std::move(photos_.begin() + std::ptrdiff_t(next), photos_.end(), std::back_inserter(merged));
    photos_ = std::move(merged);
    // Imports since the removal may have shifted places. The rest is in order: its new neighbors tell.
    const auto isInOrder = [this](std::size_t place) {
        return (place == 0 || !precedes(photos_[place], photos_[place - 1], order_)) &&
               (place + 1 == photos_.size() || !precedes(photos_[place + 1], photos_[place], order_));
    };
    if (!std::ranges::all_of(places, isInOrder))
        sortPhotos(photos_, order_);
    rebuildIndex();
    for (const RemovedPhotos::Entry& entry : removed.entries) {
        if (entry.isExcluded)
            change.excludedPhotoIDs |= excludedPhotoIDs_.insert(entry.photo.id()).second;
        if (entry.recipe) {
            framing_.own.insert_or_assign(entry.photo.id(), *entry.recipe);
            change.photoRecipes = true;
        }
        if (ImportedPhoto& photo = photos_[*indexOf(entry.photo.id())]; photo.corrections != entry.photo.corrections) {
            photo.corrections = entry.photo.corrections;
            change.corrections = true;
        }
    }
    if (selectedPhotoID_ == removed.selectedAfter)
        selectedPhotoID_ = removed.selectedPhotoID;
}

RemovedPhotos PhotoSession::clearAll()
{
    RemovedPhotos removed;
    {
        Change change(*this);
        removed.selectedPhotoID = selectedPhotoID_;
        removed.entries.reserve(photos_.size());
        change.photos = !photos_.empty();
        change.photoRecipes = !framing_.own.empty();
        change.excludedPhotoIDs = !excludedPhotoIDs_.empty();
        for (std::size_t index = 0; index < photos_.size(); ++index)
            removed.entries.push_back(takeOut(index, change));
        photos_.clear();
        framing_.own.clear();
        excludedPhotoIDs_.clear();
        thumbnails_.clear();
        index_.clear();
        selectedPhotoID_.reset();
        removed.accessedRoots = accessBroker_.accessedRoots();
        accessBroker_.stopSourceAccess();
    }
    if (import_)
        abandonImport();
    return removed;
}

void PhotoSession::rebuildIndex()
{
    index_.clear();
    index_.reserve(photos_.size());
    for (std::size_t i = 0; i < photos_.size(); ++i)
        index_.try_emplace(photos_[i].id(), i);
}

} // namespace ferrow
