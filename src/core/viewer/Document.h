#pragma once

#include "core/platform/imaging/PictureLayer.h"
#include "core/viewer/DocumentRules.h"
#include "core/viewer/TextFile.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <memory>

class QTextDocument;

namespace tarnby::viewer {

class AbstractDocumentImpl;

// What a text-kind document holds once loaded.
struct TextContent {
    TextView view = TextView::PlainText;
    // Plain text: the file's pages and the page shown.
    TextLayout layout;
    int page = 0;
    QString pageText;
    // Web view: HTML (HTML files, Works documents) or plain text (Word documents).
    QString html;
    QString webPlainText;
    QUrl baseUrl;
};

// The document behind one document window: its kind, chosen once, its loading
// state and error, and the modified and busy flags. Loading runs on a worker
// thread; loaded() or loadFailed() arrive on the thread that owns the document.
// A failed load switches to an empty implementation: every accessor still
// answers, with nothing.
class Document : public QObject
{
    Q_OBJECT
public:
    enum class LoadingState { NotLoaded, Loading, Loaded, Failed };

    Document(const QString &path, DocumentKind kind, bool useTextDoc, QObject *parent = nullptr);
    // Waits for a running load; its result is dropped.
    ~Document() override;

    QString path() const { return m_path; }
    // The file was renamed or moved to path: everything read from it later
    // (pages of a long text) is read there. The kind and the view stay as
    // they were chosen at load.
    void setPath(const QString &path);
    QString extension() const { return m_extension; }
    DocumentKind kind() const { return m_kind; }
    LoadingState loadingState() const { return m_state; }
    QString errorString() const { return m_errorString; }
    bool isBusy() const { return m_state == LoadingState::Loading; }
    bool isModified() const { return m_modified; }
    void setModified(bool modified) { m_modified = modified; }

    // Starts loading path (or, for a picture fetched from the Internet, the
    // local copy given here). Returns at once.
    void load(const QString &localPath = {});

    // Picture documents.
    const imaging::Picture &picture() const;
    bool isAnimated() const;
    // The picture scaled to at most 1024 pixels a side, for overviews and
    // stretched painting of large pictures.
    QImage overview() const;
    imaging::SaveResult savePicture(const QString &path, int formatCode, int bitsPerPixel, int quality);
    // Replaces the loaded picture with an edited one (its frames and facts),
    // makes the overview again and marks the document modified. Does
    // nothing unless a picture has loaded.
    void setEditedPicture(imaging::Picture picture);

    // Text documents.
    const TextContent &text() const;
    // The rich text of an RTF document; owned by the document.
    QTextDocument *richText() const;
    // Loads another page of a plain text file; pageLoaded() follows.
    void loadPage(int page);

    // The file's length on disk, for the status bar.
    qint64 fileSize() const;

signals:
    void loaded();
    void loadFailed(const QString &errorString);
    void pageLoaded(int page);

private:
    friend class AbstractDocumentImpl;
    void implLoaded();
    void implFailed(const QString &errorString);

    QString m_path;
    QString m_extension;
    DocumentKind m_kind;
    bool m_useTextDoc;
    LoadingState m_state = LoadingState::NotLoaded;
    QString m_errorString;
    bool m_modified = false;
    std::unique_ptr<AbstractDocumentImpl> m_impl;
};

} // namespace tarnby::viewer
