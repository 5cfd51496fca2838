#include "core/viewer/Document.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/DocumentConverters.h"
#include "core/viewer/RtfReader.h"

#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QStringDecoder>
#include <QTextDocument>
#include <QThread>
#include <QtConcurrent>

namespace tarnby::viewer {

namespace {
constexpr int OverviewSide = 1024;
// HTML and RTF are read whole; beyond this they are not shown.
constexpr qint64 MaxMarkupBytes = 128LL * 1024 * 1024;

const imaging::Picture &emptyPicture()
{
    static const imaging::Picture picture;
    return picture;
}

const TextContent &emptyText()
{
    static const TextContent text;
    return text;
}

QByteArray readBounded(const QString &path, qint64 limit, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return {};
    }
    if (file.size() > limit) {
        *error = QStringLiteral("The document is too large to show.");
        return {};
    }
    return file.readAll();
}
} // namespace

// One implementation per kind, and an empty one after a failed load. Each
// loads on a worker thread through a watcher it owns; on teardown it
// disconnects, then waits.
class AbstractDocumentImpl : public QObject
{
public:
    explicit AbstractDocumentImpl(Document *document)
        : m_document(document)
    {
    }

    virtual void start(const QString &path) { Q_UNUSED(path); }
    virtual const imaging::Picture &picture() const { return emptyPicture(); }
    virtual QImage overview() const { return {}; }
    virtual bool replacePicture(imaging::Picture picture)
    {
        Q_UNUSED(picture);
        return false;
    }
    virtual const TextContent &text() const { return emptyText(); }
    virtual QTextDocument *richText() const { return nullptr; }
    virtual void loadPage(int page) { Q_UNUSED(page); }
    virtual void moved(const QString &path) { Q_UNUSED(path); }

protected:
    void succeed() { m_document->implLoaded(); }
    void fail(const QString &error) { m_document->implFailed(error); }
    Document *document() const { return m_document; }

private:
    Document *m_document;
};

namespace {

class EmptyDocumentImpl : public AbstractDocumentImpl
{
public:
    using AbstractDocumentImpl::AbstractDocumentImpl;
};

QImage overviewOf(const QImage &first)
{
    return (first.width() > OverviewSide || first.height() > OverviewSide)
               ? first.scaled(OverviewSide, OverviewSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)
               : first;
}

struct PictureLoad {
    imaging::LoadResult result;
    QImage overview;
};

class PictureDocumentImpl : public AbstractDocumentImpl
{
public:
    using AbstractDocumentImpl::AbstractDocumentImpl;
    ~PictureDocumentImpl() override
    {
        m_watcher.disconnect();
        m_watcher.waitForFinished();
    }

    void start(const QString &path) override
    {
        const imaging::Pages pages = loadsAllPages(document()->extension()) ? imaging::Pages::All : imaging::Pages::First;
        QObject::connect(&m_watcher, &QFutureWatcher<PictureLoad>::finished, this, [this] {
            PictureLoad load = m_watcher.result();
            if (!load.result.ok()) {
                fail(load.result.errorString.isEmpty() ? QStringLiteral("The picture could not be read.")
                                                       : load.result.errorString);
                return;
            }
            m_picture = std::move(load.result.picture);
            m_overview = std::move(load.overview);
            succeed();
        });
        m_watcher.setFuture(QtConcurrent::run([path, pages] {
            PictureLoad load;
            load.result = imaging::loadPicture(path, pages);
            if (!load.result.ok())
                return load;
            // Paint from 32-bit frames: the view draws small parts of a large
            // picture on every scroll, and other formats would be converted
            // whole each time.
            for (imaging::PictureFrame &frame : load.result.picture.frames) {
                const QImage::Format f = frame.image.format();
                if (f != QImage::Format_RGB32 && f != QImage::Format_ARGB32_Premultiplied)
                    frame.image.convertTo(frame.image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                        : QImage::Format_RGB32);
            }
            load.overview = overviewOf(load.result.picture.frames.constFirst().image);
            return load;
        }));
    }

    const imaging::Picture &picture() const override { return m_picture; }
    QImage overview() const override { return m_overview; }
    bool replacePicture(imaging::Picture picture) override
    {
        if (m_picture.isNull() || picture.isNull())
            return false;
        m_picture = std::move(picture);
        m_overview = overviewOf(m_picture.frames.constFirst().image);
        return true;
    }

private:
    QFutureWatcher<PictureLoad> m_watcher;
    imaging::Picture m_picture;
    QImage m_overview;
};

struct TextLoad {
    TextContent content;
    QTextDocument *rich = nullptr;
    QString errorString;
};

TextLoad loadText(const QString &path, const QString &extension, TextView view, QThread *owner)
{
    TextLoad load;
    load.content.view = view;
    switch (view) {
    case TextView::RichText: {
        QString error;
        const QByteArray data = readBounded(path, MaxMarkupBytes, &error);
        if (!error.isEmpty()) {
            load.errorString = error;
            return load;
        }
        auto *doc = new QTextDocument;
        // A file named .rtf that holds no RTF still shows what it says.
        if (!RtfReader::read(data, doc))
            doc->setPlainText(decodeText(data, detectEncoding(data, true).encoding));
        doc->moveToThread(owner);
        load.rich = doc;
        return load;
    }
    case TextView::WebView: {
        const QString ext = extension.toUpper();
        load.content.baseUrl = QUrl::fromLocalFile(path);
        if (ext == QLatin1String("DOC")) {
            const ConvertedDocument converted = convertWordDocument(path);
            load.errorString = converted.errorString;
            load.content.webPlainText = converted.plainText;
        } else if (ext == QLatin1String("WPS")) {
            const ConvertedDocument converted = convertWorksDocument(path);
            load.errorString = converted.errorString;
            load.content.html = converted.html;
        } else {
            QString error;
            const QByteArray data = readBounded(path, MaxMarkupBytes, &error);
            if (!error.isEmpty()) {
                load.errorString = error;
                return load;
            }
            QStringDecoder decoder = QStringDecoder::decoderForHtml(data);
            if (decoder.isValid())
                load.content.html = decoder.decode(data);
            else
                load.content.html = decodeText(data, detectEncoding(data, true).encoding);
        }
        return load;
    }
    case TextView::PlainText: {
        load.content.layout = TextFile::scan(path);
        if (!load.content.layout.ok()) {
            load.errorString = load.content.layout.errorString;
            return load;
        }
        load.content.pageText = TextFile::readPage(path, load.content.layout, 0, &load.errorString);
        return load;
    }
    }
    return load;
}

class TextDocumentImpl : public AbstractDocumentImpl
{
public:
    TextDocumentImpl(Document *document, TextView view)
        : AbstractDocumentImpl(document)
        , m_view(view)
    {
    }
    ~TextDocumentImpl() override
    {
        m_watcher.disconnect();
        m_watcher.waitForFinished();
        // A load that finished after the window let go still owns its rich text.
        if (m_watcher.isFinished() && !m_taken && m_watcher.future().resultCount() > 0)
            delete m_watcher.result().rich;
        m_pageWatcher.disconnect();
        m_pageWatcher.waitForFinished();
    }

    void start(const QString &path) override
    {
        m_path = path;
        QObject::connect(&m_watcher, &QFutureWatcher<TextLoad>::finished, this, [this] {
            TextLoad load = m_watcher.result();
            m_taken = true;
            if (!load.errorString.isEmpty()) {
                delete load.rich;
                fail(load.errorString);
                return;
            }
            m_content = std::move(load.content);
            m_rich.reset(load.rich);
            succeed();
        });
        QObject::connect(&m_pageWatcher, &QFutureWatcher<std::pair<int, QString>>::finished, this, [this] {
            const auto [page, text] = m_pageWatcher.result();
            m_content.page = page;
            m_content.pageText = text;
            emit document()->pageLoaded(page);
        });
        const QString ext = document()->extension();
        const TextView view = m_view;
        QThread *owner = document()->thread();
        m_watcher.setFuture(QtConcurrent::run([path, ext, view, owner] { return loadText(path, ext, view, owner); }));
    }

    const TextContent &text() const override { return m_content; }
    QTextDocument *richText() const override { return m_rich.get(); }
    void moved(const QString &path) override { m_path = path; }

    void loadPage(int page) override
    {
        if (m_content.view != TextView::PlainText || page < 0 || page >= m_content.layout.pageCount()
            || m_pageWatcher.isRunning())
            return;
        const QString path = m_path;
        const TextLayout layout = m_content.layout;
        m_pageWatcher.setFuture(QtConcurrent::run([path, layout, page] {
            return std::make_pair(page, TextFile::readPage(path, layout, page));
        }));
    }

private:
    TextView m_view;
    QString m_path;
    QFutureWatcher<TextLoad> m_watcher;
    QFutureWatcher<std::pair<int, QString>> m_pageWatcher;
    bool m_taken = false;
    TextContent m_content;
    std::unique_ptr<QTextDocument> m_rich;
};

// The table view arrives later; the document only knows that the file exists.
class TableDocumentImpl : public AbstractDocumentImpl
{
public:
    using AbstractDocumentImpl::AbstractDocumentImpl;
    void start(const QString &path) override
    {
        if (!QFileInfo::exists(path)) {
            fail(QStringLiteral("The file does not exist."));
            return;
        }
        succeed();
    }
};

} // namespace

Document::Document(const QString &path, DocumentKind kind, bool useTextDoc, QObject *parent)
    : QObject(parent)
    , m_path(path)
    , m_extension(catalogue::GetFileExt(path))
    , m_kind(kind)
    , m_useTextDoc(useTextDoc)
{
    switch (kind) {
    case DocumentKind::Picture:
        m_impl = std::make_unique<PictureDocumentImpl>(this);
        break;
    case DocumentKind::Text:
        m_impl = std::make_unique<TextDocumentImpl>(this, textViewFor(m_extension, useTextDoc));
        break;
    case DocumentKind::Database:
        m_impl = std::make_unique<TableDocumentImpl>(this);
        break;
    }
}

Document::~Document() = default;

void Document::load(const QString &localPath)
{
    if (m_state == LoadingState::Loading)
        return;
    m_state = LoadingState::Loading;
    m_impl->start(localPath.isEmpty() ? m_path : localPath);
}

void Document::implLoaded()
{
    m_state = LoadingState::Loaded;
    emit loaded();
}

void Document::implFailed(const QString &errorString)
{
    m_state = LoadingState::Failed;
    m_errorString = errorString;
    // The failed implementation may be running this very call: let it go later.
    AbstractDocumentImpl *old = m_impl.release();
    old->deleteLater();
    m_impl = std::make_unique<EmptyDocumentImpl>(this);
    emit loadFailed(errorString);
}

const imaging::Picture &Document::picture() const { return m_impl->picture(); }
bool Document::isAnimated() const { return m_impl->picture().frames.size() > 1; }
QImage Document::overview() const { return m_impl->overview(); }
const TextContent &Document::text() const { return m_impl->text(); }
QTextDocument *Document::richText() const { return m_impl->richText(); }
void Document::loadPage(int page) { m_impl->loadPage(page); }

void Document::setPath(const QString &path)
{
    m_path = path;
    m_extension = catalogue::GetFileExt(path);
    m_impl->moved(path);
}

imaging::SaveResult Document::savePicture(const QString &path, int formatCode, int bitsPerPixel, int quality)
{
    const imaging::Picture &pic = m_impl->picture();
    if (pic.isNull())
        return {false, QStringLiteral("There is no picture to save.")};
    imaging::SaveResult result = imaging::savePicture(pic, path, formatCode, bitsPerPixel, quality);
    if (result.ok)
        m_modified = false;
    return result;
}

void Document::setEditedPicture(imaging::Picture picture)
{
    if (m_impl->replacePicture(std::move(picture)))
        m_modified = true;
}

qint64 Document::fileSize() const
{
    if (m_kind == DocumentKind::Picture && !m_impl->picture().isNull() && m_impl->picture().info.sizeOnDisk > 0)
        return m_impl->picture().info.sizeOnDisk;
    return QFileInfo(m_path).size();
}

} // namespace tarnby::viewer
