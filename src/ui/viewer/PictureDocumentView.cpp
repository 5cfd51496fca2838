#include "ui/viewer/PictureDocumentView.h"

#include "core/app/Twips.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/Document.h"
#include "core/viewer/InternetDownload.h"
#include "core/viewer/SaveChoices.h"
#include "core/catalogue/CommandKeys.h"
#include "ui/edit/AddShape1.h"
#include "ui/edit/AddText1.h"
#include "ui/edit/AdjustDialog.h"
#include "ui/edit/NewSize1.h"
#include "ui/services/UiServices.h"
#include "ui/viewer/PanWindow.h"
#include "ui/viewer/PictureView.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QKeySequence>
#include <QLayout>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <QEventLoop>
#include <QThread>
#include <QProgressDialog>

#include <cmath>
#include <memory>

namespace tarnby::ui {

using viewer::ViewStep;

PictureDocumentView::PictureDocumentView(viewer::Document &document, UiServices &services,
                                         DocumentViewHost &host, QWidget *parent)
    : DocumentView(document, services, host, parent)
{
    m_image = new PictureView(this);
    m_image->setFrameShape(QFrame::NoFrame);
    m_image->hide();
    connect(m_image, &PictureView::releasedOnPicture, this, &PictureDocumentView::placeOverlay);
    // A fresh window writes in the application's font.
    TEXT_FONT = QApplication::font().family();
    TEXT_FONT_SIZE = float(QApplication::font().pointSizeF());

    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("Timer1"));
    m_timer->setInterval(1000);
    connect(m_timer, &QTimer::timeout, this, &PictureDocumentView::internetTick);

    m_frame3 = new QFrame(this);
    m_frame3->setObjectName(QStringLiteral("Frame3"));
    m_frame3->setFrameShape(QFrame::Box);
    auto *label1 = new QLabel(QStringLiteral("Loading Picture from the Internet. Please wait."), m_frame3);
    label1->setObjectName(QStringLiteral("Label1"));
    (new QVBoxLayout(m_frame3))->addWidget(label1);
    m_frame3->hide();

    m_loadError = new QLabel(this);
    m_loadError->setObjectName(QStringLiteral("LoadError"));
    m_loadError->setAlignment(Qt::AlignCenter);
    m_loadError->setWordWrap(true);
    m_loadError->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_loadError->setMargin(12);
    m_loadError->hide();

    // The window's own keys, not the frame's command tables.
    auto *undoKey = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z), this, this, &PictureDocumentView::undo);
    undoKey->setContext(Qt::WidgetWithChildrenShortcut);
    auto *redoKey = new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), this, this, &PictureDocumentView::redo);
    redoKey->setContext(Qt::WidgetWithChildrenShortcut);
}

PictureDocumentView::~PictureDocumentView() = default;

void PictureDocumentView::start()
{
    m_image->show();
    m_image->setFocus();
    if (viewer::isInternetAddress(document().path())) {
        startInternetFetch();
        return;
    }
    DocumentView::start();
}

void PictureDocumentView::showDocument()
{
    m_frame3->hide();
    m_image->setPicture(document().picture(), document().overview());
    m_image->show();
    sizeToPicture();
    if (m_pan)
        m_pan->setOverview(document().overview().isNull() ? document().picture().image() : document().overview(),
                           m_image->pictureSize());
}

void PictureDocumentView::showFailure(const QString &error)
{
    endInternetWait();
    // The window stays open; its body says what went wrong, so that the user
    // still knows once the message box is gone.
    m_image->hide();
    m_loadError->setText(QStringLiteral("Error Loading Picture - ") + viewer::saveAsFileName(document().path())
                         + QStringLiteral("\n\n") + error);
    m_loadError->setGeometry(rect());
    m_loadError->show();
    services().messages.inform(QStringLiteral("Error Loading Picture"), this);
}

viewer::StatusPanels PictureDocumentView::statusPanels() const
{
    if (document().loadingState() != viewer::Document::LoadingState::Loaded)
        return DocumentView::statusPanels();
    const imaging::PictureInfo &info = document().picture().info;
    return viewer::pictureStatusPanels(info.width, info.height, info.bitsPerPixel, info.sizeOnDisk);
}

void PictureDocumentView::activate()
{
    applySteps(m_modes.activationChecks());
    showPendingOverlay();
}

void PictureDocumentView::showPendingOverlay()
{
    // The frame shows this window's own waiting text or shape.
    setOverlayChecks(false, DRAW_NOW_FLG && DRAWMENU == edit::DrawMenuText);
    setOverlayChecks(true, DRAW_NOW_FLG && DRAWMENU == edit::DrawMenuShape);
}

void PictureDocumentView::closing()
{
    applySteps(m_modes.teardown());
    m_timer->stop();
    if (m_download)
        m_download->cancel();
}

void PictureDocumentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_image->setGeometry(rect());
    m_loadError->setGeometry(rect());
    placeWaitNotice();
}

void PictureDocumentView::placeWaitNotice()
{
    const QSize notice = m_frame3->sizeHint();
    m_frame3->setGeometry(
        QRect(QPoint((width() - notice.width()) / 2, (height() - notice.height()) / 2), notice));
}

void PictureDocumentView::sizeToPicture()
{
    const QSize picture = m_image->pictureSize();
    if (picture.isEmpty())
        return;
    QWidget *outer = host().outerWindow();
    // A window that opened maximised, as the one before it was, stays so.
    if (outer->isMaximized())
        return;
    QWidget *window = parentWidget() ? parentWidget() : this;
    const double dpiX = logicalDpiX();
    const double dpiY = logicalDpiY();
    // The hosting window places this one through its layout; settle it first
    // so that outer minus inner is the real non-client size.
    if (outer != window && outer->layout())
        outer->layout()->activate();
    const QSize nonClientPixels = outer == window ? QSize(0, 0) : outer->size() - window->size();
    const QSize nonClientTwips(int(std::lround(pixelsToTwips(nonClientPixels.width(), dpiX))),
                               int(std::lround(pixelsToTwips(nonClientPixels.height(), dpiY))));
    const QSize twips = viewer::pictureWindowTwips(picture, 1440.0 / dpiX, 1440.0 / dpiY, nonClientTwips);
    QSize pixels(twipsToPixels(twips.width(), dpiX), twipsToPixels(twips.height(), dpiY));
    // A picture larger than the frame gets a window as large as the frame's
    // client area, with scroll bars.
    if (outer != window && outer->parentWidget() && !outer->parentWidget()->size().isEmpty())
        pixels = pixels.boundedTo(outer->parentWidget()->size());
    outer->resize(pixels);
    if (outer != window && outer->layout()) {
        outer->layout()->activate();
        // Some window decorations only settle their size on the resize itself;
        // correct once by what the inner area still lacks.
        const QSize lacking =
            picture.boundedTo(outer->parentWidget() ? outer->parentWidget()->size() : picture) - window->size();
        if (!lacking.isNull() && (lacking.width() > 0 || lacking.height() > 0))
            outer->resize((outer->size() + lacking.expandedTo(QSize(0, 0)))
                              .boundedTo(outer->parentWidget() ? outer->parentWidget()->size() : QSize(1 << 20, 1 << 20)));
    }
}

// ---------------------------------------------------------------- the Internet

void PictureDocumentView::setInternetClock(viewer::InternetFetchWatch::Clock clock)
{
    m_fetchWatch = viewer::InternetFetchWatch(std::move(clock));
}

bool PictureDocumentView::isFetchingFromInternet() const
{
    return m_fetchWatch.isRunning();
}

void PictureDocumentView::startInternetFetch()
{
    m_frame3->show();
    m_frame3->raise();
    placeWaitNotice();
    m_fetchWatch.start();
    m_timer->start();
    if (!m_download) {
        m_download = new viewer::InternetDownload(this);
        connect(m_download, &viewer::InternetDownload::finished, this, &PictureDocumentView::onDownloaded);
    }
    m_download->start(document().path());
}

void PictureDocumentView::onDownloaded(const viewer::DownloadResult &result)
{
    // A failed transfer is not reported here: the picture simply never
    // arrives, and the timer's rule tells the user.
    if (result.ok())
        document().load(result.localPath);
}

void PictureDocumentView::endInternetWait()
{
    m_frame3->hide();
    m_fetchWatch.stop();
    m_timer->stop();
}

void PictureDocumentView::internetTick()
{
    using Verdict = viewer::InternetFetchWatch::Verdict;
    const Verdict verdict = m_fetchWatch.check(document().loadingState() == viewer::Document::LoadingState::Loaded);
    switch (verdict) {
    case Verdict::Waiting:
        return;
    case Verdict::Completed:
    case Verdict::Idle:
        m_timer->stop();
        m_frame3->hide();
        return;
    case Verdict::TimedOut:
        m_timer->stop();
        m_frame3->hide();
        if (m_download)
            m_download->cancel();
        services().messages.inform(QStringLiteral("Picture Not found on the Internet"), this);
        return;
    }
}

// ---------------------------------------------------------------- view modes

void PictureDocumentView::viewNormal() { applySteps(m_modes.normal()); }
void PictureDocumentView::viewStretch() { applySteps(m_modes.stretch()); }
void PictureDocumentView::togglePanWindow() { applySteps(m_modes.togglePanWindow()); }
void PictureDocumentView::toggleMagnifier() { applySteps(m_modes.toggleMagnifier()); }

void PictureDocumentView::applySteps(const viewer::ViewSteps &steps)
{
    for (const ViewStep &step : steps) {
        switch (step.action) {
        case ViewStep::Action::SetPaintMode:
            m_image->setPaintMode(step.mode);
            break;
        case ViewStep::Action::StartMagnifier:
            m_image->setMagnifierOn(true);
            break;
        case ViewStep::Action::StopMagnifier:
            m_image->setMagnifierOn(false);
            break;
        case ViewStep::Action::ShowPanWindow:
            showPanWindow();
            break;
        case ViewStep::Action::HidePanWindow:
            if (m_pan)
                m_pan->hide();
            break;
        case ViewStep::Action::Check:
            host().setFrameCheck(step.key, step.checked);
            break;
        }
    }
}

void PictureDocumentView::showPanWindow()
{
    if (!m_pan) {
        m_pan = new PanWindow(this);
        connect(m_image, &PictureView::visibleRectChanged, m_pan, &PanWindow::setVisibleRect);
        connect(m_pan, &PanWindow::panRequested, m_image, &PictureView::centreOn);
        connect(m_pan, &PanWindow::closedByUser, this, [this] { applySteps(m_modes.panWindowClosed()); });
    }
    QWidget *outer = host().outerWindow();
    m_pan->setWindowIcon(outer->windowIcon());
    const QImage overview = document().overview();
    m_pan->setOverview(overview.isNull() ? document().picture().image() : overview, m_image->pictureSize());
    m_pan->setVisibleRect(m_image->visiblePictureRect());
    // Both offsets come from the document window's left edge, in the frame's
    // client area.
    QRect place = viewer::PanWindowSettings::geometry(outer->x());
    if (QWidget *area = outer->parentWidget())
        place.moveTopLeft(area->mapToGlobal(place.topLeft()));
    m_pan->setGeometry(place);
    m_pan->show();
    m_pan->raise();
}

// ---------------------------------------------------------------- editing

void PictureDocumentView::flip() { runEdit(edit::EditOperation::flip()); }
void PictureDocumentView::reverse() { runEdit(edit::EditOperation::reverse()); }
void PictureDocumentView::invertColors() { runEdit(edit::EditOperation::invert()); }
void PictureDocumentView::stretchColorIntensity() { runEdit(edit::EditOperation::stretch()); }

namespace {

// The rotate dialog's presets, kept for the program's run: the last choices.
struct RotatePresets {
    bool enlarge = true;
    QRgb fill = qRgb(255, 255, 255);
};

RotatePresets &rotatePresets()
{
    static RotatePresets presets;
    return presets;
}

} // namespace

void PictureDocumentView::brightness()
{
    if (document().loadingState() != viewer::Document::LoadingState::Loaded || document().picture().isNull())
        return;
    AdjustDialog dialog(AdjustDialog::Page::Brightness, document().picture().image(), services(), this);
    dialog.setAmount(0);
    dialog.exec();
    runEdit(edit::EditOperation::brightness(dialog.amount()));
}

void PictureDocumentView::contrast()
{
    if (document().loadingState() != viewer::Document::LoadingState::Loaded || document().picture().isNull())
        return;
    AdjustDialog dialog(AdjustDialog::Page::Contrast, document().picture().image(), services(), this);
    dialog.setAmount(0);
    dialog.exec();
    runEdit(edit::EditOperation::contrast(dialog.amount()));
}

void PictureDocumentView::rotate()
{
    if (document().loadingState() != viewer::Document::LoadingState::Loaded || document().picture().isNull())
        return;
    AdjustDialog dialog(AdjustDialog::Page::Rotate, document().picture().image(), services(), this);
    dialog.setAmount(0);
    dialog.setEnlarge(rotatePresets().enlarge);
    dialog.setFill(rotatePresets().fill);
    dialog.exec();
    if (dialog.result() == QDialog::Accepted)
        rotatePresets() = {dialog.enlarge(), dialog.fill()};
    runEdit(edit::EditOperation::rotate(dialog.amount(),
                                        dialog.enlarge() ? edit::RotateFit::Enlarge : edit::RotateFit::KeepSize,
                                        dialog.fill()));
    viewNormal();
}

void PictureDocumentView::resizePicture()
{
    if (document().loadingState() != viewer::Document::LoadingState::Loaded || document().picture().isNull())
        return;
    NewSize1 dialog(this);
    dialog.InitTheForm(NewSize1::Mode::Resize, document().picture().image().size());
    dialog.exec();
    const NewSize1::Results results = dialog.GetResults();
    if (!results.accepted)
        return;
    runEdit(edit::EditOperation::resize(QSize(results.width, results.height),
                                        results.resample ? edit::Resampling::Smooth : edit::Resampling::None));
    viewNormal();
}

namespace {

QList<QImage> framesOf(const imaging::Picture &picture)
{
    QList<QImage> frames;
    frames.reserve(picture.frames.size());
    for (const imaging::PictureFrame &frame : picture.frames)
        frames.append(frame.image);
    return frames;
}

qint64 bytesOf(const imaging::Picture &picture)
{
    qint64 bytes = 0;
    for (const imaging::PictureFrame &frame : picture.frames)
        bytes += frame.image.sizeInBytes();
    return bytes;
}

// How long a large operation runs before its progress window shows.
constexpr int ProgressDelayMs = 400;

} // namespace

bool PictureDocumentView::applyWithProgress(const edit::EditOperation &operation, imaging::Picture *picture,
                                            QString *error, bool *cancelled)
{
    edit::EditProgress progress;
    if (m_progressHook)
        progress.setHook(m_progressHook);
    if (bytesOf(*picture) < ProgressBytes) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const bool done = edit::applyToPicture(operation, picture, error, &progress);
        QApplication::restoreOverrideCursor();
        *cancelled = progress.isCancelled();
        return done;
    }

    // The work runs on a thread of its own (the global pool stays free for
    // painting) while this one keeps the windows painted.
    bool done = false;
    std::unique_ptr<QThread> worker(
        QThread::create([&] { done = edit::applyToPicture(operation, picture, error, &progress); }));
    QEventLoop loop;
    connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    worker->start();
    // A quick one ends before anything shows; until the progress window
    // blocks the others, the user's input waits.
    QTimer::singleShot(ProgressDelayMs, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (!worker->isFinished()) {
        QProgressDialog dialog(QStringLiteral("Changing the picture..."), QStringLiteral("Cancel"), 0, 1000, this);
        dialog.setObjectName(QStringLiteral("EditProgress"));
        dialog.setWindowTitle(QStringLiteral("Please Wait"));
        dialog.setWindowModality(Qt::ApplicationModal);
        dialog.setMinimumDuration(0);
        dialog.setAutoClose(false);
        dialog.setAutoReset(false);
        connect(&dialog, &QProgressDialog::canceled, &dialog, [&progress, &dialog] {
            progress.cancel();
            dialog.setLabelText(QStringLiteral("Cancelling..."));
        });
        QTimer poll;
        connect(&poll, &QTimer::timeout, &dialog, [&] { dialog.setValue(progress.permille()); });
        poll.start(50);
        dialog.setValue(progress.permille());
        dialog.show();
        QApplication::restoreOverrideCursor();
        if (!worker->isFinished())
            loop.exec();
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    worker->wait();
    QApplication::restoreOverrideCursor();
    *cancelled = progress.isCancelled();
    return done;
}

void PictureDocumentView::runEdit(const edit::EditOperation &operation)
{
    if (m_editing || !isLoaded())
        return;
    m_editing = true;
    imaging::Picture picture = document().picture();
    const QList<QImage> before = framesOf(picture);
    QString error;
    bool cancelled = false;
    const bool done = applyWithProgress(operation, &picture, &error, &cancelled);
    m_editing = false;
    // A cancelled operation leaves the picture as it was, unmarked.
    if (cancelled)
        return;
    if (!done) {
        services().messages.inform(error, this);
        return;
    }
    m_history.record(before, operation);
    showEditedPicture(std::move(picture));
}

void PictureDocumentView::replaceFrames(const QList<QImage> &frames)
{
    imaging::Picture picture = document().picture();
    if (frames.size() != picture.frames.size())
        return;
    for (qsizetype i = 0; i < frames.size(); ++i)
        picture.frames[i].image = frames.at(i);
    edit::refreshInfo(&picture);
    showEditedPicture(std::move(picture));
}

void PictureDocumentView::undo()
{
    if (m_editing || !m_history.canUndo() || !isLoaded())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QList<QImage> previous = m_history.undo(framesOf(document().picture()));
    QApplication::restoreOverrideCursor();
    replaceFrames(previous);
}

void PictureDocumentView::redo()
{
    if (m_editing || !m_history.canRedo() || !isLoaded())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QList<QImage> next = m_history.redo(framesOf(document().picture()));
    QApplication::restoreOverrideCursor();
    replaceFrames(next);
}

void PictureDocumentView::showEditedPicture(imaging::Picture picture)
{
    const QSize oldSize = m_image->pictureSize();
    document().setEditedPicture(std::move(picture));
    m_image->setPicture(document().picture(), document().overview());
    // A picture of another shape is shown at its normal size again.
    if (m_image->pictureSize() != oldSize)
        viewNormal();
    if (m_pan && m_pan->isVisible())
        m_pan->setOverview(document().overview(), m_image->pictureSize());
}

// ---------------------------------------------------------------- text and shapes

bool PictureDocumentView::isLoaded() const
{
    return document().loadingState() == viewer::Document::LoadingState::Loaded && !document().picture().isNull();
}

void PictureDocumentView::setPlacementPointer(bool waiting)
{
    m_image->setPlacementPointer(waiting);
}

void PictureDocumentView::setFrameCheck(const QString &key, bool checked)
{
    host().setFrameCheck(key, checked);
}

QString PictureDocumentView::helpFolder() const
{
    return host().helpFolder();
}

void PictureDocumentView::setOverlayChecks(bool shapes, bool checked)
{
    const bool wasShutOff = SHUTOFFCLICK_FLG;
    SHUTOFFCLICK_FLG = true;
    setFrameCheck(shapes ? commands::keys::mnuAddShapestoPictures : commands::keys::mnuAddTexttoPictures, checked);
    setFrameCheck(shapes ? commands::keys::ShapesBtn : commands::keys::FontBtn, checked);
    SHUTOFFCLICK_FLG = wasShutOff;
}

void PictureDocumentView::addText()
{
    // The click raised by this window's own change of the frame's checks.
    if (SHUTOFFCLICK_FLG || !isLoaded())
        return;
    setOverlayChecks(false, true);
    AddText1 dialog(*this, services(), this);
    dialog.exec();
    // A shape that waited gives way to the text, or to nothing.
    showPendingOverlay();
}

void PictureDocumentView::addShapes()
{
    if (SHUTOFFCLICK_FLG || !isLoaded())
        return;
    setOverlayChecks(true, true);
    AddShape1 dialog(*this, services(), this);
    dialog.exec();
    showPendingOverlay();
}

void PictureDocumentView::placeOverlay(QPointF at)
{
    if (!DRAW_NOW_FLG || !isLoaded())
        return;
    const bool shape = DRAWMENU == edit::DrawMenuShape;
    if (!shape && DRAWMENU != edit::DrawMenuText)
        return;
    // The glass would show the picture as it was.
    if (m_modes.isMagnifierOn())
        applySteps(m_modes.toggleMagnifier());
    if (shape) {
        // Sizes typed into the dialog can be anything; a shape far larger
        // than any picture draws the same as one just larger.
        constexpr double Largest = 1 << 20;
        QRectF place = shapeRect(at);
        place.setSize(place.size().boundedTo(QSizeF(Largest, Largest)));
        // A size of 0 (an empty or non-numeric box) leaves nothing to draw.
        if (place.width() > 0 && place.height() > 0)
            runEdit(edit::EditOperation::stamp(shapeStyle(), place));
        PLACEOBJECT_FLG = false;
    } else {
        runEdit(edit::EditOperation::write(textOverlay(), at));
        PLACETEXT_FLG = false;
    }
    DRAW_NOW_FLG = false;
    setPlacementPointer(false);
    setOverlayChecks(shape, false);
}

// ---------------------------------------------------------------- operations

void PictureDocumentView::copySelection()
{
    services().messages.inform(
        QStringLiteral("You can only Copy Text for Pasting into Text Box to Add Text to a Picture"), this);
}

void PictureDocumentView::saveAs()
{
    const QString path = document().path();
    const QString extension = document().extension();
    const QString name = viewer::saveAsFileName(path);
    DialogRequest request;
    request.kind = DialogKind::SaveFile;
    request.title = QStringLiteral("Enter New File Name for - ") + name;
    const QString pattern = QStringLiteral("*.") + extension;
    request.filter = pattern + QLatin1Char('|') + pattern;
    request.defaultSuffix = extension;
    request.fileName = name;
    request.directory = viewer::isInternetAddress(path) ? QDir::currentPath() : QFileInfo(path).absolutePath();
    const viewer::PictureSaveChoices choices =
        viewer::saveChoicesFor(extension, document().picture().info.bitsPerPixel, path);
    request.bitsPerPixelChoices = choices.depths;
    request.bitsPerPixel = choices.depth;
    request.offerQuality = choices.hasQuality;
    request.quality = choices.quality;
    const DialogAnswer answer = services().dialogs.run(request, this);
    if (!answer.accepted || answer.path.isEmpty())
        return;
    const int formatCode = catalogue::GetSaveFormatCode(catalogue::GetFileExt(answer.path));
    const imaging::SaveResult result =
        formatCode == 0 ? imaging::SaveResult{false, QStringLiteral("No picture format")}
                        : document().savePicture(answer.path, formatCode, answer.bitsPerPixel, answer.quality);
    if (!result.ok) {
        services().messages.inform(QStringLiteral("Error Saving File - ") + answer.path, this);
        return;
    }
    host().fileWritten(answer.path);
}

} // namespace tarnby::ui
