#pragma once

#include "core/tables/FileProperties.h"
#include "core/viewer/DocumentRules.h"

#include <QWidget>

namespace tarnby::viewer {
class Document;
}

namespace tarnby::ui {

struct UiServices;

// What a document view needs of the window that hosts it. The document window
// implements it; the views know nothing else of the window or the frame.
class DocumentViewHost
{
public:
    // The window the user sees around the view (the frame's subwindow, or the
    // host itself when it stands alone). Views size and place it.
    virtual QWidget *outerWindow() const = 0;
    // Sets a checked state among the frame's commands on behalf of this
    // window. Only the active window's changes reach the frame, and the click
    // that a change raises does not run the operation again.
    virtual void setFrameCheck(const QString &key, bool checked) = 0;
    // Enables or disables one of the frame's commands on behalf of this
    // window (only the active window's changes reach the frame).
    virtual void setFrameEnabled(const QString &key, bool enabled) = 0;
    // Copies the shown file under a name the user chooses.
    virtual void copyFileAs() = 0;
    // The view wrote a file at path (a picture saved under a new name).
    virtual void fileWritten(const QString &path) = 0;
    // The folder of the help pages, for the Help buttons of the view's
    // dialogs (empty: none).
    virtual QString helpFolder() const { return {}; }

protected:
    ~DocumentViewHost() = default;
};

// The view of one kind of document inside a document window: its controls
// and what each of the window's operations means for that kind. The window
// chooses the view once, when it is made, and forwards to it; an operation
// that means nothing for a kind does nothing. The view fills the window's
// client area and lays out its own controls.
//
// Every call comes on the GUI thread. The document and the services outlive
// the view.
class DocumentView : public QWidget
{
    Q_OBJECT
public:
    DocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                 QWidget *parent = nullptr);

    viewer::Document &document() const { return m_document; }

    // Runs once the window is placed in the frame: shows the view's controls,
    // sizes the window where the kind says so, and starts loading.
    virtual void start();
    // The document has loaded: show it.
    virtual void showDocument() = 0;
    // The document failed to load with error: the window stays open, empty.
    virtual void showFailure(const QString &error);
    // The three panels of the frame's status bar while this window is active.
    // By default the file's length in the third.
    virtual viewer::StatusPanels statusPanels() const;
    // The window became the frame's active one: show the view's own state in
    // the frame.
    virtual void activate() {}
    // The window is closing: end whatever runs beside the view.
    virtual void closing() {}

    // The number of indexes of the table shown (table views).
    virtual qint16 indexCount() const { return 0; }
    // What the properties window shows of the file: the picture rows for a
    // picture, the type and size of any other file.
    virtual tables::FileProperties fileProperties() const;

    // The window's operations, as they apply to this kind.
    // Save As. By default the file is copied under the new name.
    virtual void saveAs();
    // Copies the selection to the clipboard.
    virtual void copySelection() {}
    // Lets go of the shown file before another program opens it;
    // closeTextPath is the small text file kept for this.
    virtual void releaseFile(const QString &closeTextPath) { Q_UNUSED(closeTextPath) }
    virtual void viewNormal() {}
    virtual void viewStretch() {}
    virtual void togglePanWindow() {}
    virtual void toggleMagnifier() {}

    // Commands whose features have not arrived yet; until a kind takes one
    // over, every kind says that it is not available.
    virtual void chooseTable();
    virtual void chooseIndex();
    virtual void showComments();
    virtual void flip();
    virtual void rotate();
    virtual void reverse();
    virtual void resizePicture();
    virtual void brightness();
    virtual void contrast();
    virtual void stretchColorIntensity();
    virtual void invertColors();
    virtual void addText();
    virtual void addShapes();

    // The wait for a picture named by Internet address (picture views only).
    // setInternetClock must come before start().
    virtual void setInternetClock(viewer::InternetFetchWatch::Clock clock) { Q_UNUSED(clock) }
    virtual bool isFetchingFromInternet() const { return false; }
    // One tick of the wait's timer.
    virtual void internetTick() {}

protected:
    UiServices &services() const { return m_services; }
    DocumentViewHost &host() const { return m_host; }
    // Tells the user that a command is not available in this version.
    void notYetAvailable(const QString &what);

    // Shared by the views that show text: the window goes to the frame's top
    // left corner at the fixed text window size.
    void placeTextWindow();
    // The text box's size: fixed margins to the window's outer size. A size
    // too small for the margins keeps the box's previous one.
    QSize textBoxSize();

private:
    viewer::Document &m_document;
    UiServices &m_services;
    DocumentViewHost &m_host;
    QSize m_textBoxTwips;
};

} // namespace tarnby::ui
