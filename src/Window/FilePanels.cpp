// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/FilePanels.h"

#include "Platform/Files/ImageTypes.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

namespace ferrow {

namespace {

/// Name filters tell upper from lower case, so both are listed.
template <typename Wanted>
QString filter(const QString& name, const Wanted& isWanted)
{
    QStringList patterns;
    for (const InputType& input : inputTypes()) {
        if (!isWanted(input))
            continue;
        for (const std::string_view word : input.extensions) {
            const auto extension = QString::fromLatin1(word.data(), qsizetype(word.size()));
            patterns << QStringLiteral("*.") + extension << QStringLiteral("*.") + extension.toUpper();
        }
    }
    return QStringLiteral("%1 (%2)").arg(name, patterns.join(u' '));
}

QStringList filters(PanelRequest::Kind kind)
{
    const QString allFiles = QStringLiteral("All Files (*)");
    if (kind == PanelRequest::Kind::photos)
        return {filter(QStringLiteral("Photos"), [](const InputType& input) { return input.isPhoto; }), allFiles};
    const auto isLogo = [](const InputType& input) { return !input.logoExtension.isEmpty(); };
    return {filter(QStringLiteral("Logos"), isLogo), allFiles};
}

/// The user's pictures, or home where there are none.
QUrl firstFolder()
{
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QUrl::fromLocalFile(QFileInfo::exists(pictures) ? pictures : QDir::homePath());
}

/// Where the next panel starts: where the last one ended. Forgotten with the program.
QUrl& lastFolder()
{
    static QUrl folder = firstFolder();
    return folder;
}

/// For desktops without a panel of their own, whose stand-in is small.
constexpr QSize comfortable(860, 560);

void configure(QFileDialog& dialog, const PanelRequest& request)
{
    dialog.setWindowTitle(request.title);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.resize(comfortable);
    if (request.kind == PanelRequest::Kind::folder) {
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
    } else {
        dialog.setFileMode(request.kind == PanelRequest::Kind::photos ? QFileDialog::ExistingFiles
                                                                      : QFileDialog::ExistingFile);
        dialog.setNameFilters(filters(request.kind));
    }
    if (!request.prompt.isEmpty())
        dialog.setLabelText(QFileDialog::Accept, request.prompt);
    dialog.setDirectoryUrl(request.startsIn.isEmpty() ? lastFolder() : request.startsIn.toUrl());
    QObject::connect(&dialog, &QFileDialog::accepted, &dialog, [&dialog] { lastFolder() = dialog.directoryUrl(); });
}

std::vector<FileUrl> chosenFiles(const QFileDialog& dialog)
{
    std::vector<FileUrl> files;
    for (const QUrl& url : dialog.selectedUrls())
        if (const std::optional<FileUrl> file = FileUrl::fromUrl(url))
            files.push_back(*file);
    return files;
}

void openPanel(QWidget* window, const PanelRequest& request, const FilePanels::Chosen& chosen)
{
    auto* dialog = new QFileDialog(window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    configure(*dialog, request);
    QObject::connect(dialog, &QFileDialog::accepted, window, [dialog, chosen] {
        if (const std::vector<FileUrl> files = chosenFiles(*dialog); !files.empty())
            chosen(files);
    });
    dialog->open();
}

std::optional<FileUrl> openPanelAndWait(QWidget* window, const PanelRequest& request)
{
    QFileDialog dialog(window);
    configure(dialog, request);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    const std::vector<FileUrl> files = chosenFiles(dialog);
    return files.empty() ? std::nullopt : std::optional(files.front());
}

} // namespace

FilePanels FilePanels::system()
{
    return {.open = openPanel, .openAndWait = openPanelAndWait};
}

} // namespace ferrow
