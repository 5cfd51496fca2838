#pragma once

#include "core/edit/EditHistory.h"
#include "core/edit/OverlayMembers.h"
#include "core/viewer/DocumentRules.h"
#include "core/viewer/ViewModes.h"
#include "ui/edit/OverlayHost.h"
#include "ui/viewer/DocumentView.h"

class QFrame;
class QLabel;
class QTimer;

namespace tarnby::viewer {
class InternetDownload;
struct DownloadResult;
}

namespace tarnby::ui {

class PanWindow;
class PictureView;

// The view of a picture window: the picture view with its view modes (normal
// or stretched, the pan window and the magnifying glass), Save As in a picture
// format, the picture operations with their undo, text and shapes drawn into
// the picture, and the wait for a picture named by Internet address. The
// window is sized to the picture once it has loaded.
//
// The text and shape settings are the view's public overlay members
// (OverlayMembers), set by AddText1 and AddShape1 and read when the mouse is
// released over the picture.
class PictureDocumentView : public DocumentView, public edit::OverlayMembers, public OverlayHost
{
    Q_OBJECT
public:
    PictureDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                        QWidget *parent = nullptr);
    ~PictureDocumentView() override;

    PictureView *pictureView() const { return m_image; }
    // The notice inside the window when the picture could not be loaded
    // (object name "LoadError"); hidden otherwise.
    QLabel *loadErrorLabel() const { return m_loadError; }
    // Made when first shown.
    PanWindow *panWindow() const { return m_pan; }
    const viewer::ViewModes &viewModes() const { return m_modes; }

    void start() override;
    void showDocument() override;
    void showFailure(const QString &error) override;
    viewer::StatusPanels statusPanels() const override;
    void activate() override;
    void closing() override;

    // Asks for a new name and format and saves the picture there.
    void saveAs() override;
    // Says that only text can be copied, for adding text to a picture.
    void copySelection() override;
    void viewNormal() override;
    void viewStretch() override;
    void togglePanWindow() override;
    void toggleMagnifier() override;

    // The picture operations of the Image menu that take no parameters. Each
    // changes every frame of the picture, marks the document modified and
    // can be undone.
    void flip() override;
    void reverse() override;
    void invertColors() override;
    void stretchColorIntensity() override;
    // Asks for the new size in NewSize1; accepted, resizes the picture and
    // returns the view to normal size.
    void resizePicture() override;
    // Ask for the amount in the adjustment dialog (LEADDlg1), preset to 0,
    // and apply what it gives back: a cancelled dialog gives 0, which still
    // marks the picture changed. Rotate presets the enlarge choice and the
    // fill colour with the last ones chosen in this run, and returns the
    // view to normal size.
    void brightness() override;
    void contrast() override;
    void rotate() override;

    // Undo and redo of the operations above (Ctrl+Z and Ctrl+Shift+Z in the
    // window). The history is bounded as EditHistory says; a picture of
    // several frames is changed, and so undone, as a whole. Undoing marks the
    // picture changed too: it differs from what was shown before.
    void undo();
    void redo();
    const edit::EditHistory &editHistory() const { return m_history; }

    // Open AddText1 or AddShape1 and check the frame's text or shape
    // commands; after OK, the next release of the left button over the
    // picture draws the text or shape there (placeOverlay).
    void addText() override;
    void addShapes() override;
    // Draws the pending text or shape with its top left at the picture point
    // at, as an operation that can be undone, and ends the wait. Nothing
    // happens unless DRAW_NOW_FLG is set.
    void placeOverlay(QPointF at);

    // OverlayHost
    edit::OverlayMembers &overlayMembers() override { return *this; }
    void setPlacementPointer(bool waiting) override;
    void setFrameCheck(const QString &key, bool checked) override;
    QString helpFolder() const override;

    // An operation on a picture of ProgressBytes or more runs beside the
    // window: after a moment a progress window (object name "EditProgress")
    // shows how far it is and can cancel it, which leaves the picture as it
    // was.
    static constexpr qint64 ProgressBytes = 64LL * 1024 * 1024;
    // Called as the operations report their progress (from the threads that
    // do the work); returning false cancels. For tests.
    void setEditProgressHook(edit::EditProgress::Hook hook) { m_progressHook = std::move(hook); }

    void setInternetClock(viewer::InternetFetchWatch::Clock clock) override;
    bool isFetchingFromInternet() const override;
    // The 51-second rule: once the wait has run that long without the
    // picture, the transfer ends and the user is told.
    void internetTick() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void startInternetFetch();
    void onDownloaded(const viewer::DownloadResult &result);
    void endInternetWait();
    void sizeToPicture();
    void placeWaitNotice();
    void applySteps(const viewer::ViewSteps &steps);
    void showPanWindow();
    void runEdit(const edit::EditOperation &operation);
    bool applyWithProgress(const edit::EditOperation &operation, imaging::Picture *picture, QString *error,
                           bool *cancelled);
    void replaceFrames(const QList<QImage> &frames);
    void showEditedPicture(imaging::Picture picture);
    bool isLoaded() const;
    // Sets the frame's checks of the text (or shape) commands under
    // SHUTOFFCLICK_FLG, so that the click this raises does not come back.
    void setOverlayChecks(bool shapes, bool checked);
    // Checks the frame's text or shape commands as the overlay waiting says.
    void showPendingOverlay();

    viewer::ViewModes m_modes;
    viewer::InternetFetchWatch m_fetchWatch;
    edit::EditHistory m_history;
    edit::EditProgress::Hook m_progressHook;
    bool m_editing = false;

    PictureView *m_image = nullptr;
    QLabel *m_loadError = nullptr;
    PanWindow *m_pan = nullptr;
    QFrame *m_frame3 = nullptr;
    QTimer *m_timer = nullptr;
    viewer::InternetDownload *m_download = nullptr;
};

} // namespace tarnby::ui
