#include "ui/fileops/FileCommands.h"

#include "ui/fileops/MoveFile1.h"
#include "ui/fileops/Rename1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/fileops/FileOperations.h"
#include "core/platform/archive/ZipExtract.h"
#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/trash/Trash.h"
#include "core/viewer/SaveChoices.h"
#include "ui/services/UiServices.h"
#include "ui/player/AudioVideo1.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent>

namespace tarnby::ui {

namespace {

bool isInternetAddress(const QString &path)
{
    return path.startsWith(QLatin1String("HTTP:"), Qt::CaseInsensitive)
        || path.startsWith(QLatin1String("HTTPS:"), Qt::CaseInsensitive);
}

// Pictures are the picture band of the catalogue and the one-bit formats MAC,
// IMG and MSP, which the catalogue files with the multimedia band.
bool isPicture(const QString &extension)
{
    const int index = catalogue::knownExtensionIndex(extension);
    return index <= catalogue::LastPictureIndex || (index >= 42 && index <= 44);
}

QString unzipProblem(const archive::ExtractResult &r, const QString &target)
{
    switch (r.status) {
    case archive::Status::Ok:
    case archive::Status::TargetExists:
        break;
    case archive::Status::Unsafe:
        return QStringLiteral("The entry \"%1\" would be written outside the folder %2. %3 Nothing was unzipped.")
            .arg(r.entry, target, r.errorString);
    case archive::Status::TooLarge:
        return QStringLiteral("The archive is too large to unzip safely. %1 Nothing was unzipped.").arg(r.errorString);
    case archive::Status::Encrypted:
        return QStringLiteral("The entry \"%1\" is protected by a password. Nothing was unzipped.").arg(r.entry);
    case archive::Status::Damaged:
        return QStringLiteral("The archive is damaged (%1). The files unzipped from it were removed.")
            .arg(r.errorString);
    case archive::Status::Failed:
        return QStringLiteral("The files cannot be written (%1). The files unzipped from it were removed.")
            .arg(r.errorString);
    }
    return QString();
}

} // namespace

FileCommands::FileCommands(AppState &state, UiServices &services, QWidget *window)
    : QObject(window)
    , m_state(state)
    , m_services(services)
    , m_window(window)
    , m_openUrl([](const QUrl &url) { return QDesktopServices::openUrl(url); })
{
}

QString FileCommands::saveDialogFilter(const QString &extension) const
{
    const QString pattern = QStringLiteral("*.") + extension;
    return pattern + QLatin1Char('|') + pattern;
}

void FileCommands::DeleteFile(const QString &path)
{
    if (path.isEmpty())
        return;
    if (!QFileInfo(path).isFile()) {
        m_services.messages.inform(QStringLiteral("File not Found - ") + path, m_window);
        return;
    }
    if (!m_services.messages.ask(QStringLiteral("Move File to the Trash - ") + path + QStringLiteral("? "), m_window))
        return;
    const trash::TrashResult trashed = trash::moveToTrash(path);
    if (trashed.ok) {
        reportRemoved(path);
        return;
    }
    // Deleting for good cannot be undone, so it needs its own Yes.
    const QString question = QStringLiteral("The File cannot be moved to the Trash - ") + path + QStringLiteral(" (")
        + trashed.errorString + QStringLiteral("). Delete it permanently? ");
    if (!m_services.messages.ask(question, m_window))
        return;
    QFile file(path);
    if (!file.remove()) {
        m_services.messages.inform(QStringLiteral("Error Deleting File - ") + path + QStringLiteral(" - ")
                                       + file.errorString(),
                                   m_window);
        return;
    }
    reportRemoved(path);
}

void FileCommands::reportRemoved(const QString &path)
{
    emit fileRemoved(QFileInfo(path).absoluteFilePath());
    emit filesChanged();
}

void FileCommands::reportMoves(const QList<fileops::Step> &steps)
{
    for (const fileops::Step &step : steps)
        emit fileMoved(QFileInfo(step.from).absoluteFilePath(), QFileInfo(step.to).absoluteFilePath());
    emit filesChanged();
}

void FileCommands::MoveFile(const QString &path, const QString &extension)
{
    if (path.isEmpty())
        return;
    const QFileInfo info(path);
    DialogRequest request;
    request.kind = DialogKind::SaveFile;
    request.title = QStringLiteral("Enter File Name and Folder to move To - ") + info.fileName();
    request.directory = info.absolutePath();
    request.fileName = info.fileName();
    request.filter = saveDialogFilter(extension);
    request.defaultSuffix = extension;
    // The move never replaces a file, so the dialog must not offer to.
    request.confirmOverwrite = false;
    const DialogAnswer answer = m_services.dialogs.run(request, m_window);
    if (!answer.accepted || answer.path.isEmpty())
        return;

    m_state.currentFile = path;
    MoveFile1 dialog(path, answer.path, m_state, m_services, m_window);
    if (dialog.exec() == QDialog::Accepted) {
        m_state.currentFile = dialog.movedPath();
        reportMoves(dialog.doneSteps());
    }
}

void FileCommands::RenameFile(const QString &path)
{
    if (path.isEmpty())
        return;
    Rename1 dialog(path, m_state, m_services, m_window);
    if (dialog.exec() == QDialog::Accepted) {
        if (m_state.currentFile == path)
            m_state.currentFile = dialog.renamedPath();
        reportMoves(dialog.doneSteps());
    }
}

void FileCommands::SaveFileAs()
{
    saveAs(nullptr);
}

void FileCommands::SaveFileAs(const imaging::Picture &shown)
{
    saveAs(&shown);
}

void FileCommands::saveAs(const imaging::Picture *shown)
{
    const QString path = m_state.currentFile;
    if (path.isEmpty())
        return;
    const QString extension = catalogue::GetFileExt(path);
    const bool fromInternet = isInternetAddress(path);
    // A file shown from the Internet is named by the text after the last "/".
    const QString name = fromInternet ? path.mid(path.lastIndexOf(QLatin1Char('/')) + 1) : QFileInfo(path).fileName();
    const QString folder = fromInternet || !path.contains(QLatin1Char('/')) ? QDir::currentPath()
                                                                             : QFileInfo(path).absolutePath();

    DialogRequest request;
    request.kind = DialogKind::SaveFile;
    request.title = QStringLiteral("Enter New File Name for - ") + name;
    request.directory = folder;
    request.fileName = name;
    request.filter = saveDialogFilter(extension);
    request.defaultSuffix = extension;
    request.confirmOverwrite = true;

    // A picture is saved from what it shows, at the depth and quality the
    // dialog offers, preset from the picture.
    const bool savesPicture = shown || isPicture(extension);
    imaging::Picture picture;
    if (savesPicture) {
        if (shown) {
            picture = *shown;
        } else {
            QApplication::setOverrideCursor(Qt::WaitCursor);
            picture = imaging::loadPicture(path).picture;
            QApplication::restoreOverrideCursor();
        }
        if (!picture.isNull()) {
            const viewer::PictureSaveChoices choices =
                viewer::saveChoicesFor(extension, picture.info.bitsPerPixel, fromInternet ? QString() : path);
            request.bitsPerPixelChoices = choices.depths;
            request.bitsPerPixel = choices.depth;
            request.offerQuality = choices.hasQuality;
            request.quality = choices.quality;
        }
    }
    const DialogAnswer answer = m_services.dialogs.run(request, m_window);
    if (!answer.accepted || answer.path.isEmpty())
        return;
    const QString newPath = answer.path;

    if (savesPicture) {
        const int code = catalogue::GetSaveFormatCode(catalogue::GetFileExt(newPath));
        const int bits = answer.bitsPerPixel > 0 ? answer.bitsPerPixel : picture.info.bitsPerPixel;
        const imaging::SaveResult saved = picture.isNull() || code == 0
            ? imaging::SaveResult{}
            : imaging::savePicture(picture, newPath, code, bits, answer.quality);
        if (!saved.ok) {
            m_services.messages.inform(QStringLiteral("Error Saving File - ") + newPath, m_window);
            return;
        }
    } else {
        const fileops::Result copied = fileops::copyWithoutOverwrite(path, newPath);
        if (!copied.ok()) {
            m_services.messages.inform(QStringLiteral("Error Copying File - ") + newPath, m_window);
            return;
        }
    }
    emit filesChanged();
}

void FileCommands::OpenwithOLE()
{
    const QString path = m_state.currentFile;
    if (path.isEmpty())
        return;
    const QUrl url = isInternetAddress(path) ? QUrl(path) : QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (!isInternetAddress(path) && !QFileInfo::exists(path)) {
        m_services.messages.inform(QStringLiteral("File not Found - ") + path, m_window);
        return;
    }
    if (!m_openUrl(url))
        m_services.messages.inform(QStringLiteral("No Application could Open the File - ") + path, m_window);
}

void FileCommands::offerUnzip(const QString &zipPath)
{
    if (!m_services.messages.ask(QStringLiteral("Do You want to Un Zip File - ") + zipPath + QStringLiteral("? "),
                                 m_window))
        return;
    const QString target = archive::unzipTargetFolder(zipPath);
    const QString existsMessage = QStringLiteral("Error Unzipping File - ") + zipPath + QStringLiteral(" Folder already Exists");
    if (QFileInfo::exists(target) || QFileInfo(target).isSymLink()) {
        m_services.messages.inform(existsMessage, m_window);
        emit unzipFinished(false);
        return;
    }

    // Unpacking can take a while; it runs on a worker thread and reports back
    // here. The watcher belongs to this object, so a result that arrives after
    // the window has gone is dropped with it.
    auto *watcher = new QFutureWatcher<archive::ExtractResult>(this);
    connect(watcher, &QFutureWatcher<archive::ExtractResult>::finished, this, [=, this] {
        const archive::ExtractResult result = watcher->result();
        watcher->deleteLater();
        if (result.ok()) {
            emit filesChanged();
            emit unzipFinished(true);
            return;
        }
        if (result.status == archive::Status::TargetExists)
            m_services.messages.inform(existsMessage, m_window);
        else
            m_services.messages.inform(QStringLiteral("Error Unzipping File - ") + zipPath + QStringLiteral(" - ")
                                           + unzipProblem(result, target),
                                       m_window);
        emit unzipFinished(false);
    });
    watcher->setFuture(QtConcurrent::run([zipPath, target] { return archive::extractArchive(zipPath, target); }));
}

AudioVideo1 *FileCommands::player() const
{
    return m_player;
}

void FileCommands::play(const QString &path)
{
    if (!m_player) {
        m_player = new AudioVideo1(m_state, m_services, m_window);
        m_player->setWindowFlag(Qt::Dialog);
    }
    m_player->show();
    m_player->raise();
    m_player->openAndPlay(path);
}

} // namespace tarnby::ui
