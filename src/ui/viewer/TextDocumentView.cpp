#include "ui/viewer/TextDocumentView.h"

#include "core/viewer/Document.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QTextEdit>

namespace tarnby::ui {

using viewer::TextView;

TextDocumentView::TextDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                                   QWidget *parent)
    : DocumentView(document, services, host, parent)
{
    m_text = new QTextEdit(this);
    m_text->setObjectName(QStringLiteral("Text1"));
    m_text->setFont(QFont(QStringLiteral("Arial")));
    m_text->setReadOnly(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->hide();

    // Large plain text files are shown a page at a time.
    m_pageBar = new QWidget(this);
    m_pageBar->setObjectName(QStringLiteral("TextPages"));
    auto *bar = new QHBoxLayout(m_pageBar);
    bar->setContentsMargins(2, 2, 2, 2);
    m_prevPage = new QPushButton(QStringLiteral("< Previous"), m_pageBar);
    m_prevPage->setObjectName(QStringLiteral("PreviousPageBtn"));
    m_nextPage = new QPushButton(QStringLiteral("Next >"), m_pageBar);
    m_nextPage->setObjectName(QStringLiteral("NextPageBtn"));
    m_pageLabel = new QLabel(m_pageBar);
    m_pageLabel->setObjectName(QStringLiteral("PageLabel"));
    bar->addWidget(m_prevPage);
    bar->addWidget(m_pageLabel, 1, Qt::AlignCenter);
    bar->addWidget(m_nextPage);
    m_pageBar->hide();

    connect(&document, &viewer::Document::pageLoaded, this, &TextDocumentView::showTextPage);
    connect(m_prevPage, &QPushButton::clicked, this, [this] { this->document().loadPage(this->document().text().page - 1); });
    connect(m_nextPage, &QPushButton::clicked, this, [this] { this->document().loadPage(this->document().text().page + 1); });
}

TextDocumentView::~TextDocumentView()
{
    // The rich text belongs to the document; let the text box forget it first.
    m_text->setDocument(nullptr);
}

void TextDocumentView::start()
{
    placeTextWindow();
    layoutControls();
    DocumentView::start();
}

void TextDocumentView::showDocument()
{
    if (document().text().view == TextView::RichText)
        m_text->setDocument(document().richText());
    else
        showTextPage();
    m_text->show();
    layoutControls();
}

void TextDocumentView::showTextPage()
{
    const viewer::TextContent &content = document().text();
    m_text->setPlainText(content.pageText);
    const int pages = content.layout.pageCount();
    m_pageBar->setVisible(pages > 1);
    m_pageLabel->setText(QStringLiteral("Page %1 of %2").arg(content.page + 1).arg(pages));
    m_prevPage->setEnabled(content.page > 0);
    m_nextPage->setEnabled(content.page + 1 < pages);
    layoutControls();
}

void TextDocumentView::copySelection()
{
    QGuiApplication::clipboard()->setText(m_text->textCursor().selection().toPlainText());
}

void TextDocumentView::releaseFile(const QString &closeTextPath)
{
    const QString extension = document().extension();
    if (extension != QLatin1String("HTM") && extension != QLatin1String("HTML"))
        return;
    QFile close(closeTextPath);
    if (close.open(QIODevice::ReadOnly))
        m_text->setPlainText(QString::fromLocal8Bit(close.readAll()));
}

void TextDocumentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutControls();
}

void TextDocumentView::layoutControls()
{
    QSize box = textBoxSize();
    if (!m_pageBar->isHidden()) {
        const int barHeight = m_pageBar->sizeHint().height();
        box.setHeight(std::max(0, box.height() - barHeight));
        m_pageBar->setGeometry(0, box.height(), box.width(), barHeight);
    }
    m_text->setGeometry(QRect(QPoint(0, 0), box));
}

} // namespace tarnby::ui
